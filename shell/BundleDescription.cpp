#include "framework/corefoundation/CFPropertyList.h"
#include "framework/corefoundation/CFValues.h"
#include "framework/files/KnownFolders.h"
#include "shell/App.h"

#include <memory>

namespace kqu {

std::string App::GetPlistValueForKey(const std::string& key) {
    const Ref<FolderItem> folder = BundleFolder();
    const Ref<CFObject> list = folder ? CFPropertyListOf(*folder->Child("Info.plist")) : nullptr;
    const auto info = std::dynamic_pointer_cast<CFDictionary>(list);
    const auto value = info ? std::dynamic_pointer_cast<CFString>(info->Value(key)) : nullptr;
    return value ? value->Text() : "nil";
}

} // namespace kqu
