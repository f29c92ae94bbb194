#pragma once

#include "post/kqu-run/Child.h"
#include "post/kqu-run/CommandLine.h"
#include "post/kqu-run/LineReader.h"
#include "post/kqu-run/Rate.h"
#include "post/kqu-run/Relay.h"
#include "post/kqu-run/RowPoster.h"
#include "post/kqu-run/Signals.h"
#include "post/kqu-run/Terminal.h"
#include "post/kqu-run/tools/Tool.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace kqu::run {

/// One run of a command, from its start to its end. Everything happens on one thread, which waits
/// for the tool's output, for signals and for the time to look and to post; only the posting
/// itself, which may take its time, has a thread of its own.
class Run {
  public:
    explicit Run(Request request);

    /// Raises StatusError.
    Ending Execute();
    /// Shows a command that runs already until it ends, or a signal ends this. Raises StatusError.
    Ending Follow(pid_t process);

  private:
    using Clock = std::chrono::steady_clock;

    void Notify() const;
    void Start();
    void NameRow();
    void BeginPosting();
    Stream OpenStream();
    void Pump();
    [[nodiscard]] int Timeout() const;
    void TakeSignals();
    void TakeSignal(const signalfd_siginfo& signal);
    void LookAtChild();
    void ReadTool();
    void ReadChannel();
    void LookAtTool();
    [[nodiscard]] Progress Assessed(bool isLast);
    void PostIfDue(bool isLast);
    void Show(const std::function<void()>& step);

    Request request_;
    Launch launch_;
    Signals signals_;
    std::unique_ptr<Tool> tool_;
    Row row_;
    std::string name_;
    std::optional<Relay> relay_;
    /// The stand-in for a terminal, whose size follows the real one.
    bool hasTerminal_ = false;
    LineReader lines_;
    long channelRead_ = 0;

    pid_t child_ = 0;
    /// The tool itself, if the child is a command that runs it.
    pid_t process_ = 0;
    std::optional<Ending> ending_;
    bool isCutShort_ = false;
    bool isShown_ = true;
    /// Whether the terminal has asked the job to stop and nobody has let it go on since.
    bool askedToStop_ = false;

    std::optional<RowPoster> poster_;
    Clock::time_point nextPost_{};
    /// The tool's own words behind what was posted.
    std::optional<Progress> reported_;
    Rate rate_;
    double highest_ = 0;
    pid_t postedProcess_ = 0;
    Clock::time_point repeated_{};
    Clock::time_point nextLook_{};
    Clock::time_point nextSearch_{};
    /// Short at first, to see a tool that is done in no time.
    std::chrono::milliseconds pause_{5};
};

} // namespace kqu::run
