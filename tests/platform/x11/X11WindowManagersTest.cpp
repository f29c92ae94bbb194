#include "tests/support/TestPanel.h"
#include "tests/support/XServer.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <set>

// The window under real window managers, and without one.

namespace {

using namespace kqu::x11test;
using namespace std::chrono_literals;
using kqu::platform::Point;
using kqu::platform::Rect;
using Lines = std::vector<std::string>;

constexpr Rect content{470, 42, 340, 73};

std::string LineOf(const Rect& told) {
    return "content " + std::to_string(told.x) + ' ' + std::to_string(told.y) + ' ' +
           std::to_string(told.width) + ' ' + std::to_string(told.height);
}

struct X11WindowManagersTest : testing::TestWithParam<std::string> {
    static void SetUpTestSuite() { server = std::make_unique<XServer>(); }
    static void TearDownTestSuite() { server.reset(); }
    static inline std::unique_ptr<XServer> server;

    X11WindowManagersTest() {
        server->StartManager(GetParam());
        onlooker.MoveTo({900, 700});
        panel.FillAll(0x3366CC);
    }

    [[nodiscard]] bool IsManaged() const { return !GetParam().empty(); }
    [[nodiscard]] Rect Place() const { return onlooker.ContentOf(panel.Id()); }
    void ExpectFloating() const {
        const Lines states = onlooker.Names(panel.Id(), "_NET_WM_STATE");
        const std::set<std::string> found(states.begin(), states.end());
        EXPECT_EQ(found,
                  (std::set<std::string>{"_NET_WM_STATE_ABOVE", "_NET_WM_STATE_SKIP_TASKBAR"}));
    }
    void RunUntilAt(const Rect& place) {
        panel.RunUntil(
            onlooker, [&] { return Place() == place; }, "the window's place");
    }
    /// Presses at a point of the content, and has the window dragged from there.
    void StartDrag(Point at) {
        const Rect from = Place();
        panel.onPress = [this, from](Point pressed) {
            panel.Window().BeginDrag({from.x + pressed.x, from.y + pressed.y});
        };
        onlooker.MoveTo({from.x + at.x, from.y + at.y});
        panel.RunFor(20ms);
        onlooker.Press(1);
        panel.RunUntil(
            onlooker, [&] { return !panel.told.empty(); }, "the press");
        panel.RunFor(100ms);
    }

