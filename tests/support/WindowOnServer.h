#pragma once

#include "platform/CDeleter.h"
#include "platform/x11/PointArithmetic.h"
#include "platform/x11/X11Window.h"
#include "platform/x11/X11WindowSystem.h"
#include "tests/support/ServerProcess.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <optional>
#include <poll.h>
#include <utility>
#include <vector>

namespace kqu::platform {

using namespace std::chrono_literals;
using Words = std::vector<std::uint32_t>;

inline constexpr Rect content{100, 50, 340, 73};
inline constexpr std::uint32_t mapped = 1U << 30, sized = 1U << 31;

template <class T>
using Owned = CPointer<T, std::free>;

/// A window whose owner fills it and records the places that it is told, and a client of its own
/// that sees what anybody can see and does what a manager does.
class X11WindowTest : public testing::Test, public EventQueue, public NativeWindowOwner {
  protected:
    explicit X11WindowTest(const std::string& depth = "24")
        : server("Xvfb -displayfd 1 -nolisten tcp -ac -noreset -screen 0 1024x768x" + depth) {
        setenv("DISPLAY", (":" + server.Told()).c_str(), 1);
        looker.reset(xcb_connect(nullptr, nullptr));
        root = xcb_setup_roots_iterator(xcb_get_setup(looker.get())).data->root;
        system = X11WindowSystem::Open();
        NativeWindowSettings settings;
        settings.content = content;
        settings.globalFloating = settings.minimizeButton = true;
        window = system->MakeWindow(settings, *this);
        id = static_cast<X11Window&>(*window).Id();
        Resize(content.Extent());
        Fill(0x3366CC, 0, content.height);
        RoundTrip();
        const std::uint32_t events =
            XCB_EVENT_MASK_PROPERTY_CHANGE | XCB_EVENT_MASK_STRUCTURE_NOTIFY;
        xcb_change_window_attributes(looker.get(), id, XCB_CW_EVENT_MASK, &events);
        Sync();
    }

    // The owner.
    void Resize(Size size) { Resize(size, size); }
    void Resize(Size size, Size logical) {
        extent = size;
        pixels.assign(static_cast<std::size_t>(size.width * size.height), 0xFFFFFF);
        window->SetSize(logical);
        window->Present({0, 0, logical.width, logical.height});
    }
    void Fill(std::uint32_t colour, int first, int last) {
        const auto begin = pixels.begin();
        std::fill(begin + first * extent.width, begin + last * extent.width, colour);
        window->Present({0, first, extent.width, last - first});
    }
    void Round() {
        window->Commit();
        static_cast<void>(system->Collect(*this));
        for (const auto& delivery : std::exchange(queue, {}))
            delivery();
        window->Commit();
    }
    /// Returns when the server has done all that the window asked for.
    void RoundTrip() {
        Round();
        static_cast<void>(system->Collect(*this));
        static_cast<void>(system->PointerPosition());
    }
    void RunFor(std::chrono::milliseconds time) {
        const auto end = std::chrono::steady_clock::now() + time;
        while (std::chrono::steady_clock::now() < end) {
            Round();
            pollfd watch = system->Watch();
            poll(&watch, 1, 2);
        }
    }
    /// Waits with the program, or without it.
    void Await(const std::function<bool()>& condition, bool programRuns = true) {
        const auto end = std::chrono::steady_clock::now() + 20s;
        while (!condition()) {
            ASSERT_LT(std::chrono::steady_clock::now(), end);
            if (programRuns)
                RunFor(2ms);
        }
    }
    void Appear() {
        window->Show();
        window->SetAlpha(1.0F);
        Await([this] { return IsViewable(); });
    }

