#include "framework/values/Text.h"
#include "platform/CDeleter.h"
#include "platform/dbus/WireDecoder.h"
#include "platform/text/PlainText.h"
#include "tests/fuzz/Expect.h"
#include "tests/support/ShownNotification.h"

#include <array>
#include <cmath>
#include <cstring>
#include <fuzzer/FuzzedDataProvider.h>
#include <optional>
#include <sys/socket.h>
#include <unistd.h>

// Any bytes as the arguments of a posted signal of one of many types, sent by a real socket to a
// real connection. What is no message at all ends the connection, and the next input has a new one.
// Each text that comes out of it goes through what rows do with texts.

using namespace kqu::platform;
using kqu::fuzz::Expect;
using kqu::testing_support::Shown;

namespace {

/// What a message takes besides a part of its bytes.
constexpr std::size_t perMessage = 4096;

std::optional<PostedNotification> decoded;

void Use(const std::string& text) {
    Expect(!std::isnan(kqu::Val(text)));
    Expect(PlainText(text).places.back().inSource == text.size());
    const std::string part(StartOf(text, text.size() / 4));
    Expect(text.empty() || kqu::InStr(text, part) == 1);
    Expect(part.empty() || kqu::CountFields(text, part) > 1);
    Expect(kqu::EqualsIgnoringCase(kqu::ReplaceAll(text, part, part), text));
}

int Receive(sd_bus_message* message, void* /*unused*/, sd_bus_error* /*error*/) {
    decoded = DecodePosted(*message);
    sd_bus_message_rewind(message, 1);
    Expect(Shown(*decoded) == Shown(DecodePosted(*message)));
    return 1;
}

/// A connection, and the end at which its messages are written.
struct Wire {
    Wire() {
        std::array<int, 2> ends{};
        Expect(socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0, ends.data()) ==
               0);
        end = ends[1];
        Write("DATA\r\nOK 0123456789abcdef0123456789abcdef\r\n");
        sd_bus* made = nullptr;
        sd_bus_new(&made);
        bus.reset(made);
        sd_bus_negotiate_fds(made, 0);
        Expect(sd_bus_set_fd(made, ends[0], ends[0]) >= 0 && sd_bus_start(made) >= 0);
        Expect(sd_bus_add_filter(made, nullptr, Receive, nullptr) >= 0);
        while (sd_bus_is_ready(made) == 0)
            Expect(sd_bus_process(made, nullptr) >= 0);
    }
    ~Wire() { close(end); }
    void Write(std::string_view bytes) const {
        Expect(write(end, bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size()));
    }

    int end = -1;
    CPointer<sd_bus, sd_bus_close_unref> bus;
};

/// A number of four bytes, the lowest first.
std::string Bytes(std::size_t number) {
    std::string bytes;
    for (unsigned shift = 0; shift < 32; shift += 8)
        bytes += static_cast<char>(number >> shift & 0xFFU);
    return bytes;
}

std::string Padded(std::string text, std::size_t unit) {
    text.resize((text.size() + unit - 1) / unit * unit);
    return text;
}

/// A field of a message's head: a text, with its length in four bytes or, for a signature, in one.
std::string Field(char code, char type, const std::string& text) {
    const std::string length = type == 'g' ? Bytes(text.size()).substr(0, 1) : Bytes(text.size());
    return Padded({code, 1, type, 0}, 4) + length + text + '\0';
}

std::string Signal(const std::string& signature, const std::string& body) {
    const std::string fields = Padded(Field(1, 'o', "/a"), 8) +
                               Padded(Field(2, 's', postedInterface), 8) +
                               Padded(Field(3, 's', postedMember), 8) + Field(8, 'g', signature);
    const std::string head =
        std::string("l\4\1\1", 4) + Bytes(body.size()) + Bytes(1) + Bytes(fields.size());
    return Padded(head + fields, 8) + body;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static std::optional<Wire> wire;
    if (!wire)
        wire.emplace();
    FuzzedDataProvider input(data, size);
    const std::string signature =
        input.PickValueInArray({"ssa{sv}", "ssa{ss}", "ssv", "svv", "vvv", "ssa{si}", "s(is)a{ss}",
                                "a{sv}sas", "ss", "i"});
    const std::string message = Signal(signature, input.ConsumeRemainingBytesAsString());
    decoded.reset();
    wire->Write(message);
    int result = 0;
    while ((result = sd_bus_process(wire->bus.get(), nullptr)) > 0)
        ;
    if (decoded) {
        Expect(SizeInMemory(*decoded) <= perMessage + 16 * message.size());
        for (const auto& [key, value] : decoded->userInfo.value_or(WireDictionary()))
            if (const auto* text = std::get_if<std::string>(&value))
                Use(*text);
    }
    if (result < 0)
        wire.reset();
    return 0;
}
