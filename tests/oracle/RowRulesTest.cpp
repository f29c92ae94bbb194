#include "framework/values/Text.h"
#include "platform/functions/Functions.h"
#include "tests/lives/Wire.h"
#include "tests/oracle/Differences.h"
#include "tests/oracle/Random.h"
#include "tests/support/Artwork.h"
#include "tests/support/MachineWithVolumes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

namespace kqu::oracle {
namespace {

using namespace simulation;

constexpr const char* lookUpFile = "/Application Support/Brackwater Utilties Support/BSDLookup";
using Shortenings = std::vector<std::pair<std::string, int>>;

std::string Shorten(Shortenings& asked, const std::string& text, int limit) {
    asked.emplace_back(text, limit);
    return std::to_string(limit) + text.substr(0, 14);
}

/// A table that is filled by notifications, and what should be in it.
class Table {
  public:
    explicit Table(Random& dice) : random(dice) {
        machine.functions.Set<functions::FSGetVolumeInfo>(
            [](auto, auto, auto, std::uint32_t which, std::byte* info, auto, auto) {
                EXPECT_EQ(which, 0xFFFFU);
                std::memcpy(info + 32, &files, sizeof files);
                return 0;
            });
        machine.functions.Set<functions::TruncateThemeText>(
            [this](std::string& text, std::uint16_t font, std::uint32_t state, std::int32_t limit,
                   std::uint32_t code, bool* truncated) {
                EXPECT_TRUE(font == 0 && state == 0 && code == 0x4000 && truncated == nullptr);
                text = Shorten(shortened, text, limit);
                return -1;
            });
        if (!random.OneIn(3)) {
            disks.lookUpFile = "";
            for (int lines = random.Between(0, 4); lines > 0; --lines)
                *disks.lookUpFile +=
                    random.Of<std::string>({"sda1", "SDB1", "SdZ9", ""}) +
                    random.Of<std::string>({":", ":", ":", "::", ""}) +
                    random.Of<std::string>({"Vol", "\u00C4", "\xFF", ""}) +
                    random.Of<std::string>({":", ":", ":", ""}) +
                    random.Of<std::string>({"9999999999", "0", "x",
                                            std::to_string(random.Between(1, 30000)),
                                            std::to_string(random.Between(1, 30000))}) +
                    random.Of<std::string>({"\r", "\r", "\r\n", "\n", ":1\r"});
            machine.WriteFile(lookUpFile, *disks.lookUpFile);
        }
        machine.Start();
        Module1.ParentIsMarlstone = random.OneIn(2);
    }

    /// Sends one notification and compares its row.
    void Notify() {
        const PostedNotification posted = lives::NotificationOf(
            {random.Between(-2, 3 * lives::nameForms),
             random.OneIn(3) ? random.Between(0, lives::toolCount - 1) : random.Between(0, 2),
             random.Between(0, (1 << lives::wireKeyCount) - 1), random.Between(0, 1 << 20)});
        machine.centre.Post(posted);
        machine.Advance();
        const std::string name = posted.name.value_or("");
        if (!posted.object || !posted.userInfo || Place(name, "KQS_disk") == 0)
            return;
        auto row = std::find_if(rows.begin(), rows.end(),
                                [&](const auto& known) { return Same(known.first, name); });
        if (row == rows.end())
            row = rows.insert(rows.end(), {name, {}});
        if (const auto* tool = std::get_if<std::string>(&*posted.object))
            TakeIn(row->second, *tool, SentIn(*posted.userInfo), disks);
        EXPECT_EQ(Difference(*machine.Row(name), row->second), "");
        EXPECT_EQ(machine.Title(), Title(static_cast<int>(rows.size()), Module1.ParentIsMarlstone));
    }

    static constexpr std::uint32_t files = 3000000000U;
    MachineWithVolumes machine;
    Disks disks{std::nullopt, {{"sda1", "/", files}, {"sdb1", "Photos", files}}};
    std::vector<std::pair<std::string, Row>> rows;
    Shortenings shortened;

  private:
    Random& random;
};

/// Flat pictures of random sizes, each in its own colour.
class Pictures {
  public:
    explicit Pictures(Random& random) {
        for (const int icon : {173, 175, 177, 179, 181, 183, 185, 187}) {
            sizes[icon] = {random.Between(1, 60), random.Between(1, 70)};
            artwork.Set(icon, sizes[icon].width, sizes[icon].height,
                        [icon](int, int) { return IconColour(icon); });
            artwork.Remove(icon + 1);
        }
        for (const int badge : {169, 170}) {
            sizes[badge] = {random.Between(1, 30), random.Between(1, 30)};
            artwork.Set(badge, sizes[badge].width, sizes[badge].height,
                        [](int, int) { return Grey(0); });
        }
        barHeight = random.Between(1, 20);
        artwork.Set(171, 47, barHeight,
                    [](int x, int) { return BarColour("   ffflmr12"[x < 45 ? x / 5 : x - 36]); });
        artwork.Set(172, 47, barHeight, [](int, int) { return Grey(0); });
    }
    static Colour IconColour(int icon) { return RGB(icon, 255 - icon, 90); }
    static Colour BarColour(char letter) { return RGB(0, letter, 255 - letter); }

