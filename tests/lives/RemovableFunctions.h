#pragma once

#include "platform/functions/FunctionTable.h"
#include "platform/functions/Functions.h"

#include <functional>
#include <utility>
#include <vector>

namespace kqu::lives {

/// Functions that are reached by name and can be made not to be found for a while.
class RemovableFunctions {
  public:
    explicit RemovableFunctions(platform::FunctionTable& table) {
        using namespace kqu::functions;
        Add<IsWindowCollapsed, UpdateCollapsedWindowDockTile, SetWindowAlpha, DisableScreenUpdates,
            EnableScreenUpdates, SizeWindow, DragWindow, popen, feof, fread, ferror, pclose,
            FSGetVolumeInfo, FSCopyDiskIDForVolume, CFStringGetCStringOfCarbon, CFRelease,
            CFStringGetCString, IOPSGetProvidingPowerSourceType, IOPSCopyPowerSourcesInfo,
            MountedVolumes>(table);
    }
    /// Takes one of them away, counted round from 0; -1 and -2 are those that the program can do
    /// without.
    void Remove(int which) {
        const int count = static_cast<int>(functions_.size());
        functions_[static_cast<std::size_t>((which % count + count) % count)].first();
    }
    void Restore() const {
        for (const auto& [remove, restore] : functions_)
            restore();
    }

  private:
    template <class... F>
    void Add(platform::FunctionTable& table) {
        (functions_.emplace_back([&table] { table.Remove<F>(); },
                                 [&table, entry = table.Find<F>()] { table.Set<F>(*entry); }),
         ...);
    }
    std::vector<std::pair<std::function<void()>, std::function<void()>>> functions_;
};

} // namespace kqu::lives
