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
constexpr std::array kindNames{"Post",        "Process",     "Press",      "Move",     "Release",
                               "Wheel",       "Outside",     "Ask",        "Source",   "Mount",
                               "Trouble",     "Function",    "Commands",   "Collapse", "Jump",
                               "Screen",      "Echo",        "LookUpFile", "Folder",   "Close",
                               "LoseDisplay", "Preferences", "Place"};

/// How often each kind comes, in the quiet lives and in those in which things break for good.
struct Weight {
    Kind kind;
    int quiet;
    int rough;
};
constexpr Weight weights[] = {
    {Kind::Post, 500, 500},   {Kind::Process, 90, 60},  {Kind::Press, 40, 20},
    {Kind::Move, 60, 30},     {Kind::Release, 30, 20},  {Kind::Wheel, 40, 20},
    {Kind::Outside, 25, 15},  {Kind::Ask, 60, 60},      {Kind::Source, 30, 30},
    {Kind::Mount, 30, 30},    {Kind::Trouble, 12, 12},  {Kind::Function, 0, 30},
    {Kind::Commands, 30, 40}, {Kind::Collapse, 15, 15}, {Kind::Jump, 5, 5},
    {Kind::Screen, 8, 8},     {Kind::Echo, 5, 5},       {Kind::LookUpFile, 8, 8},
    {Kind::Folder, 5, 5},     {Kind::Close, 0, 3},      {Kind::LoseDisplay, 0, 1},
};

class Maker {
  public:
    explicit Maker(std::uint64_t seed) : random_(seed) {}

    Life Make() {
        rough_ = Below(4) == 0;
        few_ = 1 + Below(Below(2) == 0 ? 4 : 25);
        Life life = Beginnings();
        constexpr std::array paces{10, 200, 900, 2500};
        const int pace = paces[static_cast<std::size_t>(Below(4))];
        const int length = 10 + Below(150);
        int time = 0;
        for (int i = 0; i < length; ++i) {
            time += 1 + Gap(pace);
            // On the timers' own moments every now and then.
            if (Below(4) == 0)
                time = (time + 499) / 500 * 500;
            Event event = Any();
            event.at = time;
            event.nested = Below(5) == 0;
            life.push_back(event);
        }
        return life;
    }

  private:
    int Below(int limit) { return static_cast<int>(random_() % static_cast<std::uint64_t>(limit)); }
    int Gap(int pace) {
        switch (Below(40)) {
        case 0:
            return 12000;
        case 1:
            return rough_ ? 3000 : 0;
        default:
            return Below(3) == 0 ? 0 : Below(2 * pace);
        }
    }

    Life Beginnings() {
        Life life;
        for (const Kind kind : {Kind::Screen, Kind::Echo, Kind::Preferences, Kind::Mount,
                                Kind::Source, Kind::LookUpFile, Kind::Place, Kind::Folder})
            if (Below(2) == 0)
                life.push_back(Values({kind}));
        return life;
    }

    Event Any() {
        const auto weight = [this](const Weight& w) { return rough_ ? w.rough : w.quiet; };
        int sum = 0;
        for (const Weight& w : weights)
            sum += weight(w);
        int drawn = Below(sum);
        const Weight* w = weights;
        while (drawn >= weight(*w))
            drawn -= weight(*w++);
        return Values({w->kind});
    }

    Event Values(Event event) {
        for (int& value : event.values)
            value = Below(1 << 20);
        if (event.kind != Kind::Post)
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
        text << event.at << (event.nested ? " nested " : " now ")
             << kindNames.at(static_cast<std::size_t>(event.kind));
        for (const int value : event.values)
            text << ' ' << value;
        text << '\n';
    }
    return text.str();
}

Life FromText(std::istream& text) {
    Life life;
    std::string when;
    std::string kind;
    for (Event event; text >> event.at >> when >> kind;) {
        for (int& value : event.values)
            text >> value;
        const auto* const name = std::find(kindNames.begin(), kindNames.end(), kind);
        if (name == kindNames.end() || !text)
            throw std::runtime_error("no event of a life: " + kind);
        event.kind = static_cast<Kind>(std::distance(kindNames.begin(), name));
        event.nested = when == "nested";
        life.push_back(event);
    }
    return life;
}

} // namespace kqu::lives
