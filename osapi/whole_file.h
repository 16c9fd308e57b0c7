// A file written so that it appears whole or not at all, with its descriptor closed on every path.
//
// Errors:    StrXception for what the system refuses, and what the writer throws: the file that was
//            at `path` is then unchanged, and no temporary file of ours is left. Two failures come
//            after the renaming, when `path` is already the new file: "fsync: …", for its folder,
//            and "rename(…): the file was replaced by another user".
//            `opening file "<path>.inprogress": is being written by another process` while another
//            writer of `path` is at work; see temporary_file.h for what else may be in the way.
// Threads:   any number of threads and processes may write; of those that write the same `path` at
//            the same time, one goes on and the others fail.
#pragma once

#include "osapi/osapi.h"

#include <functional>

namespace velmora {

// Lets `write_bytes` fill `path` + ".inprogress", waits until the bytes are on the medium, renames
// the file to `path`, and waits until that is on the medium.
//
// The file has the permissions of the regular file that it replaces, or 0664 less the process's
// mask. Setuid, setgid and sticky bits are dropped. A symbolic link is replaced, not followed.
void write_whole_file(const char* path, const std::function<void(OSAPI::fd_t)>& write_bytes);

} // namespace velmora
