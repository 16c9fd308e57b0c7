// SPDX-License-Identifier: BSD-3-Clause

// What a test sees of the system: the bytes of files, the descriptors and mappings of this process,
// and actions in a process of their own.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <string>

// The bytes of a file; "(none)" when it is not there.
std::string bytes_of(const std::string& path);

bool exists(const std::string& path);

// How many descriptors this process holds.
int open_descriptors();

// A descriptor to use up: of nothing much, and open even when those of the process are not.
int some_descriptor();

// What the next descriptor to be opened will be.
int next_descriptor();

// The permissions ("r--s") of the mapping that starts at `address`, "" when none does.
std::string permissions_at(const void* address);

// Runs `action` in a child process and gives its wait status. The child ends with status 0 when
// `action` returns true, with 1 when it does not.
int status_of_child(const std::function<bool()>& action);

// Whether `action` returns true in a child process that is not privileged.
bool holds_unprivileged(const std::function<bool()>& action);
