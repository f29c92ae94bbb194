#include "bench/Allocations.h"
#include "framework/ui/Picture.h"
#include "platform/text/Truncation.h"
#include "tests/support/SimulatedMachine.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <string>

namespace kqu {
namespace {

using platform::TextLayout;

constexpr int rowHeight = 73;
constexpr int panelWidth = 340;
constexpr int rowsInSight = 10;

/// A path of which no two are alike.
std::string NewPath() {
    static int number = 100000;
    return "/srv/data/projects/2024/some file name " + std::to_string(++number);
}

void DrawText(benchmark::State& state, bool isNew) {
    const Ref<Picture> target = Picture::MakeBuffer(panelWidth, rowHeight);
    target->Graphics().SetTextSize(11);
    std::string text = NewPath();
    for (auto _ : state) {
        if (isNew)
            text = NewPath();
        target->Graphics().DrawString(text, 10, 50);
    }
}
// The new texts last: while they are remembered there is no room for others.
BENCHMARK_CAPTURE(DrawText, known_text, false);
BENCHMARK_CAPTURE(DrawText, new_text, true);

void ShortenText(benchmark::State& state) {
    for (auto _ : state)
        benchmark::DoNotOptimize(platform::Truncated(TextLayout::Shared(), NewPath() + NewPath(),
                                                     13, 310, platform::Giving::Middle));
}
BENCHMARK(ShortenText);

/// A bar of one row, composed and drawn where it is seen. Another width each time has both strips
/// built anew.
void MakeBar(benchmark::State& state, bool isNewWidth) {
    simulation::SimulatedMachine machine;
    machine.Start();
    MyEventList& list = *machine.Panel().MyWindowEventList;
    const auto record = std::make_shared<Dictionary>();
    const Ref<Picture> target = Picture::MakeBuffer(panelWidth, rowHeight);
    std::int32_t width = 262;
    for (auto _ : state) {
        if (isNewWidth)
            width = 513 - width;
        list.ListProgress(width, 45.6, 100.0, *record);
        target->Graphics().DrawPicture(*record->Value("progresspict").ObjectAs<Picture>(), 68, 25);
    }
}
BENCHMARK_CAPTURE(MakeBar, strips_at_hand, false);
BENCHMARK_CAPTURE(MakeBar, strips_built, true);

/// Rows of all kinds, as a long evening of jobs would have them.
Ref<Dictionary> FillTable(Window1& panel, int rows) {
    const auto table = std::make_shared<Dictionary>();
    for (int i = 0; i < rows; ++i) {
        const auto record = std::make_shared<Dictionary>();
        record->SetValue("task", std::int32_t{i % 3 == 0 ? 6 : i % 3});
        record->SetValue("volume", "Volume " + std::to_string(i));
        record->SetValue("destination", "Archive of the pictures " + std::to_string(i));
        record->SetValue("Status", NewPath());
        record->SetValue("progress", 1000.0 * i / rows);
        if (i % 4 == 0)
            record->SetValue("Extra", "sleep");
        table->SetValue("KQS_disk." + std::to_string(i), record);
    }
    panel.MyWindowEventList->MyDict = table;
    return table;
}

/// What every row's job does all the time.
void ChangeTexts(const Dictionary& table) {
    for (int i = 0; i < table.Count(); ++i)
        table.Value(table.Key(i)).ObjectAs<Dictionary>()->SetValue("Status", NewPath());
}

/// What the rows show at each paint.
enum class Texts { Same, New };
enum class ScrolledTo { Top, Middle };

/// One paint of the list, ten rows of which are in sight at most.
void PaintList(benchmark::State& state, Texts texts, ScrolledTo place) {
    simulation::SimulatedMachine machine;
    machine.Start();
    Window1& panel = machine.Panel();
    const int rows = static_cast<int>(state.range(0));
    const Ref<Dictionary> table = FillTable(panel, rows);
    const int height = std::min(rows, rowsInSight) * rowHeight;
    panel.SetHeight(height);
    panel.MyWindowEventList->SetWidth(panelWidth);
    panel.MyWindowEventList->SetHeight(height);
    if (place == ScrolledTo::Middle) {
        panel.ScrollBar1->SetMaximum(rows - rowsInSight);
        panel.ScrollBar1->SetValue((rows - rowsInSight) / 2);
    }
    const Ref<Picture> canvas = Picture::MakeBuffer(panelWidth, height);
    {
        const bench::AllocationCount count(state);
        for (auto _ : state) {
            if (texts == Texts::New)
                ChangeTexts(*table);
            panel.MyWindowEventList_Paint(canvas->Graphics());
        }
    }
    state.SetComplexityN(rows);
}

void ByRows(benchmark::internal::Benchmark* paint) {
    paint->Arg(1)->Arg(10)->Arg(100)->Arg(1000)->Unit(benchmark::kMillisecond);
}
BENCHMARK_CAPTURE(PaintList, same_texts, Texts::Same, ScrolledTo::Top)->Apply(ByRows)->Complexity();
BENCHMARK_CAPTURE(PaintList, same_texts_scrolled, Texts::Same, ScrolledTo::Middle)
    ->Arg(1000)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(PaintList, new_texts, Texts::New, ScrolledTo::Top)->Apply(ByRows)->Complexity();
BENCHMARK_CAPTURE(PaintList, new_texts_scrolled, Texts::New, ScrolledTo::Middle)
    ->Arg(1000)
    ->Unit(benchmark::kMillisecond);

} // namespace
} // namespace kqu
