#include "tests/support/TestPanel.h"
#include "tests/support/XServer.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
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
    static void TearDownTestSuite() { shared.reset(); }
    static inline std::unique_ptr<XServer> shared;
    /// Made by the first test: one that can't be made fails a test, and not only the suite.
    static XServer& Shared() {
        if (!shared)
            shared = std::make_unique<XServer>();
        return *shared;
    }

    X11WindowManagersTest() {
        server.StartManager(GetParam());
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
    /// On the screen, and in the hands of the manager if there is one.
    void Appear(TestPanel& appearing) {
        appearing.Appear(onlooker);
        const auto isTaken = [&] {
            const auto state = onlooker.Words(appearing.Id(), "WM_STATE");
            return !IsManaged() || (!state.empty() && state.front() == 1);
        };
        appearing.RunUntil(onlooker, isTaken, "the manager to take the window");
    }
    void RunUntilTold(TestPanel& owner, const std::string& line) {
        const auto isTold = [&] {
            return std::find(owner.told.begin(), owner.told.end(), line) != owner.told.end();
        };
        owner.RunUntil(onlooker, isTold, line);
    }
    /// Presses at a point of the content, and has the window dragged from there.
    void StartDrag(Point at) {
        const Rect from = Place();
        panel.onPress = [this, from](Point pressed) {
            panel.Window().BeginDrag({from.x + pressed.x, from.y + pressed.y});
        };
        onlooker.MoveTo({from.x + at.x, from.y + at.y});
        onlooker.Press(1);
        RunUntilTold(panel, "press " + std::to_string(at.x) + ' ' + std::to_string(at.y));
    }
    /// Moves the pointer, to and fro until the manager has taken note.
    void DragTo(Point pointer, const Rect& expected) {
        const auto isThere = [&] { return Place() == expected; };
        onlooker.WaitFor(isThere, "the drag", [&] {
            onlooker.MoveTo({pointer.x - 1, pointer.y});
            onlooker.MoveTo(pointer);
            panel.RunFor(20ms);
        });
    }

    XServer& server = Shared();
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
        Appear(panel);
        panel.RunFor(300ms);
        const Rect given = Place();
        if (place == content) {
            EXPECT_EQ(given, content);
        }
        for (int round = 0; round < 6; ++round) {
            panel.Vanish(onlooker);
            if (round % 2 == 0)
                panel.RunFor(30ms);
            Appear(panel);
            RunUntilAt(given);
            EXPECT_EQ(onlooker.PixelAt({given.x + 330, given.y + 70}), 0x3366CCU);
        }
        panel.RunFor(300ms);
        EXPECT_EQ(Place(), given);
        ExpectFloating();
        EXPECT_EQ(panel.told, Lines()) << "a map is no move of the user";
        panel.Vanish(onlooker);
    }
}

TEST_P(X11WindowManagersTest, APressTellsNoMoveWhereTheManagerMadeNone) {
    // What is told is where the next start begins: it would creep by a title bar each time.
    Appear(panel);
    RunUntilAt(content);
    onlooker.MoveTo({content.x + 10, content.y + 10});
    onlooker.Press(1);
    RunUntilTold(panel, "press 10 10");
    onlooker.Release(1);
    panel.RunFor(300ms);
    EXPECT_EQ(panel.told, (Lines{"press 10 10", "release 10 10"}));
}

TEST_P(X11WindowManagersTest, ABurstOfRowsEndsAtItsLastSizeAndTellsNothing) {
    Appear(panel);
    for (int rows = 2; rows <= 9; ++rows) {
        panel.Resize({340, 73 * rows});
        panel.Fill(0xFFFFFF, 0, 73 * rows - 1);
        panel.Fill(0x000000 + static_cast<std::uint32_t>(rows), 73 * rows - 1, 73 * rows);
        panel.Round();
    }
    RunUntilAt({470, 42, 340, 657});
    panel.RunFor(300ms);
    EXPECT_EQ(Place(), (Rect{470, 42, 340, 657}));
    EXPECT_EQ(onlooker.PixelAt({809, 42 + 656}), 9U);
    EXPECT_EQ(onlooker.PixelAt({470, 42 + 655}), 0xFFFFFFU);
    panel.Resize({340, 73});
    panel.Resize({340, 146});
    panel.Resize({340, 73});
    RunUntilAt(content);
    const auto sleeps = [&] { return !panel.System().Due(); };
    panel.RunUntil(onlooker, sleeps, "idle to mean asleep");
    EXPECT_EQ(Place(), content);
    EXPECT_EQ(panel.told, Lines());
}

