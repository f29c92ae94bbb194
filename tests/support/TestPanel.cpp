#include "tests/support/TestPanel.h"

#include "platform/x11/X11Window.h"

#include <gtest/gtest.h>
#include <initializer_list>
#include <poll.h>
#include <stdexcept>

namespace kqu::x11test {

namespace {
std::string Line(const char* what, std::initializer_list<int> numbers) {
    std::string line = what;
    for (const int number : numbers)
        line += ' ' + std::to_string(number);
    return line;
}
} // namespace

TestPanel::TestPanel(const platform::Rect& content, bool isFloating)
    : system_(platform::X11WindowSystem::Open()) {
    if (!system_)
        throw std::runtime_error("the display can't be opened");
    platform::NativeWindowSettings settings;
    settings.content = content;
    settings.globalFloating = isFloating;
    settings.resizeable = !isFloating;
    window_ = system_->MakeWindow(settings, *this);
    frame_ = content.Extent();
    pixels_.resize(static_cast<std::size_t>(frame_.width * frame_.height));
}

std::uint32_t TestPanel::Id() const {
    return static_cast<const platform::X11Window&>(*window_).Id();
}

void TestPanel::Appear(const Onlooker& onlooker) {
    window_->Show();
    window_->SetAlpha(1.0F);
    RunUntil(
        onlooker, [&] { return onlooker.IsViewable(Id()); }, "the window to be mapped");
}

void TestPanel::Vanish(const Onlooker& onlooker) {
    window_->SetAlpha(0.0F);
    RunUntil(
        onlooker, [&] { return !onlooker.IsViewable(Id()); }, "the window to be withdrawn");
}

void TestPanel::Resize(platform::Size size) {
    frame_ = size;
    pixels_.resize(static_cast<std::size_t>(frame_.width * frame_.height));
    window_->SetSize(size);
    window_->Present({0, 0, size.width, size.height});
}

void TestPanel::Fill(std::uint32_t colour, int first, int last) {
    const auto line = static_cast<std::ptrdiff_t>(frame_.width);
    std::fill(pixels_.begin() + first * line, pixels_.begin() + last * line, colour);
    window_->Present({0, first, frame_.width, last - first});
}

void TestPanel::Round() {
    if (window_)
        window_->Commit();
    static_cast<void>(system_->Collect(*this));
    for (auto left = queue_.size(); left > 0; --left) {
        const auto delivery = std::move(queue_.front());
        queue_.pop_front();
        delivery();
    }
    if (window_)
        window_->Commit();
}

void TestPanel::RoundTrip() {
    Round();
    static_cast<void>(system_->Collect(*this));
    static_cast<void>(system_->PointerPosition());
}

void TestPanel::RunFor(std::chrono::milliseconds time) {
    const auto end = std::chrono::steady_clock::now() + time;
    while (std::chrono::steady_clock::now() < end) {
        Round();
        pollfd watch = system_->Watch();
        poll(&watch, 1, 5);
    }
}

void TestPanel::RunUntil(const Onlooker& onlooker, const std::function<bool()>& condition,
                         const std::string& what) {
    Round();
    onlooker.WaitFor(condition, what, [this] { Round(); });
}

void TestPanel::Post(std::function<void()> delivery) {
    queue_.push_back(std::move(delivery));
}

void TestPanel::ContentChanged(const platform::Rect& content) {
    told.push_back(Line("content", {content.x, content.y, content.width, content.height}));
    if (onContent)
        onContent(content);
}

void TestPanel::ButtonPressed(platform::Point inContent) {
    told.push_back(Line("press", {inContent.x, inContent.y}));
    if (onPress)
        onPress(inContent);
}

void TestPanel::ButtonReleased(platform::Point inContent) {
    told.push_back(Line("release", {inContent.x, inContent.y}));
}

void TestPanel::PointerMoved(platform::Point inContent) {
    told.push_back(Line("move", {inContent.x, inContent.y}));
}

void TestPanel::WheelTurned(platform::Point inContent, int deltaX, int deltaY) {
    told.push_back(Line("wheel", {inContent.x, inContent.y, deltaX, deltaY}));
}

void TestPanel::CloseRequested() {
    told.emplace_back("close");
}

platform::Frame TestPanel::CurrentFrame() {
    return {pixels_.data(), frame_.width, frame_.height, frame_.width};
}

} // namespace kqu::x11test
