#include "framework/ui/drawing/Plane.h"
#include "framework/values/Exceptions.h"
#include "platform/functions/Functions.h"
#include "tests/support/Artwork.h"
#include "tests/support/SimulatedMachine.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <map>
#include <sstream>
#include <tuple>
#include <utility>
#include <vector>

namespace kqu {
namespace {

using namespace simulation;
using Values = std::vector<std::pair<const char*, Variant>>;

/// A row as it must look: the pictures of the icon, of the sibling's icon and of that which gives
/// the slot its width; the texts at the baselines 50, 65 and 18 and the percentage, where those
/// that may be shortened are in brackets; and the badge.
struct Painted {
    Values values;
    std::string look;
};

const Values backup = {
    {"task", 6}, {"destination", "/B"}, {"Status", "Copying"}, {"volume", "Home"}};
const Values folder = {{"task", 6}, {"FolderBackup", true}, {"type", 4.9}, {"Extra", "Sleep"}};
const Values image = {{"task", 6}, {"destination", ""}, {"type", 4.0}, {"progress", -10.0}};
const Values sectors = {{"task", 1}, {"Status", "/a"}, {"volume", ""}};
const Values files = {{"task", 1}, {"type", "0"}, {"Status", "/a"}, {"Extra", "sleeping"}};
const Values forked = {{"task", 2}, {"fileprogress", "Defragging Fork: 5 % Complete"}};
const Values defrag = {{"task", 2}, {"Status", "File: x"}, {"volume", "Data"}, {"progress", 1e6}};
const std::vector<Painted> rows = {
    {backup, "177 183 177|Destination: [/B]|[Status: Copying]|[Backing up: Home]||0"},
    {folder, "179 181 177|To Image File: [unknown]||||170"},
    {image, "177 183 177|To Image File on: |||-1.00 %|0"},
    {sectors, "173 185 173|Scanning Sectors...|[Item: /a]|[Volume: ]||0"},
    {files, "173 185 173|Scanning File Sectors...|[File: /a]|||0"},
    {{{"task", 1}, {"type", "00"}, {"Status", "7"}},
     "173 185 173|Scanning Volume Sectors...|[Sector: 7]|||0"},
    {defrag, "175 187 175|[Defragging Files...]|[File: x]|[Volume: Data]|100000.00 %|0"},
    {forked, "175 187 175|[Defragging Fork: 5 % Complete]||||0"},
    {{{"task", 5}, {"progress", 999.96}, {"Extra", "SHUTDOWN"}}, "0 0 0||||100.00 %|169"}};

/// With the program's own artwork and texts.
class PaintedPanel : public testing::Test {
  protected:
    PaintedPanel() { machine.Start(); }
    void AddRow(const Values& values) {
        const auto record = std::make_shared<Dictionary>();
        for (const auto& [key, value] : values)
            record->SetValue(key, value);
        list.MyDict->SetValue("row " + std::to_string(list.MyDict->Count()), record);
    }
    Ref<Picture> Paint() {
        const Ref<Picture> canvas = Picture::MakeBuffer(list.Width(), list.Height());
        panel.MyWindowEventList_Paint(canvas->Graphics());
        return canvas;
    }

    SimulatedMachine machine;
    Window1& panel = machine.Panel();
    MyEventList& list = *panel.MyWindowEventList;
};

/// With flat pictures, each in its own colour and size, and with brackets for the shortening.
class RowPaintingTest : public PaintedPanel {
  protected:
    RowPaintingTest() {
        for (const int id : {169, 170, 173, 175, 177, 179, 181, 183, 185, 187}) {
            sizes[id] = {id == 169 ? 16 : id == 170 ? 20 : id - 140, id == 170 ? 9 : id - 130};
            artwork.Set(id, sizes[id].width, sizes[id].height,
                        [id](int, int) { return id < 173 ? Grey(0) : IconColour(id); });
            // The mask lets half of its icon through.
            if (id > 172)
                artwork.Set(id + 1, sizes[id].width / 2, sizes[id].height,
                            [](int, int) { return Grey(0); });
        }
        artwork.Set(171, 47, barHeight, [](int, int) { return barColour; });
        artwork.Set(172, 47, barHeight, [](int, int) { return Grey(0); });
        machine.functions.Set<functions::TruncateThemeText>(
            [this](std::string& text, std::uint16_t font, std::uint32_t state, std::int32_t limit,
                   std::uint32_t code, bool* truncated) {
                EXPECT_TRUE(font == 0 && state == 0 && code == 0x4000 && truncated == nullptr);
                text = "[" + text + "]";
                limits[text] = limit;
                return -1;
            });
    }
    static Colour IconColour(int id) { return RGB(id, 255 - id, 90); }
    static constexpr Colour barColour = RGB(0, 200, 0);
    static constexpr int barHeight = 5, panelWidth = 400, listWidth = 389;

