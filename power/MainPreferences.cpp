#include "framework/corefoundation/CFBoolean.h"
#include "framework/corefoundation/CFData.h"
#include "framework/corefoundation/CFDictionary.h"
#include "framework/corefoundation/CFPropertyList.h"
#include "framework/files/BinaryStream.h"
#include "framework/files/FolderItem.h"
#include "shell/Module1.h"

namespace kqu {

namespace {
constexpr const char* preferencesPath =
    "/Library/Application Support/Brackwater Utilities Support/BrackwaterPrefs.plist";

void ReadSwitch(const CFDictionary& preferences, const char* key, bool& setting) {
    if (preferences.ContainsKey(key))
        setting = CFCast<CFBoolean>(preferences.Value(key))->Value();
}

/// The property list in the suite's preference file; nil if there is none that can be read.
Ref<CFObject> ReadPreferences() {
    const Ref<FolderItem> file = GetFolderItem(preferencesPath, PathForm::Absolute);
    if (!file || !file->Exists())
        return nullptr;
    const Ref<BinaryStream> stream = file->OpenAsBinaryFile();
    if (!stream)
        return nullptr;
    const Ref<CFData> data = CFData::Make(stream->Read(stream->Length()));
    Ref<CFObject> list = CFPropertyListParse(*data);
    stream->Close();
    return list;
}
} // namespace

void Module1Globals::GetMainAppPrefsWithShell() {
    SleepOnAC = false;
    SleepOnBatt = true;
    PreventScheduleOnBatt = true;
    const Ref<CFObject> list = ReadPreferences();
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
