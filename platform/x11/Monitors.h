#pragma once

#include "platform/interfaces/NativeWindow.h"
#include "platform/x11/Display.h"
#include "platform/x11/X11Event.h"

#include <cstdint>
#include <vector>

namespace kqu::platform {

/// The monitors of the screen as RandR 1.5 tells them; without RandR the whole screen is one. Read
/// anew only after the server said that something changed.
class Monitors {
  public:
    explicit Monitors(const Display& display);

    /// Where the primary monitor's top left is on the root window: the origin of the desktop.
    [[nodiscard]] Point Origin();
    /// All monitors, the primary one first, relative to its top left.
    [[nodiscard]] std::vector<Rect> Screens();

    /// True if the event says that the monitors changed.
    [[nodiscard]] bool Notice(const X11Event& event);

  private:
    void Refresh();
    [[nodiscard]] std::vector<Rect> Ask() const;
    [[nodiscard]] Rect WholeScreen() const;

    const Display& display_;
    bool hasMonitors_ = false;
    std::uint8_t firstEvent_ = 0;
    bool stale_ = true;
    Size rootSize_;
    /// In the root window's coordinates, the primary one first; never empty once refreshed.
    std::vector<Rect> monitors_;
};

} // namespace kqu::platform
