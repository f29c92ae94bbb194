#include "tests/support/TestPanel.h"
#include "tests/support/XServer.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <string_view>

// The window on a bare X server: what it does by itself, without a window manager.

namespace {

using namespace kqu::x11test;
using namespace std::chrono_literals;
using kqu::platform::Point;
using kqu::platform::Rect;
using Lines = std::vector<std::string>;

constexpr Rect content{100, 50, 340, 73};

struct X11WindowTest : testing::Test {
    static void TearDownTestSuite() { shared.reset(); }
    static inline std::unique_ptr<XServer> shared;
    /// Made by the first test: one that can't be made fails a test, and not only the suite.
    static XServer& Shared() {
        if (!shared)
            shared = std::make_unique<XServer>();
        return *shared;
    }

    X11WindowTest() {
        onlooker.MoveTo({900, 700});
        // The window is on the server from here on.
        static_cast<void>(panel.System().PointerPosition());
    }

    void RunUntilTold(std::size_t count) {
        panel.RunUntil(
            onlooker, [&] { return panel.told.size() >= count; }, "the owner to hear");
    }

    XServer& server = Shared();
    Onlooker onlooker;
    TestPanel panel{content};
};

/// Where a line stands first; behind the end if it is not there.
std::ptrdiff_t PlaceOf(const Lines& lines, std::string_view line) {
    return std::find(lines.begin(), lines.end(), line) - lines.begin();
}

TEST_F(X11WindowTest, IsMappedExactlyWhileShownAndNotTransparent) {
    onlooker.Watch(panel.Id());
    panel.RunFor(20ms);
    panel.Window().SetAlpha(0.0F);
    panel.Window().Show();
    panel.RunFor(20ms);
    panel.Window().SetAlpha(1.0F);
    panel.Window().SetAlpha(0.0F);
    panel.RunFor(20ms);
    Lines happened = onlooker.Happened();
    EXPECT_EQ(std::count(happened.begin(), happened.end(), "map"), 0);
    EXPECT_EQ(onlooker.Words(panel.Id(), "_NET_WM_WINDOW_OPACITY"), std::vector<std::uint32_t>{0});

    panel.Appear(onlooker);
    EXPECT_TRUE(onlooker.Words(panel.Id(), "_NET_WM_WINDOW_OPACITY").empty());
    panel.Window().Hide();
    panel.RoundTrip();
    EXPECT_FALSE(onlooker.IsViewable(panel.Id()));
}

TEST_F(X11WindowTest, TheSameAgainDoesNothing) {
    panel.Window().SetTitle("One");
    panel.FillAll(0x102030);
    panel.Appear(onlooker);
    panel.RunFor(300ms);
    onlooker.Watch(panel.Id());
    static_cast<void>(onlooker.Happened());
    panel.Window().SetAlpha(1.0F);
    panel.Window().Show();
    panel.Window().SetTitle("One");
    panel.Window().SetPosition(content.Origin());
    panel.Window().SetSize(content.Extent());
    panel.Window().ChangeAttributes(0, 6);
    panel.FillAll(0x102030);
    panel.RunFor(300ms);
    EXPECT_EQ(onlooker.Happened(), Lines());
    EXPECT_EQ(panel.told, Lines());
    EXPECT_FALSE(panel.System().Due()) << "idle means asleep";
}

TEST_F(X11WindowTest, TheFirstTitleIsTheOneThatIsMeant) {
    onlooker.Watch(panel.Id());
    EXPECT_EQ(onlooker.Text(panel.Id(), "_NET_WM_NAME"), "");
    panel.Window().SetTitle(" Layout");
    panel.Window().SetTitle("Brackwater Scheduled T\u00e4sk");
    panel.Appear(onlooker);
    const Lines happened = onlooker.Happened();
    EXPECT_EQ(std::count(happened.begin(), happened.end(), "property _NET_WM_NAME"), 1);
    EXPECT_LT(PlaceOf(happened, "property WM_NAME"), PlaceOf(happened, "map"));
    EXPECT_LT(PlaceOf(happened, "property _NET_WM_NAME"), PlaceOf(happened, "map"));
    for (const char* name : {"_NET_WM_NAME", "WM_NAME", "WM_ICON_NAME"})
        EXPECT_EQ(onlooker.Text(panel.Id(), name), "Brackwater Scheduled T\u00e4sk");
}

TEST_F(X11WindowTest, TellsManagersWhatItIsBeforeEachMap) {
    panel.Window().ChangeAttributes(2 | 4, 0);
    for (int round = 0; round < 2; ++round) {
        onlooker.Watch(panel.Id());
        panel.Appear(onlooker);
        const Lines happened = onlooker.Happened();
        for (const char* hint : {"WM_NORMAL_HINTS", "WM_HINTS", "_NET_WM_STATE",
                                 "_NET_WM_WINDOW_TYPE", "_NET_WM_USER_TIME", "_MOTIF_WM_HINTS"})
            EXPECT_LT(PlaceOf(happened, std::string("property ") + hint), PlaceOf(happened, "map"))
                << hint;
        panel.Vanish(onlooker);
    }
    const auto id = panel.Id();
    using Words = std::vector<std::uint32_t>;
    EXPECT_EQ(onlooker.Text(id, "WM_CLASS"), std::string("kqu-messenger\0KQU_Messenger\0", 28));
    EXPECT_EQ(onlooker.Words(id, "_NET_WM_PID"), Words{static_cast<std::uint32_t>(getpid())});
    EXPECT_NE(onlooker.Text(id, "WM_CLIENT_MACHINE"), "");
    EXPECT_EQ(onlooker.Names(id, "WM_PROTOCOLS"), (Lines{"WM_DELETE_WINDOW", "_NET_WM_PING"}));
    EXPECT_EQ(onlooker.Names(id, "_NET_WM_STATE"),
              (Lines{"_NET_WM_STATE_ABOVE", "_NET_WM_STATE_SKIP_TASKBAR"}));
    EXPECT_EQ(onlooker.Names(id, "_NET_WM_WINDOW_TYPE"), Lines{"_NET_WM_WINDOW_TYPE_UTILITY"});
    EXPECT_EQ(onlooker.Words(id, "_NET_WM_USER_TIME"), Words{0});
    const Words hints = onlooker.Words(id, "WM_HINTS");
    ASSERT_GE(hints.size(), 3U);
    EXPECT_EQ(hints[0] & 1, 1U) << "says something about input";
    EXPECT_EQ(hints[1], 0U) << "wants no input";
    // Flags, functions (move, maximise), decorations (border, title, menu, maximise).
    EXPECT_EQ(onlooker.Words(id, "_MOTIF_WM_HINTS"), (Words{3, 4 | 16, 2 | 8 | 16 | 64, 0, 0}));
    panel.Window().ChangeAttributes(8, 6);
    panel.RoundTrip();
    EXPECT_EQ(onlooker.Words(id, "_MOTIF_WM_HINTS"), (Words{3, 4 | 8, 2 | 8 | 16 | 32, 0, 0}));
}

TEST_F(X11WindowTest, SizeLimitsFollowTheSizeAndComeBeforeIt) {
    panel.Appear(onlooker);
    onlooker.Watch(panel.Id());
    panel.Resize({340, 146});
    panel.RoundTrip();
    const Lines happened = onlooker.Happened();
    EXPECT_LT(PlaceOf(happened, "property WM_NORMAL_HINTS"),
              PlaceOf(happened, "configure 340 146"));
    EXPECT_LT(PlaceOf(happened, "configure 340 146"), std::ssize(happened));
    const auto hints = onlooker.Words(panel.Id(), "WM_NORMAL_HINTS");
    ASSERT_EQ(hints.size(), 18U);
    constexpr std::uint32_t usPosition = 1, pPosition = 4, pMinSize = 16, pMaxSize = 32,
                            pGravity = 512, staticGravity = 10;
    for (const auto flag : {usPosition, pPosition, pMinSize, pMaxSize, pGravity})
        EXPECT_NE(hints[0] & flag, 0U) << flag;
    const std::vector<std::uint32_t> limits(hints.begin() + 5, hints.begin() + 9);
    EXPECT_EQ(limits, (std::vector<std::uint32_t>{340, 146, 340, 146}));
    EXPECT_EQ(hints[17], staticGravity);
}

TEST_F(X11WindowTest, ItsPixelsAreThereWithTheMapAndNeedNoRedrawing) {
    panel.FillAll(0x3366CC);
    panel.Window().Show();
    panel.Window().Commit();
    // From here on the program sleeps.
    onlooker.WaitFor([&] { return onlooker.IsViewable(panel.Id()); }, "the map");
    for (const Point corner : {Point{100, 50}, Point{439, 122}})
        EXPECT_EQ(onlooker.PixelAt(corner), 0x3366CCU);
    EXPECT_NE(onlooker.PixelAt({440, 122}), 0x3366CCU);
    const auto cover = onlooker.MakeWindow({90, 40, 400, 400});
    onlooker.WaitFor([&] { return onlooker.PixelAt({200, 100}) != 0x3366CC; }, "the cover");
    onlooker.DestroyWindow(cover);
    EXPECT_EQ(onlooker.PixelAt({200, 100}), 0x3366CCU);

    panel.Resize({400, 146});
    panel.Fill(0x00FF00, 0, 73);
    panel.Fill(0x0000FF, 73, 146);
    panel.Window().Commit();
    onlooker.WaitFor([&] { return onlooker.ContentOf(panel.Id()).height == 146; }, "the resize");
    EXPECT_EQ(onlooker.PixelAt({499, 122}), 0x00FF00U);
    EXPECT_EQ(onlooker.PixelAt({499, 123}), 0x0000FFU);
    EXPECT_EQ(onlooker.PixelAt({499, 195}), 0x0000FFU);
}

TEST_F(X11WindowTest, AChangeOfSomeLinesIsShownByCommitAndNotBefore) {
    panel.FillAll(0xFFFFFF);
    panel.Appear(onlooker);
    panel.Fill(0xFF0000, 10, 20);
    panel.Fill(0x00FF00, 40, 41);
    EXPECT_EQ(onlooker.PixelAt({120, 60}), 0xFFFFFFU);
    panel.Window().Commit();
    onlooker.WaitFor([&] { return onlooker.PixelAt({120, 60}) == 0xFF0000; }, "the change");
    const std::vector<std::pair<int, std::uint32_t>> lines{{0, 0xFFFFFF},  {9, 0xFFFFFF},
                                                           {19, 0xFF0000}, {20, 0xFFFFFF},
                                                           {40, 0x00FF00}, {41, 0xFFFFFF}};
    for (const auto& [line, colour] : lines)
        EXPECT_EQ(onlooker.PixelAt({120, 50 + line}), colour) << line;
}

TEST_F(X11WindowTest, AWindowThatIsLargerThanItsContentShowsTheContentOnce) {
    panel.FillAll(0x00FF00);
    panel.Appear(onlooker);
    onlooker.Configure(panel.Id(), {100, 50, 600, 300});
    RunUntilTold(1);
    EXPECT_EQ(panel.told.back(), "content 100 50 600 300");
    panel.Fill(0xFF0000, 0, 73);
    panel.RunUntil(
        onlooker,
        [&] {
            return onlooker.PixelAt({100, 50}) == 0xFF0000;
        },
        "the content");
    EXPECT_EQ(onlooker.PixelAt({439, 122}), 0xFF0000U);
    EXPECT_EQ(onlooker.PixelAt({440, 122}), 0xFFFFFFU);
    EXPECT_EQ(onlooker.PixelAt({100, 123}), 0xFFFFFFU);
}

TEST_F(X11WindowTest, TheWheelIsNoButton) {
    panel.Appear(onlooker);
    onlooker.MoveTo({110, 70});
    const std::vector<std::pair<int, std::string>> steps{{4, "wheel 10 20 0 -1"},
                                                         {5, "wheel 10 20 0 1"},
                                                         {6, "wheel 10 20 -1 0"},
                                                         {7, "wheel 10 20 1 0"}};
    for (const auto& [button, line] : steps) {
        onlooker.Press(button);
        onlooker.MoveTo({111, 71});
        onlooker.MoveTo({110, 70});
        onlooker.Release(button);
        RunUntilTold(1);
        EXPECT_EQ(panel.told, Lines{line});
        panel.told.clear();
    }
    for (const int other : {2, 3}) {
        onlooker.Press(other);
        onlooker.Release(other);
    }
    panel.RunFor(20ms);
    EXPECT_EQ(panel.told, Lines());
}

TEST_F(X11WindowTest, APressHoldsThePointerUntilItsReleaseWhereverThatIs) {
    panel.Appear(onlooker);
    onlooker.MoveTo({110, 70});
    panel.RunFor(10ms);
    onlooker.Press(1);
    RunUntilTold(1);
    onlooker.MoveTo({112, 70});
    RunUntilTold(2);
    // Motions that are taken in together come as the last of them; one that ends where it began is
    // none.
    onlooker.MoveTo({500, 400});
    onlooker.MoveTo({600, 500});
    RunUntilTold(3);
    onlooker.MoveTo({601, 500});
    onlooker.MoveTo({600, 500});
    panel.RunFor(20ms);
    onlooker.Release(1);
    RunUntilTold(4);
    onlooker.MoveTo({110, 70});
    panel.RunFor(20ms);
    EXPECT_EQ(panel.told, (Lines{"press 10 20", "move 12 20", "move 500 450", "release 500 450"}));
}

TEST_F(X11WindowTest, AWindowThatVanishesWhileItIsHeldIsReleased) {
    panel.Appear(onlooker);
    onlooker.MoveTo({110, 70});
    onlooker.Press(1);
    RunUntilTold(1);
    panel.Vanish(onlooker);
    RunUntilTold(2);
    EXPECT_EQ(panel.told, (Lines{"press 10 20", "release 10 20"}));
    onlooker.Release(1);
    panel.RunFor(20ms);
    EXPECT_EQ(panel.told.size(), 2U);
}

TEST_F(X11WindowTest, ADragMovesByThePointersWayWhileTheProgramLives) {
    panel.Appear(onlooker);
    panel.onPress = [&](Point at) {
        panel.Window().BeginDrag({content.x + at.x, content.y + at.y});
    };
    onlooker.MoveTo({110, 70});
    onlooker.Press(1);
    RunUntilTold(1);
    onlooker.MoveTo({117, 74});
    panel.RunUntil(
        onlooker, [&] { return onlooker.ContentOf(panel.Id()).x == 107; }, "the drag");
    panel.Resize({340, 146});
    onlooker.MoveTo({147, 81});
    onlooker.Release(1);
    panel.RunUntil(
        onlooker, [&] { return panel.told.back() == "release 10 20"; }, "the end");
    EXPECT_EQ(onlooker.ContentOf(panel.Id()), (Rect{137, 61, 340, 146}));
    EXPECT_EQ(panel.told[panel.told.size() - 2], "content 137 61 340 146");
    onlooker.MoveTo({300, 300});
    panel.RunFor(300ms);
    EXPECT_EQ(onlooker.ContentOf(panel.Id()), (Rect{137, 61, 340, 146}));
    EXPECT_EQ(panel.told.back(), "release 10 20");
}

TEST_F(X11WindowTest, OutsideChangesAreToldAndOwnOnesAreNot) {
    panel.Appear(onlooker);
    for (int rows = 2; rows <= 9; ++rows) {
        panel.Resize({340, 73 * rows});
        panel.Round();
    }
    panel.Window().SetPosition({20, 30});
    panel.RunFor(500ms);
    EXPECT_EQ(panel.told, Lines());
    EXPECT_EQ(onlooker.ContentOf(panel.Id()), (Rect{20, 30, 340, 657}));
    onlooker.Configure(panel.Id(), {30, 40, 500, 300});
    RunUntilTold(1);
    EXPECT_EQ(panel.told, Lines{"content 30 40 500 300"});
    // Places while it is withdrawn are nobody's wish, and the next map is at the wanted place.
    panel.Vanish(onlooker);
    onlooker.Configure(panel.Id(), {1, 2, 500, 300});
    panel.RunFor(20ms);
    panel.Appear(onlooker);
    panel.RunFor(300ms);
    EXPECT_EQ(panel.told.size(), 1U);
    EXPECT_EQ(onlooker.ContentOf(panel.Id()), (Rect{30, 40, 500, 300}));
}

TEST_F(X11WindowTest, AnOutsideMoveDoesNotUndoAResizeThatWaitsForCommit) {
    panel.Appear(onlooker);
    panel.RunFor(300ms);
    panel.onContent = [&](const Rect& told) {
        if (told.height == 73)
            panel.Resize({340, 146});
    };
    // Both are waiting when the owner, told of the first, changes its size.
    onlooker.Configure(panel.Id(), {110, 50, 340, 73});
    onlooker.Configure(panel.Id(), {120, 50, 340, 73});
    panel.RunFor(400ms);
    EXPECT_EQ(onlooker.ContentOf(panel.Id()), (Rect{120, 50, 340, 146}));
    EXPECT_EQ(panel.told, (Lines{"content 110 50 340 73", "content 120 50 340 146"}));
}

TEST_F(X11WindowTest, ClosesOnRequestAndAnswersPings) {
    panel.Appear(onlooker);
    const auto protocols = onlooker.Atom("WM_DELETE_WINDOW");
    onlooker.Send(panel.Id(), panel.Id(), "WM_PROTOCOLS", {onlooker.Atom("WM_TAKE_FOCUS"), 0});
    onlooker.Send(panel.Id(), panel.Id(), "WM_PROTOCOLS", {protocols, 0});
    RunUntilTold(1);
    EXPECT_EQ(panel.told, Lines{"close"});
    onlooker.Watch(onlooker.Root());
    onlooker.Send(panel.Id(), panel.Id(), "WM_PROTOCOLS",
                  {onlooker.Atom("_NET_WM_PING"), 77, panel.Id()});
    panel.RunUntil(
        onlooker, [&] { return onlooker.Happened() == Lines{"WM_PROTOCOLS _NET_WM_PING 77"}; },
        "the answer");
}

TEST_F(X11WindowTest, TheIconIsDrawnAnewWhenTheContentChanged) {
    panel.FillAll(0x00AA00);
    panel.Appear(onlooker);
    onlooker.Watch(panel.Id());
    for (const std::uint32_t colour : {0x00AA00U, 0xAA0000U}) {
        panel.FillAll(colour);
        panel.Window().UpdateDockTile();
        panel.Round();
        panel.Window().UpdateDockTile();
        panel.RoundTrip();
        EXPECT_EQ(onlooker.Happened(), Lines{"property _NET_WM_ICON"});
        const auto icon = onlooker.Words(panel.Id(), "_NET_WM_ICON");
        ASSERT_EQ(icon.size(), 2U + 48 * 48 + 2 + 32 * 32);
        EXPECT_EQ(icon[2 + 24 * 48 + 24], 0xFF000000 | colour);
        EXPECT_EQ(icon[2], 0U);
    }
}

TEST(X11WindowOnOtherDisplaysTest, ColoursAreConvertedForASixteenBitScreen) {
    const XServer server("640x480x16");
    const Onlooker onlooker;
    TestPanel panel({10, 10, 341, 73});
    panel.FillAll(0xFF8000);
    panel.Appear(onlooker);
    EXPECT_EQ(onlooker.PixelAt({10, 10}), 0xFC00U);
    panel.Fill(0x0000FF, 5, 6);
    panel.RunUntil(
        onlooker,
        [&] {
            return onlooker.PixelAt({350, 15}) == 0x001F;
        },
        "the change");
    EXPECT_EQ(onlooker.PixelAt({350, 16}), 0xFC00U);
}

} // namespace
