#pragma once

#include "platform/interfaces/NotificationCentre.h"
#include "tests/lives/Life.h"

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

/// The notification that values tell: its name, its tool, the bits of the keys it sends, and a
/// number that their values follow from.
[[nodiscard]] platform::PostedNotification NotificationOf(const Values& values);

} // namespace kqu::lives
