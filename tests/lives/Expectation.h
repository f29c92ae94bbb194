#pragma once

#include "framework/events/LoopTimer.h"
#include "tests/lives/World.h"
#include "tests/oracle/Rules.h"

#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace kqu::lives {

/// What the program must be like at each moment of a life, worked out from the rules alone, in step
/// with it: told of every delivery, command and round of the event loop, it follows the program
/// into its nested pumps and out again. Its own timers are started in the same moments as the
/// program's and before them, so that each fires just ahead of the one it stands for.
class Expectation {
  public:
    /// To be made when the program is started, before it opens. The world outlives it.
    explicit Expectation(World& world);

    /// Why the program must have ended by the next moment at which it is looked at, if it must.
    [[nodiscard]] const std::optional<std::string>& End() const { return end_; }
    /// How the open panel differs, "what: is, should be"; empty if it doesn't. Not to be asked
    /// while a handler runs that does not wait in a pump.
    [[nodiscard]] std::string Difference();
    /// The same for what must hold when all handlers have returned.
    [[nodiscard]] std::string DifferenceAtRest();
    [[nodiscard]] bool HasRows() const { return !rows_.empty(); }
    /// Whether a row names a process, and so is not to stay when all processes have ended.
    [[nodiscard]] bool HasProcesses() const;

    // Each is to be called just ahead of what it tells of.
    void Notified(const platform::PostedNotification& posted);
    /// A round of the event loop begins or ends; whether it begins inside a handler.
    bool RoundTurns();
    /// `isForRow`: the command is the list of processes.
    void CommandStarted(bool isForRow);
    /// The program needs that function.
    template <class F>
    void Needs() {
        Do([this] { world_.Need<F>(); });
    }
    void ErrorWasAskedFor(bool isError);
    /// `printed` is all that the program has read.
    void CommandEnded(const std::string& printed);
    void Pressed(platform::Point inContent);
    void Dragged();
    void Released();
    void Wheel(platform::Point inContent, int deltaY);
    void ChangedFromOutside(const platform::Rect& content);
    void Closed();
    /// Whether the program objects to that power message.
    bool Objects(std::uint32_t message);

  private:
    enum class Pump { Outermost, NewRow, Command, Reaper };
    enum class Held { Nothing, Grip, Bar };
    /// A pass of the reaper, at that row of the table.
    struct Pass {
        int index;
        std::int32_t process = 0;
        bool asks = false;
    };

    void Do(const std::function<void()>& work);
    void Repaint();
    void Reap();
    void EndIfEmpty(const char* why) const;
    void SetAlpha(bool visible);
    void KeepPlace();
    void StartPumping(Pump pump);
    void AfterPump(Pump pump);
    void WalkOn();
    void RemoveRow(int index);
    void FinishNotification();
    void Sized(bool laidOut) const;
    [[nodiscard]] oracle::Disks Disks() const;
    [[nodiscard]] oracle::PanelPlace Place() const {
        return {panel_.left, panel_.top, panel_.width};
    }
    [[nodiscard]] bool LetsThrough();
    [[nodiscard]] int Count() const { return static_cast<int>(rows_.size()); }

    World& world_;
    std::optional<std::string> end_;
    std::vector<std::pair<std::string, oracle::Row>> rows_;
    std::vector<Pump> rounds_;
    std::optional<Pump> coming_;
    std::vector<Pass> passes_;
    std::vector<bool> commands_;
    std::string broken_;
    platform::Moment lastRepaint_;

    oracle::Panel panel_;
    oracle::PanelPlace kept_{};
    int lastDragUpdate_ = 0, phase_ = 0, column_ = 0, tiles_ = 0, drags_ = 0, alphaCalls_ = 1;
    long alphaCallsSeen_ = 0;
    bool visible_ = false, guards_ = true, graces_ = false, inDrag_ = false;
    Held held_ = Held::Nothing;

    LoopTimer repaint_, reap_, guard_, place_, grace_;
};

} // namespace kqu::lives
