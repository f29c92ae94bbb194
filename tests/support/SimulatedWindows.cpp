#include "tests/support/SimulatedWindows.h"

#include <utility>

namespace kqu::simulation {

namespace {
std::string Numbers(std::initializer_list<int> values) {
    std::string text;
    for (const int value : values)
        text += ' ' + std::to_string(value);
    return text;
}
} // namespace

SimulatedWindow::SimulatedWindow(SimulatedWindows& system,
                                 const platform::NativeWindowSettings& windowSettings,
                                 platform::NativeWindowOwner& windowOwner)
    : owner(windowOwner), content(windowSettings.content), system_(system) {
    system_.window = this;
    ++system_.windowsMade;
    system_.calls.emplace_back("make");
}

SimulatedWindow::~SimulatedWindow() {
    system_.window = nullptr;
}

void SimulatedWindow::SetTitle(std::string_view newTitle) {
    title = newTitle;
    system_.calls.push_back("title " + title);
}

void SimulatedWindow::SetPosition(platform::Point onDesktop) {
    content.x = onDesktop.x;
    content.y = onDesktop.y;
    system_.calls.push_back("position" + Numbers({content.x, content.y}));
}

void SimulatedWindow::SetSize(platform::Size size) {
    content.width = size.width;
    content.height = size.height;
    system_.calls.push_back("size" + Numbers({size.width, size.height}));
    if (system_.echo == SizeEcho::AtOnce)
        owner.ContentChanged(content);
    else if (system_.echo == SizeEcho::Late)
        system_.Inject([this](platform::NativeWindowOwner& told) { told.ContentChanged(content); });
}

void SimulatedWindow::ChangeAttributes(std::uint32_t set, std::uint32_t clear) {
    system_.calls.push_back("attributes" +
                            Numbers({static_cast<int>(set), static_cast<int>(clear)}));
}

void SimulatedWindow::SetAlpha(float newAlpha) {
    alpha = newAlpha;
    system_.calls.push_back(alpha > 0.0F ? "alpha 1" : "alpha 0");
}

void SimulatedWindow::Show() {
    shown = true;
    system_.calls.emplace_back("show");
}

void SimulatedWindow::BeginDrag(platform::Point start) {
    system_.calls.push_back("drag" + Numbers({start.x, start.y}));
}

void SimulatedWindow::Commit() {
    if (marked_.IsEmpty())
        return;
    const platform::Frame frame = owner.CurrentFrame(0, owner.FrameExtent().height);
    screenSize_ = {frame.width, frame.height};
    screen_.clear();
    for (int y = 0; y < frame.height; ++y) {
        const std::uint32_t* line = frame.pixels + static_cast<std::ptrdiff_t>(y) * frame.stride;
        screen_.insert(screen_.end(), line, line + frame.width);
    }
    marked_ = {};
    ++presents;
    system_.calls.push_back("present" + Numbers({frame.width, frame.height}));
}

std::uint32_t SimulatedWindow::PixelOnScreen(int x, int y) const {
    const auto index = static_cast<std::size_t>(y) * static_cast<std::size_t>(screenSize_.width) +
                       static_cast<std::size_t>(x);
    return screen_.at(index) & 0xFFFFFFU;
}

std::unique_ptr<platform::NativeWindow>
SimulatedWindows::MakeWindow(const platform::NativeWindowSettings& settings,
                             platform::NativeWindowOwner& owner) {
    return std::make_unique<SimulatedWindow>(*this, settings, owner);
}

bool SimulatedWindows::Collect(platform::EventQueue& queue) {
    while (!events_.empty()) {
        queue.Post(std::move(events_.front()));
        events_.pop_front();
    }
    return false;
}

void SimulatedWindows::Inject(std::function<void(platform::NativeWindowOwner&)> event) {
    events_.push_back([this, told = std::move(event)] {
        if (window != nullptr)
            told(window->owner);
    });
}

void SimulatedWindows::Press(platform::Point onDesktop) {
    pointer = onDesktop;
    buttonDown = true;
    if (window == nullptr || !window->IsVisible() || !window->content.Contains(onDesktop))
        return;
    const platform::Point origin = window->content.Origin();
    Inject([=](platform::NativeWindowOwner& told) {
        told.ButtonPressed({onDesktop.x - origin.x, onDesktop.y - origin.y});
    });
}

void SimulatedWindows::Release() {
    buttonDown = false;
    Inject([this](platform::NativeWindowOwner& told) {
        told.ButtonReleased({pointer.x - window->content.x, pointer.y - window->content.y});
    });
}

void SimulatedWindows::ChangeFromOutside(const platform::Rect& content) {
    Inject([content, this](platform::NativeWindowOwner& told) {
        window->content = content;
        told.ContentChanged(content);
    });
}

} // namespace kqu::simulation
