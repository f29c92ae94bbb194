#include "platform/CDeleter.h"
#include "platform/dbus/WireDecoder.h"
#include "tests/fuzz/Expect.h"
#include "tests/support/ShownNotification.h"

#include <array>
#include <cstring>
#include <fuzzer/FuzzedDataProvider.h>
#include <optional>
#include <sys/socket.h>
#include <unistd.h>

// The input tells what is posted, value by value, and which bytes of it get broken on the way: the
// message is really sent, and comes back as it was or broken.

using namespace kqu::platform;
using kqu::fuzz::Expect;
using kqu::testing_support::Shown;

namespace {

/// What a message takes besides a part of its bytes.
constexpr std::size_t perMessage = 4096;

/// A connection whose other end sends everything back.
class Echo {
  public:
    Echo() {
        std::array<int, 2> ends{};
        Expect(socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0, ends.data()) ==
               0);
        otherEnd_ = ends[1];
        constexpr std::string_view greeting = "DATA\r\nOK 0123456789abcdef0123456789abcdef\r\n";
        Expect(write(otherEnd_, greeting.data(), greeting.size()) > 0);
        sd_bus* made = nullptr;
        sd_bus_new(&made);
        bus_.reset(made);
        sd_bus_negotiate_fds(made, 0);
        Expect(sd_bus_set_fd(made, ends[0], ends[0]) >= 0 && sd_bus_start(made) >= 0);
        Expect(sd_bus_add_filter(made, nullptr, &Echo::Receive, this) >= 0);
        while (sd_bus_is_ready(made) == 0)
            Expect(sd_bus_process(made, nullptr) >= 0);
        Expect(read(otherEnd_, wire_.data(), wire_.size()) > 0);
    }
    ~Echo() { close(otherEnd_); }
    Echo(const Echo&) = delete;
    Echo& operator=(const Echo&) = delete;

    [[nodiscard]] sd_bus* Bus() const { return bus_.get(); }

    /// The message as it is decoded when it has come back, with that many bytes of its arguments
    /// broken; nothing if the bus library takes it for no message at all.
    std::optional<PostedNotification> Return(sd_bus_message* message, FuzzedDataProvider& input,
                                             int broken) {
        Expect(sd_bus_send(bus_.get(), message, nullptr) >= 0);
        const ssize_t size = read(otherEnd_, wire_.data(), wire_.size());
        Expect(size > 0);
        std::uint32_t arguments = 0;
        std::memcpy(&arguments, &wire_[4], sizeof arguments);
        for (int i = 0; i < broken && arguments > 0; ++i) {
            const auto place = input.ConsumeIntegralInRange<std::uint32_t>(1, arguments);
            wire_[static_cast<std::size_t>(size) - place] = input.ConsumeIntegral<char>();
        }
        Expect(write(otherEnd_, wire_.data(), static_cast<std::size_t>(size)) == size);
        decoded_.reset();
        while (sd_bus_process(bus_.get(), nullptr) > 0)
            ;
        if (decoded_)
            Expect(SizeInMemory(*decoded_) <= perMessage + 16 * static_cast<std::size_t>(size));
        return decoded_;
    }

  private:
    static int Receive(sd_bus_message* message, void* self, sd_bus_error* /*error*/) {
        auto& decoded = static_cast<Echo*>(self)->decoded_;
        decoded = DecodePosted(*message);
        sd_bus_message_rewind(message, 1);
        Expect(Shown(*decoded) == Shown(DecodePosted(*message)));
        return 1;
    }

    int otherEnd_ = -1;
    kqu::platform::CPointer<sd_bus, sd_bus_close_unref> bus_;
    std::array<char, 1U << 17U> wire_{};
    std::optional<PostedNotification> decoded_;
};

/// Appends values to a message as the input says, and tells what each of them means.
class Writer {
  public:
    Writer(sd_bus_message* message, FuzzedDataProvider& input) : message_(message), input_(input) {}

