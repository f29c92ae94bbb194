#include "post/kqu-run/Run.h"

#include "post/kqu-run/LineReader.h"
#include "post/kqu-run/Processes.h"
#include "post/kqu-run/Rate.h"
#include "post/kqu-run/Relay.h"
#include "post/kqu-run/RowPoster.h"
#include "post/kqu-run/RowText.h"
#include "post/kqu-run/Signals.h"
#include "post/kqu-run/Terminal.h"
#include "post/kqu-run/tools/Tool.h"
#include "post/posting/DesktopNotification.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>
#include <exception>
#include <fcntl.h>
#include <filesystem>
#include <linux/kcmp.h>
#include <sys/stat.h>
#include <sys/syscall.h>

namespace kqu::run {

namespace {
constexpr std::chrono::milliseconds betweenLooks{250};
/// What has been read is made sense of this often, however much it is.
constexpr std::chrono::milliseconds betweenReads{50};
/// Changes are posted three times a second at most, so that the last post, which never waits, makes
/// the fourth.
constexpr std::chrono::milliseconds betweenPosts{334};
/// What doesn't change is posted again all the same, so that a messenger or a bus that has come
/// later knows it within five seconds.
constexpr std::chrono::seconds untilRepeated{2};

/// Whether two descriptors share one open file, so that what is written to them has an order.
bool AreOneFile(int one, int other) {
    return syscall(SYS_kcmp, getpid(), getpid(), KCMP_FILE, one, other) == 0;
}

/// Two terminals are one even if they were opened apart.
bool AreOneTerminal(int one, int other) {
    struct stat a {
    }, b{};
    return fstat(one, &a) == 0 && fstat(other, &b) == 0 && S_ISCHR(a.st_mode) &&
           a.st_rdev == b.st_rdev && isatty(one);
}

/// Whether a terminal sends that signal to a process group.
bool ComesFromTerminal(int signal) {
    constexpr std::array<int, 8> sent{SIGINT,  SIGQUIT,  SIGTSTP, SIGHUP,
                                      SIGCONT, SIGWINCH, SIGTTIN, SIGTTOU};
    return std::find(sent.begin(), sent.end(), signal) != sent.end();
}

bool EndsUs(std::uint32_t signal) {
    return signal == SIGTERM || signal == SIGINT || signal == SIGHUP || signal == SIGQUIT;
}

/// One run of a command, from its start to its end. Everything happens on one thread, which waits
/// for the tool's output, for signals and for the time to look and to post; only the posting
/// itself, which may take its time, has a thread of its own.
class Run {
  public:
    explicit Run(Request request) : request_(std::move(request)) {}

    Ending Execute() {
        Start();
        while (!ending_ || (relay_ && !relay_->IsDone() && !isCutShort_))
            Pump();
        if (relay_ && relay_->Failure() != 0) {
            post::Complain("kqu-run", std::strerror(relay_->Failure()), 0);
            if (ending_->signal == 0 && ending_->status == 0)
                ending_->status = 1; // as most tools have where their output cannot be written
        }
        Show([this] {
            ReadTool();
            PostIfDue(true);
            // A bus that is there takes a millisecond.
            poster_->Finish(std::chrono::milliseconds(300));
        });
        Reap(child_);
        Notify();
        return *ending_;
    }

    Ending Follow(pid_t process) {
        const Descriptor job(static_cast<int>(syscall(SYS_pidfd_open, process, 0)));
        launch_.arguments = ArgumentsOf(process);
        if (!job || launch_.arguments.empty())
            throw post::StatusError(
                "there is no command with the number " + std::to_string(process), 1);
        process_ = child_ = process;
        // What the job calls its operands begins there; without the right to it they stay unknown.
        std::error_code unknown;
        std::filesystem::current_path(WorkingFolderOf(process), unknown);
        NameRow();
        BeginPosting();
        std::array<pollfd, 2> polled{{{job.Number(), POLLIN, 0}, {signals_.Number(), POLLIN, 0}}};
        while (poll(polled.data(), polled.size(), static_cast<int>(betweenLooks.count())) <= 0 ||
               polled[0].revents == 0) {
            signalfd_siginfo signal{};
            while (signals_.Next(signal)) // none of them is the job's
                ActOn(static_cast<int>(signal.ssi_signo));
            Show([this] {
                tool_->Look(process_, false);
                PostIfDue(false);
            });
        }
        ending_.emplace();
        Notify();
        return *ending_;
    }

  private:
    using Clock = std::chrono::steady_clock;

