#include "framework/values/Text.h"
#include "platform/text/PlainText.h"
#include "tests/support/PostedMessage.h"
#include "tests/support/ShownNotification.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <string>

// Any bytes in the place of a posted signal's arguments: lengths that lead out of them, texts that
// are none, types that do not fit. Each text that comes out goes through what rows do with texts.

using namespace kqu::platform;
using namespace kqu::testing_support;

namespace {

/// What a message takes besides a part of its bytes.
constexpr std::size_t perMessage = 4096;
const std::string room(400, 'x');

/// What must hold whatever the input was. If it does not, the run ends and the input is kept.
void Expect(bool holds) {
    if (!holds)
        std::abort();
}

void Use(const std::string& text) {
    Expect(!std::isnan(kqu::Val(text)));
    Expect(PlainText(text).places.back().inSource == text.size());
    const std::string part(StartOf(text, text.size() / 4));
    Expect(text.empty() || kqu::InStr(text, part) == 1);
    Expect(part.empty() || kqu::CountFields(text, part) > 1);
    Expect(kqu::EqualsIgnoringCase(kqu::ReplaceAll(text, part, part), text));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto written = std::min(size, room.size());
    for (const Message& message :
         {MakePosted("ssa{sv}", "n", "o", 2, "k", "s", "x", "l", "s", room.c_str()),
          MakePosted("ssa{ss}", "n", "o", 2, "k", "v", "l", room.c_str()),
          MakePosted("svv", "n", "s", "o", "a{sv}", 1, "l", "s", room.c_str())}) {
        std::copy_n(data, written, Arguments(*message));
        const PostedNotification decoded = DecodePosted(*message);
        Expect(SizeInMemory(decoded) <= perMessage + 16 * room.size());
        sd_bus_message_rewind(message.get(), 1);
        Expect(Shown(decoded) == Shown(DecodePosted(*message)));
        for (const auto& [key, value] : decoded.userInfo.value_or(WireDictionary()))
            if (const auto* text = std::get_if<std::string>(&value))
                Use(*text);
    }
    return 0;
}
