#include "platform/x11/DesktopScale.h"

#include "platform/interfaces/NativeWindow.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <string>
#include <utility>

namespace kqu::platform {

namespace {
constexpr int largestScale = 3;
/// In words: more than any sensible property of this kind has.
constexpr std::uint32_t mostWords = 1U << 16;
} // namespace

std::optional<int> WindowScalingFactor(std::string_view settings) {
    // A setting is its type (0 is an integer), a byte, the length of its name, the name, filled up
    // to whole words, a number of four bytes, and the value. The first byte of all names the order.
    constexpr std::string_view name("\0\x17Gdk/WindowScalingFactor\0", 26);
    constexpr std::string_view swapped("\x17\0Gdk/WindowScalingFactor\0", 26);
    constexpr std::size_t beforeValue = name.size() + 4;
    const bool leastFirst = settings.starts_with('\0');
    const std::size_t at = settings.find(leastFirst ? swapped : name);
    if (at == std::string_view::npos || at < 2 || settings[at - 2] != 0 ||
        settings.size() < at + beforeValue + 4)
        return std::nullopt;
    std::string value(settings.substr(at + beforeValue, 4));
    if (leastFirst)
        std::reverse(value.begin(), value.end());
    std::uint32_t factor = 0;
    for (const char byte : value)
        factor = factor << 8U | static_cast<unsigned char>(byte);
    return static_cast<int>(std::min<std::uint32_t>(factor, largestScale));
}

std::optional<int> ScaleOfResources(std::string_view database) {
    constexpr std::string_view name = "\nXft.dpi:";
    constexpr double usualResolution = 96;
    const std::string lines = std::string("\n").append(database);
    const std::size_t at = lines.find(name);
    const std::size_t start =
        at == std::string::npos ? at : lines.find_first_not_of(" \t", at + name.size());
    double resolution = 0;
    if (start == std::string::npos ||
        std::from_chars(&lines[start], lines.data() + lines.size(), resolution).ec != std::errc() ||
        !std::isfinite(resolution))
        return std::nullopt;
    return static_cast<int>(
        std::clamp<double>(std::round(resolution / usualResolution), 1, largestScale));
}

DesktopScale::DesktopScale(const Display& display, Questions& questions,
                           std::function<void()> changed)
    : display_(display), questions_(questions), changed_(std::move(changed)) {
    Refresh();
}

void DesktopScale::Handle(const X11Event& event) {
    const auto property = event.As<xcb_property_notify_event_t>();
    const auto message = event.As<xcb_client_message_event_t>();
    const bool isOfRoot = property.window == display_.Root();
    if (event.Type() == XCB_PROPERTY_NOTIFY
            ? property.atom == (isOfRoot ? xcb_atom_t{XCB_ATOM_RESOURCE_MANAGER}
                                         : display_.Atom("_XSETTINGS_SETTINGS"))
            : event.Type() == XCB_DESTROY_NOTIFY ||
                  (event.Type() == XCB_CLIENT_MESSAGE && message.type == display_.Atom("MANAGER") &&
                   message.data.data32[1] == display_.Atom("_XSETTINGS_S0")))
        Refresh();
}

void DesktopScale::Refresh() {
    const auto question =
        xcb_get_selection_owner(display_.Connection(), display_.Atom("_XSETTINGS_S0"));
    questions_.Ask(question.sequence, [this](const void* answer) {
        const auto* owner = static_cast<const xcb_get_selection_owner_reply_t*>(answer);
        manager_ = owner != nullptr ? owner->owner : 0;
        // From here on the manager's changes are heard.
        const std::uint32_t events =
            XCB_EVENT_MASK_PROPERTY_CHANGE | XCB_EVENT_MASK_STRUCTURE_NOTIFY;
        xcb_change_window_attributes(display_.Connection(), manager_, XCB_CW_EVENT_MASK, &events);
        const xcb_atom_t settings = display_.Atom("_XSETTINGS_SETTINGS");
        AskForText(manager_, settings, settings, [this](std::string_view bytes) {
            if (const auto scale = WindowScalingFactor(bytes))
                return Take(scale);
            AskForText(display_.Root(), XCB_ATOM_RESOURCE_MANAGER, XCB_ATOM_STRING,
                       [this](std::string_view resources) { Take(ScaleOfResources(resources)); });
        });
    });
}

void DesktopScale::AskForText(xcb_window_t window, xcb_atom_t property, xcb_atom_t type,
                              std::function<void(std::string_view)> take) {
    const auto question =
        xcb_get_property(display_.Connection(), 0, window, property, type, 0, mostWords);
    questions_.Ask(question.sequence, [take = std::move(take)](const void* reply) {
        const auto* text = static_cast<const xcb_get_property_reply_t*>(reply);
        if (text == nullptr || text->format != 8)
            return take({});
        take({static_cast<const char*>(xcb_get_property_value(text)), text->value_len});
    });
}

void DesktopScale::Take(std::optional<int> scale) {
    const int usable = std::max(scale.value_or(1), 1);
    if (std::exchange(DeviceScale(), usable) != usable)
        changed_();
}

} // namespace kqu::platform