    /// A job that failed leaves no row behind.
    void Notify() const {
        const bool isBad = ending_->status != 0 || ending_->signal != 0;
        if (request_.notifies == Request::Notifies::Never ||
            (request_.notifies == Request::Notifies::Failure && !isBad))
            return;
        std::string how = "has ended";
        if (ending_->signal != 0)
            how = "was ended by signal " + std::to_string(ending_->signal);
        else if (isBad)
            how = "has ended with status " + std::to_string(ending_->status);
        const std::string title = ToolName(launch_);
        post::ShowNotification(CleanText(title), CleanText(row_.Shown(row_.volume) + " " + how),
                               isBad);
    }

    void NameRow() {
        tool_ = Recognise(launch_);
        tool_->Prepare(launch_);
        row_ = tool_->GetRow();
        // No row is empty, whoever reads it.
        if (row_.volume.full.empty())
            row_.volume.full = ToolName(launch_);
        if (row_.volume.open.empty())
            row_.volume.open = ToolName(launch_);
        row_.tool = request_.tool != nullptr ? request_.tool : row_.tool;
        if (request_.volume)
            row_.volume = OpenName(*request_.volume);
        if (request_.destination)
            row_.destination = OpenName(*request_.destination);
        // The defragmenter's volume is known to the panel by its disk alone.
        if (request_.volume && row_.tool->name == "defragmenter")
            row_.disk = *request_.volume;
    }

    void Start() {
        launch_.arguments = request_.command;
        for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
            launch_.terminal[static_cast<std::size_t>(stream)] = isatty(stream) != 0;
        launch_.percentStream = request_.percentStream;
        NameRow();

        // The way from the stream that is read to us: a terminal where the stream is one.
        Stream stream;
        hasTerminal_ =
            launch_.stream != 0 && launch_.terminal[static_cast<std::size_t>(launch_.stream)];
        if (launch_.stream != 0)
            stream = hasTerminal_ ? OpenTerminalLike(launch_.stream) : OpenPipe();
        // Without a way to read it, nothing may have been added that we would take out again.
        if (launch_.stream != 0 && !stream.ours && launch_.filters)
            launch_.arguments = request_.command;
        const bool merges = AreOneFile(STDOUT_FILENO, STDERR_FILENO) ||
                            AreOneTerminal(STDOUT_FILENO, STDERR_FILENO);
        const int tools = stream.tools.Number();
        child_ = StartChild(launch_, signals_, launch_.stream == 1 || merges ? tools : -1,
                            launch_.stream == 2 || merges ? tools : -1);
        process_ = child_;
        if (stream.ours)
            relay_.emplace(std::move(stream.ours), launch_.stream, launch_.filters,
                           [this](std::string_view bytes) {
                               if (isShown_)
                                   lines_.Add(bytes);
                           });

        BeginPosting();
        nextSearch_ = nextLook_ = Clock::now() + pause_;
    }

    void BeginPosting() {
        const std::string unique = ToolName(launch_) + "." + std::to_string(child_) + "." +
                                   std::to_string(Clock::now().time_since_epoch().count());
        name_ = TaskName(request_.name.value_or(unique));
        const auto bus =
            request_.onSystemBus || geteuid() == 0 ? post::Bus::System : post::Bus::Session;
        row_.showsFiles = request_.showsFiles || bus == post::Bus::Session;
        Show([this, bus] {
            poster_.emplace(bus, request_.startsMessenger, request_.isVerbose);
            PostIfDue(false);
        });
    }

    void Pump() {
        std::vector<pollfd> polled{{signals_.Number(), POLLIN, 0}};
        if (relay_)
            relay_->Await(polled);
        if (poll(polled.data(), polled.size(), Timeout()) < 0)
            return;
        if (polled[0].revents != 0)
            TakeSignals();
        if (relay_)
            relay_->Work(polled[1], polled[2]);
        if (!ending_ && Clock::now() >= nextLook_)
            Show([this] { LookAtTool(); });
        Show([this] { PostIfDue(false); });
    }

    /// Once the tool runs, nothing but its end ends us: where showing fails, it goes on unseen.
    void Show(const std::function<void()>& step) {
        if (!isShown_)
            return;
        try {
            step();
        } catch (const std::exception& error) {
            isShown_ = false;
            if (request_.isVerbose)
                std::fprintf(stderr, "kqu-run: %s\n", error.what());
        }
    }

    /// Until something has to be done though nothing has come, in milliseconds.
    int Timeout() const {
        if (ending_)
            return relay_ && relay_->IsWaiting() ? -1 : 0;
        if (!isShown_)
            return -1;
        const auto now = Clock::now();
        auto next = nextLook_;
        if (reported_ != tool_->GetProgress())
            next = std::min(next, nextPost_);
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(next - now).count();
        return static_cast<int>(std::clamp<long>(left, 0, betweenLooks.count()));
    }

    void TakeSignals() {
        signalfd_siginfo signal{};
        bool hasChildChanged = false;
        while (signals_.Next(signal)) {
            hasChildChanged |= signal.ssi_signo == SIGCHLD;
            TakeSignal(signal);
        }
        // They come by their numbers: that the tool has stopped would come before what asked it to.
        if (hasChildChanged)
            LookAtChild();
    }

