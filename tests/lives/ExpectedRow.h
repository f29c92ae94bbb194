#pragma once

#include "tests/lives/World.h"

#include <map>
#include <string>
#include <variant>

namespace kqu::lives {

/// A row as it must be: texts and numbers under folded keys.
using Row = std::map<std::string, std::variant<std::string, double>>;

/// What a notification of that tool makes of a row. Raises Ends where the program has to end.
void TakeIn(Row& row, const std::string& tool, const platform::WireDictionary& sent,
            const World& world);

/// A number as a whole one of 32 bits.
[[nodiscard]] std::int32_t Whole(double number);

} // namespace kqu::lives
