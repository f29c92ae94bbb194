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
    // Nobody is told whether the text was truncated, so this never holds and the status makes no
    // difference: what could not be shortened comes back as it was.
    constexpr bool truncated = false;
    if (status != 0 && truncated)
        return text;
    return shortened;
}

} // namespace kqu
