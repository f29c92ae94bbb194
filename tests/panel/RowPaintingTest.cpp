#include "framework/values/Exceptions.h"
#include "panel/Pictures.h"
#include "panel/RowLayout.h"
#include "platform/functions/Functions.h"
#include "platform/functions/TextFunctions.h"
#include "tests/support/Artwork.h"
#include "tests/support/SimulatedMachine.h"

#include <gtest/gtest.h>

#include <array>
#include <limits>
#include <tuple>
#include <utility>
#include <vector>

namespace kqu {
namespace {

using namespace simulation;

constexpr Colour white = RGB(255, 255, 255);
constexpr Colour tint = RGB(241, 245, 250);
constexpr Colour ink = RGB(5, 5, 5);
constexpr int rowHeight = 73;

/// Texts with the baselines that they are drawn on, or with the limits that they are shortened to.
using Texts = std::vector<std::pair<std::string, int>>;
using Values = std::vector<std::pair<const char*, Variant>>;

Colour StripeOf(int row) {
    return row % 2 == 0 ? white : tint;
}

Colour At(const Ref<Picture>& picture, int x, int y) {
    return picture->Graphics().Pixel(x, y);
}

/// As drawn in a row.
double WidthOf(const std::string& text) {
    const Ref<Picture> picture = NewPicture(1, 1, 32);
    picture->Graphics().SetTextSize(11);
    return picture->Graphics().StringWidth(text);
}

/// Whether the lines, which begin at `left`, and nothing else stand to the right of `from` in their
/// bands of the first row.
void ExpectLines(const Ref<Picture>& canvas, int from, int left, const Texts& lines) {
    const Ref<Picture> expected = Picture::MakeBuffer(canvas->Width(), rowHeight);
    expected->Graphics().SetTextSize(11);
    expected->Graphics().SetForeColor(white);
    expected->Graphics().FillRect(0, 0, canvas->Width(), rowHeight);
    expected->Graphics().SetForeColor(ink);
    for (const auto& [text, baseline] : lines)
        expected->Graphics().DrawString(text, left, baseline);
    for (const auto& [top, bottom] : {std::pair{5, 23}, {41, 72}})
        for (int y = top; y < bottom; ++y)
            for (int x = from; x < canvas->Width(); ++x)
                ASSERT_EQ(At(canvas, x, y), At(expected, x, y)) << x << ", " << y;
}

class RowPaintingTest : public testing::Test {
  protected:
    void SetUp() override { machine.Start(); }

    Window1& Panel() { return machine.Panel(); }
    MyEventList& List() { return *Panel().MyWindowEventList; }

    Ref<Dictionary> AddRow(const Values& values) {
        const auto record = std::make_shared<Dictionary>();
        for (const auto& [key, value] : values)
            record->SetValue(key, value);
        List().MyDict->SetValue("row " + std::to_string(List().MyDict->Count()), record);
        return record;
    }

    void Clear() { List().MyDict = std::make_shared<Dictionary>(); }

    /// Gives panel and list sizes of their own, as the scroll bar does.
    void SetSizes(int panelWidth, int listWidth, int height) {
        Panel().SetWidth(panelWidth);
        Panel().SetHeight(height);
        List().SetWidth(listWidth);
        List().SetHeight(height);
    }

    Ref<Picture> Paint() {
        const Ref<Picture> canvas = Picture::MakeBuffer(List().Width(), List().Height());
        Panel().MyWindowEventList_Paint(canvas->Graphics());
        return canvas;
    }

    /// Paints one row whose texts stay as they are. An empty text is never asked to be shortened.
    void ExpectRow(const Values& values, int left, const Texts& lines, Texts expected) {
        SCOPED_TRACE(lines.front().first);
        Texts shortened;
        machine.functions.Set<functions::TruncateThemeText>(
            [&](std::string& text, std::uint16_t font, std::uint32_t state, std::int32_t width,
                std::uint32_t code, bool* truncated) {
                EXPECT_TRUE(font == 0 && state == 0 && code == 0x4000 && truncated == nullptr);
                shortened.emplace_back(text, width);
                return 0;
            });
        Clear();
        AddRow(values);
        ExpectLines(Paint(), left, left, lines);
        std::erase_if(expected, [](const auto& asked) { return asked.first.empty(); });
        EXPECT_EQ(shortened, expected);
        platform::RegisterTextFunctions(machine.functions);
    }

