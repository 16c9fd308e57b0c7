// Files to test with: a folder of their own, their bytes, and the descriptors this process holds.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <set>
#include <string>

// A new folder, removed with everything in it.
class TempFolder {
public:
    TempFolder();
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;
    ~TempFolder();

    // The path of `name` in this folder.
    std::string operator/(const std::string& name) const { return path + "/" + name; }

    // A new file of these bytes; its path.
    std::string file(const std::string& name, const std::string& bytes) const;

    // A new folder in this one; its path.
    std::string folder(const std::string& name) const;

    // The names in this folder.
    std::set<std::string> names() const;

    std::string path;
};

// The bytes of a file; "(none)" when it is not there.
std::string bytes_of(const std::string& path);

bool exists(const std::string& path);

// How many descriptors this process holds.
int open_descriptors();

// The permissions ("r--s") of the mapping that starts at `address`, "" when none does.
std::string permissions_at(const void* address);

// Runs `action` in a child process and gives its wait status. The child ends with status 0 when
// `action` returns true, with 1 when it does not.
int status_of_child(const std::function<bool()>& action);

// Whether `action` returns true in a child process that is not privileged.
bool holds_unprivileged(const std::function<bool()>& action);
