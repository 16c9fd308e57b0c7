// SPDX-License-Identifier: BSD-3-Clause

// Whole text files: cameras and comp scripts.
//
// Errors:    WorkFailure(path, reason): what the system says, "is not a regular file" for a pipe or
//            a device, "is larger than 1 GiB", "became shorter while it was read". A text is read
//            whole or not at all.
#pragma once

#include <string>

namespace velmora {

// The file's bytes, unchanged.
std::string read_text_file(const std::string& path);

} // namespace velmora
