// Runs pieces of work one after the other or several at a time, each of those in a process of its
// own.
#pragma once

#include <cstddef>
#include <functional>
#include <string>

namespace velmora {

// Runs work(0) to work(count - 1), `jobs` at a time, and returns how many of them failed. Work that
// throws has its failure said; work that dies is named with name(i); neither takes any other with
// it. done() is called, in this process, after each piece. With several jobs SIGCHLD has its default
// disposition until the last one is done.
std::size_t run_jobs(std::size_t count, int jobs, const std::function<void(std::size_t)>& work,
                     const std::function<std::string(std::size_t)>& name,
                     const std::function<void()>& done);

} // namespace velmora
