#include "platform/functions/Functions.h"
#include "platform/functions/LinuxFunctions.h"
#include "platform/text/RecentCache.h"
#include "platform/text/Truncation.h"

#include <chrono>
#include <memory>
#include <utility>

namespace kqu::platform {

namespace {
constexpr int systemFontSize = 13;
constexpr std::uint32_t truncateMiddle = 0x4000;
constexpr std::int32_t success = 0;

/// Rows are painted far more often than they change: a text that was shortened lately is
/// remembered as long as paints keep asking for it.
class ThemeText {
  public:
    std::int32_t Truncate(std::string& text, std::int32_t width, std::uint32_t code,
                          bool* truncated) {
        const std::string shortened = Shortened(text, width, code);
        if (truncated != nullptr)
            *truncated = shortened != text;
        text = shortened;
        return success;
    }

  private:
    const std::string& Shortened(const std::string& text, std::int32_t width, std::uint32_t code) {
        // The middle of a text that is far too long goes in any case.
        const std::size_t enough = TextLayout::Enough(text, width).size();
        if (text.size() > 2 * enough)
            return Shortened(WithoutMiddle(text, enough), width, code);
        const auto now = std::chrono::steady_clock::now();
        std::string key = std::to_string(width) + '@' + std::to_string(DeviceScale()) +
                          (code == truncateMiddle ? 'm' : 'e') + text;
        if (const std::string* known = results_.Find(key, now))
            return *known;
        std::string result = Truncated(TextLayout::Shared(), text, systemFontSize, width,
                                       code == truncateMiddle ? Giving::Middle : Giving::End);
        const std::size_t bytes = result.size();
        return results_.Enter(std::move(key), std::move(result), bytes, now);
    }

    static constexpr std::chrono::milliseconds lifetime{2000};
    static constexpr std::size_t limit = 1U << 20U;
    RecentCache<std::string> results_{lifetime, limit};
};
} // namespace

void RegisterTextFunctions(FunctionTable& table) {
    const auto themeText = std::make_shared<ThemeText>();
    table.Set<functions::TruncateThemeText>(
        [themeText](std::string& text, std::uint16_t /*font*/, std::uint32_t /*state*/,
                    std::int32_t width, std::uint32_t code,
                    bool* truncated) { return themeText->Truncate(text, width, code, truncated); });
}

} // namespace kqu::platform
