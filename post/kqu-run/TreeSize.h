#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace kqu::run {

/// Adds up the sizes of all regular files in folders, each once, in a thread of its own that makes
/// way for everybody else.
class TreeSize {
  public:
    /// `staysOnVolume`: other volumes that are mounted below are left out.
    TreeSize(std::vector<std::string> paths, bool staysOnVolume);

    /// In bytes; nothing until all of it is known.
    [[nodiscard]] std::optional<std::uint64_t> Bytes() const;

  private:
    struct Sum {
        std::atomic<bool> isWhole = false;
        std::atomic<std::uint64_t> bytes = 0;
    };
    std::shared_ptr<Sum> sum_;
};

} // namespace kqu::run
