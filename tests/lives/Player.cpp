#include "tests/lives/Player.h"

#include "tests/lives/Expectation.h"
#include "tests/lives/Wire.h"

#include <filesystem>
#include <iterator>
#include <map>
#include <optional>

namespace kqu::lives {

namespace {
using namespace std::chrono_literals;
using platform::NativeWindowOwner;
using platform::Point;

class Player {
  public:
    Player(const Life& life, Report& report) : life_(life), report_(report) {
        HookCommands();
        world_.KeepFunctions();
        LearnKinds();
        machine_.centre.beforeDelivery = [this](const platform::PostedNotification& posted) {
            LookAtDelivery();
            expectation_->Notified(posted);
        };
    }

    void Run() {
        Begin();
        while (!HasEnded() && report_.IsGood()) {
            Loop().RunOnce();
            Look();
            if (!HasEnded())
                Complain(expectation_->DifferenceAtRest());
            EndSoon();
        }
        ++report_.lives;
        report_.seconds += std::chrono::duration<double>(machine_.time.SinceStart()).count();
        LookAtTheEnd();
    }

  private:
    static EventLoop& Loop() { return Runtime::Current().Loop(); }
    [[nodiscard]] bool HasEnded() { return machine_.HasEnded(); }

    void Begin() {
        for (const Event& event : life_)
            if (event.at == 0)
                Happen(event);
            else
                machine_.At(std::chrono::milliseconds(event.at), [this, &event] {
                    if (event.nested)
                        waiting_.push_back(event);
                    else
                        Happen(event);
                });
        end_ = 20s + std::chrono::milliseconds(life_.empty() ? 0 : life_.back().at);
        machine_.At(end_, [this] {
            waiting_.clear();
            world_.LetAllEnd();
        });
        machine_.app->Start();
        expectation_.emplace(world_);
        rounds_ = Loop().BetweenHandlers([this] {
            Look();
            if (expectation_->RoundTurns())
                for (const Event& waiting : std::exchange(waiting_, {}))
                    Happen(waiting);
        });
        Loop().RunOnce();
        isOpen_ = true;
    }

    void Happen(const Event& event) {
        if (HasEnded())
            return;
        ++report_.events;
        world_.kinds.at(event.kind)(event.values);
    }

    /// At rest: whether what has to go without processes has gone a while after they have ended,
    /// and then closes the panel if rows without a process hold it.
    void EndSoon() {
        const auto now = machine_.time.SinceStart();
        if (now < end_)
            return;
        if (quietSince_ == 0ns)
            quietSince_ = now;
        if (now > quietSince_ + 200s)
            Complain("end: it never comes");
        if (now < quietSince_ + 20s || !expectation_->HasRows())
            return;
        if (expectation_->HasProcesses())
            Complain("row: its process ended long ago");
        Close();
    }

    /// The whole program, wherever no handler is at work but those that wait in a pump.
    void Look() {
        if (!isOpen_ || !report_.IsGood())
            return;
        ++report_.looks;
        if (expectation_->End() && !HasEnded())
            Complain("no end: " + *expectation_->End());
        else if (!expectation_->End() && HasEnded())
            Complain("end: for no reason");
        else if (!HasEnded())
            Complain(expectation_->Difference());
    }

    void LookAtDelivery() {
        Look();
        if (HasEnded())
            Complain("delivery: to an ending program");
    }

    void Complain(const std::string& complaint) {
        if (complaint.empty() || !report_.IsGood())
            return;
        report_.Complain(complaint + ", at " + std::to_string(machine_.time.SinceStart() / 1ms) +
                         " ms");
        Loop().Quit();
    }

