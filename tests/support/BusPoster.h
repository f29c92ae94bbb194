#pragma once

#include "platform/CDeleter.h"

#include <functional>
#include <initializer_list>
#include <string>
#include <systemd/sd-bus.h>
#include <utility>
#include <vector>

namespace kqu::testing_support {

/// A process's connection to a bus, over which tests post what stock clients can't. Raises
/// std::runtime_error where anything fails.
class BusPoster {
  public:
    using Texts = std::vector<std::pair<std::string, std::string>>;
    using Append = std::function<int(sd_bus_message*)>;

    explicit BusPoster(const std::string& address);

    [[nodiscard]] std::string UniqueName() const;

    /// Posts a status notification; returns once the bus has taken it.
    void Post(const std::string& name, const std::string& object, const Texts& texts);
    /// The same with any arguments, to everybody or to one connection.
    void PostRaw(const Append& append, const std::string& destination = "");
    /// Any signal.
    void Send(const std::string& interface, const std::string& member);

    /// Posts that many without waiting for each, their names "KQS_disk.<number>".
    void Flood(int count);

    /// The connections that have asked for status notifications, each with the number of its rules.
    [[nodiscard]] std::vector<std::pair<std::string, int>> Listeners();

    [[nodiscard]] sd_bus* Get() const { return bus_.get(); }

  private:
    void AwaitTaken();

    platform::CPointer<sd_bus, sd_bus_flush_close_unref> bus_;
};

/// A process of its own, running as another user if one is named, that is connected to a bus, has
/// run `work` on that connection, and stays until this object goes.
class OtherProcess {
  public:
    static constexpr unsigned sameUser = ~0U;

    OtherProcess(const std::string& address, unsigned user,
                 const std::function<void(BusPoster&)>& work);
    ~OtherProcess();
    OtherProcess(const OtherProcess&) = delete;
    OtherProcess& operator=(const OtherProcess&) = delete;

    /// Waits until the work is done. The name of its connection.
    std::string AwaitDone();

  private:
    int told_ = -1;
    int leash_ = -1;
    int process_ = -1;
};

} // namespace kqu::testing_support
