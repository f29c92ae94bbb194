#include "platform/x11/Monitors.h"

#include "platform/CDeleter.h"

#include <cstdlib>
#include <utility>
#include <xcb/randr.h>

namespace kqu::platform {

Monitors::Monitors(const Display& display)
    : display_(display),
      rootSize_{display.Screen().width_in_pixels, display.Screen().height_in_pixels} {
    xcb_connection_t* const connection = display.Connection();
    const std::uint32_t rootEvents = XCB_EVENT_MASK_STRUCTURE_NOTIFY;
    xcb_change_window_attributes(connection, display.Root(), XCB_CW_EVENT_MASK, &rootEvents);
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
    xcb_randr_select_input(connection, display.Root(),
                           XCB_RANDR_NOTIFY_MASK_SCREEN_CHANGE | XCB_RANDR_NOTIFY_MASK_CRTC_CHANGE |
                               XCB_RANDR_NOTIFY_MASK_OUTPUT_CHANGE |
                               XCB_RANDR_NOTIFY_MASK_RESOURCE_CHANGE);
}

Point Monitors::Origin() {
    Refresh();
    return monitors_.front().Origin();
}

std::vector<Rect> Monitors::Screens() {
    Refresh();
    const Point origin = monitors_.front().Origin();
    std::vector<Rect> screens = monitors_;
    for (Rect& screen : screens) {
        screen.x -= origin.x;
        screen.y -= origin.y;
    }
    return screens;
}

bool Monitors::Notice(const X11Event& event) {
    if (event.Type() == XCB_CONFIGURE_NOTIFY) {
        const auto root = event.As<xcb_configure_notify_event_t>();
        if (root.window != display_.Root())
            return false;
        rootSize_ = {root.width, root.height};
    } else if (!hasMonitors_ || (event.Type() != firstEvent_ + XCB_RANDR_SCREEN_CHANGE_NOTIFY &&
                                 event.Type() != firstEvent_ + XCB_RANDR_NOTIFY)) {
        return false;
    }
    stale_ = true;
    return true;
}

void Monitors::Refresh() {
    if (!std::exchange(stale_, false))
        return;
    // A server that has gone takes no monitor away.
    std::vector<Rect> told = hasMonitors_ ? Ask() : std::vector<Rect>();
    if (!told.empty())
        monitors_ = std::move(told);
    else if (monitors_.empty() || !display_.IsLost())
        monitors_ = {WholeScreen()};
}

std::vector<Rect> Monitors::Ask() const {
    const auto cookie = xcb_randr_get_monitors(display_.Connection(), display_.Root(), 1);
    const CPointer<xcb_randr_get_monitors_reply_t, std::free> reply(
        xcb_randr_get_monitors_reply(display_.Connection(), cookie, nullptr));
    std::vector<Rect> found;
    if (!reply)
        return found;
    for (auto monitor = xcb_randr_get_monitors_monitors_iterator(reply.get()); monitor.rem > 0;
         xcb_randr_monitor_info_next(&monitor)) {
        const Rect area{monitor.data->x, monitor.data->y, monitor.data->width,
                        monitor.data->height};
        if (!area.IsEmpty())
            found.insert(monitor.data->primary != 0 ? found.begin() : found.end(), area);
    }
    return found;
}

Rect Monitors::WholeScreen() const {
    return {0, 0, rootSize_.width, rootSize_.height};
}

} // namespace kqu::platform