TEST_P(X11WindowManagersTest, TakesNoFocus) {
    const auto other = onlooker.MakeWindow({100, 400, 200, 100});
    onlooker.WaitFor([&] { return onlooker.IsViewable(other); }, "the other window");
    onlooker.Send(onlooker.Root(), other, "_NET_ACTIVE_WINDOW", {2, 0, 0, 0, 0});
    const auto active = [&] { return onlooker.Words(onlooker.Root(), "_NET_ACTIVE_WINDOW"); };
    onlooker.WaitFor(
        [&] {
            return !IsManaged() || (onlooker.Focus() == other && active() == std::vector{other});
        },
        "its focus");
    const auto focus = onlooker.Focus();
    const auto activeBefore = active();
    for (int round = 0; round < 2; ++round) {
        Appear(panel);
        panel.Resize({340, 73 * (round + 2)});
        panel.Window().SetTitle("Brackwater Scheduled Tasks");
        panel.Window().SetAlpha(1.0F);
        panel.RunFor(150ms);
        EXPECT_EQ(onlooker.Focus(), focus);
        EXPECT_EQ(active(), activeBefore);
        panel.Vanish(onlooker);
        panel.RunFor(50ms);
        EXPECT_EQ(onlooker.Focus(), focus);
    }
    onlooker.DestroyWindow(other);
}

TEST_P(X11WindowManagersTest, ADragMovesByExactlyThePointersWay) {
    Appear(panel);
    panel.RunFor(300ms);
    StartDrag({12, 20});
    DragTo({470 + 12 + 20, 42 + 20 + 4}, {490, 46, 340, 73});
    // The program lives while the button is held.
    EXPECT_TRUE(panel.System().PrimaryButtonDown());
    panel.FillAll(0x00FF00);
    const auto isShown = [&] { return onlooker.PixelAt({500, 60}) == 0x00FF00; };
    panel.RunUntil(onlooker, isShown, "a change in the middle of the drag");
    DragTo({470 + 12 + 37, 42 + 20 + 11}, {507, 53, 340, 73});
    onlooker.Release(1);
    RunUntilTold(panel, "content 507 53 340 73");
    RunUntilAt({507, 53, 340, 73});
    panel.Round();
    EXPECT_EQ(std::count(panel.told.begin(), panel.told.end(), "press 12 20"), 1);
    EXPECT_EQ(std::count_if(panel.told.begin(), panel.told.end(),
                            [](const std::string& line) { return line.starts_with("release"); }),
              1);
    EXPECT_FALSE(panel.System().PrimaryButtonDown());
    // It is over: the window stays, and comes back to where it was dragged.
    onlooker.MoveTo({200, 300});
    panel.RunFor(100ms);
    panel.Vanish(onlooker);
    Appear(panel);
    panel.RunFor(300ms);
    EXPECT_EQ(Place(), (Rect{507, 53, 340, 73}));
}

TEST_P(X11WindowManagersTest, AClickThatEndsBeforeTheDragBeginsMovesNothing) {
    Appear(panel);
    panel.onPress = [this](Point at) {
        onlooker.Release(1);
        panel.Window().BeginDrag({content.x + at.x, content.y + at.y});
    };
    onlooker.MoveTo({480, 60});
    onlooker.Press(1);
    RunUntilTold(panel, "release 10 18");
    onlooker.MoveTo({700, 500});
    panel.RunFor(300ms);
    EXPECT_EQ(Place(), content);
    EXPECT_EQ(panel.told, (Lines{"press 10 18", "release 10 18"}));
}

TEST_P(X11WindowManagersTest, KnowsWhenItIsCollapsed) {
    panel.Window().ChangeAttributes(8, 0);
    Appear(panel);
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
    Appear(panel);
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
    server.StartManager("");
    panel.Appear(onlooker);
    for (const std::string& manager : {GetParam(), std::string()}) {
        server.StartManager(manager);
        panel.RunFor(300ms);
        RunUntilAt(content);
    }
    panel.Vanish(onlooker);
    panel.Appear(onlooker);
    EXPECT_EQ(Place(), content);
    EXPECT_EQ(panel.told, Lines());
}