    Onlooker onlooker;
    TestPanel panel{content};
};

INSTANTIATE_TEST_SUITE_P(Managers, X11WindowManagersTest,
                         testing::Values("", "openbox", "icewm", "fluxbox"),
                         [](const auto& tested) {
                             return tested.param.empty() ? "none" : tested.param;
                         });

TEST_P(X11WindowManagersTest, ComesBackToItsPlaceAndStaysAbove) {
    // The second place has no room for a title bar: the manager may shift the window, once.
    for (const Rect& place : {content, Rect{3, 2, 340, 73}}) {
        panel.Window().SetPosition(place.Origin());
        panel.Appear(onlooker);
        panel.RunFor(300ms);
        const Rect given = Place();
        if (place == content) {
            EXPECT_EQ(given, content);
        }
        for (int round = 0; round < 6; ++round) {
            panel.Vanish(onlooker);
            if (round % 2 == 0)
                panel.RunFor(50ms);
            panel.Appear(onlooker);
            EXPECT_EQ(onlooker.PixelAt({given.x + 330, given.y + 70}), 0x3366CCU);
            panel.RunFor(50ms);
            EXPECT_EQ(Place(), given);
            ExpectFloating();
        }
        panel.RunFor(300ms);
        EXPECT_EQ(Place(), given);
        EXPECT_EQ(panel.told, Lines()) << "a map is no move of the user";
        panel.Vanish(onlooker);
    }
}

TEST_P(X11WindowManagersTest, RestartsAtTheToldPlaceDriftByNothing) {
    Rect place = content;
    for (int start = 0; start < 4; ++start) {
        TestPanel restarted(place);
        restarted.onContent = [&](const Rect& told) { place = told; };
        restarted.Appear(onlooker);
        restarted.RunFor(50ms);
        EXPECT_EQ(onlooker.ContentOf(restarted.Id()), content);
        onlooker.MoveTo({content.x + 10, content.y + 10});
        onlooker.Press(1);
        restarted.RunUntil(
            onlooker, [&] { return !restarted.told.empty(); }, "the press");
        onlooker.Release(1);
        restarted.RunFor(300ms);
        EXPECT_EQ(restarted.told, (Lines{"press 10 10", "release 10 10"}));
    }
}

TEST_P(X11WindowManagersTest, ABurstOfRowsEndsAtItsLastSizeAndTellsNothing) {
    panel.Appear(onlooker);
    for (int rows = 2; rows <= 9; ++rows) {
        panel.Resize({340, 73 * rows});
        panel.Fill(0xFFFFFF, 0, 73 * rows - 1);
        panel.Fill(0x000000 + static_cast<std::uint32_t>(rows), 73 * rows - 1, 73 * rows);
        panel.Round();
    }
    panel.RunFor(700ms);
    EXPECT_EQ(Place(), (Rect{470, 42, 340, 657}));
    EXPECT_EQ(onlooker.PixelAt({809, 42 + 656}), 9U);
    EXPECT_EQ(onlooker.PixelAt({470, 42 + 655}), 0xFFFFFFU);
    panel.Resize({340, 73});
    panel.Resize({340, 146});
    panel.Resize({340, 73});
    panel.RunFor(500ms);
    EXPECT_EQ(Place(), content);
    EXPECT_EQ(panel.told, Lines());
    EXPECT_FALSE(panel.System().Due());
}

TEST_P(X11WindowManagersTest, TakesNoFocus) {
    const auto other = onlooker.MakeWindow({100, 400, 200, 100});
    onlooker.WaitFor([&] { return onlooker.IsViewable(other); }, "the other window");
    onlooker.Send(onlooker.Root(), other, "_NET_ACTIVE_WINDOW", {2, 0, 0, 0, 0});
    onlooker.WaitFor([&] { return !IsManaged() || onlooker.Focus() == other; }, "its focus");
    const auto focus = onlooker.Focus();
    const auto active = onlooker.Words(onlooker.Root(), "_NET_ACTIVE_WINDOW");
    for (int round = 0; round < 2; ++round) {
        panel.Appear(onlooker);
        panel.Resize({340, 73 * (round + 2)});
        panel.Window().SetTitle("Brackwater Scheduled Tasks");
        panel.Window().SetAlpha(1.0F);
        panel.RunFor(150ms);
        EXPECT_EQ(onlooker.Focus(), focus);
        EXPECT_EQ(onlooker.Words(onlooker.Root(), "_NET_ACTIVE_WINDOW"), active);
        panel.Vanish(onlooker);
        panel.RunFor(50ms);
        EXPECT_EQ(onlooker.Focus(), focus);
    }
    onlooker.DestroyWindow(other);
}

TEST_P(X11WindowManagersTest, ADragMovesByExactlyThePointersWay) {
    panel.Appear(onlooker);
    panel.RunFor(300ms);
    StartDrag({12, 20});
    EXPECT_FALSE(panel.System().Due()) << "the program lives, and has nothing to wait for";
    onlooker.MoveTo({470 + 12 + 20, 42 + 20 + 4});
    panel.RunFor(50ms);
    panel.FillAll(0x00FF00);
    panel.RunFor(20ms);
    onlooker.MoveTo({470 + 12 + 37, 42 + 20 + 11});
    panel.RunFor(50ms);
    onlooker.Release(1);
    RunUntilAt({507, 53, 340, 73});
    panel.RunUntil(
        onlooker,
        [&] {
            return std::count(panel.told.begin(), panel.told.end(), "content 507 53 340 73") > 0;
        },
        "the owner to hear of it");
    EXPECT_EQ(onlooker.PixelAt({507, 53}), 0x00FF00U);
    EXPECT_EQ(std::count(panel.told.begin(), panel.told.end(), "press 12 20"), 1);
    EXPECT_EQ(std::count_if(panel.told.begin(), panel.told.end(),
                            [](const std::string& line) { return line.starts_with("release"); }),
              1);
    EXPECT_FALSE(panel.System().PrimaryButtonDown());
    // It is over: the window stays, and comes back to where it was dragged.
    onlooker.MoveTo({200, 300});
    panel.RunFor(100ms);
    panel.Vanish(onlooker);
    panel.Appear(onlooker);
    panel.RunFor(300ms);
    EXPECT_EQ(Place(), (Rect{507, 53, 340, 73}));
}

TEST_P(X11WindowManagersTest, AClickThatEndsBeforeTheDragBeginsMovesNothing) {
    panel.Appear(onlooker);
    panel.onPress = [this](Point at) {
        onlooker.Release(1);
        panel.Window().BeginDrag({content.x + at.x, content.y + at.y});
    };
    onlooker.MoveTo({480, 60});
    onlooker.Press(1);
    panel.RunFor(200ms);
    onlooker.MoveTo({700, 500});
    panel.RunFor(300ms);
    EXPECT_EQ(Place(), content);
    EXPECT_EQ(panel.told, (Lines{"press 10 18", "release 10 18"}));
}

TEST_P(X11WindowManagersTest, KnowsWhenItIsCollapsed) {
    panel.Window().ChangeAttributes(8, 0);
    panel.Appear(onlooker);
    panel.RunFor(50ms);
    EXPECT_FALSE(panel.Window().IsCollapsed());
    if (!IsManaged())
        return;
    onlooker.Send(onlooker.Root(), panel.Id(), "WM_CHANGE_STATE", {3, 0, 0, 0, 0});
    panel.RunUntil(
        onlooker, [&] { return panel.Window().IsCollapsed(); }, "it to collapse");
    onlooker.Send(onlooker.Root(), panel.Id(), "_NET_ACTIVE_WINDOW", {2, 0, 0, 0, 0});
    panel.RunUntil(
        onlooker, [&] { return !panel.Window().IsCollapsed(); }, "it to expand");
    panel.RunFor(300ms);
    EXPECT_EQ(Place(), content);
    EXPECT_EQ(panel.told, Lines());
}

TEST_P(X11WindowManagersTest, OutsideMovesAndCloseRequestsAreTold) {
    panel.Appear(onlooker);
    panel.RunFor(300ms);
    // With static gravity: the place is that of the content.
    onlooker.Send(onlooker.Root(), panel.Id(), "_NET_MOVERESIZE_WINDOW",
                  {10 | 1 << 8 | 1 << 9 | 2 << 12, 300, 200, 0, 0});
    if (!IsManaged())
        onlooker.Configure(panel.Id(), {300, 200, 340, 73});
    panel.RunUntil(
        onlooker, [&] { return !panel.told.empty(); }, "the owner to hear");
    panel.RunFor(300ms);
    const Rect place = Place();
    EXPECT_NE(place, content);
    EXPECT_EQ(panel.told.back(), LineOf(place));
    panel.told.clear();
    if (!IsManaged())
        return;
    onlooker.Send(onlooker.Root(), panel.Id(), "_NET_CLOSE_WINDOW", {0, 2, 0, 0, 0});
    panel.RunUntil(
        onlooker, [&] { return !panel.told.empty(); }, "the request to close");
    EXPECT_EQ(panel.told, Lines{"close"});
}

TEST_P(X11WindowManagersTest, AManagerThatComesAndGoesMovesNothing) {
    server->StartManager("");
    panel.Appear(onlooker);
    server->StartManager(GetParam());
    panel.RunFor(300ms);
    EXPECT_EQ(Place(), content);
    server->StartManager("");
    panel.RunFor(300ms);
    EXPECT_EQ(Place(), content);
    panel.Vanish(onlooker);
    panel.Appear(onlooker);
    EXPECT_EQ(Place(), content);
    EXPECT_EQ(panel.told, Lines());
}

} // namespace
