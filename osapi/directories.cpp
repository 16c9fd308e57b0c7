// SPDX-License-Identifier: BSD-3-Clause
#define XSOURCE "osapi-unix"

#include "core/unwinding.h"
#include "core/xception.h"
#include "osapi/failure.h"
#include "osapi/osapi.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <dirent.h>
#include <glob.h>
#include <memory>
#include <unistd.h>

namespace OSAPI {

// ---- The working directory -------------------------------------------------------------------

void chdir(const char* path) {
    if (strcmp(path, ".") != 0 && ::chdir(path) == -1)
        XTHROW_ERRNO("chdir(%s)", path);
}

String getcwd() {
    // With a null buffer the system allocates one of sufficient size.
    char* const path = ::getcwd(nullptr, 0);
    if (!path)
        XTHROW_ERRNO("getcwd");
    const String copy(path);
    free(path);
    return copy;
}

ScopedChdir::ScopedChdir(const char* dir) : previous(getcwd()), changed(*dir != 0) {
    if (changed)
        chdir(dir);
}

ScopedChdir::~ScopedChdir() noexcept(false) {
    if (changed)
        velmora::release_in_destructor([this] { chdir(previous.str); });
}

// ---- Listings --------------------------------------------------------------------------------

void lsdir(const char* path, Array<String>& out) {
    std::unique_ptr<DIR, int (*)(DIR*)> folder(opendir(path), closedir);
    if (!folder)
        XTHROW_ERRNO("opendir(\"%s\")", path);
    for (;;) {
        errno = 0; // the only way to distinguish a failure from the end
        const dirent* const entry = readdir(folder.get());
        if (entry)
            out.append(entry->d_name);
        else if (errno == 0)
            break;
        else
            XTHROW_ERRNO("readdir(\"%s\")", path);
    }
    // Closed here rather than by the owner, whose destructor could not report a failure.
    if (closedir(folder.release()) == -1)
        XTHROW_ERRNO("closedir(\"%s\")", path);
}

struct Glob::State {
    u32 index; // of the name to hand out next
    glob_t result;
    bool no_match;

    State() : index(0), result(), no_match(false) {}
    State(const State&) = delete;
    State& operator=(const State&) = delete;
    ~State() { globfree(&result); }
};

Glob::Glob(const char* pattern) : state(nullptr) {
    auto made = std::make_unique<State>();
    // The state is freed, by globfree too, if this throws.
    const int code = glob(pattern, 0, nullptr, &made->result);
    if (code != 0 && code != GLOB_NOMATCH)
        XTHROW("glob(%s): %d", pattern, code);
    made->no_match = code == GLOB_NOMATCH;
    state = made.release();
}

Glob::~Glob() {
    delete state;
}

const char* Glob::next() {
    return state->no_match ? nullptr : state->result.gl_pathv[state->index++];
}

} // namespace OSAPI
