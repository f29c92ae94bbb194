#pragma once

#include "platform/functions/CoreFoundationFunctions.h"
#include "platform/functions/Handles.h"
#include "platform/volumes/VolumeFunctions.h"
#include "tests/support/SimulatedMachine.h"

namespace kqu::simulation {

/// A simulated machine whose functions on files, volumes and strings are the real ones, on made-up
/// volumes. "/" is "sda1", and "/media/My Disk", labelled "Photos", is "sdb1".
class MachineWithVolumes : public SimulatedMachine {
  public:
    MachineWithVolumes() {
        tree.Mount("8:1", "sda1", "/");
        tree.Mount("8:17", "sdb1", "/media/My Disk");
        tree.Label("sdb1", "Photos");
        platform::RegisterCoreFoundationFunctions(functions, handles);
        platform::RegisterVolumeFunctions(functions, handles, tree.Root());
    }

    platform::Handles handles;
};

} // namespace kqu::simulation
