#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string_view>
#include <vector>

namespace kqu::platform {

/// Device pixels to one logical pixel, in both directions: 1, 2 or 3. The window system sets it
/// from the desktop's settings. Whoever draws, measures text, or talks to the server converts by
/// it; everybody else counts in logical pixels.
[[nodiscard]] inline int& DeviceScale() {
    static int scale = 1;
    return scale;
}

/// Logical pixels, unless something else is said. On the desktop the origin is the top left of the
/// main screen; in a window, of its content.
struct Point {
    int x = 0;
    int y = 0;
    bool operator==(const Point&) const = default;
};

struct Size {
    int width = 0;
    int height = 0;
    bool operator==(const Size&) const = default;
};

struct Rect {
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;
    bool operator==(const Rect&) const = default;
    [[nodiscard]] bool IsEmpty() const { return width <= 0 || height <= 0; }
    [[nodiscard]] Point Origin() const { return {x, y}; }
    [[nodiscard]] Size Extent() const { return {width, height}; }
    [[nodiscard]] bool Contains(Point p) const {
        return p.x >= x && p.y >= y && p.x < x + width && p.y < y + height;
    }
};

[[nodiscard]] Rect Intersection(const Rect& a, const Rect& b);
/// The smallest rectangle around both; an empty one does not count.
[[nodiscard]] Rect Union(const Rect& a, const Rect& b);

/// Lines of a window's device pixels: 32 bits each, 0x00RRGGBB in the machine's byte order,
/// `stride` pixels a line.
struct Frame {
    const std::uint32_t* pixels = nullptr;
    int width = 0;
    int height = 0;
    int stride = 0;
};

/// What a native window reports to its owner. Every call comes from the event loop, in the order of
/// the events, except CurrentFrame. Only the primary button is reported; the wheel is no button.
class NativeWindowOwner {
  public:
    virtual ~NativeWindowOwner() = default;

    /// The content was moved or resized from outside: by the user through the window manager, or by
    /// the manager itself. The results of the owner's own requests are not reported.
    virtual void ContentChanged(const Rect& content) = 0;
    virtual void ButtonPressed(Point inContent) = 0;
    virtual void ButtonReleased(Point inContent) = 0;
    /// The pointer was moved while the button is held; the position is where it is by now.
    virtual void PointerMoved(Point inContent) = 0;
    /// One step of the wheel: deltaY +1 is downwards, deltaX +1 to the right.
    virtual void WheelTurned(Point inContent, int deltaX, int deltaY) = 0;
    /// The user or the window manager asks to close the window (ICCCM WM_DELETE_WINDOW).
    virtual void CloseRequested() = 0;

    /// The device scale is another one: everything is to be drawn anew.
    virtual void ScaleChanged() = 0;

    /// The size of what the window is to show, in device pixels as its frame is.
    [[nodiscard]] virtual Size FrameExtent() = 0;
    /// Lines from `top` on as they are to be seen, as many as there are up to `height`. They are
    /// valid until the next call, or until the owner draws or resizes: nobody keeps a whole window.
    [[nodiscard]] virtual Frame CurrentFrame(int top, int height) = 0;
};

/// One top-level window. Position and size are those of the content, without any frame. Changes are
/// collected and take effect together at Commit, so that nobody sees half of a change.
class NativeWindow {
  public:
    virtual ~NativeWindow() = default;

    virtual void SetTitle(std::string_view title) = 0;
    virtual void SetPosition(Point onDesktop) = 0;
    virtual void SetSize(Size size) = 0;
    /// Sets and clears attribute bits: 8 collapse box, 2 and 4 zoom, 0x800000 asynchronous
    /// dragging.
    virtual void ChangeAttributes(std::uint32_t set, std::uint32_t clear) = 0;
    /// 0.0 is invisible (the window is withdrawn, yet counts as shown), 1.0 opaque.
    virtual void SetAlpha(float alpha) = 0;
    virtual void Show() = 0;
    virtual void Hide() = 0;
    [[nodiscard]] virtual bool IsCollapsed() = 0;
    /// Redraws the icon of the window from its current frame.
    virtual void UpdateDockTile() = 0;
    /// Lets the user move the window from `start` on, until the button is released. Returns at
    /// once.
    virtual void BeginDrag(Point start) = 0;
    /// Marks an area of the owner's frame as changed.
    virtual void Present(const Rect& changed) = 0;
    /// Lets all changes since the last call take effect at once.
    virtual void Commit() = 0;
};

/// What a window is, for as long as it exists.
struct NativeWindowSettings {
    Rect content;
    /// Stays above the windows of all applications and takes no keyboard focus.
    bool globalFloating = false;
    /// Whether the user may resize it through the window system.
    bool resizeable = false;
    bool closeButton = false;
    bool minimizeButton = false;
    bool maximizeButton = false;
};

/// Holds the screen back while a change is under way. Holds nest: the outermost release lets the
/// windows show what they have by then.
class ScreenUpdates {
  public:
    void Disable() { ++depth_; }
    /// A release without a hold is ignored.
    void Enable() {
        if (depth_ > 0)
            --depth_;
    }
    [[nodiscard]] bool AreHeld() const { return depth_ > 0; }

  private:
    int depth_ = 0;
};

/// The window system of the user's session.
class WindowSystem {
  public:
    virtual ~WindowSystem() = default;

    /// Makes a window that is not yet shown. `owner` must outlive it.
    [[nodiscard]] virtual std::unique_ptr<NativeWindow>
    MakeWindow(const NativeWindowSettings& settings, NativeWindowOwner& owner) = 0;

    /// The screens, the main one first; it has its origin at (0, 0).
    [[nodiscard]] virtual std::vector<Rect> Screens() = 0;

    /// Where the pointer is, and whether the primary button is held, anywhere on the display.
    [[nodiscard]] virtual Point PointerPosition() = 0;
    [[nodiscard]] virtual bool PrimaryButtonDown() = 0;

    /// Called from the event loop when the display has gone for good.
    virtual void OnDisplayLost(std::function<void()> handler) = 0;
};

} // namespace kqu::platform
