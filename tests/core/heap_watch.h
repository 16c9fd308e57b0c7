// SPDX-License-Identifier: BSD-3-Clause

// Every block that a piece of a test asks for and gives back, by operator new, malloc or realloc:
// written down, and any one request made to find no memory. The program that links the source
// replaces operator new and delete, and wraps malloc, realloc and free.
#pragma once

#include <cstddef>

class HeapWatch {
public:
    enum Way { NEW, MALLOC, REALLOC };

    struct Request {
        Way way;
        std::size_t bytes;
    };

    HeapWatch();  // starts to watch; one at a time
    ~HeapWatch(); // stops
    HeapWatch(const HeapWatch&) = delete;
    HeapWatch& operator=(const HeapWatch&) = delete;

    void stop(); // from here on, only blocks that come back are noticed

    // The `n`th request from now on finds no memory, counted from 1.
    void refuse(int n);

    // Is called before the next request.
    void call(void (*function)());

    int requests() const;
    const Request& request(int i) const;

    // Blocks asked for under the watch that have not come back.
    int live() const;

    // Blocks that came back under the watch, in that order.
    int freed() const;
    const void* freed(int i) const;

    // How many of them were older than the watch.
    int older_freed() const;
};
