#pragma once

#include "platform/interfaces/EventSource.h"
#include "platform/interfaces/NativeWindow.h"

#include <deque>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace kqu::simulation {

/// Whether the window system tells a window of its own size requests, and when.
enum class SizeEcho { Never, AtOnce, Late };

class SimulatedWindows;

/// A native window in memory: keeps what was set, what is on the screen, and a record of all calls.
class SimulatedWindow final : public platform::NativeWindow {
  public:
    SimulatedWindow(SimulatedWindows& system, const platform::NativeWindowSettings& settings,
                    platform::NativeWindowOwner& owner);
    ~SimulatedWindow() override;

    void SetTitle(std::string_view title) override;
    void SetPosition(platform::Point onDesktop) override;
    void SetSize(platform::Size size) override;
    void ChangeAttributes(std::uint32_t set, std::uint32_t clear) override;
    void SetAlpha(float alpha) override;
    void Show() override;
    void Hide() override { shown = false; }
    [[nodiscard]] bool IsCollapsed() override { return collapsed; }
    void UpdateDockTile() override { ++tileUpdates; }
    void BeginDrag(platform::Point start) override;
    void Present(const platform::Rect& changed) override {
        marked_ = platform::Union(marked_, changed);
    }
    void Commit() override;

    /// What a person would see: shown, and not transparent.
    [[nodiscard]] bool IsVisible() const { return shown && alpha > 0.0F; }
    /// A pixel of what was presented last, 0x00RRGGBB.
    [[nodiscard]] std::uint32_t PixelOnScreen(int x, int y) const;

    platform::NativeWindowOwner& owner;
    platform::Rect content;
    std::string title;
    float alpha = 1.0F;
    bool shown = false;
    bool collapsed = false;
    int tileUpdates = 0;
    int presents = 0;

  private:
    SimulatedWindows& system_;
    platform::Rect marked_;
    std::vector<std::uint32_t> screen_;
    platform::Size screenSize_;
};

/// A window system in memory, with one user's hand.
class SimulatedWindows final : public platform::WindowSystem, public platform::EventSource {
  public:
    [[nodiscard]] std::unique_ptr<platform::NativeWindow>
    MakeWindow(const platform::NativeWindowSettings& settings,
               platform::NativeWindowOwner& owner) override;
    [[nodiscard]] std::vector<platform::Rect> Screens() override { return screens; }
    [[nodiscard]] platform::Point PointerPosition() override { return pointer; }
    [[nodiscard]] bool PrimaryButtonDown() override { return buttonDown; }
    void OnDisplayLost(std::function<void()> /*handler*/) override {}

    bool Collect(platform::EventQueue& queue) override;

    // The user's hand; positions are on the desktop. Events arrive with the next round.
    void Press(platform::Point onDesktop);
    void Release();
    /// The window manager moves or resizes the window.
    void ChangeFromOutside(const platform::Rect& content);
    void Inject(std::function<void(platform::NativeWindowOwner&)> event);

    std::vector<platform::Rect> screens{{0, 0, 1280, 800}};
    platform::Point pointer;
    bool buttonDown = false;
    SizeEcho echo = SizeEcho::Never;
    /// The window that is there now, or nil, and how many there have ever been.
    SimulatedWindow* window = nullptr;
    int windowsMade = 0;
    /// Every call in its order, as short lines ("title Brackwater Scheduled Task").
    std::vector<std::string> calls;

  private:
    friend class SimulatedWindow;
    std::deque<std::function<void()>> events_;
};

} // namespace kqu::simulation