    /// A value of any type below `variants` variants, where the place asks for that type.
    WireValue Value(char type, int variants = 0) {
        switch (type) {
        case 's': {
            std::string text = input_.ConsumeRandomLengthString(40);
            std::erase_if(text, [](char c) { return c <= 0; });
            return Put(type, text.c_str(), text);
        }
        case 'o':
            return Put(type, "/a", {});
        case 'b': {
            const int truth = input_.ConsumeBool() ? 1 : 0;
            return Put(type, &truth, truth != 0);
        }
        case 'd': {
            const auto number = input_.ConsumeFloatingPoint<double>();
            return Put(type, &number, number);
        }
        case 'y':
            return Number<std::uint8_t>(type);
        case 'n':
            return Number<std::int16_t>(type);
        case 'u':
            return Number<std::uint32_t>(type);
        case 'i':
            return Number<std::int32_t>(type);
        case 'x':
            return Number<std::int64_t>(type);
        case 't':
            return Number<std::uint64_t>(type);
        case 'v':
            return Variant(variants);
        default:
            Done(sd_bus_message_append(message_, "a(sv)", 2, "a", "i", 1, "b", "s", "c"));
            return {};
        }
    }

    /// The text dictionary that user information is, of values of one type; in a variant or not.
    WireDictionary Entries(char type, bool inVariant) {
        const std::string entry = std::string("{s") + type + "}";
        WireDictionary entries;
        if (inVariant)
            Done(sd_bus_message_open_container(message_, 'v', ("a" + entry).c_str()));
        Done(sd_bus_message_open_container(message_, 'a', entry.c_str()));
        for (auto count = input_.ConsumeIntegralInRange(0, 6); count > 0; --count) {
            Done(sd_bus_message_open_container(message_, 'e', entry.substr(1, 2).c_str()));
            std::string key = std::get<std::string>(Value('s'));
            entries.emplace_back(std::move(key), Value(type));
            Done(sd_bus_message_close_container(message_));
        }
        for (int open = inVariant ? 2 : 1; open > 0; --open)
            Done(sd_bus_message_close_container(message_));
        return entries;
    }

    char Type() {
        return input_.PickValueInArray(
            {'s', 'o', 'b', 'd', 'y', 'n', 'u', 'i', 'x', 't', 'v', 'a'});
    }

  private:
    static void Done(int result) { Expect(result >= 0); }

    template <class T>
    WireValue Put(char type, const T* value, WireValue meaning) {
        Done(sd_bus_message_append_basic(message_, type, value));
        return meaning;
    }

    template <class T>
    WireValue Number(char type) {
        const auto number = input_.ConsumeIntegral<T>();
        return Put(type, &number, static_cast<double>(number));
    }

    WireValue Variant(int variants) {
        // A bus library nests containers 128 deep at most.
        char type = input_.ConsumeBool() ? 'v' : Type();
        if (variants == 100)
            type = 's';
        const std::string contents = type == 'a' ? "a(sv)" : std::string(1, type);
        Done(sd_bus_message_open_container(message_, 'v', contents.c_str()));
        WireValue value = Value(type, variants + 1);
        Done(sd_bus_message_close_container(message_));
        return variants < 64 ? value : WireValue();
    }

    sd_bus_message* message_;
    FuzzedDataProvider& input_;
};

/// Name, object and user information of any types; sometimes less than that.
PostedNotification Fill(sd_bus_message* message, FuzzedDataProvider& input) {
    Writer writer(message, input);
    PostedNotification meant;
    const int arguments = input.ConsumeIntegralInRange(0, 6);
    const auto any = [&] { return input.ConsumeIntegralInRange(0, 7) == 0 ? writer.Type() : 's'; };
    const WireValue name = arguments > 0 ? writer.Value(any()) : WireValue();
    if (const auto* text = std::get_if<std::string>(&name))
        meant.name = *text;
    if (arguments > 1)
        meant.object = writer.Value(any());
    if (arguments == 3)
        static_cast<void>(writer.Value(writer.Type()));
    if (arguments > 3)
        meant.userInfo = writer.Entries(
            arguments == 4 ? input.PickValueInArray({'s', 'i', 'd'}) : 'v', arguments == 5);
    return meant;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static std::optional<Echo> echo;
    if (!echo)
        echo.emplace();
    FuzzedDataProvider input(data, size);
    sd_bus_message* made = nullptr;
    Expect(sd_bus_message_new_signal(echo->Bus(), &made, "/a", postedInterface, postedMember) >= 0);
    const CPointer<sd_bus_message, sd_bus_message_unref> message(made);
    const PostedNotification meant = Fill(made, input);
    const int broken = input.ConsumeIntegralInRange(0, 4);
    const auto decoded = echo->Return(made, input, broken);
    Expect(broken > 0 || (decoded && Shown(*decoded) == Shown(meant)));
    if (!decoded)
        echo.reset();
    return 0;
}
