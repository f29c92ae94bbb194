#include "post/posting/SeatUser.h"

#include "platform/CDeleter.h"

#include <cstdlib>
#include <string_view>
#include <systemd/sd-login.h>

namespace kqu::post {

namespace {
std::string Known(int (*get)(const char*, char**), const std::string& session) {
    char* text = nullptr;
    const bool isKnown = get(session.c_str(), &text) >= 0;
    const platform::CPointer<char, std::free> owned(text);
    return isKnown ? text : "";
}
} // namespace

std::optional<Session> SessionAtSeat() {
    char* name = nullptr;
    uid_t user = 0;
    if (sd_seat_get_active("seat0", &name, &user) < 0)
        return std::nullopt;
    const platform::CPointer<char, std::free> owned(name);
    // The session's type is not asked for: one that was begun with startx counts as a terminal's,
    // and whether there is a display the user's own service manager knows.
    if (Known(sd_session_get_class, name) != "user" ||
        Known(sd_session_get_state, name) != "active")
        return std::nullopt;
    return Session{name, user};
}

} // namespace kqu::post
