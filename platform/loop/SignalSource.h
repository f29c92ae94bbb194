#pragma once

#include "platform/interfaces/EventSource.h"

#include <array>
#include <csignal>
#include <functional>

namespace kqu::platform {

/// SIGTERM, SIGINT and SIGHUP as one interruption of the event loop, and peace from SIGPIPE: a
/// server that dies while it is written to is an error of that write and nothing more.
///
/// SIGPIPE gets a handler that does nothing, not SIG_IGN, which the commands that the program
/// starts would inherit; for the same reason the signal mask stays untouched. System calls are
/// started again after the signals, so that a read in the middle of a stream is not cut short.
/// There is at most one at a time; the former handlers come back when it goes.
class SignalSource final : public EventSource {
  public:
    /// `terminate` is called once, at the first request to terminate. Raises std::system_error if
    /// the kernel gives no descriptor.
    explicit SignalSource(std::function<void()> terminate);
    ~SignalSource() override;
    SignalSource(const SignalSource&) = delete;
    SignalSource& operator=(const SignalSource&) = delete;

    [[nodiscard]] pollfd Watch() const override;
    bool Collect(EventQueue& queue) override;
    void Interrupt() override;

  private:
    static constexpr std::array signals{SIGTERM, SIGINT, SIGHUP, SIGPIPE};

    std::function<void()> terminate_;
    std::array<struct sigaction, signals.size()> former_{};
};

/// Sleeps until the descriptor has something to be read, or its end. False if a request to
/// terminate has come or comes first: whatever was waited for is no longer wanted.
[[nodiscard]] bool WaitForInput(int descriptor);

/// While it lives, a request to terminate ends the process at once and with status 0: for waits
/// without a loop, as long as there is nothing to be lost.
class EndingAtOnce {
  public:
    EndingAtOnce();
    ~EndingAtOnce();
    EndingAtOnce(const EndingAtOnce&) = delete;
    EndingAtOnce& operator=(const EndingAtOnce&) = delete;
};

} // namespace kqu::platform
