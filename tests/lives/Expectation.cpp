#include "tests/lives/Expectation.h"

#include "tests/lives/Wire.h"

#include <algorithm>
#include <chrono>
#include <cmath>

// How the program goes through its rounds, passes and notifications. Rows keep the order in which
// they came, which is how this program's tables enumerate.

namespace kqu::lives {

namespace {
using namespace std::chrono_literals;
constexpr int rowHeight = 73;
constexpr std::size_t deepest = 64;
} // namespace

Expectation::Expectation(World& world)
    : world_(world),
      repaint_(Runtime::Current().Loop(), [this] { Do([this] { Repaint(); }); }),
      reap_(Runtime::Current().Loop(), [this] { Do([this] { Reap(); }); }),
      guard_(Runtime::Current().Loop(), [this] { Do([this] { Guard(); }); }),
      place_(Runtime::Current().Loop(), [this] { Do([this] { KeepPlace(); }); }),
      grace_(Runtime::Current().Loop(), [this] { Do([this] { Grace(); }); }) {
    repaint_.Start(500ms, LoopTimer::Repeat::Always);
    place_.Start(1s, LoopTimer::Repeat::Always);
    reap_.Start(3s, LoopTimer::Repeat::Always);
    guard_.Start(120s, LoopTimer::Repeat::Once);
    FindPlace();
    ChangeSize(content_.width, content_.height, false, true);
    SetTitle();
}

void Expectation::Do(const std::function<void()>& work) {
    if (end_)
        return;
    if (coming_)
        broken_ = "pump: left out";
    try {
        work();
    } catch (const Ends& end) {
        end_ = end.reason;
    }
}

bool Expectation::HasProcesses() const {
    return std::any_of(rows_.begin(), rows_.end(),
                       [](const auto& entry) { return entry.second.contains("pid"); });
}

void Expectation::Repaint() {
    // One that fell behind fires once.
    if (std::exchange(lastRepaint_, world_.machine.time.Now()) == world_.machine.time.Now())
        broken_ = "timer: twice in one moment";
    if (!rows_.empty())
        phase_ = (phase_ + 1) % 6;
}

void Expectation::Guard() {
    guards_ = false;
    if (rows_.empty())
        throw Ends{"no row after two minutes"};
}

void Expectation::Grace() {
    graces_ = false;
    if (rows_.empty())
        throw Ends{"no row after ten seconds"};
    world_.Need<functions::SetWindowAlpha>();
    visible_ = true;
    ++alphaCalls_;
}

void Expectation::Reap() {
    if (rows_.empty())
        return;
    passes_.push_back({Count() - 1});
    WalkOn();
}

void Expectation::WalkOn() {
    for (Pass& pass = passes_.back(); pass.index >= 0; --pass.index) {
        if (pass.index >= Count())
            throw Ends{"a place beyond the table's end"};
        const Row& row = rows_[static_cast<std::size_t>(pass.index)].second;
        if (!row.contains("pid"))
            continue;
        pass.process = Whole(std::get<double>(row.at("pid")));
        pass.asks = true;
        world_.Need<functions::popen>();
        return;
    }
    passes_.pop_back();
}

void Expectation::CommandStarted(bool isForRow) {
    Do([&] {
        if (isForRow && (passes_.empty() || !std::exchange(passes_.back().asks, false)))
            broken_ = "list of processes: asked for by nobody";
        commands_.push_back(isForRow);
        StartPumping(Pump::Command);
    });
}

void Expectation::EndWasAskedFor(bool atEnd) {
    Do([&] {
        if (atEnd)
            world_.Need<functions::pclose>();
        else
            world_.Need<functions::fread>();
    });
}

void Expectation::ChunkWasRead() {
    Do([&] { world_.Need<functions::ferror>(); });
}

void Expectation::ErrorWasAskedFor(bool isError) {
    Do([&] {
        if (isError)
            world_.Need<functions::pclose>();
        else
            StartPumping(Pump::Command);
    });
}

void Expectation::CommandEnded(const std::string& text) {
    Do([&] {
        const bool isForRow = commands_.back();
        commands_.pop_back();
        if (!isForRow)
            return;
        // The process has a whole line for itself, up to blanks before it, and the line has an end.
        const Pass& pass = passes_.back();
        const std::string line = std::to_string(pass.process) + "\n";
        bool lives = false;
        for (std::size_t at = text.find(line); at != std::string::npos;
             at = text.find(line, at + 1))
            lives =
                lives || (at > 0 && std::string(" \n\r").find(text[at - 1]) != std::string::npos);
        if (!lives) {
            if (pass.index >= Count())
                throw Ends{"a place beyond the table's end"};
            rows_.erase(rows_.begin() + pass.index);
            RowRemoved();
        }
        StartPumping(Pump::Reaper);
    });
}

void Expectation::RowRemoved() {
    if (rows_.empty()) {
        world_.Need<functions::SetWindowAlpha>();
        visible_ = false;
        ++alphaCalls_;
        lastCount_ = 0;
        graces_ = true;
        grace_.Start(10s, LoopTimer::Repeat::Once);
    } else {
        // Fewer rows than the panel has room for, a part of a row counting as room.
        const bool shrinks = Count() * rowHeight < content_.height;
        ChangeSize(content_.width, content_.height - (shrinks ? rowHeight : 0), false, true);
    }
    SetTitle();
}

void Expectation::StartPumping(Pump pump) {
    if (rounds_.size() < deepest)
        coming_ = pump;
    else
        AfterPump(pump);
}

bool Expectation::RoundTurns() {
    const std::optional<Pump> coming = std::exchange(coming_, std::nullopt);
    Do([&] {
        if (coming || rounds_.empty()) {
            rounds_.push_back(coming.value_or(Pump::Outermost));
            return;
        }
        const Pump pump = rounds_.back();
        rounds_.pop_back();
        AfterPump(pump);
    });
    return coming.has_value();
}

void Expectation::AfterPump(Pump pump) {
    switch (pump) {
    case Pump::Outermost:
        break;
    case Pump::NewRow:
        world_.Need<functions::SetWindowAlpha>();
        visible_ = true;
        ++alphaCalls_;
        FinishNotification();
        break;
    case Pump::Command:
        world_.Need<functions::feof>();
        break;
    case Pump::Reaper:
        --passes_.back().index;
        WalkOn();
        break;
    }
}

void Expectation::Notified(const platform::PostedNotification& posted) {
    Do([&] {
        const std::string name = Folded(posted.name.value_or(""));
        if (!posted.object || !posted.userInfo || name.find("kqs_disk") == std::string::npos) {
            FinishNotification();
            return;
        }
        auto row = std::find_if(rows_.begin(), rows_.end(),
                                [&](const auto& entry) { return Folded(entry.first) == name; });
        const bool isNew = row == rows_.end();
        if (isNew) {
            row = rows_.insert(row, {*posted.name, Row()});
            const bool isShort = Count() != lastCount_ && world_.machine.windows.screens[0].height <
                                                              content_.y + content_.height + 73;
            ChangeSize(content_.width, content_.height + (isShort ? 0 : rowHeight), isShort, true);
        }
        const auto* tool = std::get_if<std::string>(&*posted.object);
        if ((isNew || LetsThrough()) && tool != nullptr)
            TakeIn(row->second, Folded(*tool), *posted.userInfo, world_);
        lastCount_ = Count();
        if (!isNew) {
            FinishNotification();
            return;
        }
        SetTitle();
        StartPumping(Pump::NewRow);
    });
}

bool Expectation::LetsThrough() {
    if (!world_.machine.windows.buttonDown)
        return true;
    const auto now = world_.machine.time.Now().time_since_epoch();
    const auto ticks = static_cast<int>(now.count() * 60 / 1000000000);
    if (ticks - lastDragUpdate_ <= 15)
        return false;
    lastDragUpdate_ = ticks;
    return true;
}

void Expectation::FinishNotification() {
    world_.Need<functions::IsWindowCollapsed>();
    if (!world_.machine.windows.window->collapsed)
        return;
    world_.Need<functions::UpdateCollapsedWindowDockTile>();
    ++tiles_;
}

void Expectation::SetTitle() {
    title_ = std::string(world_.isSibling ? "Marlstone Pro" : "Brackwater") + " Scheduled Task" +
             (Count() < 2 ? "" : "s");
}

void Expectation::Closed() {
    Do([] { throw Ends{"the panel was closed"}; });
}

bool Expectation::IsOnBattery() const {
    if (!world_.Has<functions::IOPSCopyPowerSourcesInfo>() || !world_.hasSources)
        return false;
    world_.Need<functions::IOPSGetProvidingPowerSourceType>();
    if (world_.source)
        world_.Need<functions::CFStringGetCString>();
    world_.Need<functions::CFRelease>();
    // A name that doesn't fit is no name with "AC" in it.
    return world_.source &&
           (world_.source->size() >= 100 || Folded(*world_.source).find("ac") == std::string::npos);
}

bool Expectation::Objects(std::uint32_t message) {
    constexpr std::array<std::uint32_t, 5> refusable{0xE0000240, 0xE0000250, 0xE0000270, 0xE0000280,
                                                     0xE0000310};
    bool objects = false;
    Do([&] {
        if (rows_.empty())
            return;
        const bool battery = IsOnBattery();
        const bool allows = battery && world_.preventScheduleOnBattery ? true
                            : battery && !world_.sleepOnBattery        ? false
                                                                       : world_.sleepOnAC;
        objects = !allows && std::count(refusable.begin(), refusable.end(), message) > 0;
    });
    return objects;
}

} // namespace kqu::lives
