// SPDX-License-Identifier: BSD-3-Clause

// Runs pieces of work one after the other, or several at a time in processes of their own.
//
// Errors:    WorkFailure when the system cannot wait for a process. Work that fails is reported and
//            counted.
// Threads:   one caller at a time, without other threads: it forks. With several jobs SIGCHLD has
//            its default disposition until the last one is done.
#pragma once

#include <cstddef>
#include <functional>
#include <string>

namespace velmora {

// Runs work(0) to work(count - 1), `jobs` at a time, and returns how many failed. The message of work
// that throws is reported; work ended by a signal is reported with name(i). done() is called, in this
// process, after each piece.
std::size_t run_jobs(std::size_t count, int jobs, const std::function<void(std::size_t)>& work,
                     const std::function<std::string(std::size_t)>& name,
                     const std::function<void()>& done);

} // namespace velmora
