#pragma once

#include "platform/interfaces/DistributedNotifications.h"

#include <iomanip>
#include <sstream>

namespace kqu::testing_support {

/// A value of a notification, told apart from all others.
[[nodiscard]] inline std::string Shown(const platform::WireValue& value) {
    if (const auto* text = std::get_if<std::string>(&value))
        return "'" + *text + "'";
    if (const auto* truth = std::get_if<bool>(&value))
        return *truth ? "true" : "false";
    const auto* number = std::get_if<double>(&value);
    std::ostringstream shown;
    number ? shown << std::setprecision(17) << *number : shown << "other";
    return shown.str();
}

/// "name object {key:value }", with a dash for what is absent.
[[nodiscard]] inline std::string Shown(const platform::PostedNotification& posted) {
    std::string text = posted.name ? Shown(*posted.name) : "-";
    text += posted.object ? " " + Shown(*posted.object) : " -";
    if (!posted.userInfo)
        return text + " -";
    text += " {";
    for (const auto& [key, value] : *posted.userInfo)
        text += key + ":" + Shown(value) + " ";
    return text + "}";
}

} // namespace kqu::testing_support
