#pragma once

#include "post/kqu-run/tools/Tool.h"

#include <memory>
#include <string>

namespace kqu::run {

/// Finds the tool in the command, behind commands such as sudo, nice and env, and notes in `launch`
/// where it is. A command that isn't known is a tool as well, one that tells nothing.
[[nodiscard]] std::unique_ptr<Tool> Recognise(Launch& launch);

/// The tool's name without its folder.
[[nodiscard]] std::string ToolName(const Launch& launch);

} // namespace kqu::run
