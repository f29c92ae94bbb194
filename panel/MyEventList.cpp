#include "panel/MyEventList.h"

#include "framework/ui/Graphics.h"

#include <memory>

namespace kqu {

namespace {
constexpr Colour separatorColour = RGB(0, 0, 0);
/// Lets about a fifth of the separator's black through.
constexpr Colour separatorMask = RGB(200, 200, 200);
} // namespace

MyEventList::MyEventList(Window& ownerWindow, const CanvasSettings& settings)
    : Canvas(ownerWindow, settings) {
    Open = [this] { Event_Open(); };
}

void MyEventList::Event_Open() {
    MyDict = std::make_shared<Dictionary>();
    MySep = NewPicture(1, 1, pictureDepth);
    MySep->Graphics().SetPixel(0, 0, separatorColour);
    MySep->Mask(MaskCreation::MakeIfMissing)->Graphics().SetPixel(0, 0, separatorMask);
}

} // namespace kqu
