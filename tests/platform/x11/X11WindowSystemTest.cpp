#include "platform/loop/SignalSource.h"
#include "tests/support/TestPanel.h"
#include "tests/support/XServer.h"

#include <cstdlib>
#include <fcntl.h>
#include <gtest/gtest.h>

namespace {

using namespace kqu::x11test;
using namespace std::chrono_literals;
using kqu::platform::Point;
using kqu::platform::Rect;
using kqu::platform::X11WindowSystem;
using Rects = std::vector<Rect>;

constexpr Rect content{100, 50, 340, 73};

TEST(X11WindowSystemTest, ThereIsNoWindowSystemWithoutADisplay) {
    for (const char* display : {"", ":64999", "nonsense"}) {
        setenv("DISPLAY", display, 1);
        EXPECT_EQ(X11WindowSystem::Open(), nullptr) << display;
    }
}

TEST(X11WindowSystemTest, TheConnectionIsNotInheritedByCommands) {
    const XServer server;
    const auto system = X11WindowSystem::Open();
    ASSERT_NE(system, nullptr);
    EXPECT_EQ(fcntl(system->Watch().fd, F_GETFD), FD_CLOEXEC);
}

TEST(X11WindowSystemTest, TheMainScreenIsTheOriginOfEverything) {
    const XServer server("1000x600x24");
    const Onlooker onlooker;
    const auto whole = X11WindowSystem::Open();
    EXPECT_EQ(whole->Screens(), (Rects{{0, 0, 1000, 600}}));

    onlooker.SetMonitor("left", {0, 0, 300, 600}, false);
    onlooker.SetMonitor("right", {300, 100, 700, 500}, true);
    TestPanel panel(content);
    // The last is the monitor that the server has of itself.
    EXPECT_EQ(panel.System().Screens(),
              (Rects{{0, 0, 700, 500}, {-300, -100, 300, 600}, {-300, -100, 1000, 600}}));
    panel.Appear(onlooker);
    EXPECT_EQ(onlooker.ContentOf(panel.Id()), (Rect{400, 150, 340, 73}));

    onlooker.MoveTo({410, 170});
    panel.Round();
    EXPECT_EQ(panel.System().PointerPosition(), (Point{110, 70}));
    panel.RunFor(300ms);
    EXPECT_TRUE(panel.told.empty());
    onlooker.Configure(panel.Id(), {500, 250, 340, 73});
    panel.RunUntil(
        onlooker, [&] { return !panel.told.empty(); }, "the move");
    EXPECT_EQ(panel.told, std::vector<std::string>{"content 200 150 340 73"});

    // The main screen changes: the window stays on the glass, its place on the desktop is another.
    onlooker.DeleteMonitor("right");
    onlooker.DeleteMonitor("left");
    panel.RunUntil(
        onlooker, [&] { return panel.told.size() > 1; }, "the change of the screens");
    EXPECT_EQ(panel.told.back(), "content 500 250 340 73");
    EXPECT_EQ(panel.System().Screens(), (Rects{{0, 0, 1000, 600}}));
    EXPECT_EQ(onlooker.ContentOf(panel.Id()), (Rect{500, 250, 340, 73}));
}

TEST(X11WindowSystemTest, ThePointerIsAskedForOncePerCollectAndOnlyThePrimaryButtonCounts) {
    const XServer server;
    const Onlooker onlooker;
    TestPanel panel(content);
    onlooker.MoveTo({10, 20});
    panel.Round();
    EXPECT_EQ(panel.System().PointerPosition(), (Point{10, 20}));
    EXPECT_FALSE(panel.System().PrimaryButtonDown());
    onlooker.MoveTo({30, 40});
    onlooker.Press(5);
    onlooker.Press(1);
    EXPECT_EQ(panel.System().PointerPosition(), (Point{10, 20}));
    EXPECT_FALSE(panel.System().PrimaryButtonDown());
    panel.Round();
    EXPECT_TRUE(panel.System().PrimaryButtonDown());
    EXPECT_EQ(panel.System().PointerPosition(), (Point{30, 40}));
    onlooker.Release(1);
    panel.Round();
    EXPECT_FALSE(panel.System().PrimaryButtonDown());
    onlooker.Release(5);
}

TEST(X11WindowSystemTest, AServerThatIsHeldByAnotherDoesNotHoldTheProgram) {
    const XServer server;
    const Onlooker onlooker;
    TestPanel panel(content);
    onlooker.MoveTo({10, 20});
    panel.RunFor(50ms);
    EXPECT_EQ(panel.System().PointerPosition(), (Point{10, 20}));
    onlooker.MoveTo({30, 40});
    onlooker.HoldServer();
    const auto begin = std::chrono::steady_clock::now();
    for (int round = 0; round < 100; ++round) {
        panel.Round();
        EXPECT_EQ(panel.System().PointerPosition(), (Point{10, 20}));
    }
    EXPECT_LT(std::chrono::steady_clock::now() - begin, 2s);
    onlooker.LetServerGo();
    panel.RunUntil(
        onlooker,
        [&] {
            return panel.System().PointerPosition() == Point{30, 40};
        },
        "the late answer");
}

TEST(X11WindowSystemTest, ADisplayThatGoesAwayIsToldOnceAndEverythingStaysSafe) {
    XServer server;
    const kqu::platform::SignalSource peaceFromBrokenPipes([] {});
    int lost = 0;
    TestPanel panel(content);
    {
        const Onlooker onlooker;
        panel.Appear(onlooker);
        panel.System().OnDisplayLost([&] { ++lost; });
        server.Kill();
    }
    // The writes meet a socket that nobody reads any more.
    for (int round = 0; round < 50; ++round) {
        panel.Resize({340, 73 + round});
        panel.FillAll(static_cast<std::uint32_t>(round));
        panel.Window().SetAlpha(round % 2 == 0 ? 0.0F : 1.0F);
        panel.Window().UpdateDockTile();
        panel.Round();
        static_cast<void>(panel.System().PointerPosition());
    }
    EXPECT_EQ(lost, 1);
    EXPECT_EQ(panel.System().Watch().fd, -1);
    EXPECT_FALSE(panel.System().Due());
    EXPECT_EQ(panel.System().Screens(), (Rects{{0, 0, 1024, 768}}));
}

} // namespace
