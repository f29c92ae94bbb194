#include "framework/FunctionLookup.h"
#include "framework/events/Application.h"
#include "panel/Window1.h"

// Removes the rows of dead processes. A tool never says that it has ended: its row goes when the
// system no longer lists its process.

namespace kqu {

void Window1::MyTimer3_Action() {
    const Ref<Dictionary> table = MyWindowEventList->MyDict;
    if (!table || table->Count() <= 0)
        return;
    const Application& application = Application::Current();
    // Backwards, so that removing a row leaves the lower indices valid. Not atomic: a pump may add
    // rows, or let a nested pass remove them, and an index beyond the end then raises.
    // A program that is ending stops: each further row would cost it one more list of processes.
    for (int index = table->Count() - 1; index >= 0 && !application.IsQuitting(); --index) {
        const Ref<Dictionary> row = table->Value(table->Key(index)).ObjectAs<Dictionary>();
        if (!row || !row->HasKey("pid"))
            continue;
        if (!IsPIDProcessRunning(row->Value("pid").Int32Value())) {
            table->Remove(table->Key(index));
            RowRemoved();
        }
        Application::Current().DoEvents();
    }
}

void Window1::RowRemoved() {
    const std::int32_t count = MyWindowEventList->MyDict->Count();
    if (count == 0) {
        // The panel keeps its height while nobody sees it.
        Lookup<functions::SetWindowAlpha>()(Native(), 0.0F);
        LastDictcount = 0;
        Timer3->SetMode(TimerMode::Once);
    } else if (count < Height() / static_cast<double>(TheRowHeight)) {
        ChangeWindowSize(Width(), Height() - TheRowHeight, false, true);
    } else {
        ChangeWindowSize(Width(), Height(), false, true);
    }
    SetTitleForRows(MyWindowEventList->MyDict->Count());
}

} // namespace kqu