    static void Fill(Graphics& g, int x, int y, int width, int height, Colour colour) {
        g.SetForeColor(colour);
        g.FillRect(x, y, width, height);
    }
    static void Text(Graphics& g, const std::string& text, int left, int baseline) {
        g.SetForeColor(RGB(5, 5, 5));
        g.DrawString(text, left, baseline);
    }
    /// The row's own part of what must be seen, with its top there.
    void Expect(Graphics& g, const Painted& row, int top) {
        std::istringstream look(row.look);
        int icons[2], reference = 0, badge = 0;
        std::string heading, status, above, percent;
        look >> icons[0] >> icons[1] >> reference;
        look.ignore();
        for (std::string* text : {&heading, &status, &above, &percent})
            std::getline(look, *text, '|');
        look >> badge;
        const int slot = 10 + (reference == 0 ? 0 : sizes[reference].width + 10);
        const int icon = icons[Module1.ParentIsMarlstone ? 1 : 0];
        Fill(g, 10, top + 10, sizes[icon].width / 2, sizes[icon].height, IconColour(icon));
        Text(g, heading, slot, top + 50);
        Text(g, status, slot, top + 65);
        Text(g, above, slot, top + 18);
        // Which is empty at -1.
        if (!percent.empty() && percent != "-1.00 %")
            Fill(g, slot, top + 25, listWidth - 10 - slot, barHeight, barColour);
        Text(g, percent, listWidth - 10 - static_cast<int>(g.StringWidth(percent)), top + 50);
        const platform::Size whole = sizes[169], stencil = sizes[badge];
        Fill(g, 20, top + 73 - (whole.height + 10), std::min(whole.width, stencil.width),
             std::min(whole.height, stencil.height), RGB(101, 124, 157));
    }
    void ExpectSame(const Ref<Picture>& shown, int scrolled) {
        const Ref<Picture> expected = Picture::MakeBuffer(shown->Width(), shown->Height());
        Graphics& g = expected->Graphics();
        g.SetTextSize(11);
        for (int i = 0; i * 73 - scrolled < shown->Height(); ++i) {
            const int top = i * 73 - scrolled;
            Fill(g, 0, top, panelWidth, 74, i % 2 == 0 ? Grey(255) : RGB(241, 245, 250));
            Fill(g, 2, top, panelWidth, 1, i % 2 == 0 ? Grey(200) : RGB(189, 192, 196));
            if (i < std::ssize(rows))
                Expect(g, rows[static_cast<std::size_t>(i)], top);
        }
        for (int y = 0; y < shown->Height(); ++y)
            for (int x = 0; x < shown->Width(); ++x)
                ASSERT_EQ(shown->Graphics().Pixel(x, y), g.Pixel(x, y)) << x << ", " << y;
        EXPECT_EQ(panel.thedragcolor, g.Pixel(0, shown->Height() - 1));
    }

