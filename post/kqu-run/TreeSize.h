#pragma once

#include <atomic>
#include <memory>
#include <string>
#include <vector>

namespace kqu::run {

/// Adds up the sizes of all regular files in folders, each once, in a thread of its own that makes
/// way for everybody else. The sum in bytes; 0 until all of it is known. `staysOnVolume`: other
/// volumes that are mounted below are left out.
[[nodiscard]] std::shared_ptr<const std::atomic<double>> SizeOfTrees(std::vector<std::string> paths,
                                                                     bool staysOnVolume);

} // namespace kqu::run
