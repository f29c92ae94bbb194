#include "platform/dbus/WireDecoder.h"

#include "tests/support/PostedMessage.h"
#include "tests/support/ShownNotification.h"

#include <gtest/gtest.h>
#include <limits>
#include <unistd.h>

namespace kqu::platform {
namespace {

using testing_support::MakePosted;
using testing_support::Message;
using testing_support::Shown;

TEST(WireDecoder, EveryMessageHasAMeaning) {
    constexpr double infinity = std::numeric_limits<double>::infinity();
    const std::pair<Message, const char*> cases[] = {
        // As tools and stock clients send it.
        {MakePosted("ssa{sv}", "n", "o", 2, "PID", "s", "1", "Item", "s", "ä"),
         "'n' 'o' {PID:'1' Item:'ä' }"},
        {MakePosted("ssa{ss}", "n", "o", 2, "PID", "1", "", ""), "'n' 'o' {PID:'1' :'' }"},
        {MakePosted(""), "- - -"},
        {MakePosted("ssa{ss}sa{ss}", "n", "o", 1, "k", "v", "more", 1, "x", "y"),
         "'n' 'o' {k:'v' }"},
        // Arguments that do not fit their place.
        {MakePosted("isa{ss}", 5, "o", 0), "- 'o' {}"},
        {MakePosted("a{ss}ss", 1, "k", "v", "o", "x"), "- 'o' -"},
        {MakePosted("ssas", "n", "o", 1, "x"), "'n' 'o' -"},
        {MakePosted("ssa{is}", "n", "o", 1, 7, "x"), "'n' 'o' -"},
        // An object is passed on as what it is.
        {MakePosted("s(is)a{ss}", "n", 1, "x", 0), "'n' other {}"},
        {MakePosted("svv", "n", "v", "s", "o", "a{sv}", 1, "k", "u", 9U), "'n' 'o' {k:9 }"},
        {MakePosted("vs", "v", "s", "n", "o"), "'n' 'o' -"},
        // Numbers of every type.
        {MakePosted("ssa{sv}", "n", "o", 7, "y", "y", 255, "b", "b", 0, "n", "n", -32768, "q", "q",
                    65535, "i", "i", std::numeric_limits<int>::min(), "u", "u", 4294967295U, "d",
                    "d", infinity),
         "'n' 'o' {y:255 b:false n:-32768 q:65535 i:-2147483648 u:4294967295 d:inf }"},
        {MakePosted("ssa{sv}", "n", "o", 3, "x", "x", std::numeric_limits<std::int64_t>::min(), "t",
                    "t", std::numeric_limits<std::uint64_t>::max(), "b", "b", 1),
         "'n' 'o' {x:-9.2233720368547758e+18 t:1.8446744073709552e+19 b:true }"},
        // Values of other kinds do not disturb what follows.
        {MakePosted("ssa{sv}", "n", "o", 8, "o", "o", "/p", "g", "g", "a{sv}", "h", "h",
                    STDERR_FILENO, "ay", "ay", 2, 1, 2, "as", "as", 1, "x", "r", "(ia{sv})", 1, 1,
                    "k", "i", 2, "e", "ad", 0, "end", "s", "x"),
         "'n' 'o' {o:other g:other h:other ay:other as:other r:other e:other end:'x' }"},
        // The same key twice: both, in their order.
        {MakePosted("ssa{sv}", "n", "o", 3, "k", "s", "1", "K", "s", "2", "k", "i", 3),
         "'n' 'o' {k:'1' K:'2' k:3 }"},
    };
    for (const auto& [message, meaning] : cases)
        EXPECT_EQ(Shown(DecodePosted(*message)), meaning);
    const std::string large(32U << 20, 'x');
    const auto posted = DecodePosted(*MakePosted("ss", "n", large.c_str()));
    EXPECT_TRUE(std::get<std::string>(posted.object.value()) == large);
    EXPECT_GT(SizeInMemory(posted), large.size());
}

TEST(WireDecoder, WhatIsBrokenAndAllBehindItIsAbsent) {
    // A byte of the message's own memory that is no UTF-8, or a length that leads out of it.
    const std::tuple<const char*, std::ptrdiff_t, char, const char*> cases[] = {
        {"name", 0, '\xff', "- - -"},
        {"object", 0, '\xc0', "'name' - -"},
        {"object", 6, 'x', "'name' - -"},
        {"object", -1, '\x7f', "'name' - -"},
        {"key", 0, '\xff', "'name' 'object' -"},
        {"last", 0, '\xff', "'name' 'object' -"},
        {"last", -1, '\xff', "'name' 'object' -"}};
    for (const auto& [text, offset, byte, meaning] : cases) {
        const Message message = MakePosted("ssa{ss}", "name", "object", 2, "key", "b", "c", "last");
        char* const arguments = testing_support::Arguments(*message);
        const std::size_t place = std::string_view(arguments, 80).find(text);
        arguments[static_cast<std::ptrdiff_t>(place) + offset] = byte;
        EXPECT_EQ(Shown(DecodePosted(*message)), meaning) << text << offset;
    }
}

} // namespace
} // namespace kqu::platform
