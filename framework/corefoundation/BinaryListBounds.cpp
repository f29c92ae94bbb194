#include "framework/corefoundation/ListForms.h"

#include "framework/corefoundation/CFPropertyList.h"

#include <cstdint>
#include <optional>

namespace kqu {

namespace {
// The format's trailer: sizes and counts in its last 32 bytes, numbers with the high byte first.
constexpr std::uint64_t trailerSize = 32;
constexpr std::uint64_t offsetSizePlace = 6;
constexpr std::uint64_t referenceSizePlace = 7;
constexpr std::uint64_t topPlace = 16;
constexpr std::uint64_t tablePlace = 24;
constexpr std::uint64_t wide = 8;

// The upper half of a value's first byte is its kind, the lower half its length, unless that stands
// behind it as a number.
enum Kind : unsigned { Number = 1, Data = 4, Ascii, Utf16, Array = 10, Set = 12, Dict };
constexpr unsigned longForm = 15;

/// What a list may take in bytes, with so many for each value besides its content.
constexpr std::uint64_t mostBytes = std::uint64_t{1} << 22U;
constexpr std::uint64_t bytesPerValue = 64;

/// Writes the list out value by value, as the library will, and gives up beyond the bounds.
class BinaryWalk {
  public:
    explicit BinaryWalk(std::string_view bytes) : bytes_(bytes) {}

    bool IsBounded() {
        if (bytes_.size() < trailerSize)
            return false;
        const std::uint64_t trailer = bytes_.size() - trailerSize;
        offsetSize_ = Byte(trailer + offsetSizePlace);
        referenceSize_ = Byte(trailer + referenceSizePlace);
        const auto top = NumberAt(trailer + topPlace, wide);
        const auto table = NumberAt(trailer + tablePlace, wide);
        if (!top || !table)
            return false;
        table_ = *table;
        return Visit(*top, 0);
    }

  private:
    [[nodiscard]] bool Reaches(std::uint64_t position, std::uint64_t length) const {
        return position <= bytes_.size() && length <= bytes_.size() - position;
    }

    [[nodiscard]] unsigned Byte(std::uint64_t position) const {
        return static_cast<unsigned char>(bytes_[position]);
    }

    [[nodiscard]] std::optional<std::uint64_t> NumberAt(std::uint64_t position,
                                                        std::uint64_t size) const {
        if (size == 0 || size > wide || !Reaches(position, size))
            return std::nullopt;
        std::uint64_t number = 0;
        for (std::uint64_t i = 0; i < size; ++i)
            number = number << 8U | Byte(position + i);
        return number;
    }

    [[nodiscard]] std::optional<std::uint64_t> Place(std::uint64_t object) const {
        if (object > bytes_.size() || table_ > bytes_.size())
            return std::nullopt;
        const auto place = NumberAt(table_ + object * offsetSize_, offsetSize_);
        return place && Reaches(*place, 1) ? place : std::nullopt;
    }

    /// The length of the value at `place`, which is moved to where its content begins.
    std::optional<std::uint64_t> Length(std::uint64_t& place) const {
        const unsigned inPlace = Byte(place++) & longForm;
        if (inPlace != longForm)
            return inPlace;
        if (!Reaches(place, 1) || Byte(place) >> 4U != Number)
            return std::nullopt;
        const std::uint64_t size = std::uint64_t{1} << (Byte(place++) & longForm);
        const auto length = NumberAt(place, size);
        place += size;
        return length;
    }

    bool Visit(std::uint64_t object, int depth) {
        const auto start = Place(object);
        if (!start || !Spend(bytesPerValue) || depth > deepestList)
            return false;
        std::uint64_t place = *start;
        switch (Byte(place) >> 4U) {
        case Data:
            return VisitBytes(place, 1, false);
        case Ascii:
            return VisitBytes(place, 1, true);
        case Utf16:
            return VisitBytes(place, 2, true);
        case Array:
        case Set:
            return VisitAll(place, 1, depth);
        case Dict:
            return VisitAll(place, 2, depth);
        default:
            return true;
        }
    }

    /// Data, or text in units of that many bytes, which must be free of NULs: the library ends the
    /// program when it is asked for a text with one.
    bool VisitBytes(std::uint64_t place, std::uint64_t unit, bool isText) {
        const auto length = Length(place);
        if (!length || *length > bytes_.size() || !Reaches(place, *length * unit))
            return false;
        for (std::uint64_t i = 0; isText && i < *length; ++i)
            if (NumberAt(place + i * unit, unit) == 0U)
                return false;
        return Spend(*length * unit);
    }

    bool Spend(std::uint64_t bytes) { return (spent_ += bytes) <= mostBytes; }

    bool VisitAll(std::uint64_t place, std::uint64_t perEntry, int depth) {
        const auto entries = Length(place);
        if (!entries || *entries > bytes_.size())
            return false;
        for (std::uint64_t i = 0; i < *entries * perEntry; ++i) {
            const auto child = NumberAt(place + i * referenceSize_, referenceSize_);
            if (!child || !Visit(*child, depth + 1))
                return false;
        }
        return true;
    }

    std::string_view bytes_;
    std::uint64_t offsetSize_ = 0;
    std::uint64_t referenceSize_ = 0;
    std::uint64_t table_ = 0;
    std::uint64_t spent_ = 0;
};
} // namespace

bool IsBoundedBinaryList(std::string_view bytes) {
    return BinaryWalk(bytes).IsBounded();
}

} // namespace kqu
