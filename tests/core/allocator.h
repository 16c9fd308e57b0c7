// SPDX-License-Identifier: BSD-3-Clause

// The allocator as the library's calls see it in this program: every call is written down, and any
// of them can be made to find no memory. The linker's --wrap puts it in front of libc's.
#pragma once

#include <cstddef>
#include <vector>

class Allocator {
public:
    Allocator();  // starts to write calls down
    ~Allocator(); // stops, and frees the block that a refused realloc left

    Allocator(const Allocator&) = delete;
    Allocator& operator=(const Allocator&) = delete;

    // The `n`th call from now on finds no memory, counted from 1; `for_good`: and all after it.
    void refuse(int n, bool for_good = false);

    // Calls asking for more than `bytes` find no memory.
    void refuse_above(std::size_t bytes);

    // A realloc to more than `bytes` hands its block back as it is, for sizes that no machine has;
    // nothing may be written after what was there.
    void pretend_above(std::size_t bytes);

    // The next `n` calls of vsnprintf report `result`: -1, as old ones did for a text that does not
    // fit, or a length that no test has time to print.
    void misprint(int n, int result = -1);

    std::vector<std::size_t> mallocs;  // sizes asked for
    std::vector<std::size_t> reallocs; // sizes asked for
    int prints;                        // calls of vsnprintf

    void* answer(void* block, std::size_t bytes, bool reallocating);
    bool misprints(int& result);
    void freed(void* block);

private:
    int refused_call;
    bool refused_for_good;
    std::size_t largest;
    std::size_t largest_real;
    int calls;
    int misprinted;
    int misprint_result;
    void* left_over;
};
