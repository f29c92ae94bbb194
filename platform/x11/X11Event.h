#pragma once

#include <cstdint>
#include <cstring>
#include <xcb/xcb.h>

namespace kqu::platform {

/// An event of the core protocol, kept by value.
struct X11Event {
    xcb_generic_event_t raw{};

    [[nodiscard]] std::uint8_t Type() const { return raw.response_type & 0x7F; }
    /// Sent by a client, as window managers do, and not by the server itself.
    [[nodiscard]] bool IsSynthetic() const { return (raw.response_type & 0x80) != 0; }

    template <class E>
    [[nodiscard]] E As() const {
        static_assert(sizeof(E) <= sizeof raw);
        E event{};
        std::memcpy(&event, &raw, sizeof event);
        return event;
    }
};

} // namespace kqu::platform
