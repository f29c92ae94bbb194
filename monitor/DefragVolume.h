#pragma once

#include "framework/values/Dictionary.h"

#include <string>

namespace kqu {

/// Finds out the name and the number of files of the volume on that disk, and stores the row's
/// "BSD", "volume" and "TotalFiles". The sources are the suite's look-up file, then the mounted
/// volumes; a disk that neither knows stands as its own name, without a number of files.
/// Raises NilObjectException if the look-up file is there and can't be opened.
void ResolveVolume(Dictionary& row, const std::string& disk);

} // namespace kqu
