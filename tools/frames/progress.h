// The progress line of a render: only on a terminal, and never in the way of messages.
#pragma once

#include <chrono>
#include <cstddef>

namespace velmora {

class Progress {
public:
    // `frames` of about `stars` stars each are to be rendered.
    Progress(std::size_t frames, std::size_t stars);
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;
    ~Progress(); // takes the line away

    void frame_done();

private:
    const bool terminal;
    const std::size_t frames, stars;
    std::size_t done = 0;
    const std::chrono::steady_clock::time_point start;

    void show() const;
};

} // namespace velmora
