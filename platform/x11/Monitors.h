#pragma once

#include "platform/interfaces/NativeWindow.h"
#include "platform/x11/Display.h"
#include "platform/x11/Questions.h"
#include "platform/x11/X11Event.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <vector>
#include <xcb/randr.h>

namespace kqu::platform {

/// The monitors of the screen as RandR 1.5 tells them; without RandR the whole screen is one. Asked
/// for anew only after the server said that something changed; the former ones count until the
/// answer is there.
class Monitors {
  public:
    /// Asks; the whole screen is one until the answer is there. `changed` is called when there are
    /// others.
    Monitors(const Display& display, Questions& questions, std::function<void()> changed);

    /// Where the primary monitor's top left is on the root window: the origin of the desktop.
    [[nodiscard]] Point Origin() const { return monitors_.front().Origin(); }
    /// All monitors in whole logical pixels, the primary one first, relative to its top left.
    [[nodiscard]] std::vector<Rect> Screens() const;

    /// Takes any event that is for no window of ours.
    void Handle(const X11Event& event);

  private:
    void Ask();
    void Take(const xcb_randr_get_monitors_reply_t* reply);

    const Display& display_;
    Questions& questions_;
    std::function<void()> changed_;
    bool isAsked_ = false;
    /// In the root window's coordinates, the primary one first; never empty.
    std::vector<Rect> monitors_;
    Size rootSize_;
    /// The first event of RandR, where the server has it.
    std::optional<std::uint8_t> randrEvents_;
};

} // namespace kqu::platform
