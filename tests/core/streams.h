// SPDX-License-Identifier: BSD-3-Clause

// Streams over bytes in memory that record their calls and do what a test asks.
#pragma once

#include "core/io.h"

#include <algorithm>
#include <cstring>
#include <deque>
#include <string>
#include <vector>

// What both have: the bytes in `data` and a position among them.
template <class Stream>
class MemoryStream : public Stream {
public:
    std::string data;
    s64 position = 0;
    std::vector<std::string> calls;

    // Results of the next reads or writes: a number from 0 on is the most that is moved, a negative
    // one is the error that is given.
    std::deque<int> results;

    s64 curpos() const override { return position; }

    s64 seek_from_start(s64 pos) override {
        calls.push_back("start " + std::to_string(pos));
        return position = pos;
    }

    s64 seek_from_curpos(s64 delta) override {
        calls.push_back("curpos " + std::to_string(delta));
        return position += delta;
    }
};

// Gives the bytes of `data` from position 0 on.
class MemoryInput : public MemoryStream<Input> {
public:
    explicit MemoryInput(const std::string& bytes) { data = bytes; }

    int read(char* buf, int n) override {
        calls.push_back("read " + std::to_string(n));
        int most = n;
        if (!results.empty()) {
            most = results.front();
            results.pop_front();
        }
        if (most < 0)
            return most;
        const s64 left = std::max(s64(data.size()) - position, s64(0));
        const int count = int(std::min({s64(most), s64(n), left}));
        if (count > 0)
            std::memcpy(buf, data.data() + position, std::size_t(count));
        position += count;
        return count;
    }
};

// Puts what is written into `data`, at its position.
class MemoryOutput : public MemoryStream<Output> {
public:
    int write(const char* buf, int n) override {
        calls.push_back("write " + std::string(buf, std::size_t(n)));
        int count = n;
        if (!results.empty()) {
            count = std::min(results.front(), n);
            results.pop_front();
        }
        if (count < 0)
            return count;
        if (s64(data.size()) < position + count)
            data.resize(std::size_t(position + count), '.');
        data.replace(std::size_t(position), std::size_t(count), buf, std::size_t(count));
        position += count;
        return count;
    }
};
