#pragma once

#include "post/kqu-run/Row.h"
#include "post/posting/Poster.h"

#include <string>
#include <string_view>
#include <sys/types.h>

namespace kqu::run {

/// What a bus and a panel take: UTF-8 in one line of bounded length. Control characters and marks
/// that turn the direction of a text become blanks, bytes that are no UTF-8 question marks.
[[nodiscard]] std::string CleanText(std::string_view text);

/// A task's name as the messenger wants it, which knows its own by a mark in the name: the name
/// itself if the mark is in it, else with the mark before it.
[[nodiscard]] std::string TaskName(std::string_view name);

/// The line of text that a row shows: the file in work where there is one and it may be shown.
[[nodiscard]] const std::string& Shown(const Progress& progress, const Row& row);

/// The notification that tells of a run. `after` is what the machine shall do afterwards, or empty.
[[nodiscard]] post::Notification MakeNotification(const std::string& name, const Row& row,
                                                  const Progress& progress, pid_t tool,
                                                  const std::string& after);

} // namespace kqu::run
