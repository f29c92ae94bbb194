#include "tests/fuzz/Expect.h"
#include "tests/oracle/Rules.h"
#include "tests/support/SimulatedMachine.h"

#include <fuzzer/FuzzedDataProvider.h>

// A panel opens on any file of its place, is moved anywhere, and opens again on what it saved.

using namespace kqu;
using fuzz::Expect;

namespace {

constexpr const char* geometryFile = "/home/.config/com.brackwater.KQU_Messenger.plist";

/// The panel that a start with this file opens.
Window1& Open(simulation::SimulatedMachine& machine) {
    Window1::Release();
    machine.windows.calls.clear();
    Window1& panel = machine.Panel();
    Expect(panel.Width() >= panel.MinWidth() && panel.Width() <= panel.MaxWidth());
    Expect(panel.Height() == panel.TheRowHeight);
    Expect(panel.LastLeft == panel.Left() && panel.LastTop == panel.Top());
    return panel;
}

/// What a panel must come to that opens on this file.
oracle::PanelPlace PlaceOn(const platform::Rect& screen, const std::string& file) {
    return oracle::SavedPlace(file, screen.width, screen.height)
        .value_or(oracle::DefaultPlace(screen.width, 340));
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
    const std::string file = AnyFile(input);
    machine.WriteFile(geometryFile, file);
    Window1& panel = Open(machine);
    // The rules know the case of a few letters beside these.
    Expect(!fuzz::IsAscii(file) ||
           oracle::PanelPlace{panel.Left(), panel.Top(), panel.mywidth} == PlaceOn(screen, file));

    const auto left = input.ConsumeBool() ? screen.width - input.ConsumeIntegralInRange(0, 20)
                                          : input.ConsumeIntegral<std::int32_t>();
    const auto top = input.ConsumeIntegralInRange<std::int32_t>(-100, 20000);
    const std::int32_t width = panel.Width() + input.ConsumeIntegralInRange<std::int32_t>(1, 500);
    panel.SetLeft(left);
    panel.SetTop(top);
    panel.SetWidth(width);
    panel.Timer2_Action();
    const std::string saved = machine.ReadFile(geometryFile);
    Expect(saved == oracle::PlaceFile({left, top, width}));
    // Nothing has changed since, so nothing is written.
    machine.WriteFile(geometryFile, "");
    panel.Timer2_Action();
    Expect(machine.ReadFile(geometryFile).empty());

    machine.WriteFile(geometryFile, saved);
    const Window1& next = Open(machine);
    Expect(oracle::PanelPlace{next.Left(), next.Top(), next.mywidth} == PlaceOn(screen, saved));
    return 0;
}
