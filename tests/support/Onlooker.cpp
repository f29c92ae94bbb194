#include "tests/support/Onlooker.h"

#include "platform/CDeleter.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <gtest/gtest.h>
#include <stdexcept>
#include <sys/uio.h>
#include <thread>
#include <xcb/randr.h>
#include <xcb/xcbext.h>

namespace kqu::x11test {

namespace {
template <class T>
using Reply = platform::CPointer<T, std::free>;

constexpr std::chrono::seconds deadline{20};
constexpr std::chrono::milliseconds pace{2};

xcb_extension_t xtest{"XTEST", 0};

/// XTestFakeInput.
struct FakeInputRequest {
    std::uint8_t majorOpcode = 0;
    std::uint8_t minorOpcode = 0;
    std::uint16_t length = 0;
    std::uint8_t type = 0;
    std::uint8_t detail = 0;
    std::uint8_t pad0[2]{};
    std::uint32_t delay = 0;
    xcb_window_t root = 0;
    std::uint8_t pad1[8]{};
    std::int16_t x = 0;
    std::int16_t y = 0;
    std::uint8_t pad2[7]{};
    std::uint8_t device = 0;
};
static_assert(sizeof(FakeInputRequest) == 36);

/// RRSetMonitor; the library's own function for it can't send a monitor without outputs.
struct SetMonitorRequest {
    std::uint8_t majorOpcode = 0;
    std::uint8_t minorOpcode = 0;
    std::uint16_t length = 0;
    xcb_window_t window = 0;
    xcb_randr_monitor_info_t monitor{};
};
static_assert(sizeof(SetMonitorRequest) == 32);

template <class Request>
void SendRequest(xcb_connection_t* connection, xcb_extension_t& extension, std::uint8_t opcode,
                 Request request) {
    // The library wants two entries of its own in front.
    std::array<iovec, 4> parts{};
    parts[2] = {&request, sizeof request};
    const xcb_protocol_request_t protocol{2, &extension, opcode, 1};
    xcb_send_request(connection, 0, &parts[2], &protocol);
}
} // namespace

Onlooker::Onlooker() {
    int number = 0;
    connection_.reset(xcb_connect(nullptr, &number));
    if (xcb_connection_has_error(connection_.get()) != 0)
        throw std::runtime_error("the display can't be looked at");
    screen_ = xcb_setup_roots_iterator(xcb_get_setup(connection_.get())).data;
}

void Onlooker::WaitFor(const std::function<bool()>& condition, const std::string& what,
                       const std::function<void()>& meanwhile) const {
    const auto end = std::chrono::steady_clock::now() + deadline;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end) {
            ADD_FAILURE() << "waited in vain for " << what;
            return;
        }
        if (meanwhile)
            meanwhile();
        std::this_thread::sleep_for(pace);
    }
}

platform::Rect Onlooker::ContentOf(xcb_window_t window) const {
    auto* const c = connection_.get();
    const Reply<xcb_get_geometry_reply_t> geometry(
        xcb_get_geometry_reply(c, xcb_get_geometry(c, window), nullptr));
    const Reply<xcb_translate_coordinates_reply_t> place(xcb_translate_coordinates_reply(
        c, xcb_translate_coordinates(c, window, Root(), 0, 0), nullptr));
    if (!geometry || !place)
        return {};
    return {place->dst_x, place->dst_y, geometry->width, geometry->height};
}

bool Onlooker::IsViewable(xcb_window_t window) const {
    auto* const c = connection_.get();
    const Reply<xcb_get_window_attributes_reply_t> reply(
        xcb_get_window_attributes_reply(c, xcb_get_window_attributes(c, window), nullptr));
    return reply && reply->map_state == XCB_MAP_STATE_VIEWABLE;
}

std::uint32_t Onlooker::PixelAt(platform::Point onRoot) const {
    auto* const c = connection_.get();
    const Reply<xcb_get_image_reply_t> image(xcb_get_image_reply(
        c,
        xcb_get_image(c, XCB_IMAGE_FORMAT_Z_PIXMAP, Root(), static_cast<std::int16_t>(onRoot.x),
                      static_cast<std::int16_t>(onRoot.y), 1, 1, 0xFFFFFFFF),
        nullptr));
    if (!image)
        return 0xFFFFFFFF;
    std::uint32_t pixel = 0;
    std::memcpy(&pixel, xcb_get_image_data(image.get()), image->depth > 16 ? 4 : 2);
    return image->depth > 16 ? pixel & 0xFFFFFF : pixel & 0xFFFF;
}

xcb_window_t Onlooker::Focus() const {
    auto* const c = connection_.get();
    const Reply<xcb_get_input_focus_reply_t> reply(
        xcb_get_input_focus_reply(c, xcb_get_input_focus(c), nullptr));
    return reply ? reply->focus : 0;
}

