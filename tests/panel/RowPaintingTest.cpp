#include "framework/values/Exceptions.h"
#include "panel/Pictures.h"
#include "platform/functions/Functions.h"
#include "tests/support/Artwork.h"
#include "tests/support/SimulatedMachine.h"

#include <gtest/gtest.h>

#include <tuple>
#include <utility>
#include <vector>

namespace kqu {
namespace {

using namespace simulation;

constexpr Colour white = RGB(255, 255, 255);
constexpr Colour tint = RGB(241, 245, 250);
using Values = std::vector<std::pair<const char*, Variant>>;

Colour At(const Ref<Picture>& picture, int x, int y) {
    return picture->Graphics().Pixel(x, y);
}

class RowPaintingTest : public testing::Test {
  protected:
    void SetUp() override { machine.Start(); }

    Window1& Panel() { return machine.Panel(); }
    MyEventList& List() { return *Panel().MyWindowEventList; }

    void AddRow(const Values& values) {
        const auto record = std::make_shared<Dictionary>();
        for (const auto& [key, value] : values)
            record->SetValue(key, value);
        List().MyDict->SetValue("row " + std::to_string(List().MyDict->Count()), record);
    }

    Ref<Picture> Paint() {
        const Ref<Picture> canvas = Picture::MakeBuffer(List().Width(), List().Height());
        Panel().MyWindowEventList_Paint(canvas->Graphics());
        return canvas;
    }

    SimulatedMachine machine;
};

TEST_F(RowPaintingTest, WithoutRecordsTheListIsEmpty) {
    List().MyDict->SetValue("no record", Variant());
    EXPECT_EQ(At(Paint(), 100, 10), white);
    List().MyDict = nullptr;
    EXPECT_EQ(At(Paint(), 100, 10), white);
}

TEST_F(RowPaintingTest, TheGripIsPaintedOnTheStripeWithEachPaint) {
    Panel().MyDragPict = NewPicture(10, 10, 32);
    Panel().MyDragPict->Graphics().SetForeColor(RGB(30, 30, 30));
    Panel().MyDragPict->Graphics().FillRect(0, 0, 10, 10);
    AddRow({});
    AddRow({});
    Panel().ChangeWindowSize(340, 146, true, true);
    machine.Advance();
    const SimulatedWindow& window = *machine.windows.window;
    // The grip is 17 by 14 at (322, 131), and its picture ends one pixel before its last column and
    // line. The list ends one pixel before the panel does, on the right and at the bottom.
    constexpr Colour gripped = RGB(30, 30, 30);
    using Case = std::tuple<int, int, Colour>;
    for (const auto& [x, y, colour] :
         {Case{337, 143, gripped}, Case{328, 134, gripped}, Case{338, 140, tint},
          Case{335, 144, tint}, Case{327, 140, tint}, Case{330, 133, tint}, Case{338, 100, tint},
          Case{339, 100, white}, Case{100, 145, white}, Case{1, 72, RGB(189, 192, 196)},
          Case{0, 72, tint}, Case{5, 0, white}})
        EXPECT_EQ(window.PixelOnScreen(x, y), colour.value) << x << ", " << y;
}

TEST_F(RowPaintingTest, MissingArtworkEndsOnlyTheRowsThatNeedIt) {
    const Values backup = {{"task", 6}};
    const Values bar = {{"progress", 1}};
    const Values sleep = {{"Extra", "sleep"}};
    using Case = std::tuple<int, Values, bool>;
    for (const auto& [missing, values, raises] :
         {Case{177, backup, true}, Case{177, {{"task", 1}}, false},
          Case{177, {{"task", 6}, {"FolderBackup", 1}}, true}, Case{179, backup, false},
          Case{173, {{"task", 1}}, true}, Case{175, {{"task", 2}}, true}, Case{171, bar, true},
          Case{172, bar, true}, Case{169, sleep, true}, Case{170, sleep, true},
          Case{170, {{"Extra", "shutdown"}}, false}, Case{187, {{"task", 2}}, false},
          Case{176, {{"task", 2}}, false}}) {
        Artwork without;
        without.Remove(missing);
        List().MyDict = std::make_shared<Dictionary>();
        List().ProgressSep = List().WhitePict = nullptr;
        AddRow(values);
        if (raises)
            EXPECT_THROW(Paint(), NilObjectException) << missing;
        else
            EXPECT_NO_THROW(Paint()) << missing;
    }
}

TEST_F(RowPaintingTest, ShorteningIsLookedUpForEveryTextThatIsNotEmpty) {
    machine.functions.Remove<functions::TruncateThemeText>();
    AddRow({{"task", 6}, {"destination", ""}, {"progress", 0.0}});
    EXPECT_NO_THROW(Paint());
    AddRow({{"task", 2}});
    EXPECT_THROW(Paint(), FunctionNotFoundException);
    // The status makes no difference.
    machine.functions.Set<functions::TruncateThemeText>(
        [](std::string& text, auto, auto, auto, std::uint32_t code, auto) {
            text = std::to_string(code);
            return -50;
        });
    for (const auto& [where, code] : {std::pair{0, "16384"}, {1, "0"}, {-1, "0"}})
        EXPECT_EQ(Panel().TruncText("a text", 10, where), code);
}

} // namespace
} // namespace kqu
