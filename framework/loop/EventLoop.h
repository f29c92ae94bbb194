#pragma once

#include "platform/interfaces/EventSource.h"
#include "platform/interfaces/Registration.h"
#include "platform/interfaces/Waiting.h"

#include <cstdint>
#include <deque>
#include <exception>
#include <functional>
#include <map>
#include <utility>
#include <vector>

namespace kqu {

class LoopTimer;

/// The one loop of the program, on one thread. Sources put deliveries on its queue, timers come
/// due, and it hands both to their handlers, one at a time.
///
/// Loops nest: a handler that calls DoEvents lets other handlers run inside itself, the same timer
/// included, down to a fixed depth. An exception that leaves a handler goes to the exception
/// handler at whatever depth it happens; it never unwinds through the handlers that wait above.
class EventLoop final : public platform::EventQueue {
  public:
    using Handler = std::function<void()>;
    using ExceptionHandler = std::function<void(std::exception_ptr)>;

    /// How deep loops may nest. A deeper pump delivers nothing but interruptions, and what is
    /// pending waits.
    static constexpr int maximumDepth = 64;

    explicit EventLoop(platform::Waiting& waiting);
    EventLoop(const EventLoop&) = delete;
    EventLoop& operator=(const EventLoop&) = delete;

    /// Lets the loop watch a source for as long as the registration lives.
    [[nodiscard]] platform::Registration Watch(platform::EventSource& source);

    /// Runs `work` at the start and at the end of each pass, nested ones included: the place where
    /// windows draw and show what has changed.
    [[nodiscard]] platform::Registration BetweenHandlers(Handler work);

    void SetExceptionHandler(ExceptionHandler handler) { exceptionHandler_ = std::move(handler); }

    void Post(Handler delivery) override;

    /// Runs until Quit.
    void Run();

    /// One round that sleeps until there is something to do.
    void RunOnce() { Round(Patience::MayWait); }

    /// One round without waiting: what the sources have by now and each timer that is due, each at
    /// most once. A sender that never stops cannot hold the caller.
    void DoEvents();

    /// Sets the mark to end. Returns to its caller; nothing more is dispatched at any depth, and
    /// Run returns when the handlers have unwound.
    void Quit() { quitting_ = true; }
    [[nodiscard]] bool IsQuitting() const { return quitting_; }

    [[nodiscard]] platform::Moment Now() { return waiting_.Now(); }

  private:
    friend class LoopTimer;
    struct Delivery {
        std::uint64_t serial;
        Handler handler;
    };
    enum class Patience { MayWait, NoWait };

    void Round(Patience patience);
    /// Lets the sources interrupt. False once the loop is to end.
    [[nodiscard]] bool GoesOn();
    [[nodiscard]] bool Collect();
    void Sleep();
    void DispatchDeliveries();
    void DispatchTimers();
    [[nodiscard]] LoopTimer* FirstDue(platform::Moment until) const;
    void WorkBetweenHandlers();
    void Guarded(const Handler& handler);

    platform::Waiting& waiting_;
    std::vector<platform::EventSource*> sources_;
    /// In the order of their registration.
    std::map<std::uint64_t, Handler> between_;
    std::vector<LoopTimer*> timers_;
    std::deque<Delivery> queue_;
    ExceptionHandler exceptionHandler_;
    std::uint64_t nextSerial_ = 0;
    int depth_ = 0;
    bool quitting_ = false;
};

} // namespace kqu