    std::map<int, platform::Size> sizes;
    std::map<std::string, int> limits;
    Artwork artwork;
};

TEST_F(RowPaintingTest, EachKindOfRowHasItsTextsIconBarAndBadge) {
    for (const Painted& row : rows)
        AddRow(row.values);
    panel.SetWidth(panelWidth);
    list.SetWidth(listWidth);
    panel.SetHeight(250);
    list.SetHeight(250);
    panel.ScrollBar1->SetMaximum(9);
    for (const bool isSibling : {false, true})
        for (const auto& [value, maximum, scrolled] :
             {std::tuple{0, 9, 0}, {3, 9, 3 * 73}, {9, 7, 7 * 73}, {2, 0, 0}}) {
            Module1.ParentIsMarlstone = isSibling;
            panel.ScrollBar1->SetMaximum(9);
            panel.ScrollBar1->SetValue(value);
            panel.ScrollBar1->SetMaximum(maximum);
            ExpectSame(Paint(), scrolled);
            EXPECT_EQ(panel.ScrollBar1->Value(), scrolled / 73);
        }
    const int left = 10 + sizes[177].width + 10;
    const auto width = [&](const char* label) {
        const Ref<Picture> scratch = Picture::MakeBuffer(1, 1);
        Graphics& g = scratch->Graphics();
        g.SetTextSize(11);
        return static_cast<int>(g.StringWidth(label) - 7.0);
    };
    EXPECT_EQ(limits["[/B]"], panelWidth - (64 + left + width("To Image File on: ")));
    EXPECT_EQ(limits["[unknown]"], panelWidth - (64 + left + width("To Image File: ")));
    EXPECT_EQ(limits["[Defragging Files...]"], listWidth - 75);
    for (const char* text : {"[Status: Copying]", "[Item: /a]", "[Volume: Data]"})
        EXPECT_EQ(limits[text], listWidth - 30) << text;
    EXPECT_FALSE(limits.contains("[]"));
}

TEST_F(PaintedPanel, TheGripIsPaintedOnTheStripeWithEachPaint) {
    panel.MyDragPict = NewPicture(10, 10, 32);
    panel.MyDragPict->Graphics().SetForeColor(RGB(30, 30, 30));
    panel.MyDragPict->Graphics().FillRect(0, 0, 10, 10);
    AddRow({});
    AddRow({});
    panel.ChangeWindowSize(340, 146, true, true);
    machine.Advance();
    const SimulatedWindow& window = *machine.windows.window;
    // The grip is 17 by 14 at (322, 131), and its picture ends one pixel before its last column and
    // line. The list ends one pixel before the panel does, on the right and at the bottom.
    constexpr Colour gripped = RGB(30, 30, 30), stripe = RGB(241, 245, 250);
    using Case = std::tuple<int, int, Colour>;
    for (const auto& [x, y, colour] :
         {Case{337, 143, gripped}, Case{328, 134, gripped}, Case{338, 140, stripe},
          Case{335, 144, stripe}, Case{327, 140, stripe}, Case{330, 133, stripe},
          Case{338, 100, stripe}, Case{339, 100, Grey(255)}, Case{100, 145, Grey(255)},
          Case{1, 72, RGB(189, 192, 196)}, Case{0, 72, stripe}, Case{5, 0, Grey(255)}})
        EXPECT_EQ(window.PixelOnScreen(x, y), colour.value) << x << ", " << y;
    // What looks as it did is not shown anew.
    const int before = window.presents;
    for (const int news : {0, 1}) {
        panel.MyDragPict->Graphics().FillRect(0, 0, news, news);
        list.Refresh(Erasing::KeepBackground);
        machine.Advance();
        EXPECT_EQ(window.presents, before + news);
    }
}

TEST_F(PaintedPanel, MissingArtworkEndsOnlyTheRowsThatNeedIt) {
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
        list.MyDict = std::make_shared<Dictionary>();
        list.ProgressSep = list.WhitePict = nullptr;
        AddRow(values);
        if (raises)
            EXPECT_THROW(Paint(), NilObjectException) << missing;
        else
            EXPECT_NO_THROW(Paint()) << missing;
    }
}

TEST_F(PaintedPanel, AtTwoTheListIsTheSameAndSharp) {
    AddRow({{"task", 6}, {"destination", "Data"}, {"progress", 450.0}, {"Extra", "sleep"}});
    AddRow({{"task", 2}, {"FileName", "a file"}, {"progress", 45.0}});
    panel.ChangeWindowSize(340, 146, true, true);
    const Ref<Picture> one = Paint();
    platform::DeviceScale() = 2;
    const Ref<Picture> two = Paint();
    for (const auto& kept : {panel.MyDragPict, list.ProgressSep, list.WhitePict, list.BluePict})
        EXPECT_EQ(kept->Scale(), 2);
    platform::DeviceScale() = 1;

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
}

TEST_F(PaintedPanel, ShorteningIsLookedUpForEveryTextThatIsNotEmpty) {
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
        EXPECT_EQ(panel.TruncText("a text", 10, where), code);
}

} // namespace
} // namespace kqu