    Artwork artwork;
    SimulatedMachine machine;
};

TEST_F(RowPaintingTest, StripesAndSeparatorsFillTheList) {
    using Case = std::array<int, 4>;
    for (const auto& [rows, panelWidth, listWidth, height] :
         {Case{0, 340, 340, 73}, Case{1, 340, 340, 73}, Case{2, 340, 329, 100},
          Case{3, 500, 489, 173}, Case{10, 270, 259, 400}}) {
        SCOPED_TRACE(testing::Message() << rows << " rows, " << listWidth << " by " << height);
        Clear();
        // From a nil record nothing is painted but its stripe.
        for (int i = 0; i < rows; ++i)
            List().MyDict->SetValue("row " + std::to_string(i), Variant());
        SetSizes(panelWidth, listWidth, height);
        const Ref<Picture> canvas = Paint();
        for (int y = 0; y < height; ++y) {
            const Colour stripe = StripeOf(y / rowHeight);
            const Colour line = stripe == tint ? RGB(189, 192, 196) : RGB(200, 200, 200);
            for (const int x : {0, 1, 2, listWidth / 2, listWidth - 1})
                ASSERT_EQ(At(canvas, x, y), y % rowHeight == 0 && x >= 2 ? line : stripe)
                    << x << ", " << y;
        }
    }
    List().MyDict = nullptr;
    EXPECT_EQ(At(Paint(), 100, 10), white);
}

TEST_F(RowPaintingTest, ScannerRowsAreWordedByTheTextOfTheirType) {
    SetSizes(340, 340, 73);
    const int left = 20 + DefragToolBar()->Width();
    const char* headings[] = {"Scanning File Sectors...", "Scanning Volume Sectors...",
                              "Scanning Sectors..."};
    const std::string prefixes[] = {"File: ", "Sector: ", "Item: "};
    using Case = std::pair<Variant, int>;
    for (const auto& [type, wording] :
         {Case{"0", 0}, Case{0.0, 0}, Case{0, 0}, Case{"00", 1}, Case{"0.0", 1}, Case{" 0", 1},
          Case{"", 1}, Case{1.0, 1}, Case{Variant(), 2}}) {
        const char* heading = headings[wording];
        const std::string& prefix = prefixes[wording];
        Values row = {{"task", 1}};
        if (!type.IsNil())
            row.emplace_back("type", type);
        ExpectRow(row, left, {{heading, 50}}, {});
        row.insert(row.end(), {{"Status", "7 <b>&amp;\n9"}, {"volume", "Data"}});
        ExpectRow(row, left, {{heading, 50}, {prefix + "7 <b>&amp; 9", 65}, {"Volume: Data", 18}},
                  {{prefix + "7 <b>&amp;\n9", 310}, {"Volume: Data", 310}});
    }
}

TEST_F(RowPaintingTest, ProgressAndBadgeBelongToEveryRecord) {
    artwork.Set(171, 47, 6, [](int x, int) { return x < 30 ? Grey(50) : Grey(150); });
    artwork.Set(172, 47, 6, [](int x, int) { return x < 45 ? Grey(0) : Grey(255); });
    artwork.Set(169, 12, 9, [](int x, int) { return x < 6 ? Grey(0) : Grey(255); });
    artwork.Set(170, 20, 20, [](int, int y) { return y < 4 ? Grey(0) : Grey(255); });
    DropPictures();
    SetSizes(340, 340, 73);
    using Case = std::tuple<Variant, std::string, int>;
    for (const auto& [progress, percent, filled] :
         {Case{0.0, "0.00 %", 0}, Case{1.25, "0.13 %", 0}, Case{6.25, "0.63 %", 2},
          Case{456.0, "45.60 %", 145}, Case{"456", "45.60 %", 145}, Case{999.94, "99.99 %", 319},
          Case{1000, "100.00 %", 320}, Case{1500, "150.00 %", 320}}) {
        Clear();
        AddRow({{"progress", progress}});
        const Ref<Picture> canvas = Paint();
        int counted = 0;
        for (int x = 0; x < 340; ++x) {
            EXPECT_EQ(At(canvas, x, 28) == white, x < 10 || x >= 330) << x;
            counted += At(canvas, x, 28) == Grey(50);
        }
        EXPECT_EQ(counted, filled) << percent;
        EXPECT_EQ(At(canvas, 100, 24), white);
        EXPECT_EQ(At(canvas, 100, 31), white);
        ExpectLines(canvas, 0, 330 - static_cast<int>(WidthOf(percent)), {{percent, 50}});
    }
    // Opaque up to these edges, from (20, 73 - 19) on; the size is always the shutdown badge's.
    using Badge = std::tuple<const char*, int, int>;
    for (const auto& [extra, right, bottom] :
         {Badge{"ShutDown", 26, 63}, Badge{"sleep", 32, 58}, Badge{"SLEEP", 32, 58},
          Badge{"sleep ", 0, 0}, Badge{"quit", 0, 0}}) {
        Clear();
        AddRow({{"Extra", extra}});
        const Ref<Picture> canvas = Paint();
        for (int y = 1; y < rowHeight; ++y)
            for (int x = 0; x < 340; ++x) {
                const bool inside = x >= 20 && x < right && y >= 54 && y < bottom;
                ASSERT_EQ(At(canvas, x, y), inside ? RGB(101, 124, 157) : white) << x << ", " << y;
            }
    }
}

TEST_F(RowPaintingTest, TheScrollBarCountsRowsAndIsPulledBack) {
    for (const int id : {169, 170})
        artwork.Set(id, 18, 18, [](int, int) { return Grey(0); });
    DropPictures();
    // Far more rows than the lines of an image can hold.
    for (int i = 0; i < 1000; ++i)
        AddRow({{"Extra", i == 2 || i == 999 ? "sleep" : ""}, {"progress", 10.0 * i}});
    using Case = std::array<int, 4>;
    for (const auto& [height, value, maximum, shown] :
         {Case{73, 0, 3, 0}, Case{73, 1, 3, 1}, Case{73, 2, 3, 2}, Case{73, 5, 2, 2},
          Case{73, 2, 0, 0}, Case{146, 0, 9, 0}, Case{146, 1, 9, 1}, Case{73, 999, 999, 999}}) {
        SetSizes(340, 329, height);
        Panel().ScrollBar1->SetMaximum(999);
        Panel().ScrollBar1->SetValue(value);
        Panel().ScrollBar1->SetMaximum(maximum);
        const Ref<Picture> canvas = Paint();
        EXPECT_EQ(Panel().ScrollBar1->Value(), shown) << value;
        EXPECT_EQ(At(canvas, 0, 30), StripeOf(shown));
        EXPECT_EQ(At(canvas, 25, 55) == RGB(101, 124, 157), shown == 2 || shown == 999) << value;
        // The grip's colour is the one at the bottom left.
        EXPECT_EQ(Panel().thedragcolor, StripeOf(shown + height / rowHeight - 1)) << value;
    }
    // Rows that are out of sight have their bars made all the same.
    EXPECT_TRUE(List().MyDict->Value("row 0").ObjectAs<Dictionary>()->HasKey("progresspict"));
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
        Clear();
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

TEST_F(RowPaintingTest, OddProgressLeavesTheOtherRowsIntact) {
    constexpr double infinity = std::numeric_limits<double>::infinity();
    SetSizes(340, 340, 146);
    const auto odd = AddRow({{"task", 1}, {"volume", std::string(100000, 'x')}});
    AddRow({{"task", 2}, {"progress", 456.0}, {"Extra", "sleep"}, {"Status", "\xFF\n\t\x01"}});
    odd->SetValue("progress", 0.0);
    const Ref<Picture> usual = Paint();
    std::vector<Ref<Picture>> pictures;
    for (const double progress : {0.0, -10.0, -20.0, -5.0, 1e300, -1e300, infinity, -infinity,
                                  std::numeric_limits<double>::quiet_NaN(), 4e9, -1e9, 1e-320}) {
        odd->SetValue("progress", progress);
        pictures.push_back(Paint());
        for (int y = rowHeight; y < 146; ++y)
            for (int x = 0; x < 340; x += 3)
                ASSERT_EQ(At(pictures.back(), x, y), At(usual, x, y)) << progress;
    }
    // No bar at all at -10, a track without ticks at -20.
    EXPECT_EQ(At(pictures[1], 200, 30), white);
    EXPECT_NE(At(pictures[2], 200, 30), white);
}

} // namespace
} // namespace kqu
