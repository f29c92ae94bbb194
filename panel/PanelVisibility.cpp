#include "framework/FunctionLookup.h"
#include "framework/events/Application.h"
#include "panel/Window1.h"

// When the panel can be seen, and how the program gets from an empty table to its end. The alpha
// has two values only, and every change is one call.

namespace kqu {

namespace {
bool HasNoRows(const Window1& panel) {
    const Ref<Dictionary>& table = panel.MyWindowEventList->MyDict;
    return !table || table->Count() == 0;
}
} // namespace

void Window1::Timer1_Action() {
    // Started, and never given a task.
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