std::vector<std::uint8_t> Onlooker::Bytes(xcb_window_t window, const char* property) const {
    auto* const c = connection_.get();
    const Reply<xcb_get_property_reply_t> reply(xcb_get_property_reply(
        c, xcb_get_property(c, 0, window, Atom(property), XCB_GET_PROPERTY_TYPE_ANY, 0, 65536),
        nullptr));
    if (!reply)
        return {};
    const auto* const first = static_cast<std::uint8_t*>(xcb_get_property_value(reply.get()));
    return {first, first + xcb_get_property_value_length(reply.get())};
}

std::vector<std::uint32_t> Onlooker::Words(xcb_window_t window, const char* property) const {
    const auto bytes = Bytes(window, property);
    std::vector<std::uint32_t> words(bytes.size() / 4);
    if (!words.empty())
        std::memcpy(words.data(), bytes.data(), words.size() * 4);
    return words;
}

std::vector<std::string> Onlooker::Names(xcb_window_t window, const char* property) const {
    std::vector<std::string> names;
    for (const xcb_atom_t atom : Words(window, property))
        names.push_back(NameOf(atom));
    return names;
}

std::string Onlooker::Text(xcb_window_t window, const char* property) const {
    const auto bytes = Bytes(window, property);
    return {bytes.begin(), bytes.end()};
}

bool Onlooker::HasManager() const {
    const auto manager = Words(Root(), "_NET_SUPPORTING_WM_CHECK");
    return !manager.empty() && Words(manager.front(), "_NET_SUPPORTING_WM_CHECK") == manager;
}

bool Onlooker::IsListed(xcb_window_t window) const {
    const auto listed = Words(Root(), "_NET_CLIENT_LIST");
    return std::find(listed.begin(), listed.end(), window) != listed.end();
}

xcb_window_t Onlooker::MakeWindow(const platform::Rect& content) const {
    auto* const c = connection_.get();
    // Not one of the first numbers: those may be another window's as soon as we have gone, and a
    // manager that is still busy with this one would mistake it.
    for (int number = 0; number < 1000; ++number)
        static_cast<void>(xcb_generate_id(c));
    const xcb_window_t window = xcb_generate_id(c);
    const std::uint32_t background = 0x010203;
    xcb_create_window(c, XCB_COPY_FROM_PARENT, window, Root(), static_cast<std::int16_t>(content.x),
                      static_cast<std::int16_t>(content.y),
                      static_cast<std::uint16_t>(content.width),
                      static_cast<std::uint16_t>(content.height), 0, XCB_WINDOW_CLASS_INPUT_OUTPUT,
                      XCB_COPY_FROM_PARENT, XCB_CW_BACK_PIXEL, &background);
    xcb_map_window(c, window);
    Sync();
    return window;
}

void Onlooker::DestroyWindow(xcb_window_t window) const {
    xcb_destroy_window(connection_.get(), window);
    Sync();
}

void Onlooker::Touch(xcb_window_t window) const {
    xcb_change_property(connection_.get(), XCB_PROP_MODE_REPLACE, window, Atom("_KQU_TOUCHED"),
                        XCB_ATOM_STRING, 8, 1, "x");
    Sync();
}

void Onlooker::Watch(xcb_window_t window) const {
    const std::uint32_t events =
        XCB_EVENT_MASK_PROPERTY_CHANGE | XCB_EVENT_MASK_STRUCTURE_NOTIFY |
        (window == Root() ? XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY : XCB_EVENT_MASK_NO_EVENT);
    xcb_change_window_attributes(connection_.get(), window, XCB_CW_EVENT_MASK, &events);
    Sync();
}

std::vector<std::string> Onlooker::Happened() {
    Sync();
    std::vector<std::string> lines;
    while (const Reply<xcb_generic_event_t> event{xcb_poll_for_event(connection_.get())}) {
        switch (event->response_type & 0x7F) {
        case XCB_PROPERTY_NOTIFY: {
            xcb_property_notify_event_t property{};
            std::memcpy(&property, event.get(), sizeof property);
            lines.push_back("property " + NameOf(property.atom));
            break;
        }
        case XCB_CONFIGURE_NOTIFY: {
            xcb_configure_notify_event_t place{};
            std::memcpy(&place, event.get(), sizeof place);
            lines.push_back("configure " + std::to_string(place.width) + " " +
                            std::to_string(place.height));
            break;
        }
        case XCB_CLIENT_MESSAGE: {
            xcb_client_message_event_t message{};
            std::memcpy(&message, event.get(), sizeof message);
            lines.push_back(NameOf(message.type) + " " + NameOf(message.data.data32[0]) + " " +
                            std::to_string(message.data.data32[1]));
            break;
        }
        case XCB_MAP_NOTIFY:
            lines.emplace_back("map");
            break;
        case XCB_UNMAP_NOTIFY:
            lines.emplace_back("unmap");
            break;
        default:
            break;
        }
    }
    return lines;
}