    Artwork artwork;
    std::map<int, platform::Size> sizes;
    int barHeight;
};

/// What a list of that size should look like, drawn line by line from the rules.
struct ExpectedList {
    Table& table;
    Pictures& pictures;
    Ref<Picture> picture;
    Graphics& canvas;
    int panelWidth, scrolled;
    Shortenings shortened;

    void Fill(int x, int y, int width, int height, Colour colour) {
        canvas.SetForeColor(colour);
        canvas.FillRect(x, y, width, height);
    }
    void Draw(int stripes, int end) {
        canvas.SetTextSize(11);
        Fill(0, 0, picture->Width(), picture->Height(), RGB(255, 255, 255));
        for (int i = 0; i < stripes; ++i) {
            const int top = i * 73 - scrolled;
            Fill(0, top, panelWidth, end - top, {StripeColour(i)});
            Fill(2, top, panelWidth, 1, {LineColour(i)});
            if (i < static_cast<int>(table.rows.size()))
                DrawRow(table.rows[static_cast<std::size_t>(i)].second, top);
        }
    }
    void DrawRow(const Row& row, int top) {
        const Machine machine{
            [this](int id) { return pictures.sizes[id].width; },
            [this](const std::string& text) { return canvas.StringWidth(text); },
            [this](const std::string& text, int limit) { return Shorten(shortened, text, limit); },
            [](double number) { return Format(number, "##0.00"); }};
        const PaintedRow painted =
            PaintedRowOf(row, panelWidth, picture->Width(), Module1.ParentIsMarlstone, machine);
        const platform::Size icon = pictures.sizes[painted.icon];
        Fill(10, top + 10, icon.width, icon.height, Pictures::IconColour(painted.icon));
        // The bar lies below the percentage and above the other texts.
        const std::size_t last = painted.lines.size() - (painted.bar ? 1 : 0);
        for (std::size_t i = 0; i < last; ++i)
            DrawLine(painted.lines[i], top);
        for (int x = 0; painted.bar && x < painted.bar->width; ++x)
            if (const char letter = painted.bar->Colour(x); letter != ' ')
                Fill(painted.barLeft + x, top + 25, 1, pictures.barHeight,
                     Pictures::BarColour(letter));
        if (painted.bar)
            DrawLine(painted.lines[last], top);
        const platform::Size whole = pictures.sizes[169];
        const platform::Size stencil = pictures.sizes[painted.badge];
        Fill(20, top + 73 - (whole.height + 10), std::min(whole.width, stencil.width),
             std::min(whole.height, stencil.height), RGB(101, 124, 157));
    }
    void DrawLine(const Line& line, int top) {
        canvas.SetForeColor(RGB(5, 5, 5));
        canvas.DrawString(line.text, line.left, top + line.baseline);
    }
};

void ExpectSame(const Ref<Picture>& shown, const Ref<Picture>& expected) {
    for (int y = 0; y < shown->Height(); ++y)
        for (int x = 0; x < shown->Width(); ++x)
            ASSERT_EQ(shown->Graphics().Pixel(x, y), expected->Graphics().Pixel(x, y))
                << "at " << x << ", " << y;
}

TEST(RowRules, NotificationsAndTheListTheyMake) {
    ForCases(100, [](Random& random) {
        Pictures pictures(random);
        Table table(random);
        for (int sent = random.Between(0, 12); sent > 0 && !testing::Test::HasFailure(); --sent)
            table.Notify();
        Window1& panel = table.machine.Panel();
        MyEventList& list = *panel.MyWindowEventList;
        const int rows = static_cast<int>(table.rows.size());
        panel.SetWidth(random.Between(270, 500));
        panel.SetHeight(random.Between(0, 2) * 73 + random.Of<int>({73, 73, 36, 37, 74, 100}));
        list.SetWidth(panel.Width() - (random.OneIn(2) ? 11 : 0));
        list.SetHeight(panel.Height());
        const int maximum = std::max(0, rows - random.Between(0, 2));
        const int value = random.Between(0, 5);
        panel.ScrollBar1->SetMaximum(9);
        panel.ScrollBar1->SetValue(value);
        panel.ScrollBar1->SetMaximum(maximum);
        table.shortened.clear();
        const Ref<Picture> shown = Picture::MakeBuffer(list.Width(), list.Height());
        panel.MyWindowEventList_Paint(shown->Graphics());

        const int scrolled = value > 0 ? std::min(value, maximum) * 73 : 0;
        const Ref<Picture> picture = Picture::MakeBuffer(list.Width(), list.Height());
        ExpectedList expected{table,         pictures, picture, picture->Graphics(),
                              panel.Width(), scrolled, {}};
        expected.Draw(Stripes(rows, panel.Height()),
                      std::max(rows, 1) * 73 + panel.Height() - scrolled);
        EXPECT_EQ(table.shortened, expected.shortened);
        EXPECT_EQ(panel.ScrollBar1->Value(), value > 0 ? std::min(value, maximum) : value);
        ExpectSame(shown, picture);
        EXPECT_EQ(panel.thedragcolor, picture->Graphics().Pixel(0, list.Height() - 1));
    });
}

} // namespace
} // namespace kqu::oracle
