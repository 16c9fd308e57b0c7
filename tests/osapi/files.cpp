#include "tests/osapi/files.h"

#include <fcntl.h>
#include <grp.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace fs = std::filesystem;

TempFolder::TempFolder() {
    std::string name = (fs::temp_directory_path() / "velmora-test-XXXXXX").string();
    if (!mkdtemp(name.data()))
        ADD_FAILURE() << "no folder for the test";
    path = name;
    chmod(path.c_str(), 0755);
}

TempFolder::~TempFolder() {
    std::error_code ignored;
    fs::remove_all(path, ignored);
}

std::string TempFolder::file(const std::string& name, const std::string& bytes) const {
    std::ofstream(*this / name, std::ios::binary) << bytes;
    return *this / name;
}

std::string TempFolder::folder(const std::string& name) const {
    fs::create_directory(*this / name);
    return *this / name;
}

std::set<std::string> TempFolder::names() const {
    std::set<std::string> names;
    for (const auto& entry : fs::directory_iterator(path))
        names.insert(entry.path().filename().string());
    return names;
}

std::string bytes_of(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file)
        return "(none)";
    return std::string(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
}

bool exists(const std::string& path) {
    return fs::symlink_status(path).type() != fs::file_type::not_found;
}

int open_descriptors() {
    // The listing holds one itself, as often as it is made.
    return int(std::distance(fs::directory_iterator("/proc/self/fd"), fs::directory_iterator()));
}

std::string permissions_at(const void* address) {
    std::ifstream maps("/proc/self/maps");
    for (std::string line; std::getline(maps, line);) {
        std::uintptr_t start = 0;
        char permissions[5] = "";
        if (std::sscanf(line.c_str(), "%" SCNxPTR "-%*x %4s", &start, permissions) == 2 &&
            start == reinterpret_cast<std::uintptr_t>(address))
            return permissions;
    }
    return "";
}

int status_of_child(const std::function<bool()>& action) {
    const pid_t child = fork();
    if (child == 0) {
        // Faults end the child plainly, also where a sanitizer listens for them.
        signal(SIGSEGV, SIG_DFL);
        signal(SIGBUS, SIG_DFL);
        bool held = false;
        try {
            held = action();
        } catch (...) {
        }
        _exit(held ? 0 : 1);
    }
    int status = -1;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    return status;
}

bool holds_unprivileged(const std::function<bool()>& action) {
    const int status = status_of_child([&] {
        const uid_t nobody = 65534;
        if (getuid() == 0 && (setgroups(0, nullptr) || setgid(nobody) || setuid(nobody)))
            return false;
        return getuid() != 0 && action();
    });
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}
