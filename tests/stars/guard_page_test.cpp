// SPDX-License-Identifier: BSD-3-Clause

// Framebuffers whose last byte is followed by a page that may not be touched, and whose first byte
// follows one.
#include "tests/stars/dice.h"
#include "tests/stars/kernels.h"
#include "tests/stars/picture.h"

#include <sys/mman.h>
#include <unistd.h>

using namespace stars_test;
using namespace velmora;

namespace {

// Memory for floats between two pages without access, against the upper or the lower one.
class GuardedFloats {
public:
    GuardedFloats(size_t count, bool at_the_end) {
        const size_t page = size_t(sysconf(_SC_PAGESIZE));
        const size_t bytes = (count * sizeof(float) + page - 1) / page * page;
        size = bytes + 2 * page;
        memory =
            static_cast<char*>(mmap(nullptr, size, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
        EXPECT_NE(static_cast<void*>(memory), MAP_FAILED);
        EXPECT_EQ(mprotect(memory + page, bytes, PROT_READ | PROT_WRITE), 0);
        char* const first = memory + page + (at_the_end ? bytes - count * sizeof(float) : 0);
        floats = reinterpret_cast<float*>(first);
    }
    GuardedFloats(const GuardedFloats&) = delete;
    GuardedFloats& operator=(const GuardedFloats&) = delete;
    ~GuardedFloats() { munmap(memory, size); }

    float* floats;

private:
    char* memory;
    size_t size;
};

} // namespace

TEST(GuardPages, AreNotTouchedByAnyKernel) {
    Dice dice(21);
    for (int i = 0; i < 400; i++) {
        const int width = 1 + dice.below(40), height = 1 + dice.below(12);
        GuardedFloats memory(size_t(width * height * 4), i % 2 == 0);
        StarFramebuffer fb = {memory.floats + 1,
                              memory.floats + 2,
                              memory.floats + 3,
                              memory.floats,
                              width,
                              height,
                              width * 4,
                              4};
        if (dice.below(3) == 0) { // four planes
            const int plane = width * height;
            fb = {memory.floats,
                  memory.floats + plane,
                  memory.floats + 2 * plane,
                  memory.floats + 3 * plane,
                  width,
                  height,
                  width,
                  1};
        }
        for (int p = 0; p < width * height; p++)
            if (dice.below(10) == 0)
                fb.alpha[p * fb.pixel_stride] = float(dice.between(0, 1.2));
        const float size_x = float(dice.log_between(0.3, 20)),
                    size_y = float(dice.log_between(0.3, 20));
        const Vector2 from =
            at(float(dice.between(-5, width + 5)), float(dice.between(-5, height + 5)));
        const double length = dice.below(3) ? dice.log_between(1e-3, 1e5) : 0;
        const double angle = dice.between(0, 6.2831853);
        const Vector2 to = at(float(from[0] + length * std::cos(angle)),
                              float(from[1] + length * std::sin(angle)));
        for (KernelLevel level : fast_levels()) {
            const WithKernels kernels(level);
            op_star_streak(fb, from, to, 5, white, size_x, size_y, OP_STARS_LINES_ALL);
        }
    }
}
