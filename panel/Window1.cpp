#include "panel/Window1.h"

#include "framework/FunctionLookup.h"
#include "framework/events/Application.h"
#include "framework/ui/Graphics.h"
#include "framework/ui/Picture.h"
#include "framework/values/Object.h"
#include "globals/Module1.h"
#include "panel/Pictures.h"

namespace kqu {

namespace {
// Attribute bits of the native window.
constexpr std::uint32_t asyncDragAttribute = 0x800000;
constexpr std::uint32_t zoomAttributes = 6;
constexpr std::uint32_t collapseAttribute = 8;

constexpr int gripGrey = 30;

std::unique_ptr<Window1> panel;

void SetAttributes(platform::NativeWindow* window, std::uint32_t attributes) {
    Lookup<functions::ChangeWindowAttributes>()(window, attributes, 0U);
}
} // namespace

Window1& Window1::Instance() {
    if (!panel) {
        // Known before it is built, since its own opening mentions it.
        panel.reset(new Window1);
        panel->Create();
    }
    return *panel;
}

void Window1::Release() {
    panel.reset();
}

Window1::~Window1() = default;

void Window1::Event_Open() {
    SetAttributes(Native(), asyncDragAttribute);
    SetAttributes(Native(), zoomAttributes);
    if (!Module1.TenFourOrLater)
        SetAttributes(Native(), collapseAttribute);
    SetTitleForRows(0);
    RestorePlace();
    MakeGripPicture();
    MakeNotificationKeys();
    // No row is left. The panel returns to its least height.
    ChangeWindowSize(Width(), Height(), false, true);
    DiskNotification->Add("", "KQMS", NotificationCenter::deliverImmediately);
    DiskNotification->Add("", "KQDefrag", NotificationCenter::deliverImmediately);
    DiskNotification->Add("", "KQBackup", NotificationCenter::deliverImmediately);
    MyTimer1->Create();
    MyTimer3->Mode = TimerMode::Repeating;
    MyTimer3->Create();
    startupdone = true;
}

void Window1::Event_Close() {
    Application::Current().Quit(0);
}

void Window1::AddMenuHandlers(Window& window) {
    // The panel has no menu handlers; only the kind of window is checked.
    static_cast<void>(dynamic_cast<Window1&>(window));
}

void Window1::SetTitleForRows(std::int32_t rows) {
    const std::string product = Module1.ParentIsMarlstone ? "Marlstone Pro" : "Brackwater";
    SetTitle(product + (rows < 2 ? " Scheduled Task" : " Scheduled Tasks"));
}

void Window1::MakeGripPicture() {
    // A silhouette: flat grey, cut to shape by the artwork.
    const Ref<Picture> grow = Required(Grow());
    MyDragPict = NewPicture(grow->Width(), grow->Height(), pictureDepth);
    Graphics& colours = MyDragPict->Graphics();
    colours.SetForeColor(RGB(gripGrey, gripGrey, gripGrey));
    colours.FillRect(0, 0, MyDragPict->Width(), MyDragPict->Height());
    MyDragPict->Mask(MaskCreation::MakeIfMissing)->Graphics().DrawPicture(*grow, 0, 0);
}

void Window1::MakeNotificationKeys() {
    kCFScanProgressKey = CFString::Make("Progress");
    kCFScanItemKey = CFString::Make("Item");
    kCFPIDKey = CFString::Make("PID");
    kCFScanTypeKey = CFString::Make("ScanType");
    kCFExtraItemKey = CFString::Make("Extra");
    kCFDefragStatusKey = CFString::Make("status");
    kCFDefragFileProgressKey = CFString::Make("FileProgress");
    kCFDefragNumFilesExaminedKey = CFString::Make("NumFilesExamined");
    kCFDefragFileNameKey = CFString::Make("FileName");
}

} // namespace kqu
