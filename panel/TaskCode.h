#pragma once

#include <cstdint>

namespace kqu {

/// The values of a row's "task": which tool it belongs to. The gaps in the numbering are the
/// suite's.
enum class TaskCode : std::int32_t { Scanner = 1, Defragmenter = 2, Backup = 6 };

} // namespace kqu
