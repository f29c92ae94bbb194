#pragma once

#include "post/posting/Tools.h"

#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace kqu::post {

/// The bus is not there or has not taken the message; the message is one line for the user.
class PostError : public std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// The user's session bus, or the system bus, on which tools post that run as root.
enum class Bus { Session, System };

/// One status notification. All texts are UTF-8 without a NUL.
struct Notification {
    const Tool* tool = nullptr;
    std::string name;
    std::vector<std::pair<std::string, std::string>> values;
};

/// A connection to a bus, for those who post more than once.
class Connection {
  public:
    /// Raises PostError.
    explicit Connection(Bus bus);
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;
    ~Connection();

    /// Posts a notification as a D-Bus signal and returns once the bus has taken it. Raises
    /// PostError; the connection is then of no more use.
    void Post(const Notification& notification);

  private:
    struct Client;
    std::unique_ptr<Client> client_;
};

/// Posts a notification as a D-Bus signal and returns once the bus has taken it.
/// On the system bus it stays connected for as long as a listener needs to ask the bus who posted.
/// Raises PostError.
void Post(Bus bus, const Notification& notification);

} // namespace kqu::post
