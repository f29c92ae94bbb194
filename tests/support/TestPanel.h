#pragma once

#include "platform/interfaces/EventSource.h"
#include "platform/interfaces/NativeWindow.h"
#include "platform/x11/X11WindowSystem.h"
#include "tests/support/Onlooker.h"

#include <chrono>
#include <deque>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace kqu::x11test {

/// A window of the real window system with an owner that fills it with one colour and records what
/// it is told, as short lines: "content 100 50 340 73", "press 5 6", "wheel 5 6 0 1".
class TestPanel final : private platform::EventQueue, private platform::NativeWindowOwner {
  public:
    explicit TestPanel(const platform::Rect& content, bool isFloating = true);

    [[nodiscard]] platform::NativeWindow& Window() { return *window_; }
    [[nodiscard]] platform::X11WindowSystem& System() { return *system_; }
    [[nodiscard]] std::uint32_t Id() const;

    /// Shown, opaque, on the screen.
    void Appear(const Onlooker& onlooker);
    void Vanish(const Onlooker& onlooker);
    /// Sets the size of the window and of the frame.
    void Resize(platform::Size size);
    /// Fills lines of the frame from `first` up to and without `last`, and marks them.
    void Fill(std::uint32_t colour, int first, int last);
    void FillAll(std::uint32_t colour) { Fill(colour, 0, frame_.height); }

    /// One round of an event loop that does not sleep.
    void Round();
    /// The same, and returns when the server has done all that was asked for.
    void RoundTrip();
    /// Runs for some time. For what is not to happen.
    void RunFor(std::chrono::milliseconds time);
    /// Runs until a condition holds.
    void RunUntil(const Onlooker& onlooker, const std::function<bool()>& condition,
                  const std::string& what);

    std::vector<std::string> told;
    /// Run when the button is pressed.
    std::function<void(platform::Point inContent)> onPress;
    std::function<void(const platform::Rect& content)> onContent;

  private:
    void Post(std::function<void()> delivery) override;
    void ContentChanged(const platform::Rect& content) override;
    void ButtonPressed(platform::Point inContent) override;
    void ButtonReleased(platform::Point inContent) override;
    void PointerMoved(platform::Point inContent) override;
    void WheelTurned(platform::Point inContent, int deltaX, int deltaY) override;
    void CloseRequested() override;
    [[nodiscard]] platform::Frame CurrentFrame() override;

    std::unique_ptr<platform::X11WindowSystem> system_;
    platform::Size frame_;
    std::vector<std::uint32_t> pixels_;
    std::deque<std::function<void()>> queue_;
    std::unique_ptr<platform::NativeWindow> window_;
};

} // namespace kqu::x11test
