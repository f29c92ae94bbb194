#pragma once

#include "platform/interfaces/DistributedNotifications.h"

#include <cstddef>
#include <systemd/sd-bus.h>

namespace kqu::platform {

/// The signal by which a status notification travels: `s` name, `s` object, `a{sv}` user
/// information.
inline constexpr const char* postedInterface = "com.brackwater.DistributedNotifications";
inline constexpr const char* postedMember = "Posted";

/// What a Posted signal says. Every message has a meaning: an argument that is missing, of the
/// wrong kind or broken is absent, and so are all that follow a broken one. A dictionary from text
/// to anything is taken as user information, its entries in the order of the wire. A value is what
/// it is below any number of variants; object paths and signatures are no text.
[[nodiscard]] PostedNotification DecodePosted(sd_bus_message& message);

/// About how much memory a notification takes, in bytes.
[[nodiscard]] std::size_t SizeInMemory(const PostedNotification& posted);

} // namespace kqu::platform
