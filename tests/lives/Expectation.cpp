#include "tests/lives/Expectation.h"

#include "tests/oracle/Differences.h"

#include <algorithm>
#include <chrono>

// How the program goes through its rounds, passes and notifications; what each of them computes is
// told by the rules. Rows keep the order in which they came, which is how this program's tables
// enumerate.

namespace kqu::lives {

namespace {
using namespace std::chrono_literals;
using namespace kqu::functions;
constexpr std::size_t deepest = 64;

bool Contains(const oracle::Box& box, platform::Point point) {
    return platform::Rect{box[0], box[1], box[2], box[3]}.Contains(point);
}
} // namespace

Expectation::Expectation(World& world)
    : world_(world),
      repaint_(Runtime::Current().Loop(), [this] { Do([this] { Repaint(); }); }),
      reap_(Runtime::Current().Loop(), [this] { Do([this] { Reap(); }); }),
      guard_(Runtime::Current().Loop(),
             [this] {
                 guards_ = false;
                 Do([this] { EndIfEmpty("no row after two minutes"); });
             }),
      place_(Runtime::Current().Loop(), [this] { Do([this] { KeepPlace(); }); }),
      grace_(Runtime::Current().Loop(), [this] {
          graces_ = false;
          Do([this] {
              EndIfEmpty("no row after ten seconds");
              SetAlpha(true);
          });
      }) {
    repaint_.Start(500ms, LoopTimer::Repeat::Always);
    place_.Start(1s, LoopTimer::Repeat::Always);
    reap_.Start(3s, LoopTimer::Repeat::Always);
    guard_.Start(120s, LoopTimer::Repeat::Once);
    const platform::Rect screen = world_.machine.windows.screens[0];
    kept_ = oracle::SavedPlace(world_.Read(World::placeFile), screen.width, screen.height)
                .value_or(oracle::DefaultPlace(screen.width, panel_.width));
    panel_.left = kept_.left;
    panel_.top = kept_.top;
    Sized(panel_.Resize(kept_.width, panel_.height, false, true, 0));
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
    } catch (const std::bad_optional_access&) {
        end_ = "a value is no text";
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
    if (HasRows())
        phase_ = (phase_ + 1) % 6;
}

void Expectation::EndIfEmpty(const char* why) const {
    if (!HasRows())
        throw Ends{why};
}

void Expectation::SetAlpha(bool visible) {
    world_.Need<SetWindowAlpha>();
    visible_ = visible;
    ++alphaCalls_;
}

void Expectation::Sized(bool laidOut) const {
    world_.Need<DisableScreenUpdates>();
    if (laidOut)
        world_.Need<SizeWindow>();
    world_.Need<EnableScreenUpdates>();
}

void Expectation::KeepPlace() {
    if (kept_ == Place())
        return;
    kept_ = Place();
    if (world_.preferencesFolder)
        world_.place = oracle::PlaceFile(kept_);
}

void Expectation::Reap() {
    if (!HasRows())
        return;
    passes_.push_back({Count() - 1});
    WalkOn();
}

void Expectation::WalkOn() {
    for (Pass& pass = passes_.back(); pass.index >= 0; --pass.index) {
        if (pass.index >= Count())
            throw Ends{"a place beyond the table's end"};
        const oracle::Row& row = rows_[static_cast<std::size_t>(pass.index)].second;
        if (!row.contains("pid"))
            continue;
        pass.process = oracle::Whole(std::get<double>(row.at("pid")));
        pass.asks = true;
        world_.Need<popen>();
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

void Expectation::ErrorWasAskedFor(bool isError) {
    Do([&] {
        if (isError)
            world_.Need<pclose>();
        else
            StartPumping(Pump::Command);
    });
}

void Expectation::CommandEnded(const std::string& printed) {
    Do([&] {
        const bool isForRow = commands_.back();
        commands_.pop_back();
        if (!isForRow)
            return;
        if (!oracle::IsListed(passes_.back().process, printed))
            RemoveRow(passes_.back().index);
        StartPumping(Pump::Reaper);
    });
}

void Expectation::RemoveRow(int index) {
    if (index >= Count())
        throw Ends{"a place beyond the table's end"};
    rows_.erase(rows_.begin() + index);
    const bool laidOut = panel_.RowWent(Count());
    if (HasRows())
        return Sized(laidOut);
    SetAlpha(false);
    graces_ = true;
    grace_.Start(10s, LoopTimer::Repeat::Once);
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
    if (pump == Pump::NewRow) {
        SetAlpha(true);
        FinishNotification();
    } else if (pump == Pump::Command) {
        world_.Need<feof>();
    } else if (pump == Pump::Reaper) {
        --passes_.back().index;
        WalkOn();
    }
}

void Expectation::Notified(const platform::PostedNotification& posted) {
    Do([&] {
        const std::string name = posted.name.value_or("");
        if (!posted.object || !posted.userInfo || oracle::Place(name, "KQS_disk") == 0)
            return FinishNotification();
        auto row = std::find_if(rows_.begin(), rows_.end(),
                                [&](const auto& entry) { return oracle::Same(entry.first, name); });
        const bool isNew = row == rows_.end();
        if (isNew) {
            row = rows_.insert(row, {name, {}});
            Sized(panel_.RowCame(Count(), world_.machine.windows.screens[0].height));
        }
        const auto* tool = std::get_if<std::string>(&*posted.object);
        if ((isNew || LetsThrough()) && tool != nullptr)
            oracle::TakeIn(row->second, *tool, oracle::SentIn(*posted.userInfo), Disks());
        panel_.lastCount = Count();
        if (isNew)
            StartPumping(Pump::NewRow);
        else
            FinishNotification();
    });
}

oracle::Disks Expectation::Disks() const {
    oracle::Disks disks{world_.Read(World::lookUpFile), {}};
    for (std::size_t i = 0; i < World::disks.size() && world_.Has<MountedVolumes>(); ++i)
        if ((world_.mounted >> i & 1) != 0)
            disks.volumes.push_back({world_.diskNameFails ? "" : World::disks[i].disk,
                                     World::disks[i].name,
                                     world_.volumeInfoFails ? 0 : World::filesOnVolume});
    disks.asking = [this](bool forFiles) {
        if (forFiles)
            return world_.Need<FSGetVolumeInfo>();
        world_.Need<FSCopyDiskIDForVolume>();
        if (world_.diskNameFails)
            return;
        world_.Need<CFStringGetCStringOfCarbon>();
        world_.Need<CFRelease>();
    };
    return disks;
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
    world_.Need<IsWindowCollapsed>();
    if (!world_.machine.windows.window->collapsed)
        return;
    world_.Need<UpdateCollapsedWindowDockTile>();
    ++tiles_;
}

void Expectation::Closed() {
    Do([] { throw Ends{"the panel was closed"}; });
}

bool Expectation::Objects(std::uint32_t message) {
    bool objects = false;
    Do([&] {
        oracle::Source source;
        if (HasRows() && world_.Has<IOPSCopyPowerSourcesInfo>() && world_.hasSources) {
            world_.Need<IOPSGetProvidingPowerSourceType>();
            world_.Need<CFRelease>();
            if ((source = world_.source))
                world_.Need<CFStringGetCString>();
        }
        objects = oracle::Objects(Count(), message, world_.switches, source, source);
    });
    return objects;
}

void Expectation::Pressed(platform::Point inContent) {
    Do([&] {
        if (Contains(panel_.grip, inContent)) {
            held_ = Held::Grip;
            inDrag_ = true;
            column_ = inContent.x - panel_.grip[0];
        } else if (Contains(panel_.bar, inContent)) {
            held_ = Held::Bar;
        } else {
            world_.Need<DragWindow>();
            ++drags_;
        }
    });
}

void Expectation::Dragged() {
    Do([&] {
        const platform::Point pointer = world_.machine.windows.pointer;
        if (held_ == Held::Grip)
            Sized(panel_.Drag(column_, pointer.x, pointer.y, Count()));
    });
}

void Expectation::Released() {
    if (std::exchange(held_, Held::Nothing) == Held::Grip)
        inDrag_ = false;
}

void Expectation::Wheel(platform::Point inContent, int deltaY) {
    if (Contains(panel_.list, inContent) || Contains(panel_.bar, inContent))
        panel_.Wheel(deltaY);
}

void Expectation::ChangedFromOutside(const platform::Rect& content) {
    Do([&] {
        const bool resized = content.width != panel_.width || content.height != panel_.height;
        panel_.left = content.x;
        panel_.top = content.y;
        panel_.width = content.width;
        panel_.height = content.height;
        if (resized && !inDrag_)
            Sized(panel_.Resize(content.width, content.height, false, false, Count()));
    });
}

std::string Expectation::Difference() {
    if (!broken_.empty())
        return broken_;
    const Window1& panel = Window1::Instance();
    auto& windows = world_.machine.windows;
    // Where on the bar a press or a drag leads is the bar's own matter, within its limits.
    const int value = panel.ScrollBar1->Value();
    if (held_ == Held::Bar && value >= 0 && value <= std::max(0, panel_.maximum))
        panel_.value = value;
    alphaCallsSeen_ +=
        std::count_if(windows.calls.begin(), windows.calls.end(),
                      [](const std::string& call) { return call.starts_with("alpha"); });
    windows.calls.clear();
    const platform::Rect content{panel_.left, panel_.top, panel_.width, panel_.height};
    const std::tuple<const char*, long, long> numbers[] = {
        {"window's size", windows.window->content == content, true},
        {"visible", windows.window->IsVisible(), visible_},
        {"changes of alpha", alphaCallsSeen_, alphaCalls_},
        {"LastDragUpdate", panel.LastDragUpdate, lastDragUpdate_},
        {"MyInc", panel.MyInc, phase_},
        {"indrag", panel.indrag, inDrag_},
        {"Timer1", panel.Timer1->Mode() == TimerMode::Once, guards_},
        {"Timer3", panel.Timer3->Mode() == TimerMode::Once, graces_},
        {"tile updates", windows.window->tileUpdates, tiles_},
        {"drags", windows.window->drags, drags_},
        {"kept place", panel.mywidth, kept_.width},
    };
    std::string wrong = oracle::Difference(world_.machine, panel_, Count(), world_.isSibling);
    for (const auto& [what, is, should] : numbers)
        if (wrong.empty())
            wrong = oracle::Differs(what, std::to_string(is), std::to_string(should));
    const Dictionary& table = *panel.MyWindowEventList->MyDict;
    for (int i = 0; i < Count() && wrong.empty(); ++i) {
        const auto& [name, row] = rows_[static_cast<std::size_t>(i)];
        wrong = oracle::Differs("name", table.Key(i), name);
        if (wrong.empty())
            wrong = oracle::Difference(*table.Value(name).ObjectAs<Dictionary>(), row);
    }
    return wrong;
}

std::string Expectation::DifferenceAtRest() {
    if (!passes_.empty() || !commands_.empty() || !rounds_.empty() || coming_)
        return "at rest: the program has left something out";
    if (world_.machine.processes.openStreams != 0)
        return "at rest: an open command";
    const std::string file = world_.Read(World::placeFile);
    const std::string wrong = oracle::Differs("file", file, world_.place.value_or(file));
    return wrong.empty() ? Difference() : wrong;
}

} // namespace kqu::lives
