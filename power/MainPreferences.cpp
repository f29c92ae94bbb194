#include "framework/corefoundation/CFPropertyList.h"
#include "framework/corefoundation/CFValues.h"
#include "framework/files/FolderItem.h"
#include "globals/Module1.h"

namespace kqu {

namespace {
constexpr const char* preferencesPath =
    "/Library/Application Support/Brackwater Utilities Support/BrackwaterPrefs.plist";

void ReadSwitch(const CFDictionary& preferences, const char* key, bool& setting) {
    if (preferences.ContainsKey(key))
        setting = CFCast<CFBoolean>(preferences.Value(key))->Value();
}
} // namespace

void Module1Globals::GetMainAppPrefsWithShell() {
    SleepOnAC = false;
    SleepOnBatt = true;
    PreventScheduleOnBatt = true;
    const Ref<FolderItem> file = GetFolderItem(preferencesPath, PathForm::Absolute);
    const Ref<CFObject> list = file ? CFPropertyListOf(*file) : nullptr;
    if (!list)
        return;
    // A top level or a switch of another kind raises, which ends the start and the program.
    const Ref<CFDictionary> preferences = CFCast<CFDictionary>(list);
    if (preferences->Count() <= 0)
        return;
    ReadSwitch(*preferences, "PreventScheduleOnBatt", PreventScheduleOnBatt);
    ReadSwitch(*preferences, "SleepOnAC", SleepOnAC);
    ReadSwitch(*preferences, "SleepOnBatt", SleepOnBatt);
}

} // namespace kqu
