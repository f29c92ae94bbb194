#pragma once

#include "tests/support/MadeUpTree.h"
#include "tests/support/ServerProcess.h"

#include <optional>
#include <systemd/sd-bus.h>

namespace kqu::testing_support {

/// A private message bus that allows everything to everybody. It keeps its address when it is
/// started anew.
class PrivateBus {
  public:
    using Connection = platform::CPointer<sd_bus, sd_bus_flush_close_unref>;

    PrivateBus() {
        std::filesystem::permissions(folder_.Root(), std::filesystem::perms(0755));
        folder_.Write("bus.conf", "<busconfig><type>session</type><listen>" + Address() +
                                      R"(</listen><auth>EXTERNAL</auth><policy context="default">
            <allow user="*"/><allow own="*"/><allow send_destination="*" eavesdrop="true"/>
            <allow eavesdrop="true"/></policy></busconfig>)");
    }
    [[nodiscard]] std::string Socket() const { return folder_.Root() / "bus"; }
    [[nodiscard]] std::string Address() const { return "unix:path=" + Socket(); }
    void Run() {
        daemon_.emplace("dbus-daemon --nofork --print-address --config-file=" + Socket() + ".conf");
    }
    void Stop() { daemon_.reset(); }

    [[nodiscard]] Connection Connect() const {
        sd_bus* made = nullptr;
        sd_bus_new(&made);
        Connection bus(made);
        if (sd_bus_set_address(made, Address().c_str()) < 0 || sd_bus_set_bus_client(made, 1) < 0 ||
            sd_bus_start(made) < 0)
            throw std::runtime_error("no connection to the private bus");
        return bus;
    }

  private:
    simulation::MadeUpTree folder_;
    std::optional<ServerProcess> daemon_;
};

} // namespace kqu::testing_support
