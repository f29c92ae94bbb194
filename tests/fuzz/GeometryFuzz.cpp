#include "framework/values/Numbers.h"
#include "framework/values/Text.h"
#include "tests/fuzz/Expect.h"
#include "tests/support/SimulatedMachine.h"

#include <fuzzer/FuzzedDataProvider.h>

// A panel opens on any file of its place, is moved anywhere, and opens again on what it saved.

using namespace kqu;
using fuzz::Expect;

namespace {

constexpr const char* geometryFile = "/home/.config/com.brackwater.KQU_Messenger.plist";
constexpr std::int32_t defaultTop = 42;

bool IsOnScreen(const platform::Rect& screen, std::int32_t left, std::int32_t top) {
    return left > 0 && left < screen.width - 10 && top > 0 && top < screen.height - 10;
}

/// The panel that a start with this file opens; its place is a saved one or the default.
Window1& Open(simulation::SimulatedMachine& machine) {
    Window1::Release();
    machine.windows.calls.clear();
    Window1& panel = machine.Panel();
    const platform::Rect& screen = machine.windows.screens.front();
    const bool isDefault =
        panel.Top() == defaultTop && panel.Left() == ToInt32(screen.width / 2.0 - 170);
    Expect(isDefault || IsOnScreen(screen, panel.Left(), panel.Top()));
    Expect(panel.Width() >= panel.MinWidth() && panel.Width() <= panel.MaxWidth());
    Expect(panel.Height() == panel.TheRowHeight);
    Expect(panel.LastLeft == panel.Left() && panel.LastTop == panel.Top());
    return panel;
}

/// The integer that a file of plain integers holds at that place.
std::int32_t PlainInteger(const std::string& text, int place) {
    std::size_t found = 0;
    for (; place > 0; --place)
        found = text.find("<integer>", found) + 9;
    return ToInt32(Val(text.substr(found)));
}

std::string AnyFile(FuzzedDataProvider& input) {
    if (input.ConsumeBool())
        return input.ConsumeRandomLengthString(1000);
    std::string text;
    for (int field = 0; field < 3; ++field)
        text += "<integer>" + input.ConsumeRandomLengthString(12) + "</integer>";
    return text;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static simulation::SimulatedMachine machine;
    FuzzedDataProvider input(data, size);
    platform::Rect& screen = machine.windows.screens.front();
    screen.width = input.ConsumeIntegralInRange(1, 10000);
    screen.height = input.ConsumeIntegralInRange(1, 10000);
    machine.WriteFile(geometryFile, AnyFile(input));
    Window1& panel = Open(machine);

    const auto left = input.ConsumeIntegral<std::int32_t>();
    const auto top = input.ConsumeIntegralInRange<std::int32_t>(-100, 20000);
    const std::int32_t width = panel.Width() + input.ConsumeIntegralInRange<std::int32_t>(1, 500);
    panel.SetLeft(left);
    panel.SetTop(top);
    panel.SetWidth(width);
    panel.Timer2_Action();
    const std::string saved = machine.ReadFile(geometryFile);
    Expect(PlainInteger(saved, 1) == left && PlainInteger(saved, 2) == top &&
           PlainInteger(saved, 3) == width);
    // Nothing has changed since, so nothing is written.
    machine.WriteFile(geometryFile, "");
    panel.Timer2_Action();
    Expect(machine.ReadFile(geometryFile).empty());

    machine.WriteFile(geometryFile, saved);
    const Window1& next = Open(machine);
    const bool taken = next.Left() == left && next.Top() == top && next.mywidth == width;
    Expect(taken == IsOnScreen(screen, left, top) || (next.Left() == left && top == defaultTop));
    return 0;
}
