#pragma once

#include <string>

namespace kqu::post {

/// Shows one notification on the desktop of the user, by the Desktop Notifications Specification
/// (org.freedesktop.Notifications on the session bus). Root's is shown to the user at the seat,
/// unless root has a desktop of its own. Where nobody shows it, nothing happens. Takes four seconds
/// at most. `isUrgent`: it stays until the user has seen it.
void ShowNotification(const std::string& title, const std::string& text, bool isUrgent);

} // namespace kqu::post
