#include "framework/values/Exceptions.h"
#include "tests/fuzz/Expect.h"
#include "tests/oracle/Rules.h"
#include "tests/support/Artwork.h"
#include "tests/support/SimulatedMachine.h"

#include <fuzzer/FuzzedDataProvider.h>

// Bars of any width, value and maximum, pixel by pixel, of a sprite whose parts have plain colours.

using namespace kqu;
using fuzz::Expect;
using simulation::Grey;

namespace {

constexpr int height = 4;
/// Pixels of a line that are looked at on each side.
constexpr std::int32_t looked = 300;

Colour ColourOf(char letter) {
    return letter == ' ' ? Grey(255) : RGB(0, letter, 255 - letter);
}

struct Stage {
    Stage() {
        artwork.Set(171, 47, height,
                    [](int x, int) { return ColourOf("   ffflmr12"[x < 45 ? x / 5 : x - 36]); });
        artwork.Set(172, 47, height, [](int, int) { return Grey(0); });
        machine.Start();
    }
    simulation::Artwork artwork;
    simulation::SimulatedMachine machine;
};

void CheckPixels(Picture& bar, const oracle::Bar& expected) {
    Expect(bar.Width() == expected.width && bar.Height() == height);
    const Ref<Picture> mask = bar.Mask(MaskCreation::IfThere);
    Expect(mask && mask->Width() == expected.width && mask->Height() == height);
    for (std::int32_t x = 0; x < expected.width; ++x) {
        if (x == looked)
            x = std::max(x, expected.width - looked);
        Expect(bar.Graphics().Pixel(x, height - 1) == ColourOf(expected.Colour(x)));
        Expect(mask->Graphics().Pixel(x, 0) == Grey(expected.Mask(x) == ' ' ? 255 : 0));
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
        CheckPixels(*record.Value("progresspict").ObjectAs<Picture>(), {width, value, maximum});
    }
    return 0;
}
