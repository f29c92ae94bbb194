#include "framework/values/Exceptions.h"
#include "platform/functions/Functions.h"
#include "tests/oracle/Differences.h"
#include "tests/oracle/Random.h"
#include "tests/support/Artwork.h"

#include <gtest/gtest.h>

#include <limits>

namespace kqu::oracle {
namespace {

using namespace simulation;

/// One life of a panel under arrivals, deaths, and a user's hand.
class History {
  public:
    explicit History(Random& dice) : random(dice) {
        machine.windows.echo = random.OneIn(2) ? SizeEcho::AtOnce : SizeEcho::Never;
        machine.processes.commands["/bin/ps -ax -o 'pid'"] = [this] {
            std::string list = "PID\n";
            for (const int process : living)
                list += std::to_string(process) + "\n";
            return list;
        };
        machine.functions.Set<functions::DragWindow>(
            [this](platform::NativeWindow*, platform::Point start, const platform::Rect*) {
                dragged = start;
            });
        machine.Start();
        const PanelPlace place = DefaultPlace(1280, 340);
        expected.left = place.left;
        expected.top = place.top;
        expected.Resize(340, 185, false, true, 0);
    }

    void Live(int events) {
        for (; events > 0 && !testing::Test::HasFailure(); --events) {
            const int kind = random.Between(0, 9);
            SCOPED_TRACE(testing::Message() << "event of kind " << kind);
            kind < 3    ? Arrive()
            : kind == 3 ? Die()
            : kind == 4 ? Drag()
            : kind == 5 ? ChangeFromOutside()
            : kind == 6 ? Resize()
            : kind == 7 ? Press()
            : kind == 8 ? Turn()
                        : ChangeScreen();
            EXPECT_EQ(Difference(machine, expected, Rows(), Module1.ParentIsMarlstone), "");
        }
    }

  private:
    [[nodiscard]] int Rows() const { return static_cast<int>(rows.size()); }

    void Arrive() {
        if (random.OneIn(4) && Rows() > 0) {
            Post(random.Of(rows));
            expected.lastCount = Rows();
            return;
        }
        rows.push_back(++latest);
        living.insert(latest);
        Post(latest);
        expected.RowCame(Rows(), screenHeight);
    }
    void Post(int process) {
        const std::string id = std::to_string(process);
        machine.Panel().DiskNotification_Received(
            CFString::Make("KQS_disk." + id), CFString::Make("KQMS"),
            CFDictionary::Make({{"PID", CFString::Make(id)}}));
    }
    void Die() {
        for (const int process : rows)
            if (random.OneIn(3))
                living.erase(process);
        const int before = Rows();
        std::erase_if(rows, [this](int process) { return living.count(process) == 0; });
        for (int left = before - 1; left >= Rows(); --left)
            expected.RowWent(left);
        machine.Panel().MyTimer3_Action();
    }
    void Resize() {
        const int width = random.Of<int>({269, 270, 271, 499, 500, 501, 340, -7, 1000000});
        const int height = expected.height + random.Of<int>({0, 36, 37, -36, -37, 73, -73, 900}) +
                           (random.OneIn(4) ? random.Between(-90, 90) : 0);
        const bool exact = random.OneIn(3), force = random.OneIn(2);
        machine.Panel().ChangeWindowSize(width, height, exact, force);
        expected.Resize(width, height, exact, force, Rows());
    }
    void ChangeFromOutside(bool isHeld = false) {
        const Box box{random.Between(-40, 1300), random.Between(-40, 900),
                      expected.width + random.Between(1, 40), random.Between(1, 500)};
        machine.windows.ChangeFromOutside({box[0], box[1], box[2], box[3]});
        machine.Advance();
        expected.left = box[0];
        expected.top = box[1];
        expected.width = box[2];
        expected.height = box[3];
        if (!isHeld)
            expected.Resize(box[2], box[3], false, false, Rows());
    }
    void Drag() {
        Window1& panel = machine.Panel();
        const int column = random.Between(0, 16);
        EXPECT_TRUE(panel.Canvas1_MouseDown(column, random.Between(0, 13)));
        for (int moves = random.Between(1, 5); moves > 0; --moves) {
            if (random.OneIn(6))
                ChangeFromOutside(true);
            machine.windows.pointer = {expected.left + expected.width + random.Between(-30, 30),
                                       expected.top + expected.height +
                                           random.Of<int>({0, 36, 37, -36, -37, -38, 500})};
            panel.Canvas1_MouseDrag(random.Between(0, 16), random.Between(0, 13));
            expected.Drag(column, machine.windows.pointer.x, machine.windows.pointer.y, Rows());
        }
        panel.Canvas1_MouseUp(0, 0);
    }
    void Press() {
        const int x = random.Between(0, 400), y = random.Between(0, 200);
        expected.left = random.Between(-70000, 70000);
        expected.top = random.Between(-70000, 70000);
        machine.Panel().SetLeft(expected.left);
        machine.Panel().SetTop(expected.top);
        EXPECT_FALSE(machine.Panel().Event_MouseDown(x, y));
        const platform::Point start{static_cast<std::int16_t>(expected.left + x),
                                    static_cast<std::int16_t>(expected.top + y)};
        EXPECT_EQ(dragged, start);
    }
    void Turn() {
        for (int turns = random.Between(1, 4); turns > 0; --turns) {
            const int delta = random.Between(-2, 3);
            EXPECT_FALSE(machine.Panel().MyWindowEventList_MouseWheel(5, 5, 7, delta));
            expected.Wheel(delta);
        }
    }
    void ChangeScreen() {
        // About where one more row just fits, or not.
        expected.top = random.Between(0, 100);
        machine.Panel().SetTop(expected.top);
        screenHeight = expected.top + expected.height + 73 + random.Between(-2, 1);
        machine.windows.screens = {{0, 0, 1280, screenHeight}};
    }