    void TakeSignal(const signalfd_siginfo& signal) {
        const auto number = static_cast<int>(signal.ssi_signo);
        // The terminal's own signals go to the whole process group, the tool included as long as it
        // has not left it.
        const bool isTools = signal.ssi_code == SI_KERNEL && ComesFromTerminal(number) &&
                             getpgid(child_) == getpgrp();
        askedToStop_ = number == SIGTSTP || (askedToStop_ && number != SIGCONT);
        if (number == SIGCHLD)
            return;
        if (ending_) {
            isCutShort_ = isCutShort_ || EndsUs(signal.ssi_signo);
        } else if (number == SIGWINCH && hasTerminal_ && relay_) {
            // The tool may have asked for the size before the stand-in had it.
            CopySize(launch_.stream, relay_->From());
            kill(process_, number);
        } else if (!isTools) {
            kill(child_, number);
        }
    }

    void LookAtChild() {
        const int stop = StoppedBy(child_);
        // Whoever waits for us shall see the job stop. A tool that is stopped by others, as by
        // those that slow processes down, is none of theirs.
        if (stop == SIGTSTP || stop == SIGTTIN || stop == SIGTTOU)
            ActOn(stop);
        else if (stop == SIGSTOP && askedToStop_) // it has tidied up first
            ActOn(SIGTSTP);
        ending_ = Ended(child_);
        if (ending_ && relay_)
            relay_->ToolHasEnded();
    }

    void ReadTool() {
        if (launch_.channel >= 0)
            ReadChannel();
        lines_.Lines([this](std::string_view line) { tool_->Read(line); });
    }

    /// The channel is a file in memory; what has been read is given back.
    void ReadChannel() {
        std::array<char, 16384> buffer{};
        ssize_t got = 0;
        while ((got = pread(launch_.channel, buffer.data(), buffer.size(), channelRead_)) > 0) {
            lines_.Add({buffer.data(), static_cast<std::size_t>(got)});
            channelRead_ += got;
        }
        fallocate(launch_.channel, FALLOC_FL_PUNCH_HOLE | FALLOC_FL_KEEP_SIZE, 0, channelRead_);
    }

    void LookAtTool() {
        const auto now = Clock::now();
        ReadTool();
        nextLook_ = std::min(now + betweenReads, nextSearch_);
        if (now < nextSearch_)
            return;
        nextSearch_ = now + pause_;
        nextLook_ = relay_ ? std::min(now + betweenReads, nextSearch_) : nextSearch_;
        pause_ = std::min(2 * pause_, betweenLooks);
        if (launch_.tool > 0) {
            const pid_t found = FindProcess(child_, ToolName(launch_));
            process_ = found != 0 ? found : child_;
        }
        tool_->Look(process_, relay_ || launch_.channel >= 0);
    }

    /// What is posted of the tool's progress. A bar never goes back within a phase, is full only
    /// when the tool has ended well, and a scan's goes only forward in the panel: of a scan in
    /// several phases only the first has one.
    Progress Assessed(bool isLast) {
        constexpr double almost = 0.999;
        Progress progress = tool_->GetProgress();
        const auto now = Clock::now();
        rate_.Add(now, progress);
        const bool isNewPhase = reported_ && progress.phase != reported_->phase;
        highest_ = isNewPhase ? 0 : highest_;
        reported_ = progress;
        const bool isOver = isLast && ending_->status == 0 && ending_->signal == 0;
        if (progress.share) {
            highest_ = std::max(highest_, std::min(*progress.share, almost));
            progress.share = isOver ? 1 : highest_;
            if (progress.phase > 0 && row_.tool->name == "scanner" && !isOver)
                progress.share.reset();
        }
        progress = WithNumbers(progress, isLast ? "" : rate_.Text(now), isOver);
        if (Shown(progress, row_).empty()) // no line is empty
            progress.text = ToolName(launch_);
        return progress;
    }

    void PostIfDue(bool isLast) {
        const auto now = Clock::now();
        const bool isNew =
            reported_ != tool_->GetProgress() || postedProcess_ != process_ || now >= repeated_;
        if (!isLast && (!isNew || nextPost_ > now))
            return;
        const Progress progress = Assessed(isLast);
        poster_->Post(MakeNotification(name_, row_, progress, process_, request_.after));
        nextPost_ = now + betweenPosts;
        postedProcess_ = process_;
        repeated_ = now + untilRepeated;
    }

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
} // namespace

Ending RunShown(Request request) {
    const pid_t process = request.process;
    Run run(std::move(request));
    return process != 0 ? run.Follow(process) : run.Execute();
}

} // namespace kqu::run
