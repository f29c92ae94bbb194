#include "platform/dbus/WireDecoder.h"

#include <cstdint>
#include <string_view>
#include <utility>

namespace kqu::platform {

namespace {

/// Deeper than any message of D-Bus may nest its containers.
constexpr int deepestVariant = 64;

/// Raised inside this file when a message ends early or contradicts itself.
struct BrokenMessage {};

/// Reads a message from its current position on.
class Reader {
  public:
    struct Type {
        char code = 0;
        const char* contents = nullptr;
    };

    explicit Reader(sd_bus_message& message) : message_(&message) {}

    /// The next element's type; a code of 0 at the end of the current container.
    [[nodiscard]] Type Next() {
        Type type;
        return Checked(sd_bus_message_peek_type(message_, &type.code, &type.contents)) > 0 ? type
                                                                                           : Type{};
    }

    template <class T>
    [[nodiscard]] T Basic(char code) {
        T value{};
        if (Checked(sd_bus_message_read_basic(message_, code, &value)) == 0)
            throw BrokenMessage();
        return value;
    }

    [[nodiscard]] bool Enter(char code, const char* contents) {
        return Checked(sd_bus_message_enter_container(message_, code, contents)) > 0;
    }

    void Leave() { Checked(sd_bus_message_exit_container(message_)); }

    void Skip(const Type& type) {
        // Numbers are passed over in one step; anything else is walked through.
        constexpr std::string_view numbers = "ybnqiuxtd";
        const bool isPlainArray = type.code == SD_BUS_TYPE_ARRAY && type.contents != nullptr &&
                                  std::string_view(type.contents).size() == 1 &&
                                  numbers.find(*type.contents) != std::string_view::npos;
        if (!isPlainArray) {
            Checked(sd_bus_message_skip(message_, nullptr));
            return;
        }
        const void* data = nullptr;
        std::size_t size = 0;
        Checked(sd_bus_message_read_array(message_, *type.contents, &data, &size));
    }

  private:
    static int Checked(int result) {
        if (result < 0)
            throw BrokenMessage();
        return result;
    }

    sd_bus_message* message_;
};

/// Reads what lies below any number of variants.
template <class Read>
auto ReadBelowVariants(Reader& reader, Reader::Type type, Read read) {
    int depth = 0;
    for (; type.code == SD_BUS_TYPE_VARIANT && depth < deepestVariant; ++depth) {
        if (!reader.Enter(SD_BUS_TYPE_VARIANT, type.contents))
            throw BrokenMessage();
        type = reader.Next();
    }
    auto value = read(reader, type);
    for (; depth > 0; --depth)
        reader.Leave();
    return value;
}

template <class T>
double ReadNumber(Reader& reader, char code) {
    return static_cast<double>(reader.Basic<T>(code));
}

WireValue ReadPlainValue(Reader& reader, const Reader::Type& type) {
    switch (type.code) {
    case SD_BUS_TYPE_STRING:
        return std::string(reader.Basic<const char*>(type.code));
    case SD_BUS_TYPE_BOOLEAN:
        return reader.Basic<int>(type.code) != 0;
    case SD_BUS_TYPE_BYTE:
        return ReadNumber<std::uint8_t>(reader, type.code);
    case SD_BUS_TYPE_INT16:
        return ReadNumber<std::int16_t>(reader, type.code);
    case SD_BUS_TYPE_UINT16:
        return ReadNumber<std::uint16_t>(reader, type.code);
    case SD_BUS_TYPE_INT32:
        return ReadNumber<std::int32_t>(reader, type.code);
    case SD_BUS_TYPE_UINT32:
        return ReadNumber<std::uint32_t>(reader, type.code);
    case SD_BUS_TYPE_INT64:
        return ReadNumber<std::int64_t>(reader, type.code);
    case SD_BUS_TYPE_UINT64:
        return ReadNumber<std::uint64_t>(reader, type.code);
    case SD_BUS_TYPE_DOUBLE:
        return reader.Basic<double>(type.code);
    default:
        reader.Skip(type);
        return OtherWireValue();
    }
}

WireValue ReadValue(Reader& reader, const Reader::Type& type) {
    return ReadBelowVariants(reader, type, ReadPlainValue);
}

/// "{s?}": the element type of an array that is a dictionary with text for its keys.
bool IsTextDictionary(const Reader::Type& type) {
    return type.code == SD_BUS_TYPE_ARRAY && type.contents != nullptr &&
           std::string_view(type.contents).starts_with("{s");
}

WireDictionary ReadDictionary(Reader& reader, const std::string& entryType) {
    WireDictionary entries;
    if (!reader.Enter(SD_BUS_TYPE_ARRAY, entryType.c_str()))
        throw BrokenMessage();
    const std::string inEntry = entryType.substr(1, entryType.size() - 2);
    while (reader.Enter(SD_BUS_TYPE_DICT_ENTRY, inEntry.c_str())) {
        const char* key = reader.Basic<const char*>(SD_BUS_TYPE_STRING);
        // The key's text lives as long as the message; the value is read before it is copied.
        WireValue value = ReadValue(reader, reader.Next());
        entries.emplace_back(key, std::move(value));
        reader.Leave();
    }
    reader.Leave();
    return entries;
}

std::optional<WireDictionary> ReadUserInfo(Reader& reader, const Reader::Type& type) {
    if (IsTextDictionary(type))
        return ReadDictionary(reader, type.contents);
    reader.Skip(type);
    return std::nullopt;
}

void ReadArguments(Reader& reader, PostedNotification& posted) {
    auto type = reader.Next();
    if (type.code == 0)
        return;
    WireValue name = ReadValue(reader, type);
    if (auto* text = std::get_if<std::string>(&name))
        posted.name = std::move(*text);

    type = reader.Next();
    if (type.code == 0)
        return;
    posted.object = ReadValue(reader, type);

    type = reader.Next();
    if (type.code != 0)
        posted.userInfo = ReadBelowVariants(reader, type, ReadUserInfo);
}

std::size_t SizeInMemory(const WireValue& value) {
    const auto* text = std::get_if<std::string>(&value);
    return sizeof value + (text == nullptr ? 0 : text->size());
}

} // namespace

PostedNotification DecodePosted(sd_bus_message& message) {
    PostedNotification posted;
    Reader reader(message);
    try {
        ReadArguments(reader, posted);
    } catch (const BrokenMessage&) {
        // What was read before the break stands.
    }
    return posted;
}

std::size_t SizeInMemory(const PostedNotification& posted) {
    std::size_t size = sizeof posted;
    if (posted.name)
        size += posted.name->size();
    if (posted.object)
        size += SizeInMemory(*posted.object);
    if (posted.userInfo)
        for (const auto& [key, value] : *posted.userInfo)
            size += sizeof key + key.size() + SizeInMemory(value);
    return size;
}

} // namespace kqu::platform
