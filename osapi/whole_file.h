// A file written so that it appears whole or not at all, with its descriptor closed on every path.
//
// Errors:    what the system refuses, as StrXception, and what the writer throws; the file that
//            stood there before then still does, and nothing is left beside it.
#pragma once

#include "osapi/osapi.h"

#include <functional>

namespace velmora {

// Lets `write_bytes` fill `path` + ".inprogress", waits until the bytes are on the medium, and
// renames the file to `path`.
void write_whole_file(const char* path, const std::function<void(OSAPI::fd_t)>& write_bytes);

} // namespace velmora
