#include "panel/Window1.h"

// Repaints the rows at a steady pace; an update of a row only changes the table.

namespace kqu {

namespace {
/// A full turn of MyInc, in repaints.
constexpr std::int32_t repaintsPerTurn = 6;
} // namespace

void Window1::MyTimer1_Action() {
    if (!MyWindowEventList || MyWindowEventList->MyDict->Count() <= 0)
        return;
    MyWindowEventList->Refresh(Erasing::KeepBackground);
    const std::int32_t next = MyInc + 1;
    MyInc = next == repaintsPerTurn ? 0 : next;
}

} // namespace kqu
