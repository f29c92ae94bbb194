#include "platform/text/Truncation.h"
#include "tests/fuzz/Expect.h"

#include <fuzzer/FuzzedDataProvider.h>

// Any text at any width, from the middle and at the end.

using namespace kqu::platform;
using kqu::fuzz::Expect;

namespace {
constexpr int size = 13;
const std::string ellipsis = "\xE2\x80\xA6";

bool IsMadeOf(const std::string& shortened, const std::string& text, Giving giving) {
    for (std::size_t at = shortened.find(ellipsis); at != std::string::npos;
         at = shortened.find(ellipsis, at + 1)) {
        const std::string rest = shortened.substr(at + ellipsis.size());
        if (text.starts_with(shortened.substr(0, at)) && text.ends_with(rest) &&
            at + rest.size() < text.size() && (giving == Giving::Middle || rest.empty()))
            return true;
    }
    return false;
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t dataSize) {
    FuzzedDataProvider input(data, dataSize);
    const Giving giving = input.ConsumeBool() ? Giving::Middle : Giving::End;
    const int limit = input.ConsumeIntegralInRange(-100, 600);
    const std::string text = input.ConsumeRemainingBytesAsString();
    TextLayout& layout = TextLayout::Shared();
    const double width = layout.Width(text, size);
    Expect(width >= 0);
    const std::string shortened = Truncated(layout, text, size, limit, giving);
    if (shortened == text) {
        Expect(width <= limit || text.empty());
        return 0;
    }
    Expect(width > limit);
    Expect(shortened.empty() || IsMadeOf(shortened, text, giving));
    Expect(shortened.empty() || layout.Width(shortened, size) <= limit);
    // What was shortened fits, and so is not shortened again.
    Expect(Truncated(layout, shortened, size, limit, giving) == shortened);
    return 0;
}
