#include "platform/dbus/WireDecoder.h"

#include "platform/CDeleter.h"
#include "tests/support/ShownNotification.h"

#include <functional>
#include <gtest/gtest.h>
#include <limits>
#include <sys/socket.h>
#include <unistd.h>

namespace kqu::platform {
namespace {

using testing_support::Shown;
using Message = CPointer<sd_bus_message, sd_bus_message_unref>;

using Fill = std::function<void(sd_bus_message*)>;

/// A real message, made on a connection that leads nowhere.
Message Make(const Fill& fill) {
    int ends[2] = {-1, -1};
    EXPECT_EQ(socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0, ends), 0);
    sd_bus* bus = nullptr;
    sd_bus_new(&bus);
    const CPointer<sd_bus, sd_bus_close_unref> owned(bus);
    EXPECT_GE(sd_bus_set_fd(bus, ends[0], ends[0]), 0);
    EXPECT_GE(sd_bus_start(bus), 0);
    sd_bus_message* made = nullptr;
    EXPECT_GE(sd_bus_message_new_signal(bus, &made, "/a", postedInterface, postedMember), 0);
    fill(made);
    EXPECT_GE(sd_bus_message_seal(made, 1, 0), 0);
    EXPECT_GE(sd_bus_message_rewind(made, 1), 0);
    close(ends[1]);
    return Message(made);
}

/// Appends by sd-bus's own notation, checked.
template <class... Values>
Fill Of(const char* types, Values... values) {
    return [=](sd_bus_message* message) {
        EXPECT_GE(sd_bus_message_append(message, types, values...), 0) << types;
    };
}

TEST(WireDecoder, EveryMessageHasAMeaning) {
    constexpr double infinity = std::numeric_limits<double>::infinity();
    const std::pair<Fill, const char*> cases[] = {
        // As tools and stock clients send it.
        {Of("ssa{sv}", "n", "o", 2, "PID", "s", "1", "Item", "s", "ä"),
         "'n' 'o' {PID:'1' Item:'ä' }"},
        {Of("ssa{ss}", "n", "o", 2, "PID", "1", "", ""), "'n' 'o' {PID:'1' :'' }"},
        {Of(""), "- - -"},
        {Of("ssa{ss}sa{ss}", "n", "o", 1, "k", "v", "more", 1, "x", "y"), "'n' 'o' {k:'v' }"},
        // Arguments that do not fit their place.
        {Of("isa{ss}", 5, "o", 0), "- 'o' {}"},
        {Of("a{ss}ss", 1, "k", "v", "o", "x"), "- 'o' -"},
        {Of("ssas", "n", "o", 1, "x"), "'n' 'o' -"},
        {Of("ssa{is}", "n", "o", 1, 7, "x"), "'n' 'o' -"},
        // An object is passed on as what it is.
        {Of("s(is)a{ss}", "n", 1, "x", 0), "'n' other {}"},
        {Of("svv", "n", "v", "s", "o", "a{sv}", 1, "k", "u", 9U), "'n' 'o' {k:9 }"},
        {Of("vs", "v", "s", "n", "o"), "'n' 'o' -"},
        // Numbers of every type.
        {Of("ssa{sv}", "n", "o", 7, "y", "y", 255, "b", "b", 0, "n", "n", -32768, "q", "q", 65535,
            "i", "i", std::numeric_limits<int>::min(), "u", "u", 4294967295U, "d", "d", infinity),
         "'n' 'o' {y:255 b:false n:-32768 q:65535 i:-2147483648 u:4294967295 d:inf }"},
        {Of("ssa{sv}", "n", "o", 3, "x", "x", std::numeric_limits<std::int64_t>::min(), "t", "t",
            std::numeric_limits<std::uint64_t>::max(), "b", "b", 1),
         "'n' 'o' {x:-9.2233720368547758e+18 t:1.8446744073709552e+19 b:true }"},
        // Values of other kinds do not disturb what follows.
        {Of("ssa{sv}", "n", "o", 8, "o", "o", "/p", "g", "g", "a{sv}", "h", "h", STDERR_FILENO,
            "ay", "ay", 2, 1, 2, "as", "as", 1, "x", "r", "(ia{sv})", 1, 1, "k", "i", 2, "e", "ad",
            0, "end", "s", "x"),
         "'n' 'o' {o:other g:other h:other ay:other as:other r:other e:other end:'x' }"},
        // The same key twice: both, in their order.
        {Of("ssa{sv}", "n", "o", 3, "k", "s", "1", "K", "s", "2", "k", "i", 3),
         "'n' 'o' {k:'1' K:'2' k:3 }"},
    };
    for (const auto& [fill, meaning] : cases)
        EXPECT_EQ(Shown(DecodePosted(*Make(fill))), meaning);
    const std::string large(32U << 20, 'x');
    const auto posted = DecodePosted(*Make(Of("ss", "n", large.c_str())));
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
        const Message message = Make(Of("ssa{ss}", "name", "object", 2, "key", "b", "c", "last"));
        const char* first = nullptr;
        EXPECT_GT(sd_bus_message_read_basic(message.get(), 's', &first), 0);
        EXPECT_GE(sd_bus_message_rewind(message.get(), 1), 0);
        const std::string_view body(first, 80);
        const_cast<char*>(first)[static_cast<std::ptrdiff_t>(body.find(text)) + offset] = byte;
        EXPECT_EQ(Shown(DecodePosted(*message)), meaning) << text << offset;
    }
}

} // namespace
} // namespace kqu::platform