    void LookAtTheEnd() {
        if (machine_.app->ExitStatus() != 0)
            Complain("exit status: not 0");
        if (machine_.centre.listeners != 1 || machine_.windows.windowsMade != 1)
            Complain("listeners or windows: not one");
        // What was open when a function could not be found is left as it is, by the handlers that
        // still have to return as well.
        if (expectation_->End().value_or("").ends_with("be found") ||
            !(world_.Has<functions::feof>() && world_.Has<functions::fread>() &&
              world_.Has<functions::ferror>() && world_.Has<functions::pclose>()))
            return;
        if (machine_.processes.openStreams != 0)
            Complain("end: an open command");
        const int last = machine_.handles.AddText("");
        int left = -1 - static_cast<int>(world_.sourceNames.size());
        for (int handle = 1; handle <= last; ++handle)
            left += machine_.handles.Text(handle) || machine_.handles.Blob(handle) ? 1 : 0;
        if (left > 0)
            Complain("handles: " + std::to_string(left) + " left");
    }

    void Close() {
        Deliver([this](NativeWindowOwner& panel) {
            expectation_->Closed();
            panel.CloseRequested();
        });
    }

    /// Through the window system, so that it comes in a round of the loop.
    void Deliver(std::function<void(NativeWindowOwner&)> event) {
        machine_.windows.Inject([this, event = std::move(event)](NativeWindowOwner& panel) {
            LookAtDelivery();
            event(panel);
        });
    }

    void HookCommands();
    void LearnKinds();
    void Press(const Values& values);
    void Move(const Values& values);
    void Wheel(const Values& values);
    void ChangeFromOutside(const Values& values);
    void Ask(int value);

