#include "tests/support/SimulatedMachine.h"

#include "framework/files/FolderItem.h"
#include "platform/functions/Functions.h"
#include "platform/functions/LinuxFunctions.h"

#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>

namespace kqu::simulation {

platform::Registration SimulatedCentre::Listen(Listener listener) {
    listener_ = std::move(listener);
    ++listeners;
    return platform::Registration([this] { listener_ = nullptr; });
}

bool SimulatedCentre::Collect(platform::EventQueue& queue) {
    for (PostedNotification& posted : posted_)
        queue.Post([this, notification = std::move(posted)] {
            if (beforeDelivery)
                beforeDelivery(notification);
            if (listener_)
                listener_(notification);
        });
    posted_.clear();
    return false;
}

void SimulatedCentre::Post(PostedNotification posted) {
    if (listener_)
        posted_.push_back(std::move(posted));
}

void SimulatedCentre::Post(const std::string& name, const std::string& object, Texts texts) {
    WireDictionary userInfo;
    for (const auto& [key, value] : texts)
        userInfo.emplace_back(key, std::string(value));
    Post(PostedNotification{name, object, std::move(userInfo)});
}

platform::Registration SimulatedPower::Listen(Listener listener, Reason reason) {
    listener_ = std::move(listener);
    reason_ = std::move(reason);
    return platform::Registration([this] { listener_ = nullptr; });
}

bool SimulatedPower::Ask(std::uint32_t message) const {
    return listener_ && listener_(static_cast<std::int32_t>(message));
}

SimulatedMachine::SimulatedMachine() {
    FolderItem::SetRoot(root);
    // The preferences folder of the machine's user.
    std::filesystem::create_directories(root / "home/.config");
    setenv("XDG_CONFIG_HOME", "/home/.config", 1);
    FillFunctions();
    runtime_ = std::make_unique<Runtime>(platform::Platform{
        time, windows, centre, power, functions, screenUpdates, {&windows, &centre}});
    app = std::make_unique<App>();
}

SimulatedMachine::~SimulatedMachine() {
    app.reset();
    runtime_.reset();
    FolderItem::SetRoot("/");
}

void SimulatedMachine::Start() {
    app->Start();
    started_ = true;
    runtime_->Loop().RunOnce();
}

void SimulatedMachine::Advance(std::chrono::nanoseconds duration) {
    const auto reached = std::make_shared<bool>(false);
    time.At(time.SinceStart() + duration, [reached] { *reached = true; });
    while (!*reached && !HasEnded())
        runtime_->Loop().RunOnce();
    // What happened at that very moment is taken in as well.
    if (!HasEnded())
        runtime_->Loop().DoEvents();
}

double SimulatedMachine::RunToEnd() {
    if (!started_)
        app->Start();
    started_ = true;
    runtime_->Loop().Run();
    return std::chrono::duration<double>(time.SinceStart()).count();
}

void SimulatedMachine::PostScanner(const std::string& name, const std::string& pid) {
    processes.living.insert(std::stoi(pid));
    centre.Post(name, "KQMS", {{"PID", pid.c_str()}, {"Progress", "250"}, {"VolName", "Data"}});
}

Ref<Dictionary> SimulatedMachine::Row(const std::string& name) {
    return Panel().MyWindowEventList->MyDict->Value(name).ObjectAs<Dictionary>();
}

void SimulatedMachine::WriteFile(const std::string& path, const std::string& text) {
    tree.Write(path.substr(1), text);
}

std::string SimulatedMachine::ReadFile(const std::string& path) const {
    std::ifstream file(root / path.substr(1), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

void SimulatedMachine::FillFunctions() {
    platform::RegisterWindowFunctions(functions, screenUpdates);
    platform::RegisterTextFunctions(functions);
    processes.Register(functions);
    FillIdentityFunctions();
    FillPowerFunctions();
    platform::RegisterCoreFoundationFunctions(functions, handles);
    tree.Mount("8:1", "sda1", "/");
    tree.Mount("8:17", "sdb1", "/media/My Disk");
    tree.Label("sdb1", "Photos");
    platform::RegisterVolumeFunctions(functions, handles, root);
}

void SimulatedMachine::FillIdentityFunctions() {
    functions.Set<kqu::functions::Gestalt>([this](std::string_view selector, std::int32_t& value) {
        if (selector != "sysv" || !systemVersion)
            return false;
        value = *systemVersion;
        return true;
    });
    functions.Set<kqu::functions::lstat>(
        [this](const std::string&, std::byte* record, std::size_t) {
            std::memcpy(record + 12, &consoleOwner, sizeof consoleOwner);
            return 0;
        });
    functions.Set<kqu::functions::seteuid>([this](std::uint32_t user) {
        identityCalls.push_back("seteuid " + std::to_string(user));
        return 0;
    });
    functions.Set<kqu::functions::setuid>([this](std::uint32_t user) {
        identityCalls.push_back("setuid " + std::to_string(user));
        return 0;
    });
    functions.Set<kqu::functions::getuid>([] { return 4242U; });
}

void SimulatedMachine::FillPowerFunctions() {
    functions.Set<kqu::functions::IOPSCopyPowerSourcesInfo>(
        [this] { return handles.AddText("sources"); });
    functions.Set<kqu::functions::IOPSGetProvidingPowerSourceType>(
        [this](std::int32_t) { return powerSource ? handles.AddText(*powerSource) : 0; });
}

} // namespace kqu::simulation
