// Files that appear whole or not at all.
//
// Errors:    WorkFailure(path, reason), where the reason is the system's, such as "No space left on
//            device"; the file that stood there before then still does, and nothing else is left
//            behind.
#pragma once

#include <string>

namespace velmora {

// Writes `bytes` beside `path`, waits until they are on the medium, and renames. A symbolic link is
// replaced, not followed; a device, pipe or folder is refused.
void write_file(const std::string& path, const std::string& bytes);

} // namespace velmora
