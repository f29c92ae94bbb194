#pragma once

#include "framework/corefoundation/CFValues.h"
#include "framework/values/Dictionary.h"
#include "panel/TaskCode.h"

#include <optional>
#include <string>
#include <string_view>

namespace kqu {

/// The text under an exact key of the user information; nothing if the key was not sent.
/// Raises IllegalCastException if the value is no text: tools are trusted to keep to the format.
[[nodiscard]] std::optional<std::string> WireText(const CFDictionary& userInfo,
                                                  std::string_view key);
[[nodiscard]] std::optional<std::string> WireText(const CFDictionary& userInfo,
                                                  const Ref<CFString>& key);

/// The row of that name, or nil if there is none.
[[nodiscard]] Ref<Dictionary> FindRow(const Dictionary& table, const std::string& name);

/// A text as far as a row can ever show of it. Rows keep its start and its end, 4 KiB of each, so
/// that a name of megabytes costs no more at each paint than one that fills the line.
[[nodiscard]] std::string Showable(std::string text);

/// Stores the wire's text, as far as it can be shown, under the row's key unless the row has that
/// key: the first value stays. A value that would not be stored is not read.
void KeepFirstText(Dictionary& row, std::string_view rowKey, const CFDictionary& userInfo,
                   std::string_view wireKey);

/// Stores the wire's text, if it was sent, under the row's key: the last value wins.
void TakeLastText(Dictionary& row, std::string_view rowKey, const CFDictionary& userInfo,
                  std::string_view wireKey);

/// The same for a number that travels as text; it is stored as a double.
void TakeLastNumber(Dictionary& row, std::string_view rowKey, const CFDictionary& userInfo,
                    std::string_view wireKey);

/// Stores a progress (per mille) unless the row's is as high or higher.
void RaiseProgress(Dictionary& row, double progress);

void SetTask(Dictionary& row, TaskCode code);

} // namespace kqu
