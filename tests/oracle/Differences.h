#pragma once

#include "tests/oracle/Rules.h"
#include "tests/support/SimulatedMachine.h"

#include <array>
#include <cmath>
#include <cstdio>
#include <string>
#include <tuple>

namespace kqu::oracle {

/// "what: is, should be"; empty if there is no difference.
inline std::string Differs(const std::string& what, const std::string& is,
                           const std::string& should) {
    return is == should ? "" : what + ": \"" + is + "\", should be \"" + should + "\"";
}

/// A value to its last bit, with its type; one not-a-number is as good as another.
inline std::string Told(const Variant& value) {
    std::array<char, 40> exact{};
    std::snprintf(exact.data(), exact.size(), ", %a, %d", std::fabs(value.DoubleValue()),
                  static_cast<int>(value.Kind()));
    return value.StringValue() + exact.data();
}

/// What a notification sends, as the rules read it.
inline Wire SentIn(const platform::WireDictionary& userInfo) {
    Wire wire;
    for (const auto& [key, value] : userInfo) {
        const auto* text = std::get_if<std::string>(&value);
        wire[key] = text != nullptr ? std::optional(*text) : std::nullopt;
    }
    return wire;
}

inline std::string Difference(const Dictionary& row, const Row& should) {
    // Drawing leaves its picture in the row.
    const int count = row.Count() - (row.HasKey("progresspict") ? 1 : 0);
    for (const auto& [key, cell] : should) {
        const Variant value = std::visit([](const auto& held) { return Variant(held); }, cell);
        const std::string wrong =
            Differs("row's " + key, row.HasKey(key) ? Told(row.Value(key)) : "none", Told(value));
        if (!wrong.empty())
            return wrong;
    }
    return Differs("row's keys", std::to_string(count), std::to_string(should.size()));
}

/// The open panel with so many rows.
inline std::string Difference(simulation::SimulatedMachine& machine, const Panel& e, int rows,
                              bool sibling) {
    const Window1& p = machine.Panel();
    const MyEventList& list = *p.MyWindowEventList;
    const auto box = [](const Control& c) { return Box{c.Left(), c.Top(), c.Width(), c.Height()}; };
    const std::tuple<const char*, Box, Box> boxes[] = {
        {"panel", {p.Left(), p.Top(), p.Width(), p.Height()}, {e.left, e.top, e.width, e.height}},
        {"last width, height, rows; greatest height",
         {p.LastWidth, p.LastHeight, p.LastDictcount, p.MaxHeight()},
         {e.lastWidth, e.lastHeight, e.lastCount, e.maxHeight}},
        {"scroll range, value; rows; updates held",
         {p.ScrollBar1->Maximum(), p.ScrollBar1->Value(), list.MyDict->Count(),
          machine.screenUpdates.AreHeld()},
         {e.maximum, e.value, rows, false}},
        {"list", box(list), e.list},
        {"grip", box(*p.Canvas1), e.grip},
        {"scroll bar", box(*p.ScrollBar1), e.bar}};
    const auto told = [](const Box& numbers) {
        std::string text;
        for (const int number : numbers)
            text += std::to_string(number) + " ";
        return text;
    };
    for (const auto& [what, is, should] : boxes)
        if (is != should)
            return Differs(what, told(is), told(should));
    return Differs("title", machine.windows.window->title, Title(rows, sibling));
}

} // namespace kqu::oracle