/// A manager that gives each window half of the screen and hears of nothing else.
class TilingManager {
  public:
    TilingManager() {
        const std::uint32_t redirect =
            XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY;
        root_ = xcb_setup_roots_iterator(xcb_get_setup(connection_)).data->root;
        xcb_change_window_attributes(connection_, root_, XCB_CW_EVENT_MASK, &redirect);
        xcb_flush(connection_);
    }
    ~TilingManager() { xcb_disconnect(connection_); }
    TilingManager(const TilingManager&) = delete;
    TilingManager& operator=(const TilingManager&) = delete;

    /// How many requests for another size it has heard.
    int refused = 0;

    void Work() {
        while (xcb_generic_event_t* const event = xcb_poll_for_event(connection_)) {
            xcb_map_request_event_t request{};
            std::memcpy(&request, event, sizeof request);
            std::free(event);
            if (request.response_type == XCB_MAP_REQUEST) {
                xcb_configure_window_aux(connection_, request.window, placeAndSize, &tile_);
                xcb_map_window(connection_, request.window);
            } else if (request.response_type == XCB_CONFIGURE_REQUEST) {
                ++refused;
                Refuse(request.window);
            }
        }
        xcb_flush(connection_);
    }

  private:
    static constexpr std::uint16_t placeAndSize = XCB_CONFIG_WINDOW_X | XCB_CONFIG_WINDOW_Y |
                                                  XCB_CONFIG_WINDOW_WIDTH |
                                                  XCB_CONFIG_WINDOW_HEIGHT;

    void Refuse(xcb_window_t window) {
        std::array<char, 32> bytes{};
        xcb_configure_notify_event_t unchanged{};
        unchanged.response_type = XCB_CONFIGURE_NOTIFY;
        unchanged.event = unchanged.window = window;
        unchanged.width = static_cast<std::uint16_t>(tile_.width);
        unchanged.height = static_cast<std::uint16_t>(tile_.height);
        std::memcpy(bytes.data(), &unchanged, sizeof unchanged);
        xcb_send_event(connection_, 0, window, XCB_EVENT_MASK_STRUCTURE_NOTIFY, bytes.data());
    }

    xcb_connection_t* connection_ = xcb_connect(nullptr, nullptr);
    xcb_window_t root_ = 0;
    xcb_configure_window_value_list_t tile_{0, 0, 512, 768, 0, 0, 0};
};

TEST(X11WindowUnderATilingManagerTest, ShowsItsContentRightAndDoesNotQuarrelForEver) {
    const XServer server;
    const Onlooker onlooker;
    TilingManager manager;
    TestPanel panel(content);
    panel.FillAll(0x3366CC);
    // As a panel does that has a mind of its own about its size.
    panel.onContent = [&](const Rect&) {
        panel.Resize({340, 73});
        panel.FillAll(0x00FF00);
    };
    panel.Window().Show();
    const auto runUntil = [&](const std::function<bool()>& condition, const std::string& what) {
        onlooker.WaitFor(condition, what, [&] {
            manager.Work();
            panel.Round();
        });
    };
    runUntil([&] { return onlooker.IsViewable(panel.Id()); }, "the map");
    runUntil([&] { return onlooker.PixelAt({339, 72}) == 0x00FF00; }, "the content");
    runUntil([&] { return onlooker.PixelAt({400, 700}) == 0xFFFFFF; }, "the rest");
    const auto end = std::chrono::steady_clock::now() + 2200ms;
    runUntil([&] { return std::chrono::steady_clock::now() > end; }, "the end");
    EXPECT_EQ(panel.told, Lines{"content 470 42 512 768"});
    // Place and stacking before the map, and the one answer.
    EXPECT_LE(manager.refused, 3);
    EXPECT_FALSE(panel.System().Due());
    EXPECT_EQ(onlooker.PixelAt({340, 72}), 0xFFFFFFU);
    EXPECT_EQ(onlooker.PixelAt({0, 73}), 0xFFFFFFU);
}

} // namespace
