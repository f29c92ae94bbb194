#pragma once

#include "post/posting/Connection.h"
#include "post/posting/Tools.h"

#include <string>
#include <utility>
#include <vector>

namespace kqu::post {

/// One status notification. All texts are UTF-8 without a NUL.
struct Notification {
    const Tool* tool = nullptr;
    std::string name;
    std::vector<std::pair<std::string, std::string>> values;
};

/// Posts a notification as a D-Bus signal and returns once the bus has taken it. For those who stay
/// connected anyway. Raises PostError.
void Send(const Connection& connection, const Notification& notification);
/// The same, but a child process keeps the connection to the system bus for ten seconds, so that a
/// listener can ask the bus who posted. Raises PostError.
void Post(const Connection& connection, const Notification& notification);
} // namespace kqu::post
