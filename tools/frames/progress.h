// SPDX-License-Identifier: BSD-3-Clause

// The progress line of a render: only on a terminal, where messages overwrite it.
//
// Threads:   one; the time left is that of frames which each take as long as those before.
#pragma once

#include <chrono>
#include <cstddef>

namespace velmora {

class Progress {
public:
    // For `frames` frames of about `stars` stars each.
    Progress(std::size_t frames, std::size_t stars);
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;
    ~Progress(); // clears the line

    void frame_done();

private:
    const bool terminal;
    const std::size_t frames, stars;
    std::size_t done = 0;
    const std::chrono::steady_clock::time_point start;

    void show() const;
};

} // namespace velmora
