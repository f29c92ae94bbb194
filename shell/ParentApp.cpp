#include "framework/files/FolderItem.h"
#include "framework/files/Streams.h"
#include "framework/values/Text.h"
#include "globals/Module1.h"
#include "shell/App.h"

namespace kqu {

namespace {
/// The suite's preference file as the shell wants it written; used in that form for the file item
/// and for the command alike.
const std::string preferencesInShellForm =
    "/Library/Application\\ Support/Brackwater\\ Utilities\\ Support/BrackwaterPrefs.plist";

const std::string parentKey = "<key>ParentLocation</key>";

/// The value that stands behind the key's line, by splitting the text: not a parser, so that only a
/// key whose line ends directly behind it counts.
std::string ParentLocation(const std::string& text) {
    const std::string lineEnd = InStr(text, "\n") > 1 ? "\n" : "\r";
    const std::string behindKey = NthField(text, parentKey + lineEnd, 2);
    return NthField(NthField(behindKey, "<string>", 2), "</string>", 1);
}

bool NamesAnotherFamily(const std::string& location) {
    const std::string lastComponent = NthField(location, "/", CountFields(location, "/"));
    // Wherever it stands, not only at the end.
    const std::string name = ReplaceAll(lastComponent, ".app", "");
    return !name.empty() && !Contains(name, "Brackwater");
}
} // namespace

void App::GetParentApp() {
    Module1.ParentIsMarlstone = false;
    const Ref<FolderItem> file = GetFolderItem(preferencesInShellForm, PathForm::Shell);
    if (!file || !file->Exists() || file->Length() > longestFile)
        return;
    const std::string text = Module1.GetShell("/bin/cat " + preferencesInShellForm, true);
    if (text.empty() || !Contains(text, parentKey))
        return;
    Module1.ParentIsMarlstone = NamesAnotherFamily(ParentLocation(text));
}

} // namespace kqu
