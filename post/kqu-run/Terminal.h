#pragma once

#include "post/posting/Descriptor.h"

namespace kqu::run {

/// The two ends of a stream between a tool and kqu-run.
struct Stream {
    /// What kqu-run reads.
    Descriptor ours;
    /// What becomes the tool's standard output or error.
    Descriptor tools;
};

/// A terminal for the tool's output that stands in for the real one: of the same size and settings,
/// but what is written comes out byte by byte as it is, as the real one still does its own work on
/// it. It controls nothing: keys, Ctrl-C and Ctrl-Z stay with the real terminal, whose settings are
/// never touched. Both descriptors are closed on exec; empty if there is none to be had.
[[nodiscard]] Stream OpenTerminalLike(int real);

/// A pipe with room for a flood.
[[nodiscard]] Stream OpenPipe();

/// Gives the stand-in the size of the real terminal.
void CopySize(int real, int standIn);

} // namespace kqu::run
