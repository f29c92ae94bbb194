#include "platform/x11/X11Window.h"

#include "tests/support/WindowOnServer.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <gtest/gtest.h>
#include <string>

// The window on a bare X server: what nobody sees who looks at the program from outside only.

namespace kqu::platform {
namespace {

TEST_F(X11WindowTest, ItsPixelsAreThereAtOnceWhileTheProgramSleeps) {
    window->Show();
    window->Commit();
    Await([this] { return IsViewable(); }, false);
    EXPECT_EQ(PixelAt(439, 122), 0x3366CCU);
    CoverAndExpose();
    EXPECT_EQ(PixelAt(200, 100), 0x3366CCU);

    Resize({400, 146});
    Fill(0x00FF00, 0, 73);
    Fill(0x0000FF, 73, 146);
    EXPECT_EQ(PixelAt(120, 60), 0x3366CCU) << "nothing before the commit";
    window->Commit();
    Await([this] { return Place().height == 146; }, false);
    EXPECT_EQ(PixelAt(499, 122), 0x00FF00U);
    EXPECT_EQ(PixelAt(499, 195), 0x0000FFU);
    Fill(0xFF0000, 10, 20);
    RoundTrip();
    EXPECT_EQ(PixelAt(120, 69), 0xFF0000U);
    EXPECT_EQ(PixelAt(120, 70), 0x00FF00U);
}

TEST_F(X11WindowTest, WhatIsExposedInMidUpdateIsTheFormerFrame) {
    Appear();
    const auto shown = [this] {
        return Words{PixelAt(200, 51), PixelAt(200, 85), PixelAt(200, 122)};
    };
    int exposures = 0;
    inMidUpdate = [&] {
        // The server has what was put until now.
        static_cast<void>(system->Collect(*this));
        static_cast<void>(system->PointerPosition());
        CoverAndExpose();
        EXPECT_EQ(shown(), Words(3, 0x3366CC));
        ++exposures;
    };
    Fill(0x00FF00, 0, content.height);
    window->Commit();
    EXPECT_GT(exposures, 0);
    inMidUpdate = nullptr;
    RoundTrip();
    EXPECT_EQ(shown(), Words(3, 0x00FF00));
}

TEST_F(X11WindowTest, WhatAManagerReadsIsWrittenBeforeWhatItActsOn) {
    window->SetTitle(" Layout");
    window->SetTitle("Task");
    window->SetAlpha(0.0F);
    window->Show();
    RunFor(20ms);
    EXPECT_FALSE(IsViewable()) << "it is transparent";
    ExpectBefore({"_NET_WM_NAME", "WM_NAME"}, Atom("_NET_WM_WINDOW_OPACITY"));
    for (int round = 0; round < 2; ++round) {
        Appear();
        ExpectBefore({"WM_NORMAL_HINTS", "WM_HINTS", "_NET_WM_STATE", "_NET_WM_WINDOW_TYPE",
                      "_NET_WM_USER_TIME"},
                     mapped);
        const Words hints = PropertyOf(XCB_ATOM_WM_HINTS);
        EXPECT_EQ(Words({hints.at(0) & 1U, hints.at(1)}), (Words{1, 0})) << "it takes no focus";
        window->Hide();
        RoundTrip();
        EXPECT_FALSE(IsViewable());
    }
    Appear();
    static_cast<void>(Happened());
    Resize({340, 146});
    RoundTrip();
    ExpectBefore({"WM_NORMAL_HINTS"}, sized + 146);
}

TEST_F(X11WindowTest, OutsideChangesAreToldAndTheOwnBurstIsNot) {
    Appear();
    for (int rows = 2; rows <= 9; ++rows) {
        Resize({340, 73 * rows});
        Round();
    }
    window->SetPosition({20, 30});
    RunFor(500ms);
    EXPECT_TRUE(told.empty());
    EXPECT_EQ(Place(), (Rect{20, 30, 340, 657}));
    // The user sizes the window by its grip alone.
    Configure({30, 40, 400, 700});
    Await([&] { return Place() == Rect{30, 40, 340, 657} && !told.empty(); });
    EXPECT_EQ(told, (std::vector<Rect>{{30, 40, 340, 657}}));
}

TEST_F(X11WindowTest, AMinimisedWindowComesBackMinimised) {
    Appear();
    const auto initialState = [&] { return PropertyOf(XCB_ATOM_WM_HINTS)[2]; };
    EXPECT_EQ(PropertyOf(Atom("_MOTIF_WM_HINTS"))[1], 4U | 8U) << "move and minimise";
    for (const std::uint32_t state : {3U, 1U}) {
        SetState("WM_STATE", Atom("WM_STATE"), {state, 0});
        RoundTrip();
        RoundTrip();
        Await([&] { return window->IsCollapsed() == (state == 3); });
        window->SetAlpha(0.0F);
        RoundTrip();
        SetState("WM_STATE", Atom("WM_STATE"), {0, 0});
        Await([&] { return !window->IsCollapsed(); });
        Appear();
        EXPECT_EQ(initialState(), state);
        const Words states = PropertyOf(Atom("_NET_WM_STATE"));
        EXPECT_EQ(std::count(states.begin(), states.end(), Atom("_NET_WM_STATE_SKIP_TASKBAR")),
                  state == 3 ? 0 : 1);
    }
}

TEST_F(X11WindowTest, GivesBackAMaximisedStateAndAttention) {
    Manage();
    Appear();
    const xcb_atom_t across = Atom("_NET_WM_STATE_MAXIMIZED_HORZ"),
                     up = Atom("_NET_WM_STATE_MAXIMIZED_VERT"),
                     attention = Atom("_NET_WM_STATE_DEMANDS_ATTENTION");
    for (const auto& [state, given] :
         {std::pair{up, Words{0, across, up}}, {attention, {0, attention, 0}}}) {
        SetState("_NET_WM_STATE", XCB_ATOM_ATOM, {state});
        AwaitMessage("_NET_WM_STATE", given);
    }
}

TEST_F(X11WindowTest, WhatOtherClientsMakeUpOrDestroyIsHeard) {
    Appear();
    xcb_configure_notify_event_t madeUp{};
    madeUp.response_type = XCB_CONFIGURE_NOTIFY;
    madeUp.event = madeUp.window = id;
    madeUp.x = 100, madeUp.y = 50, madeUp.width = 60000; // and no height
    xcb_send_event(looker.get(), 0, id, 0, reinterpret_cast<const char*>(&madeUp));
    RunFor(100ms);
    Fill(0x00FF00, 0, content.height);
    Await([this] { return PixelAt(200, 100) == 0x00FF00; });
    xcb_destroy_window(looker.get(), id);
    Sync();
    Await([this] { return closes == 1; });
    EXPECT_TRUE(told.empty());
}

TEST_F(X11WindowTest, WhileAnotherClientHoldsTheServerTheProgramGoesOn) {
    const xcb_atom_t state = Atom("WM_STATE");
    Appear();
    RunFor(300ms);
    // A manager that takes the window into a frame and lets nobody in meanwhile: the place has to
    // be asked for as well.
    const xcb_window_t frame = xcb_generate_id(looker.get());
    xcb_create_window(looker.get(), 0, frame, root, 90, 40, 400, 400, 0, 1, 0, 0, nullptr);
    xcb_map_window(looker.get(), frame);
    xcb_reparent_window(looker.get(), id, frame, 0, 0);
    xcb_grab_server(looker.get());
    Configure({7, 8, 340, 73});
    xcb_configure_notify_event_t changed{};
    changed.response_type = XCB_CONFIGURE_NOTIFY;
    changed.window = root;
    xcb_send_event(looker.get(), 0, root, XCB_EVENT_MASK_STRUCTURE_NOTIFY,
                   reinterpret_cast<const char*>(&changed));
    for (const std::uint32_t value : {3U, 1U, 3U})
        xcb_change_property(looker.get(), XCB_PROP_MODE_REPLACE, id, state, state, 32, 1, &value);
    Sync();
    RunFor(600ms);
    EXPECT_FALSE(window->IsCollapsed()) << "nobody could tell";
    EXPECT_TRUE(told.empty());
    // More than any socket holds.
    for (std::uint32_t colour = 1; colour <= 100; ++colour) {
        Fill(colour, 0, content.height);
        Round();
    }
    xcb_ungrab_server(looker.get());
    Sync();
    Await([this] { return PixelAt(200, 100) == 100; });
    Await([this] { return window->IsCollapsed() && !told.empty(); });
    EXPECT_EQ(told, (std::vector<Rect>{{97, 48, 340, 73}}));
}

TEST_F(X11WindowTest, AHandedOverDragIsCancelledWhenTheReleaseComesHere) {
    Manage();
    const xcb_window_t manager = xcb_generate_id(looker.get());
    xcb_create_window(looker.get(), 0, manager, root, -1, -1, 1, 1, 0, 0, 0, 0, nullptr);
    const xcb_atom_t check = Atom("_NET_SUPPORTING_WM_CHECK"), move = Atom("_NET_WM_MOVERESIZE");
    for (const xcb_window_t named : {root, manager})
        xcb_change_property(looker.get(), 0, named, check, XCB_ATOM_WINDOW, 32, 1, &manager);
    xcb_change_property(looker.get(), 0, root, Atom("_NET_SUPPORTED"), XCB_ATOM_ATOM, 32, 1, &move);
    Appear();
    ASSERT_EQ(std::system("xdotool mousemove 210 85 mousedown 1"), 0);
    Await([this] { return pressedAt == Point{110, 35}; });
    window->BeginDrag({210, 85});
    RunFor(100ms);
    EXPECT_EQ(pressedAt, (Point{110, 35}));
    ASSERT_EQ(std::system("xdotool mousemove 215 85"), 0);
    AwaitMessage("_NET_WM_MOVERESIZE", {210, 85, 8, 1, 1});
    Configure({105, 50, 340, 73});
    RunFor(100ms);
    EXPECT_TRUE(system->PrimaryButtonDown());
    // It goes on and the pointer stays: that is a compositor's by now, and so is the release.
    Configure({150, 60, 340, 73});
    Await([this] { return !system->PrimaryButtonDown(); });
    // This manager does not take hold of the pointer.
    ASSERT_EQ(std::system("xdotool mouseup 1"), 0);
    AwaitMessage("_NET_WM_MOVERESIZE", {215, 85, 11, 1, 1});
    EXPECT_EQ(Place(), (Rect{150, 60, 340, 73}));
}

TEST_F(X11WindowTest, WhenTheMainMonitorChangesItStaysWhereItIsOnTheGlass) {
    Appear();
    ASSERT_EQ(std::system("xrandr --setmonitor '*main' 800/200x600/150+200+100 screen"), 0);
    Await([this] { return told == std::vector<Rect>{{-100, -50, 340, 73}}; });
    EXPECT_EQ(Place(), content);
    EXPECT_EQ(system->Screens().front(), (Rect{0, 0, 800, 600}));
    // Where only another monitor is left, and no manager, it goes there.
    ASSERT_EQ(std::system("xrandr --delmonitor main && xrandr --setmonitor '*left' "
                          "400/100x200/50+600+500 screen"),
              0);
    Await([this] { return Place() == Rect{600, 500, 340, 73}; });
    EXPECT_EQ(told.back(), (Rect{0, 0, 340, 73}));
}

TEST_F(X11WindowTest, FollowsTheScaleOfTheDesktopAtTheSameLogicalPlace) {
    Appear();
    const auto setResolution = [this](const std::string& resources) {
        xcb_change_property(looker.get(), XCB_PROP_MODE_REPLACE, root, XCB_ATOM_RESOURCE_MANAGER,
                            XCB_ATOM_STRING, 8, static_cast<std::uint32_t>(resources.size()),
                            resources.data());
        Sync();
    };
    setResolution("Xft.dpi:\t192\n");
    Await([this] { return Place() == Rect{200, 100, 680, 146}; });
    EXPECT_EQ(system->Screens().front(), (Rect{0, 0, 512, 384}));
    Fill(0x00FF00, 0, extent.height);
    Await([this] { return PixelAt(879, 245) == 0x00FF00; });
    ASSERT_EQ(std::system("xdotool mousemove 421 171 mousedown 1"), 0);
    Await([this] { return pressedAt == Point{110, 35}; });
    EXPECT_EQ(system->PointerPosition(), (Point{210, 85}));
    ASSERT_EQ(std::system("xdotool mouseup 1"), 0);
    window->SetAlpha(0.0F);
    RoundTrip();
    Appear();
    EXPECT_EQ(Place(), (Rect{200, 100, 680, 146}));
    // A manager of settings that came since goes first.
    std::string settings(
        "\0\0\0\0\0\0\0\0\1\0\0\0\0\0\x17\0Gdk/WindowScalingFactor\0\0\0\0\0\1\0\0\0", 48);
    const xcb_window_t manager = xcb_generate_id(looker.get());
    xcb_create_window(looker.get(), 0, manager, root, -1, -1, 1, 1, 0, 0, 0, 0, nullptr);
    xcb_set_selection_owner(looker.get(), manager, Atom("_XSETTINGS_S0"), XCB_CURRENT_TIME);
    const auto publish = [&, name = Atom("_XSETTINGS_SETTINGS")] {
        xcb_change_property(looker.get(), 0, manager, name, name, 8, 48, settings.data());
        Sync();
    };
    publish();
    setResolution("Xft.dpi:\t288\n");
    Await([this] { return Place() == content; });
    settings[44] = 2;
    publish();
    Await([this] { return Place() == Rect{200, 100, 680, 146}; });
    EXPECT_TRUE(told.empty());
}

TEST_F(X11WindowTest, ABorderIsNoPartOfTheContent) {
    const std::uint32_t border = 3;
    xcb_configure_window(looker.get(), id, XCB_CONFIG_WINDOW_BORDER_WIDTH, &border);
    Sync();
    RoundTrip();
    Appear();
    // Place is that of the border's corner.
    Await([this] { return Place() == Rect{97, 47, 340, 73}; });
    EXPECT_EQ(ToldAfterMovesTo(30).y, 33);
}

struct X11WindowOfSixteenBits : X11WindowTest {
    X11WindowOfSixteenBits() : X11WindowTest("16") {}
};

TEST_F(X11WindowOfSixteenBits, ShowsTheNearestColoursThatTheScreenHas) {
    Appear();
    for (const auto& [colour, pixel] : {std::pair{0x3366CCU, 0x3339U}, {0xF1F5FAU, 0xEFBEU}}) {
        Fill(colour, 0, content.height);
        RoundTrip();
        EXPECT_EQ(PixelAt(200, 100) & 0xFFFFU, pixel);
    }
}

TEST_F(X11WindowTest, AnswersPingsAndOffersIcons) {
    Manage();
    xcb_client_message_event_t ping{};
    ping.response_type = XCB_CLIENT_MESSAGE;
    ping.format = 32;
    ping.type = Atom("WM_PROTOCOLS");
    const Words data{Atom("_NET_WM_PING"), 12345, id, 6, 7};
    std::memcpy(&ping.data, data.data(), sizeof ping.data);
    ping.window = id;
    xcb_send_event(looker.get(), 0, id, 0, reinterpret_cast<const char*>(&ping));
    AwaitMessage("WM_PROTOCOLS", data);

    window->UpdateDockTile();
    RoundTrip();
    const Words icon = PropertyOf(Atom("_NET_WM_ICON"));
    ASSERT_EQ(icon.size(), 2 + 48 * 48 + 2 + 32 * 32U);
    const std::uint32_t* shown = icon.data();
    for (const std::uint32_t side : {48U, 32U}) {
        EXPECT_EQ(Words(shown, shown + 2), (Words{side, side}));
        // The panel lies across the middle of the icon.
        EXPECT_EQ(shown[2 + side * side / 2 + side / 2], 0xFF3366CC);
        shown += 2 + side * side;
    }
}

} // namespace
} // namespace kqu::platform
