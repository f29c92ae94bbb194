#include "post/posting/Questions.h"

#include <cstdint>

namespace kqu::post {

bool Questions::HasOwner(const char* name) {
    const MessagePointer reply =
        Call({"org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus"},
             "NameHasOwner", "s", name);
    int isOwned = 0;
    return reply && sd_bus_message_read_basic(reply.get(), 'b', &isOwned) > 0 && isOwned != 0;
}

bool Questions::MayAsk() {
    const auto left = std::chrono::duration_cast<std::chrono::microseconds>(
        deadline_ - std::chrono::steady_clock::now());
    return left.count() > 0 &&
           sd_bus_set_method_call_timeout(&bus_, static_cast<std::uint64_t>(left.count())) >= 0;
}

} // namespace kqu::post
