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
    explicit Player(const Life& life) : life_(life) {
        HookCommands();
        world_.removable.emplace(machine_.functions);
        machine_.centre.beforeDelivery = [this](const platform::PostedNotification& posted) {
            LookAtDelivery();
            expectation_->Notified(posted);
        };
    }

    Outcome Run() {
        Begin();
        while (!HasEnded() && outcome_.complaint.empty()) {
            Loop().RunOnce();
            Look();
            if (!HasEnded())
                Complain(expectation_->DifferenceAtRest());
            EndSoon();
        }
        outcome_.seconds = std::chrono::duration<double>(machine_.time.SinceStart()).count();
        LookAtTheEnd();
        return outcome_;
    }

  private:
    static EventLoop& Loop() { return Runtime::Current().Loop(); }
    [[nodiscard]] bool HasEnded() { return machine_.HasEnded(); }

    void Begin() {
        auto event = life_.begin();
        for (; event != life_.end() && event->at == 0; ++event)
            Happen(*event);
        for (; event != life_.end(); ++event)
            machine_.At(std::chrono::milliseconds(event->at), [this, happening = *event] {
                if (happening.nested)
                    waiting_.push_back(happening);
                else
                    Happen(happening);
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
        if (!isOpen_ || !outcome_.complaint.empty())
            return;
        ++outcome_.looks;
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
        if (complaint.empty() || !outcome_.complaint.empty())
            return;
        outcome_.complaint =
            complaint + ", at " + std::to_string(machine_.time.SinceStart() / 1ms) + " ms";
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
    void ReadChunk(std::int32_t stream);
    void Happen(const Event& event);
    void HappenByHand(const Event& event);
    void ChangeFromOutside(const std::array<int, 4>& values);
    void Press(const std::array<int, 4>& values);
    void Ask(int value);

    const Life& life_;
    World world_;
    simulation::MachineWithVolumes& machine_ = world_.machine;
    std::optional<Expectation> expectation_;
    platform::Registration rounds_;
    std::vector<Event> waiting_;
    bool isOpen_ = false;
    std::chrono::nanoseconds end_{};
    std::chrono::nanoseconds quietSince_{};
    /// What is still to be read of each open command, and what the program has got of it.
    std::map<std::int32_t, std::pair<std::string, std::string>> commands_;
    Outcome outcome_;
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
        commands_[stream] = {world_.output, ""};
        return stream;
    });
    table.Set<feof>([this, ask = table.Find<feof>()](std::int32_t stream) {
        const int atEnd = (*ask)(stream);
        expectation_->EndWasAskedFor(atEnd != 0);
        return atEnd;
    });
    table.Set<fread>([this, read = table.Find<fread>()](void* block, std::size_t size,
                                                        std::size_t count, std::int32_t stream) {
        ReadChunk(stream);
        const std::size_t result = (*read)(block, size, count, stream);
        expectation_->ChunkWasRead();
        return result;
    });
    table.Set<ferror>([this](std::int32_t) {
        const bool isError = isOpen_ && world_.list == ListMode::ReadError;
        expectation_->ErrorWasAskedFor(isError);
        return isError ? 1 : 0;
    });
    table.Set<pclose>([this, close = table.Find<pclose>()](std::int32_t stream) {
        const int status = (*close)(stream);
        expectation_->CommandEnded(commands_[stream].second);
        commands_.erase(stream);
        return status;
    });
}

void Player::ReadChunk(std::int32_t stream) {
    Look();
    if (isOpen_ && !HasEnded())
        machine_.time.Pass(world_.delay);
    auto& [left, got] = commands_[stream];
    // The program takes a chunk up to the first pair of zeros, and it is filled up with zeros.
    std::string chunk = left.substr(0, World::chunkSize);
    left.erase(0, World::chunkSize);
    chunk.resize(World::chunkSize);
    got += chunk.substr(0, chunk.find(std::string(2, '\0')));
}

