#include "framework/FunctionLookup.h"
#include "framework/events/Application.h"
#include "framework/ui/System.h"
#include "framework/values/Text.h"
#include "monitor/TaskRecord.h"
#include "panel/Window1.h"

#include <memory>

// The one entrance: checks a notification, makes a row at first contact, gives the notification to
// the handler of its tool, and brings the panel into view when the row is ready.

namespace kqu {

namespace {
constexpr std::string_view nameMark = "KQS_disk";

/// While the mouse button is held an existing row takes one update per this many sixtieths.
constexpr std::int32_t dragUpdateTicks = 15;

/// The tile follows every notification, also one that was turned away; an exception that leaves
/// the handler has no use for it.
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
    // LastDictcount may be stale after a removal; the panel then grows past the screen's bottom,
    // and is meant to.
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
    // A throttled update is lost, not deferred. One clock serves all rows; a new row neither waits
    // for it nor moves it.
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
    // Last of all, so that the panel comes into view with its row already painted.
    Lookup<functions::SetWindowAlpha>()(Native(), 1.0F);
}

} // namespace kqu
