#include "framework/FunctionLookup.h"
#include "framework/events/Application.h"
#include "framework/events/SleepNotification.h"
#include "framework/ui/System.h"
#include "framework/values/Text.h"
#include "monitor/TaskRecord.h"
#include "panel/Window1.h"

#include <memory>

// Every notification enters here. It is checked, gets a row if its name is new, and goes to the
// handler of its tool. A new row makes the panel visible once it is painted.

namespace kqu {

namespace {
constexpr std::string_view nameMark = "KQS_disk";

/// The least time between two updates of known rows during a press of the mouse button, in
/// sixtieths of a second.
constexpr std::int32_t dragUpdateTicks = 15;

/// Redraws the icon of a minimised panel after every notification, also after one that was
/// rejected. An exception that leaves the handler skips it.
void UpdateTileIfCollapsed(platform::NativeWindow* window) {
    if (Lookup<functions::IsWindowCollapsed>()(window))
        Lookup<functions::UpdateCollapsedWindowDockTile>()(window);
}
} // namespace

void Window1::DiskNotification_Received(const Ref<CFString>& name, const Ref<CFObject>& object,
                                        const Ref<CFDictionary>& userInfo) {
    if (startupdone && userInfo && name && object) {
        const std::string key = CFCast<CFString>(CFDeepCopy(name))->Text();
        if (Contains(key, nameMark))
            TakeIn(key, object, userInfo);
    }
    UpdateTileIfCollapsed(Native());
    // Whether the machine may sleep depends on what runs.
    SleepNotification::AnswerMayHaveChanged();
}

void Window1::TakeIn(const std::string& name, const Ref<CFObject>& object,
                     const Ref<CFDictionary>& userInfo) {
    const Ref<Dictionary> table = MyWindowEventList->MyDict;
    bool isNew = false;
    if (!table->HasKey(name)) {
        table->SetValue(name, std::make_shared<Dictionary>());
        MakeRoomForNewRow();
        isNew = true;
    }
    if (LetThrough(isNew))
        Dispatch(name, object, userInfo);
    LastDictcount = table->Count();
    if (isNew)
        PresentNewRow();
}

void Window1::MakeRoomForNewRow() {
    // LastDictcount may be too high after a removal. The panel then grows below the bottom of the
    // screen. This is meant.
    const bool shortOfRoom = MyWindowEventList->MyDict->Count() != LastDictcount &&
                             Screen(0).Height < Top() + Height() + TheRowHeight;
    if (shortOfRoom) {
        ChangeWindowSize(Width(), Height(), true, true);
        ScrollBar1->Refresh(Erasing::EraseBackground);
    } else {
        ChangeWindowSize(Width(), Height() + TheRowHeight, false, true);
    }
}

bool Window1::LetThrough(bool isNew) {
    // An update that is held back is lost, not sent later. This is meant. All rows share one clock;
    // a new row does not wait for it and does not set it.
    if (isNew || !System::MouseDown())
        return true;
    const std::int32_t now = Ticks();
    if (TicksBetween(LastDragUpdate, now) <= dragUpdateTicks)
        return false;
    LastDragUpdate = now;
    return true;
}

void Window1::Dispatch(const std::string& name, const Ref<CFObject>& object,
                       const Ref<CFDictionary>& userInfo) {
    const Ref<CFObject> tool = CFDeepCopy(object);
    if (tool->TypeID() != CFTypeID::String)
        return;
    const std::string& toolName = CFCast<CFString>(tool)->Text();
    if (EqualsIgnoringCase(toolName, "KQMS"))
        ParseBackgroundScannerNotification(name, userInfo);
    else if (EqualsIgnoringCase(toolName, "KQDefrag"))
        ParseBackgroundDefragNotification(name, userInfo);
    else if (EqualsIgnoringCase(toolName, "KQBackup"))
        ParseBackgroundBackupNotification(name, userInfo);
}

void Window1::PresentNewRow() {
    MyWindowEventList->Refresh(Erasing::KeepBackground);
    SetTitleForRows(MyWindowEventList->MyDict->Count());
    UpdateNow();
    // A further notification may be delivered inside this; the table is consistent by now.
    Application::Current().DoEvents();
    // The panel becomes visible as the last step: the user never sees a row that is not painted.
    Lookup<functions::SetWindowAlpha>()(Native(), 1.0F);
}

} // namespace kqu
