#pragma once

#include "platform/interfaces/EventSource.h"
#include "platform/interfaces/NativeWindow.h"

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <utility>
#include <vector>
#include <xcb/xcb.h>

namespace kqu::platform {

class DesktopScale;
class Display;
class Monitors;
class PointerState;
class Questions;
class X11Window;
struct X11Event;

/// The window system on an X server: one connection, its windows, its events. The only header of
/// this folder that others need.
class X11WindowSystem final : public WindowSystem, public EventSource {
  public:
    /// Connects to the display that the environment names; nil when there is none.
    [[nodiscard]] static std::unique_ptr<X11WindowSystem> Open();
    ~X11WindowSystem() override;
    X11WindowSystem(const X11WindowSystem&) = delete;
    X11WindowSystem& operator=(const X11WindowSystem&) = delete;

    [[nodiscard]] std::unique_ptr<NativeWindow> MakeWindow(const NativeWindowSettings& settings,
                                                           NativeWindowOwner& owner) override;
    [[nodiscard]] std::vector<Rect> Screens() override;
    /// Asked of the server once per Collect, however often it is wanted.
    [[nodiscard]] Point PointerPosition() override;
    [[nodiscard]] bool PrimaryButtonDown() override;
    void OnDisplayLost(std::function<void()> handler) override {
        displayLost_ = std::move(handler);
    }

    [[nodiscard]] pollfd Watch() const override;
    [[nodiscard]] std::optional<Moment> Due() const override;
    bool Collect(EventQueue& queue) override;

  private:
    friend class X11Window;
    using NextEvent = xcb_generic_event_t*(xcb_connection_t*);

    explicit X11WindowSystem(std::unique_ptr<Display> display);
    [[nodiscard]] X11Window* Find(std::uint32_t window) const;

    /// Both are true if there may be more.
    bool CollectFromServer(EventQueue& queue);
    bool CollectEvents(EventQueue& queue, NextEvent* next);
    void Handle(const X11Event& event);
    void TellWindows(void (X11Window::*what)());

    std::map<std::uint32_t, X11Window*> windows_;
    std::unique_ptr<Display> display_;
    std::unique_ptr<Questions> questions_;
    std::unique_ptr<Monitors> monitors_;
    std::unique_ptr<DesktopScale> scale_;
    std::unique_ptr<PointerState> pointer_;
    std::function<void()> displayLost_;
    bool isLost_ = false;
};

} // namespace kqu::platform
