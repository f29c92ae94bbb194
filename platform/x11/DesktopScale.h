#pragma once

#include "platform/x11/Display.h"
#include "platform/x11/Questions.h"
#include "platform/x11/X11Event.h"

#include <cstddef>
#include <functional>
#include <optional>
#include <span>
#include <string_view>

namespace kqu::platform {

/// The integer setting `Gdk/WindowScalingFactor` in the bytes of an XSETTINGS property; none if it
/// is not there or the bytes are broken.
[[nodiscard]] std::optional<int> WindowScalingFactor(std::span<const std::byte> settings);
/// `Xft.dpi` of a resource database, by 96, to the nearest whole number; none if it is not there.
[[nodiscard]] std::optional<int> ScaleOfResources(std::string_view database);

/// Keeps DeviceScale at what the desktop says: the window scaling factor where a manager of
/// XSETTINGS runs, else the resolution in the resource database of the root window. Both are
/// watched.
class DesktopScale {
  public:
    /// Asks at once, and waits for the answers. `changed` is called when there is another scale.
    DesktopScale(const Display& display, Questions& questions, std::function<void()> changed);

    /// Takes any event that is for no window of ours.
    void Handle(const X11Event& event);

  private:
    using Property = xcb_get_property_reply_t;

    [[nodiscard]] xcb_get_selection_owner_cookie_t AskForManager() const;
    /// From here on the manager's changes are heard.
    [[nodiscard]] xcb_get_property_cookie_t AskForSettings() const;
    [[nodiscard]] xcb_get_property_cookie_t AskForResources() const;
    void Refresh();
    void RefreshFromResources();
    void Take(std::optional<int> scale);

    const Display& display_;
    Questions& questions_;
    std::function<void()> changed_;
    xcb_window_t manager_ = 0;
};

} // namespace kqu::platform
