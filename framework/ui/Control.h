#pragma once

#include "platform/interfaces/NativeWindow.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

namespace kqu {

class Graphics;
class Window;

/// Whether a refresh first clears a control's area to the window's background.
enum class Erasing { KeepBackground, EraseBackground };

/// What a control is given at its creation. No control follows an edge of its window by itself.
struct ControlSettings {
    /// The index of a control that is no member of an array of controls.
    static constexpr std::uint32_t noIndex = 0x80000000U;

    std::string Name;
    int Left = 0, Top = 0, Width = 0, Height = 0;
    int TabIndex = 0, TabPanelIndex = 0;
    std::uint32_t Index = noIndex;
    std::string HelpTag;
    bool LockLeft = false, LockTop = false, LockRight = false, LockBottom = false;
    bool Visible = true, Enabled = true, AutoDeactivate = true, AcceptFocus = false;
};

/// What a control without a face has of a control.
struct InvisibleControl {
    Window& ownerWindow;
    std::uint32_t Index = ControlSettings::noIndex;
};

/// A rectangular part of a window that draws itself and takes the mouse. Coordinates are those of
/// the window's content; controls made later lie above earlier ones.
class Control {
  public:
    Control(Window& ownerWindow, ControlSettings settings);
    virtual ~Control();
    Control(const Control&) = delete;
    Control& operator=(const Control&) = delete;

    [[nodiscard]] const std::string& Name() const { return settings_.Name; }
    [[nodiscard]] Window& ownerWindow() const { return ownerWindow_; }

    [[nodiscard]] int Left() const { return settings_.Left; }
    [[nodiscard]] int Top() const { return settings_.Top; }
    [[nodiscard]] int Width() const { return settings_.Width; }
    [[nodiscard]] int Height() const { return settings_.Height; }
    [[nodiscard]] bool Visible() const { return settings_.Visible; }
    [[nodiscard]] platform::Rect Bounds() const { return {Left(), Top(), Width(), Height()}; }
    void SetLeft(int left) { Change(settings_.Left, left); }
    void SetTop(int top) { Change(settings_.Top, top); }
    void SetWidth(int width) { Change(settings_.Width, width); }
    void SetHeight(int height) { Change(settings_.Height, height); }

    /// Has the control drawn anew when the window draws next; draws nothing itself.
    void Refresh(Erasing erasing);

    /// The `Open` event, raised once when the window opens.
    std::function<void()> Open;

    /// Draws the whole control; the origin of `graphics` is the control's top left.
    virtual void Draw(Graphics& graphics) = 0;

    // The mouse, in coordinates of the control. MouseDown returns whether the press was taken, so
    // that drags and the release follow.
    virtual bool TakePress(platform::Point) { return false; }
    virtual void TakeDrag(platform::Point) {}
    virtual void TakeRelease(platform::Point) {}
    /// Whether the turn of the wheel was meant for this control.
    virtual bool TakeWheel(platform::Point, int /*deltaX*/, int /*deltaY*/) { return false; }

  private:
    friend class Window;
    void Change(int& property, int value);

    Window& ownerWindow_;
    ControlSettings settings_;
    /// How it is to be drawn when the window draws next; nothing if it is up to date.
    std::optional<Erasing> pending_;
};

} // namespace kqu
