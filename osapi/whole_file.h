// SPDX-License-Identifier: BSD-3-Clause

// Writing a file so that it appears whole or not at all, with its descriptor closed in any case.
//
// Errors:    StrXception when the system refuses, and whatever `write_bytes` throws: the file at
//            `path` is then unchanged, and no temporary file of ours is left. Two failures come
//            after the renaming, when `path` is already the new file: "fsync: …", for its folder,
//            and "rename(…): the file was replaced by another user". `opening file
//            "<path>.inprogress": is being written by another process` while there is another
//            writer of `path`; see temporary_file.h for what else may be in the way.
// Threads:   any number of threads and processes may write; of several that write the same `path`
//            at the same time, one succeeds and the others fail.
#pragma once

#include "osapi/osapi.h"

#include <functional>

namespace velmora {

// Calls `write_bytes` with a descriptor of `path` + ".inprogress", waits until the bytes are on the
// storage device, renames the file to `path`, and waits until the new name is stored, too.
//
// The file has the permissions of the regular file that it replaces, or 0664 less the process's
// umask. Setuid, setgid and sticky bits are dropped. A symbolic link is replaced, not followed.
void write_whole_file(const char* path, const std::function<void(OSAPI::fd_t)>& write_bytes);

} // namespace velmora