    const Life& life_;
    Report& report_;
    World world_;
    simulation::MachineWithVolumes& machine_ = world_.machine;
    simulation::SimulatedWindows& windows_ = machine_.windows;
    std::optional<Expectation> expectation_;
    platform::Registration rounds_;
    std::vector<Event> waiting_;
    bool isOpen_ = false;
    std::chrono::nanoseconds end_{};
    std::chrono::nanoseconds quietSince_{};
    /// What each open command prints, and how many chunks of it the program has asked for.
    std::map<std::int32_t, std::pair<std::string, std::size_t>> commands_;
};

void Player::HookCommands() {
    using namespace kqu::functions;
    auto& table = machine_.functions;
    table.Set<popen>([this, open = table.Find<popen>()](const std::string& command,
                                                        const char* mode) -> std::int32_t {
        Look();
        if (isOpen_ && HasEnded())
            Complain("command: started by an ending program");
        expectation_->CommandStarted(command == World::listCommand);
        if (isOpen_ && world_.list >= ListMode::NoStream && world_.list < ListMode::ReadError)
            return world_.list == ListMode::NoStream ? 0 : -1;
        world_.output.clear();
        const std::int32_t stream = (*open)(command, mode);
        commands_[stream] = {world_.output, 0};
        return stream;
    });
    table.Set<feof>([this, ask = table.Find<feof>()](std::int32_t stream) {
        const int atEnd = (*ask)(stream);
        if (atEnd != 0)
            expectation_->Needs<pclose>();
        else
            expectation_->Needs<fread>();
        return atEnd;
    });
    table.Set<fread>([this, read = table.Find<fread>()](void* block, std::size_t size,
                                                        std::size_t count, std::int32_t stream) {
        Look();
        if (isOpen_ && !HasEnded())
            machine_.time.Pass(world_.delay);
        ++commands_[stream].second;
        const std::size_t result = (*read)(block, size, count, stream);
        expectation_->Needs<ferror>();
        return result;
    });
    table.Set<ferror>([this](std::int32_t) {
        const bool isError = isOpen_ && world_.list == ListMode::ReadError;
        expectation_->ErrorWasAskedFor(isError);
        return isError ? 1 : 0;
    });
    table.Set<pclose>([this, close = table.Find<pclose>()](std::int32_t stream) {
        const int status = (*close)(stream);
        const auto& [printed, chunks] = commands_[stream];
        expectation_->CommandEnded(printed.substr(0, chunks * World::chunkSize));
        commands_.erase(stream);
        return status;
    });
}

void Player::LearnKinds() {
    world_.kinds["Post"] = [this](const Values& values) {
        machine_.centre.Post(NotificationOf(values));
    };
    world_.kinds["Ask"] = [this](const Values& values) { Ask(values[0]); };
    world_.kinds["Press"] = [this](const Values& values) { Press(values); };
    world_.kinds["Move"] = [this](const Values& values) { Move(values); };
    world_.kinds["Wheel"] = [this](const Values& values) { Wheel(values); };
    world_.kinds["Outside"] = [this](const Values& values) { ChangeFromOutside(values); };
    world_.kinds["Close"] = [this](const Values&) { Close(); };
    world_.kinds["Release"] = [this](const Values&) {
        if (std::exchange(windows_.buttonDown, false))
            Deliver([this](NativeWindowOwner& panel) {
                expectation_->Released();
                panel.ButtonReleased({0, 0});
            });
    };
    world_.kinds["LoseDisplay"] = [this](const Values&) {
        Deliver([this](NativeWindowOwner&) { expectation_->Closed(); });
        windows_.LoseDisplay();
    };
}

void Player::Move(const Values& values) {
    const platform::Rect content = windows_.window->content;
    windows_.pointer = {content.x + values[0] % 900 - 100, content.y + values[1] % 1000 - 100};
    // Where half a row decides, as often as not.
    if (values[2] % 2 == 0)
        windows_.pointer.y =
            content.y + content.height + (values[3] % 2 == 0 ? 36 : -38) + values[1] % 3;
    if (!windows_.buttonDown)
        return;
    Deliver([this](NativeWindowOwner& panel) {
        const Point origin = windows_.window->content.Origin();
        expectation_->Dragged();
        panel.PointerMoved({windows_.pointer.x - origin.x, windows_.pointer.y - origin.y});
    });
}

void Player::Wheel(const Values& values) {
    const platform::Rect content = windows_.window->content;
    const Point at{values[0] % (content.width + 20) - 5, values[1] % (content.height + 20) - 5};
    const int delta = values[2] % 5 - 2;
    Deliver([=, this](NativeWindowOwner& panel) {
        expectation_->Wheel(at, delta);
        panel.WheelTurned(at, values[3] % 3 - 1, delta);
    });
}

void Player::ChangeFromOutside(const Values& values) {
    platform::Rect changed = windows_.window->content;
    if (values[3] % 3 != 0)
        changed = {values[0] % 1400 - 100, values[1] % 900 - 50, changed.width, changed.height};
    if (values[3] % 3 != 1) {
        changed.width = 50 + values[1] % 700;
        changed.height = 20 + values[2] % 800;
    }
    Deliver([=, this](NativeWindowOwner& panel) {
        windows_.window->content = changed;
        expectation_->ChangedFromOutside(changed);
        panel.ContentChanged(changed);
    });
}

void Player::Press(const Values& values) {
    const platform::Rect content = windows_.window->content;
    Point at{values[1] % content.width, values[2] % content.height};
    if (values[0] % 4 < 2)
        at = {content.width - 20 + values[1] % 20, content.height - 17 + values[2] % 17};
    else if (values[0] % 4 == 2)
        at.x = content.width - 11 + values[1] % 10;
    // The button may be pressed anywhere, but only what can be seen is told.
    windows_.pointer = {content.x + at.x, content.y + at.y};
    if (std::exchange(windows_.buttonDown, true) || !windows_.window->IsVisible())
        return;
    Deliver([=, this](NativeWindowOwner& panel) {
        expectation_->Pressed(at);
        panel.ButtonPressed(at);
    });
}

void Player::Ask(int value) {
    constexpr std::array<std::uint32_t, 8> messages{0xE0000240, 0xE0000250, 0xE0000270, 0xE0000280,
                                                    0xE0000310, 0xE0000300, 0xE0000320, 0};
    Deliver([this, message = messages.at(static_cast<std::size_t>(value % 8))](NativeWindowOwner&) {
        const bool should = expectation_->Objects(message);
        if (machine_.power.Ask(message) != should)
            Complain("inhibitor: should be " + std::to_string(should));
    });
}

std::ptrdiff_t OpenFiles() {
    const std::filesystem::directory_iterator files("/proc/self/fd");
    return std::distance(begin(files), end(files));
}
} // namespace

void Play(const Life& life, Report& report) {
    const std::ptrdiff_t before = OpenFiles();
    Player(life, report).Run();
    if (OpenFiles() != before)
        report.Complain("open files: other than before");
}

} // namespace kqu::lives
