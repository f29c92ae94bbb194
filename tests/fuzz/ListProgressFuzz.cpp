#include "framework/values/Exceptions.h"
#include "framework/values/Numbers.h"
#include "panel/Pictures.h"
#include "tests/fuzz/Expect.h"
#include "tests/support/Artwork.h"
#include "tests/support/SimulatedMachine.h"

#include <cmath>
#include <fuzzer/FuzzedDataProvider.h>
#include <optional>
#include <set>

// Bars of any width, value and maximum, compared pixel by pixel with what the three parts of a
// sprite of plain colours give.

using namespace kqu;
using fuzz::Expect;
using simulation::Grey;

namespace {

constexpr int height = 4;
constexpr Colour fill = RGB(0, 0, 250);
constexpr Colour track = RGB(0, 250, 0);
constexpr Colour tick = RGB(40, 40, 40);
/// Pixels of a line that are looked at on each side.
constexpr std::int32_t looked = 300;

struct Stage {
    Stage() {
        artwork.Set(171, 47, height, [](int x, int) {
            return x < 30 ? fill : x < 45 ? track : tick;
        });
        artwork.Set(172, 47, height, [](int, int) { return Grey(0); });
        DropPictures();
        machine.Start();
    }
    simulation::Artwork artwork;
    simulation::SimulatedMachine machine;
};

std::set<std::int64_t> TickColumns(std::int32_t width) {
    std::set<std::int64_t> columns;
    double sum = 0.0;
    for (int pass = 0; pass < 11; ++pass) {
        sum += width / 10.0;
        columns.insert({ToInt32(sum), std::int64_t{ToInt32(sum)} + 1});
    }
    return columns;
}

void CheckPixels(Picture& bar, double value, double maximum) {
    const std::int32_t width = bar.Width();
    const bool hasTicks = value > -1.0;
    const double filled = value * width / maximum;
    const bool hasFill = hasTicks && filled != 0.0 && value != 0.0 && maximum != 0.0;
    const std::int32_t fillEnd = hasFill ? ToInt32(filled) : 0;
    const auto ticks = hasTicks ? TickColumns(width) : std::set<std::int64_t>();
    const Ref<Picture> mask = bar.Mask(MaskCreation::IfThere);
    Expect(mask && mask->Width() == width && mask->Height() == height);
    for (std::int32_t x = 0; x < width; ++x) {
        if (x == looked)
            x = std::max(x, width - looked);
        const Colour colour = bar.Graphics().Pixel(x, height - 1);
        const Colour shows = mask->Graphics().Pixel(x, 0);
        if (value == -1.0) {
            Expect(shows == Grey(255) && colour == Grey(255));
            continue;
        }
        Expect(shows == Grey(0));
        if (ticks.contains(x))
            Expect(colour == tick);
        else
            Expect(colour == (x < fillEnd ? fill : track));
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static Stage stage;
    FuzzedDataProvider input(data, size);
    MyEventList& list = *stage.machine.Panel().MyWindowEventList;
    while (input.remaining_bytes() > 0) {
        const auto width = input.ConsumeBool() ? input.ConsumeIntegralInRange<std::int32_t>(-2, 500)
                                               : input.ConsumeIntegral<std::int32_t>();
        const double value = input.ConsumeBool() ? input.ConsumeIntegralInRange(-20, 1100) / 10.0
                                                 : input.ConsumeFloatingPoint<double>();
        const double maximum = input.ConsumeBool() ? 100.0 : input.ConsumeFloatingPoint<double>();
        Dictionary record;
        try {
            list.ListProgress(width, value, maximum, record);
        } catch (const RuntimeException&) {
            Expect(width < 1);
            continue;
        }
        const auto bar = record.Value("progresspict").ObjectAs<Picture>();
        Expect(bar->Width() == width && bar->Height() == height);
        CheckPixels(*bar, value, maximum);
    }
    return 0;
}
