#pragma once

#include "platform/interfaces/NotificationCentre.h"
#include "tests/lives/Life.h"

#include <string>

namespace kqu::lives {

/// Each task's name is written in so many ways that differ in case only.
inline constexpr int nameForms = 3;
/// The three tools first, then other spellings of theirs and all that is no tool.
inline constexpr int toolCount = 10;
inline constexpr int wireKeyCount = 16;
/// Above the bits of the keys: 1 + the number of the key whose value is no text, or 0.
inline constexpr int oddKeyShift = 20;
/// 1 + the number of the one key whose value nobody reads.
inline constexpr int unreadKey = 10;

/// The notification of an event: its name, its tool, the bits of the keys it sends, and a number
/// that their values follow from.
[[nodiscard]] platform::PostedNotification NotificationOf(const Event& event);

/// A text without its letter case, as far as the generator's own texts go.
[[nodiscard]] std::string Folded(const std::string& text);

/// The number that a generated text stands for, by a table and not by parsing.
[[nodiscard]] double NumberIn(const std::string& text);

} // namespace kqu::lives