    Random& random;
    SimulatedMachine machine;
    Panel expected;
    std::vector<int> rows;
    std::set<int> living{1};
    int latest = 100, screenHeight = 800;
    platform::Point dragged;
};

TEST(PanelRules, SizesOverWholeHistories) {
    ForCases(50, [](Random& random) { History(random).Live(40); });
}

Colour ColourOf(char letter) {
    return letter == ' ' ? RGB(255, 255, 255) : RGB(0, letter * 37 % 256, 255 - letter * 37 % 256);
}

TEST(PanelRules, Bars) {
    constexpr double infinity = std::numeric_limits<double>::infinity();
    Artwork artwork;
    artwork.Set(171, 47, 5,
                [](int x, int) { return ColourOf("???ffflmr12"[x < 45 ? x / 5 : x - 36]); });
    artwork.Set(172, 47, 5, [](int x, int) { return x >= 30 && x < 45 ? Grey(128) : Grey(0); });
    SimulatedMachine machine;
    machine.Start();
    MyEventList& list = *machine.Panel().MyWindowEventList;
    ForCases(500, [&](Random& random) {
        const int width = random.Between(1, 520);
        const double maximum = random.Of<double>({100, 100, 100, 100, 0, 50, 1e-300, -100});
        const double part = random.Between(0, width + 1) * 100.0 / width;
        const double value = random.Of<double>(
            {part, std::nextafter(part, 0.0), random.Real(0, 101), 100, 45.6, 0, -0.5, -1, -2,
             std::nextafter(-1.0, 0.0), std::nextafter(-1.0, -2.0), 150, 1e300, infinity, -infinity,
             std::numeric_limits<double>::quiet_NaN(), 5e-324});
        Dictionary record;
        list.ListProgress(width, value, maximum, record);
        const auto bar = record.Value("progresspict").ObjectAs<Picture>();
        ASSERT_EQ(bar->Width(), width);
        ASSERT_EQ(bar->Height(), 5);
        const Bar expected{width, value, maximum};
        for (int x = 0; x < width; ++x) {
            SCOPED_TRACE(testing::Message() << width << " wide, " << value << " of " << maximum);
            const char letter = expected.Colour(x), mask = expected.Mask(x);
            const int grey = mask == 'f' ? 0 : mask == 't' ? 128 : 255;
            const bool isThinned = letter == 'l' || letter == 'm' || letter == 'r';
            const Colour shown = bar->Graphics().Pixel(x, x % 5), whole = ColourOf(letter);
            for (const auto channel : {&Colour::Red, &Colour::Green, &Colour::Blue})
                ASSERT_NEAR((shown.*channel)(),
                            isThinned ? 255 - (255 - (whole.*channel)()) * 127 / 255
                                      : (whole.*channel)(),
                            isThinned)
                    << x;
            ASSERT_EQ(bar->Mask(MaskCreation::IfThere)->Graphics().Pixel(x, x % 5), Grey(grey))
                << x;
        }
    });
}

} // namespace
} // namespace kqu::oracle
