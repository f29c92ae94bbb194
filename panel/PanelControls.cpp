#include "panel/Window1.h"

// The panel's fixed settings and its nine controls. The sizes here are replaced before the panel
// becomes visible.

namespace kqu {

namespace {
CanvasSettings ListSettings() {
    CanvasSettings list;
    list.Name = "MyWindowEventList";
    list.Left = -1;
    list.Top = -1;
    list.Width = 32;
    list.Height = 32;
    list.TabIndex = 0;
    return list;
}

ScrollBarSettings BarSettings() {
    ScrollBarSettings bar;
    bar.Name = "ScrollBar1";
    bar.Left = 288;
    bar.Top = 0;
    bar.Width = 10;
    bar.Height = 171;
    bar.TabIndex = 1;
    bar.Minimum = 0;
    bar.Value = 0;
    bar.Maximum = 100;
    bar.LineStep = 1;
    bar.PageStep = 20;
    bar.LiveScroll = true;
    bar.AcceptFocus = true;
    return bar;
}

CanvasSettings GripSettings() {
    CanvasSettings grip;
    grip.Name = "Canvas1";
    grip.Left = 284;
    grip.Top = 170;
    grip.Width = 17;
    grip.Height = 14;
    grip.TabIndex = 2;
    return grip;
}

// Periods in milliseconds.
constexpr std::int32_t repaintPeriod = 500;
constexpr std::int32_t reaperPeriod = 3000;
constexpr std::int32_t startGuardPeriod = 120000;
constexpr std::int32_t geometryPeriod = 1000;
constexpr std::int32_t gracePeriod = 10000;
} // namespace

WindowLayout Window1::Layout() {
    WindowLayout layout;
    layout.Placement = 0;
    layout.Width = 340;
    layout.Height = 185;
    layout.MinWidth = 270;
    layout.MinHeight = 70;
    layout.MaxWidth = 500;
    layout.MaxHeight = 32000;
    layout.Frame = WindowFrame::GlobalFloating;
    layout.Composite = true;
    layout.HasBackColor = true;
    layout.BackColor = RGB(255, 255, 255);
    layout.Title = " Scheduled Task";
    layout.Visible = true;
    layout.FullScreen = false;
    layout.MenuBarVisible = true;
    layout.CloseButton = false;
    // Sized only through its grip and by its own rows.
    layout.Resizeable = false;
    layout.LiveResize = true;
    layout.MaximizeButton = true;
    layout.MinimizeButton = true;
    layout.MacProcID = 0;
    return layout;
}

void Window1::CreateControls() {
    _CreateControls0();
}

void Window1::_CreateControls0() {
    MyWindowEventList = std::make_unique<MyEventList>(*this, ListSettings());
    MyWindowEventList->MouseWheel = [this](int x, int y, int deltaX, int deltaY) {
        return MyWindowEventList_MouseWheel(x, y, deltaX, deltaY);
    };
    MyWindowEventList->Paint = [this](Graphics& g) { MyWindowEventList_Paint(g); };

    ScrollBar1 = std::make_unique<ScrollBar>(*this, BarSettings());
    ScrollBar1->Open = [this] { ScrollBar1_Open(); };
    ScrollBar1->ValueChanged = [this] { ScrollBar1_ValueChanged(); };

    Canvas1 = std::make_unique<Canvas>(*this, GripSettings());
    Canvas1->MouseDown = [this](int x, int y) { return Canvas1_MouseDown(x, y); };
    Canvas1->Paint = [this](Graphics& g) { Canvas1_Paint(g); };
    Canvas1->MouseUp = [this](int x, int y) { Canvas1_MouseUp(x, y); };
    Canvas1->MouseDrag = [this](int x, int y) { Canvas1_MouseDrag(x, y); };

    DiskNotification = std::make_unique<NotificationCenter>(*this);
    DiskNotification->Received = [this](const Ref<CFString>& name, const Ref<CFObject>& object,
                                        const Ref<CFDictionary>& userInfo) {
        DiskNotification_Received(name, object, userInfo);
    };

    MyTimer1 = std::make_unique<MyTimer>(*this, TimerMode::Repeating, repaintPeriod,
                                         [this] { MyTimer1_Action(); });
    MyTimer3 = std::make_unique<MyTimer>(*this, TimerMode::Off, reaperPeriod,
                                         [this] { MyTimer3_Action(); });
    Timer1 = std::make_unique<Timer>(*this, TimerMode::Once, startGuardPeriod,
                                     [this] { Timer1_Action(); });
    Timer2 = std::make_unique<Timer>(*this, TimerMode::Repeating, geometryPeriod,
                                     [this] { Timer2_Action(); });
    Timer3 =
        std::make_unique<Timer>(*this, TimerMode::Off, gracePeriod, [this] { Timer3_Action(); });
}

} // namespace kqu
