#include "framework/FunctionLookup.h"
#include "framework/events/Application.h"
#include "panel/Window1.h"

// When the panel is visible, and when the program ends because there are no tasks. The alpha is
// either 0.0 or 1.0.

namespace kqu {

namespace {
bool HasNoRows(const Window1& panel) {
    const Ref<Dictionary>& table = panel.MyWindowEventList->MyDict;
    return !table || table->Count() == 0;
}
} // namespace

void Window1::Timer1_Action() {
    // The program was started, and no task has come.
    if (HasNoRows(*this))
        Application::Current().Quit(0);
    Timer1->SetMode(TimerMode::Off);
}

void Window1::Timer3_Action() {
    if (HasNoRows(*this))
        Application::Current().Quit(0);
    else
        Lookup<functions::SetWindowAlpha>()(Native(), 1.0F);
    Timer3->SetMode(TimerMode::Off);
}

} // namespace kqu
