#include "framework/loop/EventLoop.h"

#include "framework/loop/LoopTimer.h"

#include <algorithm>
#include <optional>
#include <utility>

namespace kqu {

EventLoop::EventLoop(platform::Waiting& waiting) : waiting_(waiting) {}

platform::Registration EventLoop::Watch(platform::EventSource& source) {
    sources_.push_back(&source);
    return platform::Registration([this, watched = &source] { std::erase(sources_, watched); });
}

platform::Registration EventLoop::BetweenHandlers(Handler work) {
    const std::uint64_t serial = nextSerial_++;
    between_.emplace(serial, std::move(work));
    return platform::Registration([this, serial] { between_.erase(serial); });
}

void EventLoop::Post(Handler delivery) {
    queue_.push_back({nextSerial_++, std::move(delivery)});
}

void EventLoop::Run() {
    while (GoesOn())
        RunOnce();
}

void EventLoop::DoEvents() {
    if (GoesOn() && depth_ < maximumDepth)
        Round(Patience::NoWait);
}

bool EventLoop::GoesOn() {
    for (std::size_t index = 0; !quitting_ && index < sources_.size(); ++index)
        Guarded([source = sources_[index]] { source->Interrupt(); });
    return !quitting_;
}

void EventLoop::Round(Patience patience) {
    struct Level {
        int& depth;
        explicit Level(int& value) : depth(value) { ++depth; }
        ~Level() { --depth; }
    } const level(depth_);

    WorkBetweenHandlers();
    const bool more = Collect();
    if (patience == Patience::MayWait && !more && queue_.empty() && !quitting_) {
        Sleep();
        static_cast<void>(Collect());
    }
    DispatchDeliveries();
    DispatchTimers();
    WorkBetweenHandlers();
}

bool EventLoop::Collect() {
    bool more = false;
    // A source may go while another one is looked at.
    const auto sources = sources_;
    for (platform::EventSource* source : sources)
        if (std::find(sources_.begin(), sources_.end(), source) != sources_.end())
            Guarded([&] { more = source->Collect(*this) || more; });
    return more;
}

void EventLoop::Sleep() {
    std::optional<platform::Moment> until;
    const auto noLaterThan = [&until](std::optional<platform::Moment> moment) {
        if (moment && (!until || *moment < *until))
            until = moment;
    };
    for (const LoopTimer* timer : timers_)
        noLaterThan(timer->Due());

    std::vector<pollfd> watched;
    for (const platform::EventSource* source : sources_) {
        noLaterThan(source->Due());
        if (const pollfd watch = source->Watch(); watch.fd >= 0)
            watched.push_back(watch);
    }
    waiting_.Wait(watched, until);
}

void EventLoop::DispatchDeliveries() {
    // What is posted while this runs belongs to the next round; a nested round may have taken
    // some of ours.
    const std::uint64_t end = nextSerial_;
    while (GoesOn() && !queue_.empty() && queue_.front().serial < end) {
        const Handler handler = std::move(queue_.front().handler);
        queue_.pop_front();
        Guarded(handler);
    }
}

void EventLoop::DispatchTimers() {
    const platform::Moment now = Now();
    while (GoesOn()) {
        LoopTimer* timer = FirstDue(now);
        if (timer == nullptr)
            return;
        // The next due time is set first: an action that pumps events may meet its own timer again.
        // The action may drop the timer.
        timer->ArmAgain(now);
        const Handler action = timer->action_;
        Guarded(action);
    }
}

LoopTimer* EventLoop::FirstDue(platform::Moment until) const {
    LoopTimer* first = nullptr;
    for (LoopTimer* timer : timers_)
        if (timer->Due() <= until && (first == nullptr || timer->Due() < first->Due()))
            first = timer;
    return first;
}

void EventLoop::WorkBetweenHandlers() {
    const auto work = between_;
    for (const auto& [serial, handler] : work)
        // Work may be taken back by the work before it.
        if (GoesOn() && between_.contains(serial))
            Guarded(handler);
}

void EventLoop::Guarded(const Handler& handler) {
    try {
        handler();
    } catch (...) {
        try {
            if (exceptionHandler_)
                exceptionHandler_(std::current_exception());
            else
                Quit();
        } catch (...) {
            Quit();
        }
    }
}

} // namespace kqu