    // The looker.
    template <auto TakeReply, class Cookie>
    auto Answer(Cookie cookie) const {
        auto* reply = TakeReply(looker.get(), cookie, nullptr);
        return Owned<std::remove_pointer_t<decltype(reply)>>(reply);
    }
    void Sync() const { Answer<xcb_get_input_focus_reply>(xcb_get_input_focus(looker.get())); }
    xcb_atom_t Atom(const char* name) const {
        const auto length = static_cast<std::uint16_t>(std::strlen(name));
        return Answer<xcb_intern_atom_reply>(xcb_intern_atom(looker.get(), 0, length, name))->atom;
    }
    Words PropertyOf(xcb_atom_t property) const {
        const auto reply = Answer<xcb_get_property_reply>(
            xcb_get_property(looker.get(), 0, id, property, XCB_ATOM_ANY, 0, 100'000));
        const auto* words = static_cast<const std::uint32_t*>(xcb_get_property_value(reply.get()));
        return {words, words + reply->value_len};
    }
    Rect Place() const {
        const auto size = Answer<xcb_get_geometry_reply>(xcb_get_geometry(looker.get(), id));
        return {size->x, size->y, size->width, size->height};
    }
    bool IsViewable() const {
        const auto asked = xcb_get_window_attributes(looker.get(), id);
        return Answer<xcb_get_window_attributes_reply>(asked)->map_state == XCB_MAP_STATE_VIEWABLE;
    }
    std::uint32_t PixelAt(std::int16_t x, std::int16_t y) const {
        const auto image = Answer<xcb_get_image_reply>(
            xcb_get_image(looker.get(), XCB_IMAGE_FORMAT_Z_PIXMAP, root, x, y, 1, 1, ~0U));
        std::uint32_t pixel = 0;
        std::memcpy(&pixel, xcb_get_image_data(image.get()), sizeof pixel);
        return pixel & 0xFFFFFF;
    }
    void CoverAndExpose() const {
        const xcb_window_t cover = xcb_generate_id(looker.get());
        const std::uint32_t background = 0x010203;
        xcb_create_window(looker.get(), 0, cover, root, 90, 40, 400, 400, 0, 1, 0,
                          XCB_CW_BACK_PIXEL, &background);
        xcb_map_window(looker.get(), cover);
        EXPECT_EQ(PixelAt(200, 100), background);
        xcb_destroy_window(looker.get(), cover);
    }
    void Configure(const Rect& to) const {
        const int values[] = {to.x, to.y, to.width, to.height};
        xcb_configure_window(looker.get(), id, 0x0F, values);
        Sync();
    }
    /// From here on the looker hears what the window sends to its manager.
    void Manage() const {
        const std::uint32_t events = XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY;
        xcb_change_window_attributes(looker.get(), root, XCB_CW_EVENT_MASK, &events);
    }
    void AwaitMessage(const char* type, const Words& data) {
        Await([&, name = Atom(type)] {
            const Owned<xcb_generic_event_t> event{xcb_poll_for_event(looker.get())};
            const void* any = event.get();
            const auto* message = static_cast<const xcb_client_message_event_t*>(any);
            return event && (event->response_type & 0x7F) == XCB_CLIENT_MESSAGE &&
                   message->type == name &&
                   std::equal(data.begin(), data.end(), message->data.data32);
        });
    }
    void SetState(const char* property, xcb_atom_t type, const Words& values) const {
        xcb_change_property(looker.get(), XCB_PROP_MODE_REPLACE, id, Atom(property), type, 32,
                            static_cast<std::uint32_t>(values.size()), values.data());
        Sync();
    }
    /// The first place that is told when somebody goes on moving the window.
    Rect ToldAfterMovesTo(int y) {
        int x = 30;
        Await([&] {
            Configure({++x, y, 340, 73});
            RunFor(300ms);
            return !told.empty();
        });
        return told.front();
    }
    /// What happened to the window since: atoms of properties, `mapped`, and `sized` + height.
    Words Happened() const {
        Sync();
        Words all;
        while (const Owned<xcb_generic_event_t> event{xcb_poll_for_event(looker.get())}) {
            const void* any = event.get();
            const auto* property = static_cast<const xcb_property_notify_event_t*>(any);
            const auto* configure = static_cast<const xcb_configure_notify_event_t*>(any);
            all.push_back(event->response_type == XCB_PROPERTY_NOTIFY    ? property->atom
                          : event->response_type == XCB_CONFIGURE_NOTIFY ? sized + configure->height
                          : event->response_type == XCB_MAP_NOTIFY       ? mapped
                                                                         : 0);
        }
        return all;
    }
    /// Whether each of these comes before that, and that does come.
    void ExpectBefore(const std::vector<const char*>& properties, std::uint32_t then) const {
        const Words happened = Happened();
        const auto last = std::find(happened.begin(), happened.end(), then);
        EXPECT_NE(last, happened.end());
        for (const char* name : properties)
            EXPECT_NE(std::find(happened.begin(), last, Atom(name)), last) << name;
    }

    void Post(std::function<void()> delivery) override { queue.push_back(std::move(delivery)); }
    void ContentChanged(const Rect& to) override { told.push_back(to); }
    void ButtonPressed(Point at) override { pressedAt = at; }
    void ButtonReleased(Point) override {}
    void PointerMoved(Point) override {}
    void WheelTurned(Point, int, int) override {}
    void CloseRequested() override { ++closes; }
    void ScaleChanged() override { Resize(content.Extent() * DeviceScale(), content.Extent()); }
    Size FrameExtent() override { return extent; }
    Frame CurrentFrame(int top, int height) override {
        if (top > 0 && inMidUpdate)
            inMidUpdate();
        return {pixels.data() + static_cast<std::ptrdiff_t>(top) * extent.width, extent.width,
                std::min(height, extent.height - top), extent.width};
    }

    testing_support::ServerProcess server;
    CPointer<xcb_connection_t, xcb_disconnect> looker;
    xcb_window_t root = 0;
    std::unique_ptr<X11WindowSystem> system;
    Words pixels;
    Size extent;
    std::vector<std::function<void()>> queue;
    std::vector<Rect> told;
    std::function<void()> inMidUpdate;
    std::optional<Point> pressedAt;
    int closes = 0;
    std::unique_ptr<NativeWindow> window;
    xcb_window_t id = 0;
};

} // namespace kqu::platform
