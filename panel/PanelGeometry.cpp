#include "framework/files/FolderItem.h"
#include "framework/files/KnownFolders.h"
#include "framework/files/Streams.h"
#include "framework/ui/System.h"
#include "framework/values/Numbers.h"
#include "framework/values/Object.h"
#include "framework/values/Text.h"
#include "panel/Window1.h"

#include <string>
#include <string_view>

// Where the user left the panel, and how wide it was. The file looks like a property list. It
// is written from a fixed text, and read by searching for its words.

namespace kqu {

namespace {
constexpr std::string_view geometryFileName = "com.brackwater.KQU_Messenger.plist";

constexpr std::string_view geometryTemplate =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\r"
    "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
    "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\r"
    "<plist version=\"1.0\">\r"
    "<dict>\r"
    "\t<key>left</key>\r"
    "\t<integer>theleft</integer>\r"
    "\t<key>top</key>\r"
    "\t<integer>thetop</integer>\r"
    "\t<key>width</key>\r"
    "\t<integer>thewidth</integer>\r"
    "</dict>\r"
    "</plist>";

/// How much of the panel must lie on the main screen for a saved place to be taken.
constexpr std::int32_t screenMargin = 10;
constexpr std::int32_t defaultTop = 42;

/// The number in front of "</integer>" in that field of the text; 0 if there is none.
std::int32_t SavedInteger(const std::string& text, int field) {
    const std::string behind = NthField(text, "<integer>", field);
    return ToInt32(Val(NthField(behind, "</integer>", 1)));
}

Ref<FolderItem> ExistingPreferencesFolder() {
    const Ref<FolderItem> folder = PreferencesFolder();
    return folder && folder->Exists() ? folder : nullptr;
}
} // namespace

void Window1::Timer2_Action() {
    if (Top() == LastTop && Left() == LastLeft && Width() == mywidth)
        return;
    if (const Ref<FolderItem> folder = ExistingPreferencesFolder())
        SavePlace(*folder);
    // This is done even without a folder. So a save that failed is repeated only after a change.
    RememberPlace();
}

void Window1::SavePlace(const FolderItem& folder) {
    const Ref<FolderItem> file = Required(folder.Child(geometryFileName));
    // Replaced, not overwritten.
    if (file->Exists())
        file->Delete();
    std::string text(geometryTemplate);
    text = ReplaceAll(text, "theleft", Str(Left()));
    text = ReplaceAll(text, "thetop", Str(Top()));
    text = ReplaceAll(text, "thewidth", Str(Width()));
    const Ref<FileStream> stream = Required(file->CreateTextFile());
    stream->Write(text);
    stream->Close();
    const std::string fourNuls(4, '\0');
    file->SetMacCreator(fourNuls);
    file->SetMacType(fourNuls);
}

void Window1::RestorePlace() {
    if (!UseSavedPlace())
        UseDefaultPlace();
}

bool Window1::UseSavedPlace() {
    const Ref<FolderItem> folder = ExistingPreferencesFolder();
    const Ref<FolderItem> file = folder ? folder->Child(geometryFileName) : nullptr;
    if (!file || !file->Exists())
        return false;
    const Ref<FileStream> stream = Required(file->OpenAsTextFile());
    const std::string text = stream->ReadAll();
    stream->Close();
    const std::int32_t left = SavedInteger(text, 2);
    const std::int32_t top = SavedInteger(text, 3);
    const std::int32_t width = SavedInteger(text, 4);
    const ScreenArea screen = Screen(0);
    if (left <= 0 || left >= screen.Width - screenMargin || top <= 0 ||
        top >= screen.Height - screenMargin)
        return false;
    SetLeft(left);
    SetTop(top);
    SetWidth(width);
    // The width as it was saved: the sizing that follows may correct it, and then the file too.
    LastLeft = left;
    LastTop = top;
    mywidth = width;
    return true;
}

void Window1::UseDefaultPlace() {
    SetTop(defaultTop);
    SetLeft(ToInt32(Screen(0).Width / 2.0 - Width() / 2.0));
    RememberPlace();
}

void Window1::RememberPlace() {
    LastLeft = Left();
    LastTop = Top();
    mywidth = Width();
}

} // namespace kqu
