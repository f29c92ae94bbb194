#pragma once

#include "framework/Runtime.h"
#include "globals/Module1.h"
#include "panel/Window1.h"
#include "platform/functions/Handles.h"
#include "shell/App.h"
#include "tests/support/MadeUpVolumes.h"
#include "tests/support/SimulatedProcesses.h"
#include "tests/support/SimulatedWaiting.h"
#include "tests/support/SimulatedWindows.h"

#include <chrono>
#include <initializer_list>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace kqu::simulation {

using namespace std::chrono_literals;
using platform::OtherWireValue;
using platform::PostedNotification;
using platform::WireDictionary;
using platform::WireValue;

/// Text values of user information, as the tools send them.
using Texts = std::initializer_list<std::pair<const char*, const char*>>;

/// The distributed notification centre in memory.
class SimulatedCentre final : public platform::DistributedNotifications,
                              public platform::EventSource {
  public:
    [[nodiscard]] platform::Registration Listen(Listener listener) override;
    bool Collect(platform::EventQueue& queue) override;

    void Post(PostedNotification posted);
    void Post(const std::string& name, const std::string& object, Texts texts);

    /// Told of each notification just before the program is.
    Listener beforeDelivery;
    int listeners = 0;

  private:
    Listener listener_;
    std::vector<PostedNotification> posted_;
};

/// The system's power messages, sent by the test.
class SimulatedPower final : public platform::PowerMessages {
  public:
    [[nodiscard]] platform::Registration Listen(Listener listener, Reason reason) override;
    void AnswerMayHaveChanged() override { ++changes; }

    /// Whether the program objects to that message now.
    [[nodiscard]] bool Ask(std::uint32_t message) const;
    [[nodiscard]] bool IsListenedTo() const { return static_cast<bool>(listener_); }
    /// What the program says that it runs.
    [[nodiscard]] std::string WhatRuns() const { return reason_(); }
    /// How often the program has said that its answer may have changed.
    int changes = 0;

  private:
    Listener listener_;
    Reason reason_;
};

/// A whole machine in memory on which lives of the program run in virtual time: its clock, windows,
/// notification centre, processes, power and files, and the functions that are reached by name.
/// Those on files, volumes and strings are the real ones, on made-up volumes: "/" is "sda1", and
/// "/media/My Disk", labelled "Photos", is "sdb1".
class SimulatedMachine {
  public:
    SimulatedMachine();
    ~SimulatedMachine();

    /// Starts the program and runs its opening.
    void Start();
    /// Lets that much time pass, or less if the program ends before. With no time it lets the
    /// program take in what has come.
    void Advance(std::chrono::nanoseconds duration = {});
    /// Starts the program, if it was not, and runs it to its end. How long it lived, in seconds.
    double RunToEnd();
    [[nodiscard]] bool HasEnded() { return runtime_->Loop().IsQuitting(); }

    /// Lets something happen at that time after the start.
    void At(std::chrono::nanoseconds sinceStart, std::function<void()> event) {
        time.At(sinceStart, std::move(event));
    }

    /// Posts a scanner's notification with a process that lives.
    void PostScanner(const std::string& name, const std::string& pid);

    [[nodiscard]] Window1& Panel() { return Window1::Instance(); }
    [[nodiscard]] Ref<Dictionary> Row(const std::string& name);
    [[nodiscard]] const std::string& Title() { return Panel().Title(); }
    /// Writes a file of the machine, making its folders. The path is absolute.
    void WriteFile(const std::string& path, const std::string& text);
    [[nodiscard]] std::string ReadFile(const std::string& path) const;

    SimulatedWaiting time;
    SimulatedWindows windows;
    SimulatedCentre centre;
    SimulatedPower power;
    SimulatedProcesses processes;
    platform::Handles handles;
    platform::FunctionTable functions;
    platform::ScreenUpdates screenUpdates;
    MadeUpVolumes tree;
    const std::filesystem::path root = tree.Root();
    /// What the version question answers; nothing lets it fail.
    std::optional<std::int32_t> systemVersion = 0x1068;
    std::uint32_t consoleOwner = 1000;
    std::vector<std::string> identityCalls;
    /// The source that provides power; nothing lets the question fail.
    std::optional<std::string> powerSource = "AC Power";

  private:
    void FillFunctions();
    void FillIdentityFunctions();
    void FillPowerFunctions();

    std::unique_ptr<Runtime> runtime_;
    bool started_ = false;

  public:
    /// The application, from its making to the machine's end.
    std::unique_ptr<App> app;
};

} // namespace kqu::simulation
