#include "shell/App.h"

#include "framework/FunctionLookup.h"
#include "globals/Module1.h"
#include "panel/Pictures.h"
#include "panel/Window1.h"
#include "power/SleepNote.h"

#include <memory>

namespace kqu {

namespace {
// System versions in the form 0xMMmb.
constexpr std::int32_t oldestVersion = 0x1039;
constexpr std::int32_t tenThree = 0x1030;
constexpr std::int32_t tenFour = 0x1040;
constexpr std::int32_t tenFive = 0x1050;
constexpr std::int32_t tenSix = 0x1060;

constexpr int ownerOffset = 12;
} // namespace

App::App() {
    Module1 = Module1Globals();
}

App::~App() {
    // The panel first: its handlers may still reach for what goes below.
    Window1::Release();
    Module1 = Module1Globals();
    DropPictures();
}

void App::Event_Open() {
    try {
        OpenSteps();
    } catch (...) {
        Quit(0);
    }
}

bool App::Event_UnhandledException(const RuntimeException&) {
    Quit(0);
    return true;
}

void App::OpenSteps() {
    CheckSystemVersion();
    BecomeConsoleUser();
    GetParentApp();
    Module1.isNoteBook = Module1.CheckNoteBook();
    // As the console user from here on: the file must be readable by that user.
    Module1.GetMainAppPrefsWithShell();
    Module1.MySleepNote = std::make_shared<SleepNote>();
    MakePanel();
}

void App::CheckSystemVersion() {
    std::int32_t version = 0;
    if (!Lookup<functions::Gestalt>()("sysv", version) || version < oldestVersion)
        return;
    Module1.TenThreeOrLater = version >= tenThree;
    Module1.TenFourOrLater = version >= tenFour;
    Module1.TenFiveOrLater = version >= tenFive;
    Module1.TenSixOrLater = version >= tenSix;
}

void App::BecomeConsoleUser() {
    const auto owner =
        static_cast<std::int32_t>(GetLStat("/dev/console")->UInt32Value(ownerOffset));
    if (owner > -1) {
        // Refused without privileges; that is no failure.
        Lookup<functions::seteuid>()(static_cast<std::uint32_t>(owner));
        Lookup<functions::setuid>()(static_cast<std::uint32_t>(owner));
        MyUID = owner;
    } else {
        MyUID = static_cast<std::int32_t>(Lookup<functions::getuid>()());
    }
}

void App::MakePanel() {
    // Found before the panel is first mentioned: without it there is never a panel at all.
    const auto setWindowAlpha = Lookup<functions::SetWindowAlpha>();
    Window1& panel = Window1::Instance();
    setWindowAlpha(panel.Native(), 0.0F);
    WasWin1 = true;
    panel.Show();
}

} // namespace kqu