void Player::Happen(const Event& event) {
    if (HasEnded())
        return;
    ++outcome_.events;
    switch (event.kind) {
    case Kind::Post:
        machine_.centre.Post(NotificationOf(event));
        break;
    case Kind::Ask:
        Ask(event.values[0]);
        break;
    case Kind::Close:
        Close();
        break;
    case Kind::LoseDisplay:
        Deliver([this](NativeWindowOwner&) { expectation_->Closed(); });
        machine_.windows.LoseDisplay();
        break;
    case Kind::Press:
    case Kind::Move:
    case Kind::Release:
    case Kind::Wheel:
    case Kind::Outside:
        HappenByHand(event);
        break;
    default:
        world_.Happen(event);
    }
}

void Player::HappenByHand(const Event& event) {
    const auto& values = event.values;
    auto& windows = machine_.windows;
    const platform::Rect content = windows.window->content;
    switch (event.kind) {
    case Kind::Press:
        Press(values);
        break;
    case Kind::Move:
        windows.pointer = {content.x + values[0] % 900 - 100, content.y + values[1] % 1000 - 100};
        // Where half a row decides, as often as not.
        if (values[2] % 2 == 0)
            windows.pointer.y =
                content.y + content.height + (values[3] % 2 == 0 ? 36 : -38) + values[1] % 3;
        if (windows.buttonDown)
            Deliver([this](NativeWindowOwner& panel) {
                const Point origin = machine_.windows.window->content.Origin();
                expectation_->Dragged();
                panel.PointerMoved(
                    {machine_.windows.pointer.x - origin.x, machine_.windows.pointer.y - origin.y});
            });
        break;
    case Kind::Release:
        if (std::exchange(windows.buttonDown, false))
            Deliver([this](NativeWindowOwner& panel) {
                expectation_->Released();
                panel.ButtonReleased({0, 0});
            });
        break;
    case Kind::Wheel: {
        const Point at{values[0] % (content.width + 20) - 5, values[1] % (content.height + 20) - 5};
        const int delta = values[2] % 5 - 2;
        Deliver([=, this](NativeWindowOwner& panel) {
            expectation_->Wheel(at, delta);
            panel.WheelTurned(at, values[3] % 3 - 1, delta);
        });
        break;
    }
    default:
        ChangeFromOutside(values);
    }
}

void Player::ChangeFromOutside(const std::array<int, 4>& values) {
    platform::Rect changed = machine_.windows.window->content;
    if (values[3] % 3 != 0)
        changed = {values[0] % 1400 - 100, values[1] % 900 - 50, changed.width, changed.height};
    if (values[3] % 3 != 1) {
        changed.width = 50 + values[1] % 700;
        changed.height = 20 + values[2] % 800;
    }
    Deliver([=, this](NativeWindowOwner& panel) {
        machine_.windows.window->content = changed;
        expectation_->ChangedFromOutside(changed);
        panel.ContentChanged(changed);
    });
}

void Player::Press(const std::array<int, 4>& values) {
    auto& windows = machine_.windows;
    const platform::Rect content = windows.window->content;
    Point at{values[1] % content.width, values[2] % content.height};
    if (values[0] % 4 < 2)
        at = {content.width - 20 + values[1] % 20, content.height - 17 + values[2] % 17};
    else if (values[0] % 4 == 2)
        at.x = content.width - 11 + values[1] % 10;
    // The button may be pressed anywhere, but only what can be seen is told.
    windows.pointer = {content.x + at.x, content.y + at.y};
    if (std::exchange(windows.buttonDown, true) || !windows.window->IsVisible())
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

Outcome Play(const Life& life) {
    const std::ptrdiff_t before = OpenFiles();
    Outcome outcome = Player(life).Run();
    if (outcome.complaint.empty() && OpenFiles() != before)
        outcome.complaint = "open files: other than before";
    return outcome;
}

} // namespace kqu::lives