void Onlooker::Send(xcb_window_t to, xcb_window_t about, const char* type,
                    const std::vector<std::uint32_t>& words) const {
    xcb_client_message_event_t message{};
    message.response_type = XCB_CLIENT_MESSAGE;
    message.format = 32;
    message.window = about;
    message.type = Atom(type);
    std::copy(words.begin(), words.end(), message.data.data32);
    std::uint32_t mask = 0;
    if (to == Root())
        mask = XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT;
    xcb_send_event(connection_.get(), 0, to, mask, reinterpret_cast<const char*>(&message));
    Sync();
}

void Onlooker::Configure(xcb_window_t window, const platform::Rect& content) const {
    xcb_configure_window_value_list_t values{};
    values.x = content.x;
    values.y = content.y;
    values.width = static_cast<std::uint32_t>(content.width);
    values.height = static_cast<std::uint32_t>(content.height);
    xcb_configure_window_aux(connection_.get(), window,
                             XCB_CONFIG_WINDOW_X | XCB_CONFIG_WINDOW_Y | XCB_CONFIG_WINDOW_WIDTH |
                                 XCB_CONFIG_WINDOW_HEIGHT,
                             &values);
    Sync();
}

void Onlooker::SetMonitor(const char* name, const platform::Rect& area, bool isPrimary) const {
    SetMonitorRequest request;
    request.window = Root();
    xcb_randr_monitor_info_t& monitor = request.monitor;
    monitor.name = Atom(name);
    monitor.primary = isPrimary ? 1 : 0;
    monitor.x = static_cast<std::int16_t>(area.x);
    monitor.y = static_cast<std::int16_t>(area.y);
    monitor.width = static_cast<std::uint16_t>(area.width);
    monitor.height = static_cast<std::uint16_t>(area.height);
    monitor.width_in_millimeters = monitor.height_in_millimeters = 100;
    SendRequest(connection_.get(), xcb_randr_id, XCB_RANDR_SET_MONITOR, request);
    Sync();
}

void Onlooker::DeleteMonitor(const char* name) const {
    xcb_randr_delete_monitor(connection_.get(), Root(), Atom(name));
    Sync();
}

void Onlooker::MoveTo(platform::Point onRoot) const {
    FakeInput(XCB_MOTION_NOTIFY, 0, onRoot);
}

void Onlooker::Press(int button) const {
    FakeInput(XCB_BUTTON_PRESS, button, {});
}

void Onlooker::Release(int button) const {
    FakeInput(XCB_BUTTON_RELEASE, button, {});
}

void Onlooker::FakeInput(std::uint8_t type, int detail, platform::Point onRoot) const {
    constexpr std::uint8_t fakeInput = 2;
    FakeInputRequest request;
    request.type = type;
    request.detail = static_cast<std::uint8_t>(detail);
    request.root = Root();
    request.x = static_cast<std::int16_t>(onRoot.x);
    request.y = static_cast<std::int16_t>(onRoot.y);
    SendRequest(connection_.get(), xtest, fakeInput, request);
    Sync();
}

platform::Point Onlooker::Pointer() const {
    auto* const c = connection_.get();
    const Reply<xcb_query_pointer_reply_t> reply(
        xcb_query_pointer_reply(c, xcb_query_pointer(c, Root()), nullptr));
    return reply ? platform::Point{reply->root_x, reply->root_y} : platform::Point{};
}

xcb_atom_t Onlooker::Atom(const char* name) const {
    auto* const c = connection_.get();
    const Reply<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(
        c, xcb_intern_atom(c, 0, static_cast<std::uint16_t>(std::strlen(name)), name), nullptr));
    return reply ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
}

std::string Onlooker::NameOf(xcb_atom_t atom) const {
    auto* const c = connection_.get();
    const Reply<xcb_get_atom_name_reply_t> reply(
        xcb_get_atom_name_reply(c, xcb_get_atom_name(c, atom), nullptr));
    if (!reply)
        return {};
    return {xcb_get_atom_name_name(reply.get()),
            static_cast<std::size_t>(xcb_get_atom_name_name_length(reply.get()))};
}

void Onlooker::Sync() const {
    static_cast<void>(Focus());
}

void Onlooker::HoldServer() const {
    xcb_grab_server(connection_.get());
    Sync();
}

void Onlooker::LetServerGo() const {
    xcb_ungrab_server(connection_.get());
    Sync();
}

} // namespace kqu::x11test
