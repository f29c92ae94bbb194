#pragma once

#include "post/CommandLine.h"

#include <stdexcept>

namespace kqu::post {

/// The bus is not there or has not taken the message; the message is one line for the user.
class PostError : public std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// Posts the notification of a request as a D-Bus signal and returns once the bus has taken it.
/// On the system bus it stays connected for as long as a listener needs to ask the bus who posted.
/// Raises PostError.
void Post(const Request& request);

} // namespace kqu::post
