// SPDX-License-Identifier: BSD-3-Clause

// The heap of the whole process, the libraries that it loads included: requests are counted, and
// any of them made to find no memory. The program that links the source has its malloc.
#pragma once

class ProcessHeap {
public:
    ProcessHeap();  // starts to count; one at a time
    ~ProcessHeap(); // stops, and grants everything again
    ProcessHeap(const ProcessHeap&) = delete;
    ProcessHeap& operator=(const ProcessHeap&) = delete;

    // Of the requests from now on, counted from 1, the one at `first` finds no memory, and so do
    // `more` after it. From here on all are granted when `first` is 0.
    void refuse(int first, int more = 0);

    // Requests so far.
    int requests() const;
};
