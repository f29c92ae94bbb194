#include "platform/interfaces/DeviceScale.h"
#include "framework/ui/drawing/Plane.h"
#include "tests/support/SimulatedMachine.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <utility>

namespace kqu {
namespace {

using Values = std::vector<std::pair<const char*, Variant>>;

TEST(DeviceScale, AtTwoTheListIsTheSameAndSharp) {
    simulation::SimulatedMachine machine;
    machine.Start();
    Window1& panel = machine.Panel();
    MyEventList& list = *panel.MyWindowEventList;
    const auto addRow = [&](const char* name, const Values& values) {
        const auto record = std::make_shared<Dictionary>();
        for (const auto& [key, value] : values)
            record->SetValue(key, value);
        list.MyDict->SetValue(name, record);
    };
    const auto paint = [&](int scale) {
        platform::DeviceScale() = scale;
        list.ProgressSep = list.WhitePict = nullptr;
        const Ref<Picture> canvas = Picture::MakeBuffer(list.Width(), list.Height());
        panel.MyWindowEventList_Paint(canvas->Graphics());
        platform::DeviceScale() = 1;
        return canvas;
    };
    addRow("backup",
           {{"task", 6}, {"destination", "Data"}, {"progress", 450.0}, {"Extra", "sleep"}});
    addRow("defragmenter", {{"task", 2}, {"FileName", "a file"}, {"progress", 45.0}});
    panel.ChangeWindowSize(340, 146, true, true);
    const Ref<Picture> one = paint(1);
    const Ref<Picture> two = paint(2);

    ASSERT_EQ(two->Width(), one->Width());
    const drawing::Plane& fine = two->Colours();
    ASSERT_EQ(fine.Width(), 2 * one->Width());
    double difference = 0;
    for (int y = 0; y < one->Height(); ++y)
        for (int x = 0; x < one->Width(); ++x) {
            int sum = 0;
            for (const int part : {0, 1, 2, 3})
                sum += static_cast<int>(fine.At(2 * x + part % 2, 2 * y + part / 2) & 0xFF);
            difference += std::abs(sum / 4.0 - static_cast<int>(one->Colours().At(x, y) & 0xFF));
        }
    EXPECT_LT(difference / (one->Width() * one->Height()), 3.0);
    // The separator is two device pixels high, and so is the way from one stripe to the next.
    const drawing::Pixel white = 0xFFFFFF;
    const drawing::Pixel tint = RGB(241, 245, 250).value;
    const drawing::Pixels middle = fine.Width() / 2;
    drawing::Pixels first = drawing::Pixels{2} * 60;
    while (fine.At(middle, first) == white)
        ++first;
    EXPECT_NE(fine.At(middle, first + 1), tint);
    EXPECT_EQ(fine.At(middle, first + 2), tint);
    EXPECT_EQ(first % 2, 0);
}

} // namespace
} // namespace kqu
