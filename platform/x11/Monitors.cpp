#include "platform/x11/Monitors.h"

#include "platform/CDeleter.h"

#include <cstdlib>
#include <utility>

namespace kqu::platform {

namespace {
std::vector<Rect> MonitorsOf(const xcb_randr_get_monitors_reply_t& reply) {
    std::vector<Rect> found;
    for (auto monitor = xcb_randr_get_monitors_monitors_iterator(&reply); monitor.rem > 0;
         xcb_randr_monitor_info_next(&monitor)) {
        const Rect area{monitor.data->x, monitor.data->y, monitor.data->width,
                        monitor.data->height};
        if (!area.IsEmpty())
            found.insert(monitor.data->primary != 0 ? found.begin() : found.end(), area);
    }
    return found;
}
} // namespace

Monitors::Monitors(const Display& display, Questions& questions, std::function<void()> changed)
    : display_(display),
      questions_(questions),
      changed_(std::move(changed)),
      rootSize_{display.Screen().width_in_pixels, display.Screen().height_in_pixels} {
    Listen();
    const CPointer<xcb_randr_get_monitors_reply_t, std::free> reply(
        hasMonitors_ ? xcb_randr_get_monitors_reply(display_.Connection(), Question(), nullptr)
                     : nullptr);
    Take(reply.get());
}

void Monitors::Listen() {
    xcb_connection_t* const connection = display_.Connection();
    // The properties are of interest to DesktopScale.
    const std::uint32_t rootEvents =
        XCB_EVENT_MASK_STRUCTURE_NOTIFY | XCB_EVENT_MASK_PROPERTY_CHANGE;
    xcb_change_window_attributes(connection, display_.Root(), XCB_CW_EVENT_MASK, &rootEvents);
    const xcb_query_extension_reply_t* const randr =
        xcb_get_extension_data(connection, &xcb_randr_id);
    if (randr == nullptr || randr->present == 0)
        return;
    const CPointer<xcb_randr_query_version_reply_t, std::free> version(
        xcb_randr_query_version_reply(connection, xcb_randr_query_version(connection, 1, 5),
                                      nullptr));
    if (!version || std::pair(version->major_version, version->minor_version) < std::pair(1U, 5U))
        return;
    hasMonitors_ = true;
    firstEvent_ = randr->first_event;
    xcb_randr_select_input(connection, display_.Root(),
                           XCB_RANDR_NOTIFY_MASK_SCREEN_CHANGE | XCB_RANDR_NOTIFY_MASK_CRTC_CHANGE |
                               XCB_RANDR_NOTIFY_MASK_OUTPUT_CHANGE |
                               XCB_RANDR_NOTIFY_MASK_RESOURCE_CHANGE);
}

std::vector<Rect> Monitors::Screens() const {
    const Point origin = Origin();
    std::vector<Rect> screens = monitors_;
    for (Rect& screen : screens) {
        screen.x -= origin.x;
        screen.y -= origin.y;
    }
    return screens;
}

void Monitors::Handle(const X11Event& event) {
    if (event.Type() == XCB_CONFIGURE_NOTIFY) {
        const auto root = event.As<xcb_configure_notify_event_t>();
        if (root.window != display_.Root())
            return;
        rootSize_ = {root.width, root.height};
    } else if (!hasMonitors_ || (event.Type() != firstEvent_ + XCB_RANDR_SCREEN_CHANGE_NOTIFY &&
                                 event.Type() != firstEvent_ + XCB_RANDR_NOTIFY)) {
        return;
    }
    if (hasMonitors_) {
        Ask();
    } else {
        Take(nullptr);
        changed_();
    }
}

xcb_randr_get_monitors_cookie_t Monitors::Question() const {
    return xcb_randr_get_monitors(display_.Connection(), display_.Root(), 1);
}

void Monitors::Ask() {
    // An answer that is still to come is younger than the event.
    if (std::exchange(isAsked_, true))
        return;
    questions_.Ask(Question().sequence, [this](const void* reply) {
        isAsked_ = false;
        Take(static_cast<const xcb_randr_get_monitors_reply_t*>(reply));
        changed_();
    });
}

void Monitors::Take(const xcb_randr_get_monitors_reply_t* reply) {
    std::vector<Rect> told = reply != nullptr ? MonitorsOf(*reply) : std::vector<Rect>();
    // A server that has gone takes no monitor away.
    if (!told.empty())
        monitors_ = std::move(told);
    else if (monitors_.empty() || !display_.IsLost())
        monitors_ = {{0, 0, rootSize_.width, rootSize_.height}};
}

} // namespace kqu::platform
