#pragma once

#include "framework/corefoundation/CFValues.h"
#include "framework/events/NotificationCenter.h"
#include "framework/events/Timer.h"
#include "framework/ui/Canvas.h"
#include "framework/ui/Colour.h"
#include "framework/ui/ScrollBar.h"
#include "framework/ui/Window.h"
#include "panel/MyEventList.h"
#include "panel/MyTimer.h"

#include <cstdint>
#include <memory>
#include <string>

namespace kqu {

class FolderItem;

/// The panel: one floating window with one row per running task. Each method is defined in the file
/// that is named after its subject, in monitor/ where it is about tasks, in panel/ otherwise.
///
/// There is one panel. The first call of Instance makes it; a call during its construction returns
/// the unfinished panel.
class Window1 : public Window {
  public:
    [[nodiscard]] static Window1& Instance();
    /// Takes the panel down, at the end of the program.
    static void Release();

    ~Window1() override;

    // The grip: where it was taken, from the panel's right and bottom edge.
    std::int32_t xoffset = 0;
    std::int32_t yoffset = 0;
    /// Height of one task row in pixels; never changed.
    std::int32_t TheRowHeight = 73;
    /// Background of the grip, taken from the rows as drawn.
    Colour thedragcolor = RGB(0, 0, 0);
    Ref<CFString> MyCFDiskName2;
    Ref<Picture> MyDragPict;
    Ref<CFString> kCFScanProgressKey;
    Ref<CFString> kCFScanItemKey;
    Ref<CFString> kCFPIDKey;
    std::int32_t UpdatePanelTicks = 0;
    bool GotEvent = false;
    /// The number of rows after the latest notification. The reaper resets it only when the last
    /// row goes; otherwise it stays too high. This is meant.
    std::int32_t LastDictcount = 0;
    /// True from a press on the grip to its release.
    bool indrag = false;
    Ref<CFString> kCFScanTypeKey;
    /// Until this is true, notifications and paints do nothing.
    bool startupdone = false;
    std::int32_t MyInc = 0;
    Ref<CFString> kCFDefragStatusKey;
    Ref<CFString> kCFDefragFileProgressKey;
    Ref<CFString> kCFDefragNumFilesExaminedKey;
    Ref<CFString> kCFDefragFileNameKey;
    /// The tick count of the latest update that was let through while the mouse button was held.
    std::int32_t LastDragUpdate = 0;
    // Size of the latest full layout.
    std::int32_t LastHeight = 0;
    // Place and width as last saved or restored; mywidth is not LastWidth.
    std::int32_t LastLeft = 0;
    std::int32_t LastTop = 0;
    std::int32_t LastWidth = 0;
    std::int32_t mywidth = 0;
    Ref<CFString> kCFExtraItemKey;

    std::unique_ptr<MyEventList> MyWindowEventList;
    std::unique_ptr<ScrollBar> ScrollBar1;
    std::unique_ptr<Canvas> Canvas1;
    std::unique_ptr<NotificationCenter> DiskNotification;
    std::unique_ptr<MyTimer> MyTimer1;
    std::unique_ptr<MyTimer> MyTimer3;
    std::unique_ptr<Timer> Timer1;
    std::unique_ptr<Timer> Timer2;
    std::unique_ptr<Timer> Timer3;

    // The window itself.
    WindowLayout Layout() override;
    void CreateControls() override;
    void _CreateControls0();
    void AddMenuHandlers(Window& window) override;
    void Event_Open() override;
    void Event_Close() override;
    /// Sets the title for that many tasks, under the flavour of the suite.
    void SetTitleForRows(std::int32_t rows);

    // Sizing.
    /// Gives the panel a size made of whole rows, and its controls their places. Pixels.
    /// `exactHeight` takes `newHeight` as it stands; otherwise it is a wish to go up or down by one
    /// row. `forceLayout` lays out even if the size is the one of the latest layout.
    void ChangeWindowSize(std::int32_t newWidth, std::int32_t newHeight, bool exactHeight,
                          bool forceLayout);
    void Event_Resized() override;

    // Drawing.
    void MyWindowEventList_Paint(Graphics& g);
    void Canvas1_Paint(Graphics& g);
    std::string TruncText(const std::string& text, std::int32_t width, std::int32_t where);

    // The pointer.
    bool Canvas1_MouseDown(int x, int y);
    void Canvas1_MouseDrag(int x, int y);
    void Canvas1_MouseUp(int x, int y);
    void ScrollBar1_Open();
    void ScrollBar1_ValueChanged();
    bool MyWindowEventList_MouseWheel(int x, int y, int deltaX, int deltaY);
    bool Event_MouseDown(int x, int y) override;

    // Tasks.
    void DiskNotification_Received(const Ref<CFString>& name, const Ref<CFObject>& object,
                                   const Ref<CFDictionary>& userInfo);
    void ParseBackgroundScannerNotification(const std::string& name,
                                            const Ref<CFDictionary>& userInfo);
    void ParseBackgroundBackupNotification(const std::string& name,
                                           const Ref<CFDictionary>& userInfo);
    void ParseBackgroundDefragNotification(const std::string& name,
                                           const Ref<CFDictionary>& userInfo);
    /// Whether the system lists a process of that number.
    bool IsPIDProcessRunning(std::int32_t wantPID);

    // Timers.
    void MyTimer1_Action();
    void MyTimer3_Action();
    void Timer1_Action();
    void Timer2_Action();
    void Timer3_Action();

  private:
    Window1() = default;

    void MakeGripPicture();
    void MakeNotificationKeys();
    void TakeIn(const std::string& name, const Ref<CFObject>& object,
                const Ref<CFDictionary>& userInfo);
    void MakeRoomForNewRow();
    void PresentNewRow();
    void Dispatch(const std::string& name, const Ref<CFObject>& object,
                  const Ref<CFDictionary>& userInfo);
    [[nodiscard]] bool LetThrough(bool isNew);
    [[nodiscard]] std::int32_t HeightByOneRow(std::int32_t newHeight) const;
    void LayOut(std::int32_t width, std::int32_t height, std::int32_t rowCount);
    void RestorePlace();
    void RowRemoved();
    bool UseSavedPlace();
    void UseDefaultPlace();
    void RememberPlace();
    void SavePlace(const FolderItem& folder);
};

} // namespace kqu
