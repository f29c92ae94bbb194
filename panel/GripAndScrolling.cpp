#include "framework/FunctionLookup.h"
#include "framework/ui/Graphics.h"
#include "framework/ui/Picture.h"
#include "framework/ui/System.h"
#include "panel/Pictures.h"
#include "panel/Window1.h"

namespace kqu {

bool Window1::Canvas1_MouseDown(int x, int y) {
    xoffset = Canvas1->Width() - x + 1;
    yoffset = Canvas1->Height() - y + 1;
    indrag = true;
    return true;
}

void Window1::Canvas1_MouseDrag(int /*x*/, int /*y*/) {
    // The pointer as it is by now, not as it was when the event was made. The height goes without
    // its offset: where the grip was taken decides how far the pointer has to go.
    const std::int32_t newWidth = System::MouseX() - Left() + xoffset;
    const std::int32_t newHeight = System::MouseY() - Top();
    ChangeWindowSize(newWidth, newHeight, false, false);
}

void Window1::Canvas1_MouseUp(int /*x*/, int /*y*/) {
    indrag = false;
}

void Window1::Canvas1_Paint(Graphics& g) {
    g.SetForeColor(thedragcolor);
    g.FillRect(0, 0, Canvas1->Width(), Canvas1->Height());
    if (MyDragPict && !IsOfPresentScale(MyDragPict))
        MakeGripPicture();
    if (MyDragPict)
        g.DrawPicture(*MyDragPict, Canvas1->Width() - 1 - MyDragPict->Width(),
                      Canvas1->Height() - 1 - MyDragPict->Height());
}

void Window1::ScrollBar1_Open() {
    ScrollBar1->SetTop(0);
}

void Window1::ScrollBar1_ValueChanged() {
    MyWindowEventList->Refresh(Erasing::KeepBackground);
}

bool Window1::MyWindowEventList_MouseWheel(int /*x*/, int /*y*/, int /*deltaX*/, int deltaY) {
    // One event is one row, whatever its magnitude; the scroll bar's limits do the rest.
    if (ScrollBar1->Visible() && deltaY > 0)
        ScrollBar1->SetValue(ScrollBar1->Value() + 1);
    else if (ScrollBar1->Visible() && deltaY < 0)
        ScrollBar1->SetValue(ScrollBar1->Value() - 1);
    return false;
}

bool Window1::Event_MouseDown(int x, int y) {
    const auto cut = [](int value) { return static_cast<std::int16_t>(value); };
    const platform::Point start{cut(Left() + x), cut(Top() + y)};
    Lookup<functions::DragWindow>()(Native(), start, nullptr);
    return false;
}

} // namespace kqu
