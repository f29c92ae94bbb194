#include "framework/ui/Window.h"

#include "framework/Runtime.h"
#include "framework/ui/Graphics.h"
#include "framework/ui/Picture.h"
#include "framework/ui/drawing/Plane.h"

#include <algorithm>
#include <utility>

namespace kqu {

namespace {
platform::Point RelativeTo(const Control& control, platform::Point inContent) {
    return {inContent.x - control.Left(), inContent.y - control.Top()};
}
} // namespace

Window::Window() = default;

Window::~Window() {
    std::erase(Runtime::Current().OpenWindows(), this);
}

void Window::Create() {
    layout_ = Layout();
    content_ = {0, 0, layout_.Width, layout_.Height};
    toldSize_ = content_.Extent();
    native_ = Runtime::Current().Machine().windows.MakeWindow(
        {content_, layout_.Frame == WindowFrame::GlobalFloating, layout_.Resizeable,
         layout_.CloseButton, layout_.MinimizeButton, layout_.MaximizeButton},
        *this);
    Runtime::Current().OpenWindows().push_back(this);
    CreateControls();
    AddMenuHandlers(*this);
    for (const Control* control : controls_)
        if (control->Open)
            control->Open();
    Event_Open();
    opened_ = true;
    native_->SetTitle(layout_.Title);
    betweenHandlers_ = Runtime::Current().Loop().BetweenHandlers([this] { ShowChanges(); });
}

void Window::SetLeft(int left) {
    if (std::exchange(content_.x, left) != left)
        native_->SetPosition(content_.Origin());
}

void Window::SetTop(int top) {
    if (std::exchange(content_.y, top) != top)
        native_->SetPosition(content_.Origin());
}

void Window::Resize(platform::Size size) {
    if (size == content_.Extent())
        return;
    content_.width = size.width;
    content_.height = size.height;
    InvalidateLayout();
    // A platform that reports sizes at once raises Resized from within this call.
    native_->SetSize(size);
    toldSize_ = content_.Extent();
}

void Window::SetTitle(std::string title) {
    if (title == layout_.Title)
        return;
    layout_.Title = std::move(title);
    // While the window is being built its title is still that of the layout, which the user must
    // not see. The platform gets the first title when the window has opened.
    if (opened_)
        native_->SetTitle(layout_.Title);
}

void Window::Show() {
    native_->Show();
}

void Window::Adopt(Control& control) {
    controls_.push_back(&control);
    InvalidateLayout();
}

void Window::Disown(Control& control) {
    std::erase(controls_, &control);
    if (held_ == &control)
        held_ = nullptr;
}

void Window::Invalidate(Control& control, Erasing erasing) {
    if (!control.pending_ || erasing == Erasing::EraseBackground)
        control.pending_ = erasing;
}

void Window::InvalidateLayout() {
    layoutPending_ = true;
}

void Window::UpdateNow() {
    // A paint that asks for an update of its own window gets it with the next one.
    if (std::exchange(drawing_, true))
        return;
    struct Done {
        bool& drawing;
        ~Done() { drawing = false; }
    } const done{drawing_};

    if (std::exchange(layoutPending_, false))
        DrawEverything();
    else
        for (const Control* below : controls_)
            if (below->pending_)
                InvalidateAbove(*below);
    // Bottom to top; what a paint invalidates anew waits for the next update.
    std::vector<std::pair<Control*, Erasing>> pending;
    for (Control* control : controls_)
        if (const auto erasing = std::exchange(control->pending_, std::nullopt))
            pending.emplace_back(control, *erasing);
    for (const auto& [control, erasing] : pending)
        DrawControl(*control, erasing);
}

void Window::DrawEverything() {
    const platform::Rect whole{0, 0, content_.width, content_.height};
    Graphics graphics(Buffer(), whole);
    graphics.SetForeColor(BackColor());
    graphics.FillRect(0, 0, whole.width, whole.height);
    MarkChanged(whole);
    for (Control* control : controls_)
        control->pending_ = Erasing::KeepBackground;
}

Colour Window::BackColor() const {
    return layout_.HasBackColor ? layout_.BackColor : RGB(255, 255, 255);
}

void Window::DrawControl(Control& control, Erasing erasing) {
    if (!control.Visible() || control.Bounds().IsEmpty())
        return;
    const auto graphics = GraphicsFor(control);
    if (erasing == Erasing::EraseBackground) {
        graphics->SetForeColor(BackColor());
        graphics->FillRect(0, 0, control.Width(), control.Height());
        graphics->SetForeColor(RGB(0, 0, 0));
    }
    control.Draw(*graphics);
}

void Window::InvalidateAbove(const Control& control) {
    const auto self = std::find(controls_.begin(), controls_.end(), &control);
    for (auto above = self; above != controls_.end(); ++above)
        if (*above != &control &&
            !platform::Intersection((*above)->Bounds(), control.Bounds()).IsEmpty())
            Invalidate(**above, Erasing::KeepBackground);
}

std::unique_ptr<Graphics> Window::GraphicsFor(const Control& control) {
    MarkChanged(control.Bounds());
    return std::make_unique<Graphics>(Buffer(), control.Bounds());
}

Ref<Picture>& Window::Buffer() {
    if (!buffer_ || buffer_->Width() != content_.width || buffer_->Height() != content_.height ||
        buffer_->Scale() != platform::DeviceScale())
        buffer_ = Picture::MakeRecorded(content_.width, content_.height);
    return buffer_;
}

void Window::MarkChanged(const platform::Rect& area) {
    const platform::Rect whole{0, 0, content_.width, content_.height};
    changed_ = platform::Union(changed_, platform::Intersection(area, whole));
}

void Window::ShowChanges() {
    if (Runtime::Current().Machine().screenUpdates.AreHeld())
        return;
    UpdateNow();
    if (const platform::Rect changed = std::exchange(changed_, {}); !changed.IsEmpty()) {
        const auto before = std::exchange(shown_, Buffer()->Snapshot().colours);
        // A row whose task has no news is drawn twice a second too, and looks as it did.
        if (!before || *before != *shown_)
            native_->Present(changed);
    }
    native_->Commit();
}

platform::Frame Window::CurrentFrame(int top, int height) {
    const drawing::Plane& colours = Buffer()->Colours();
    const auto wanted = drawing::Area::Of(0, top, colours.Width(), height);
    const drawing::Area lines = wanted.Within(colours.Bounds());
    if (lines.IsEmpty())
        return {};
    // One part of the window after the other in the same memory.
    if (lines_ && lines_->Bounds().Width() == wanted.Width() &&
        lines_->Bounds().Height() == wanted.Height())
        lines_->MoveTo(0, top);
    else
        lines_ = std::make_unique<drawing::Raster>(wanted);
    colours.PaintOn({*lines_, lines});
    return {lines_->At(0, lines.top), colours.Width(), static_cast<int>(lines.Height()),
            colours.Width()};
}

platform::Size Window::FrameExtent() {
    const int scale = platform::DeviceScale();
    return {content_.width * scale, content_.height * scale};
}

void Window::ContentChanged(const platform::Rect& content) {
    content_.x = content.x;
    content_.y = content.y;
    if (content.Extent() != content_.Extent()) {
        content_.width = content.width;
        content_.height = content.height;
        InvalidateLayout();
    }
    if (std::exchange(toldSize_, content.Extent()) != content.Extent() && opened_)
        Event_Resized();
}

void Window::ButtonPressed(platform::Point inContent) {
    for (auto control = controls_.rbegin(); control != controls_.rend(); ++control) {
        if (!(*control)->Visible() || !(*control)->Bounds().Contains(inContent))
            continue;
        Control* const pressed = *control;
        if (pressed->TakePress(RelativeTo(*pressed, inContent))) {
            held_ = pressed;
            return;
        }
    }
    static_cast<void>(Event_MouseDown(inContent.x, inContent.y));
}

void Window::ButtonReleased(platform::Point inContent) {
    if (Control* const held = std::exchange(held_, nullptr))
        held->TakeRelease(RelativeTo(*held, inContent));
}

void Window::PointerMoved(platform::Point inContent) {
    if (held_ != nullptr)
        held_->TakeDrag(RelativeTo(*held_, inContent));
}

void Window::WheelTurned(platform::Point inContent, int deltaX, int deltaY) {
    for (auto control = controls_.rbegin(); control != controls_.rend(); ++control)
        if ((*control)->Visible() && (*control)->Bounds().Contains(inContent) &&
            (*control)->TakeWheel(RelativeTo(**control, inContent), deltaX, deltaY))
            return;
}

} // namespace kqu
