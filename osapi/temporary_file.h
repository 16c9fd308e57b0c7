// SPDX-License-Identifier: BSD-3-Clause

// The file to which a writer of `path` writes: `path` + ".inprogress", held by one writer at a
// time, in this process and in others, until it is renamed to `path`.
//
// Locks:     the file is created exclusively and locked with flock until it has its final name. A
//            file without a lock was left by a writer that was killed: a writer that locks it, and
//            then still finds it under its name, removes it and starts over. So only the holder of
//            the lock ever removes or renames the file of that name. Why flock: the lock belongs to
//            the open file (record locks of fcntl are lost when any descriptor of the file is
//            closed, and do not exclude other threads), it ends with the process, and NFS clients
//            pass it on to the server, so it excludes other machines. On file systems without
//            locks, exclusive creation still excludes other writers, but a file that was left
//            cannot be distinguished from one in use, and is never replaced.
// Security:  other users may be able to write to the folder. What they put there under that name is
//            neither followed, written to, removed nor renamed to `path`: links, second names of
//            files, pipes, devices, folders, files of other users.
// Errors:    StrXception, as `opening file "name": reason`, or with the name of the call that
//            failed. The reason is "is being written by another process" while there is one, and
//            "is in the way, and …" for what is not ours.
// Threads:   an object belongs to one thread at a time.
#pragma once

#include "osapi/osapi.h"

#include <string>
#include <sys/stat.h>

namespace velmora {

// The name of the temporary file of `path`.
std::string temporary_name_of(const std::string& path);

// What prevents the temporary file of `path` from being created, as far as its name shows now: "is
// in the way, and …", or the system's reason, such as "File name too long". Empty when nothing
// does, and also when the folder does not exist.
std::string obstacle_to_temporary_of(const std::string& path);

class TemporaryFile {
public:
    // Creates the file with `mode` less the process's umask.
    TemporaryFile(const std::string& path, mode_t mode);
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    // Removes the file unless it was renamed. Never throws: a failure here always follows another
    // one, which is the one to report.
    ~TemporaryFile();

    // For writing; -1 when closed.
    OSAPI::fd_t fd() const { return writing; }

    // Closes fd(), which may be the first call to report a failed write. The lock is kept.
    void close();

    // Renames the file to `path`; throws when the temporary name no longer leads to this file.
    void rename();

private:
    const std::string path, name;
    struct stat identity;     // of the file, when `held`
    OSAPI::fd_t locked = -1;  // holds the lock
    OSAPI::fd_t writing = -1; // another descriptor of the same open file
    bool held = false;        // the file of that name is ours to remove or rename

    explicit TemporaryFile(const std::string& path);
    bool create(mode_t mode);
    void release();
    void remove_leftover() const;
    void check_final_name() const;
};

} // namespace velmora
