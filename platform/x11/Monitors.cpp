#include "platform/x11/Monitors.h"

#include "platform/x11/PointArithmetic.h"

#include <utility>

namespace kqu::platform {

Monitors::Monitors(const Display& display, Questions& questions, std::function<void()> changed)
    : display_(display),
      questions_(questions),
      changed_(std::move(changed)),
      monitors_{{0, 0, display.Screen().width_in_pixels, display.Screen().height_in_pixels}},
      rootSize_(monitors_.front().Extent()) {
    xcb_connection_t* const connection = display_.Connection();
    // The properties are of interest to DesktopScale.
    const std::uint32_t rootEvents =
        XCB_EVENT_MASK_STRUCTURE_NOTIFY | XCB_EVENT_MASK_PROPERTY_CHANGE;
    xcb_change_window_attributes(connection, display_.Root(), XCB_CW_EVENT_MASK, &rootEvents);
    const auto* const randr = xcb_get_extension_data(connection, &xcb_randr_id);
    if (randr == nullptr || randr->present == 0)
        return;
    randrEvents_ = randr->first_event;
    // A server of an older version refuses the question for monitors.
    xcb_discard_reply(connection, xcb_randr_query_version(connection, 1, 5).sequence);
    xcb_randr_select_input(connection, display_.Root(),
                           XCB_RANDR_NOTIFY_MASK_SCREEN_CHANGE | XCB_RANDR_NOTIFY_MASK_CRTC_CHANGE |
                               XCB_RANDR_NOTIFY_MASK_OUTPUT_CHANGE |
                               XCB_RANDR_NOTIFY_MASK_RESOURCE_CHANGE);
    Ask();
}

std::vector<Rect> Monitors::Screens() const {
    std::vector<Rect> screens;
    for (const Rect& monitor : monitors_) {
        const Point at = (monitor.Origin() - Origin()) / DeviceScale();
        screens.push_back(
            {at.x, at.y, monitor.width / DeviceScale(), monitor.height / DeviceScale()});
    }
    return screens;
}

void Monitors::Handle(const X11Event& event) {
    const auto root = event.As<xcb_configure_notify_event_t>();
    if (event.Type() == XCB_CONFIGURE_NOTIFY && root.window == display_.Root())
        rootSize_ = {root.width, root.height};
    else if (!randrEvents_ || (event.Type() != *randrEvents_ + XCB_RANDR_SCREEN_CHANGE_NOTIFY &&
                               event.Type() != *randrEvents_ + XCB_RANDR_NOTIFY))
        return;
    if (randrEvents_)
        Ask();
    else
        Take(nullptr);
}

void Monitors::Ask() {
    // An answer that is still to come is younger than the event.
    if (std::exchange(isAsked_, true))
        return;
    const auto question = xcb_randr_get_monitors(display_.Connection(), display_.Root(), 1);
    questions_.Ask(question.sequence, [this](const void* reply) {
        isAsked_ = false;
        Take(static_cast<const xcb_randr_get_monitors_reply_t*>(reply));
    });
}

void Monitors::Take(const xcb_randr_get_monitors_reply_t* reply) {
    std::vector<Rect> told;
    if (reply != nullptr)
        for (auto monitor = xcb_randr_get_monitors_monitors_iterator(reply); monitor.rem > 0;
             xcb_randr_monitor_info_next(&monitor)) {
            const auto& is = *monitor.data;
            told.insert(is.primary != 0 ? told.begin() : told.end(),
                        Rect{is.x, is.y, is.width, is.height});
        }
    std::erase_if(told, [](const Rect& monitor) { return monitor.IsEmpty(); });
    if (told.empty())
        told = {{0, 0, rootSize_.width, rootSize_.height}};
    // A server that has gone takes no monitor away.
    if (!display_.IsLost())
        monitors_ = std::move(told);
    changed_();
}

} // namespace kqu::platform
