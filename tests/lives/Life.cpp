#include "tests/lives/Life.h"

#include "tests/lives/Wire.h"

#include <algorithm>
#include <istream>
#include <iterator>
#include <random>
#include <sstream>
#include <stdexcept>

namespace kqu::lives {

namespace {
/// How often each kind comes, in the quiet lives and in those in which things break for good.
struct Weight {
    const char* kind;
    int quiet;
    int rough;
};
constexpr Weight weights[] = {
    {"Post", 500, 500},    {"Process", 90, 60},   {"Press", 40, 20},   {"Move", 60, 30},
    {"Release", 30, 20},   {"Wheel", 40, 20},     {"Outside", 25, 15}, {"Ask", 60, 60},
    {"Source", 30, 30},    {"Mount", 30, 30},     {"Trouble", 12, 12}, {"Function", 0, 30},
    {"Commands", 30, 40},  {"Collapse", 15, 15},  {"Jump", 5, 5},      {"Screen", 8, 8},
    {"Echo", 5, 5},        {"LookUpFile", 8, 8},  {"Folder", 5, 5},    {"Close", 0, 3},
    {"LoseDisplay", 0, 1}, {"Preferences", 0, 0}, {"Place", 0, 0},
};

class Maker {
  public:
    explicit Maker(std::uint64_t seed) : random_(seed) {}

    Life Make() {
        rough_ = Below(4) == 0;
        few_ = 1 + Below(Below(2) == 0 ? 4 : 25);
        Life life;
        for (const char* kind :
             {"Screen", "Echo", "Preferences", "Mount", "Source", "LookUpFile", "Place", "Folder"})
            if (Below(2) == 0)
                life.push_back(Draw(kind));
        constexpr std::array paces{10, 200, 900, 2500};
        const int pace = paces[static_cast<std::size_t>(Below(4))];
        int time = 0;
        for (int left = 10 + Below(150); left > 0; --left) {
            time += 1 + Gap(pace);
            // On the timers' own moments every now and then.
            if (Below(4) == 0)
                time = (time + 499) / 500 * 500;
            life.push_back(Draw(AnyKind()));
            life.back().at = time;
            life.back().nested = Below(5) == 0;
        }
        return life;
    }

  private:
    int Below(int limit) { return static_cast<int>(random_() % static_cast<std::uint64_t>(limit)); }
    int Gap(int pace) {
        const int kind = Below(40);
        if (kind < 2)
            return kind == 0 ? 12000 : rough_ ? 3000 : 0;
        return Below(3) == 0 ? 0 : Below(2 * pace);
    }

    const char* AnyKind() {
        const auto weight = [this](const Weight& w) { return rough_ ? w.rough : w.quiet; };
        int sum = 0;
        for (const Weight& w : weights)
            sum += weight(w);
        int drawn = Below(sum);
        const Weight* w = weights;
        while (drawn >= weight(*w))
            drawn -= weight(*w++);
        return w->kind;
    }

    Event Draw(const std::string& kind) {
        Event event{kind};
        for (int& value : event.values)
            value = Below(1 << 20);
        if (kind != "Post")
            return event;
        event.values[0] = Below(50) == 0 ? -1 - Below(2) : Below(few_) * nameForms + Below(3);
        event.values[1] = Below(12) == 0 ? Below(toolCount) : Below(3);
        // Nearly always a process; a value that is no text where nobody reads it, or where the
        // program may break.
        event.values[2] = Below(1 << wireKeyCount) | (Below(8) == 0 ? 0 : 1);
        if (Below(30) == 0)
            event.values[2] |= (rough_ ? 1 + Below(wireKeyCount) : unreadKey) << oddKeyShift;
        return event;
    }

    std::mt19937_64 random_;
    bool rough_ = false;
    /// How many tasks there are in this life.
    int few_ = 1;
};
} // namespace

Life MakeLife(std::uint64_t seed) {
    return Maker(seed).Make();
}

std::string ToText(const Life& life) {
    std::ostringstream text;
    for (const Event& event : life) {
        text << event.at << (event.nested ? " nested " : " now ") << event.kind;
        for (const int value : event.values)
            text << ' ' << value;
        text << '\n';
    }
    return text.str();
}

Life FromText(std::istream& text) {
    Life life;
    std::string when;
    for (Event event; text >> event.at >> when >> event.kind;) {
        for (int& value : event.values)
            text >> value;
        if (!text || std::none_of(std::begin(weights), std::end(weights),
                                  [&](const Weight& w) { return w.kind == event.kind; }))
            throw std::runtime_error("no event of a life: " + event.kind);
        event.nested = when == "nested";
        life.push_back(event);
    }
    return life;
}

} // namespace kqu::lives
