#pragma once

#include "platform/x11/Display.h"
#include "platform/x11/Questions.h"
#include "platform/x11/X11Event.h"

#include <functional>
#include <optional>
#include <string_view>

namespace kqu::platform {

/// The integer setting `Gdk/WindowScalingFactor` in the bytes of an XSETTINGS property; none if it
/// is not there or the bytes are broken.
[[nodiscard]] std::optional<int> WindowScalingFactor(std::string_view settings);
/// `Xft.dpi` of a resource database, by 96, to the nearest whole number; none if it is not there.
[[nodiscard]] std::optional<int> ScaleOfResources(std::string_view database);

/// Keeps DeviceScale at what the desktop says: the window scaling factor where a manager of
/// XSETTINGS runs, else the resolution in the resource database of the root window. Both are
/// watched.
class DesktopScale {
  public:
    /// Asks; the scale is 1 until the answers are there. `changed` is called when there is another.
    DesktopScale(const Display& display, Questions& questions, std::function<void()> changed);

    /// Takes any event that is for no window of ours.
    void Handle(const X11Event& event);

  private:
    void Refresh();
    void AskForText(xcb_window_t window, xcb_atom_t property, xcb_atom_t type,
                    std::function<void(std::string_view)> take);
    void Take(std::optional<int> scale);

    const Display& display_;
    Questions& questions_;
    std::function<void()> changed_;
    xcb_window_t manager_ = 0;
};

} // namespace kqu::platform
