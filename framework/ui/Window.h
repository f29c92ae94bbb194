#pragma once

#include "framework/ui/Colour.h"
#include "framework/ui/Control.h"
#include "framework/values/Object.h"
#include "platform/interfaces/NativeWindow.h"
#include "platform/interfaces/Registration.h"

#include <memory>
#include <string>
#include <vector>

namespace kqu {

class Picture;

namespace drawing {
class Plane;
class Raster;
} // namespace drawing

/// How a window stands among the others; the values are the framework's old frame numbers.
enum class WindowFrame { Document = 0, GlobalFloating = 7 };

/// A window's fixed settings, applied when it is built.
struct WindowLayout {
    int Placement = 0;
    int Width = 300, Height = 300;
    int MinWidth = 64, MinHeight = 64;
    int MaxWidth = 32000, MaxHeight = 32000;
    WindowFrame Frame = WindowFrame::Document;
    bool Composite = false;
    bool HasBackColor = false;
    Colour BackColor = RGB(255, 255, 255);
    std::string Title;
    bool Visible = true;
    bool FullScreen = false;
    bool MenuBarVisible = true;
    bool CloseButton = true;
    bool Resizeable = true;
    bool LiveResize = true;
    bool MaximizeButton = false, MinimizeButton = true;
    std::string BalloonHelp;
    int MacProcID = 0;
};

/// A window: owns its pixels, routes the mouse to its controls, draws what has changed and shows it
/// once per pass of the event loop. Position and size are those of the content.
///
/// The limits of the layout bind its owner, not the window: sizes are set as they are given.
class Window : private platform::NativeWindowOwner {
  public:
    Window();
    ~Window() override;
    Window(const Window&) = delete;
    Window& operator=(const Window&) = delete;

    [[nodiscard]] int Left() const { return content_.x; }
    [[nodiscard]] int Top() const { return content_.y; }
    [[nodiscard]] int Width() const { return content_.width; }
    [[nodiscard]] int Height() const { return content_.height; }
    void SetLeft(int left);
    void SetTop(int top);
    void SetWidth(int width) { Resize({width, content_.height}); }
    void SetHeight(int height) { Resize({content_.width, height}); }

    [[nodiscard]] int MinWidth() const { return layout_.MinWidth; }
    [[nodiscard]] int MaxWidth() const { return layout_.MaxWidth; }
    [[nodiscard]] int MaxHeight() const { return layout_.MaxHeight; }
    void SetMaxHeight(int height) { layout_.MaxHeight = height; }
    [[nodiscard]] const std::string& Title() const { return layout_.Title; }
    void SetTitle(std::string title);

    void Show();
    /// Raises the close event, as a window manager that closes the window does.
    void Close() { Event_Close(); }

    /// The platform's window, as the functions that are reached by name want it.
    [[nodiscard]] platform::NativeWindow* Native() const { return native_.get(); }

    /// Draws pending changes at once. They are shown when the running handler pumps or returns.
    void UpdateNow();

    // For controls.
    void Adopt(Control& control);
    void Disown(Control& control);
    void Invalidate(Control& control, Erasing erasing);
    /// The place of a control has changed: everything is drawn anew.
    void InvalidateLayout();
    /// Lets `control` be drawn on at once; its area counts as changed.
    [[nodiscard]] std::unique_ptr<Graphics> GraphicsFor(const Control& control);

  protected:
    /// Builds the window: Layout, the native window, the controls, AddMenuHandlers, the
    /// controls' Open events, Event_Open.
    void Create();

    [[nodiscard]] virtual WindowLayout Layout() = 0;
    virtual void CreateControls() = 0;
    /// Raised once, when the controls are there, for a window that handles menu commands.
    virtual void AddMenuHandlers(Window& /*window*/) {}
    virtual void Event_Open() {}
    virtual void Event_Close() {}
    /// Raised when the size was changed from outside.
    virtual void Event_Resized() {}
    /// A press that no control took, in window coordinates. True if it was taken.
    virtual bool Event_MouseDown(int /*x*/, int /*y*/) { return false; }

    void ContentChanged(const platform::Rect& content) override;

  private:
    void ButtonPressed(platform::Point inContent) override;
    void ButtonReleased(platform::Point inContent) override;
    void PointerMoved(platform::Point inContent) override;
    void WheelTurned(platform::Point inContent, int deltaX, int deltaY) override;
    void CloseRequested() override { Close(); }
    void ScaleChanged() override { InvalidateLayout(); }
    [[nodiscard]] platform::Size FrameExtent() override;
    [[nodiscard]] platform::Frame CurrentFrame(int top, int height) override;

    void Resize(platform::Size size);
    void ShowChanges();
    [[nodiscard]] Colour BackColor() const;
    void DrawEverything();
    void DrawControl(Control& control, Erasing erasing);
    void InvalidateAbove(const Control& control);
    [[nodiscard]] Ref<Picture>& Buffer();
    void MarkChanged(const platform::Rect& area);

    WindowLayout layout_;
    platform::Rect content_;
    platform::Size toldSize_;
    std::unique_ptr<platform::NativeWindow> native_;
    std::vector<Control*> controls_;
    /// What the window shows, as it was drawn, and the lines that were last made of it.
    Ref<Picture> buffer_;
    std::unique_ptr<drawing::Raster> lines_;
    /// What the platform was last asked to present.
    std::shared_ptr<const drawing::Plane> shown_;
    platform::Rect changed_;
    Control* held_ = nullptr;
    bool layoutPending_ = true;
    bool opened_ = false;
    bool drawing_ = false;
    platform::Registration betweenHandlers_;
};

} // namespace kqu
