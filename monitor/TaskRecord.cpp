#include "monitor/TaskRecord.h"

#include "framework/values/Text.h"

#include <utility>

namespace kqu {

std::optional<std::string> WireText(const CFDictionary& userInfo, std::string_view key) {
    if (!userInfo.ContainsKey(key))
        return std::nullopt;
    return CFCast<CFString>(userInfo.Value(key))->Text();
}

std::optional<std::string> WireText(const CFDictionary& userInfo, const Ref<CFString>& key) {
    return WireText(userInfo, key->Text());
}

Ref<Dictionary> FindRow(const Dictionary& table, const std::string& name) {
    return table.HasKey(name) ? table.Value(name).ObjectAs<Dictionary>() : nullptr;
}

std::string Showable(std::string text) {
    constexpr std::size_t shownOfEachEnd = 4096;
    return WithoutMiddle(std::move(text), shownOfEachEnd);
}

void KeepFirstText(Dictionary& row, std::string_view rowKey, const CFDictionary& userInfo,
                   std::string_view wireKey) {
    if (!row.HasKey(rowKey))
        TakeLastText(row, rowKey, userInfo, wireKey);
}

void TakeLastText(Dictionary& row, std::string_view rowKey, const CFDictionary& userInfo,
                  std::string_view wireKey) {
    if (auto text = WireText(userInfo, wireKey))
        row.SetValue(rowKey, Showable(std::move(*text)));
}

void TakeLastNumber(Dictionary& row, std::string_view rowKey, const CFDictionary& userInfo,
                    std::string_view wireKey) {
    if (const auto text = WireText(userInfo, wireKey))
        row.SetValue(rowKey, Val(*text));
}

void RaiseProgress(Dictionary& row, double progress) {
    // A stored value that is not a number is less than no other value, so it stays.
    if (!row.HasKey("Progress") || row.Value("Progress").DoubleValue() < progress)
        row.SetValue("Progress", progress);
}

void SetTask(Dictionary& row, TaskCode code) {
    row.SetValue("task", static_cast<std::int32_t>(code));
}

} // namespace kqu
