// SPDX-License-Identifier: BSD-3-Clause

// Plain and fast in turn on the same input: what the fast kernels gain, as ratios within one run.
//
//     velmora_compare [--pairs N] [--quick] [CASE…]
//
// A case is named by any part of its name. --quick runs each on a small sky once, for the test
// suite.
#include "bench/sky.h"
#include "stars/kernels.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <functional>
#include <memory>
#include <string>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace velmora;

namespace {

int pairs = 5;
bool quick = false;
bool failed = false;

double seconds_on(clockid_t clock) {
    timespec time;
    clock_gettime(clock, &time);
    return double(time.tv_sec) + 1e-9 * double(time.tv_nsec);
}

// Of this thread's processor time, which other processes disturb less than wall-clock time.
double seconds_of(const std::function<void()>& work) {
    const double start = seconds_on(CLOCK_THREAD_CPUTIME_ID);
    work();
    return seconds_on(CLOCK_THREAD_CPUTIME_ID) - start;
}

double seconds_by_the_wall(const std::function<void()>& work) {
    const double start = seconds_on(CLOCK_MONOTONIC);
    work();
    return seconds_on(CLOCK_MONOTONIC) - start;
}

// ---- Skies -----------------------------------------------------------------------------------

// A star database in memory that is mapped like one on disk.
class MappedSky {
public:
    explicit MappedSky(const std::vector<star>& stars) : fd(memfd_create("sky", 0)) {
        const char magic[32] = {'V', 'E', 'L', 'M', 'O', 'R', 'A', '2'};
        write_all(magic, sizeof magic);
        write_all(stars.data(), stars.size() * sizeof(star));
        input.reset(op_stars_file_input(("/proc/self/fd/" + std::to_string(fd)).c_str()));
    }
    MappedSky(const MappedSky&) = delete;
    MappedSky& operator=(const MappedSky&) = delete;
    ~MappedSky() { close(fd); }

    StarInput& stars() { return *input; }

private:
    int fd;
    std::unique_ptr<StarInput> input;

    void write_all(const void* bytes, size_t count) {
        const char* at = static_cast<const char*>(bytes);
        while (count > 0) {
            const ssize_t written = write(fd, at, count);
            if (written <= 0) {
                perror("velmora_compare: writing a sky");
                exit(1);
            }
            at += written;
            count -= size_t(written);
        }
    }
};

// ---- Frames ----------------------------------------------------------------------------------

struct Frame {
    const char* name;
    size_t stars;
    double focal;
    int segments; // 0: still
    double star_size;
    enum { HALF, ALL, NONE, UNSEEN } above; // which of the stars the threshold keeps
    double at_least;                        // the ratio that AVX2 is to reach; 0: none
};

const Frame frames[] = {
    {"1M stars, 50 mm, still", 1000000, 50, 0, 2.5, Frame::HALF, 6},
    {"1M stars, 18 mm, still", 1000000, 18, 0, 2.5, Frame::HALF, 0},
    {"1M stars, 18 mm, 1 segment", 1000000, 18, 1, 2.5, Frame::HALF, 6},
    {"1M stars, 18 mm, 3 segments", 1000000, 18, 3, 2.5, Frame::HALF, 6},
    {"1M stars, 18 mm, still, star_size 10", 1000000, 18, 0, 10, Frame::HALF, 9},
    {"1M stars, 18 mm, still, star_size 25", 1000000, 18, 0, 25, Frame::HALF, 12},
    {"10k stars, 18 mm, star_size 10, 1 segment", 10000, 18, 1, 10, Frame::HALF, 15},
    {"10M stars, all kept, 50 mm, still", 10000000, 50, 0, 2.5, Frame::ALL, 6},
    {"1M kept stars outside the view", 1000000, 50, 0, 2.5, Frame::UNSEEN, 6},
};

std::vector<star> sky_of(const Frame& frame) {
    std::vector<star> stars = made_up_sky(quick ? frame.stars / 200 : frame.stars);
    for (star& s : stars) {
        if (frame.above == Frame::ALL)
            s.flux *= 2.2f;
        if (frame.above == Frame::NONE)
            s.flux *= 1e-6f;
        if (frame.above == Frame::UNSEEN) { // behind the camera
            s.flux = 0.01f;
            s.ra = 210 + s.ra / 18;
            s.dec /= 18;
        }
    }
    return stars;
}

// Draws the frame and returns how long that took, without clearing the image.
double render(const Frame& frame, StarInput& input, BenchImage& image) {
    image.clear();
    StarRendererData data = default_render_data(1920, 1080);
    data.spot_width = data.star_size = frame.star_size;
    Array<camera> cameras;
    for (int i = 0; i <= frame.segments; i++)
        cameras.append(panned_camera(frame.segments ? 0.35 * i / frame.segments : 0, frame.focal));
    const double seconds = seconds_of([&] {
        bool drew = false;
        StarRenderer renderer(data, image.framebuffer(), input, cameras);
        renderer.render_all(drew);
    });
    input.reset();
    return seconds;
}

std::vector<float> floats_of(const BenchImage& image) {
    const float* first = image.framebuffer().alpha;
    return std::vector<float>(first, first + 1920 * 1080 * 4);
}

// Positions are rounded to floats, 6e-5 pixels apart at the image's far end; an error of one such
// step changes a pixel by that times the profile's slope.
bool look_alike(const std::vector<float>& a, const std::vector<float>& b) {
    double brightest = 0, worst = 0;
    for (size_t i = 0; i < a.size(); i++) {
        brightest = std::max(brightest, std::fabs(double(a[i])));
        worst = std::max(worst, std::fabs(double(a[i]) - double(b[i])));
    }
    return std::isfinite(brightest) && worst <= 1e-4 * brightest;
}

// ---- Ratios ----------------------------------------------------------------------------------

struct Ratio {
    double median, low, high;
};

Ratio ratio_of(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return {values[values.size() / 2], values.front(), values.back()};
}

double median_of(std::vector<double> values) {
    return ratio_of(std::move(values)).median;
}

void print_heading() {
    printf("%-42s %-8s %10s %10s   %s\n", "case", "level", "plain ms", "fast ms",
           "ratio (lowest to highest)");
}

void print_row(const char* name, const char* level, const std::vector<double>& slow,
               const std::vector<double>& fast, const char* aim) {
    std::vector<double> ratios;
    for (size_t i = 0; i < slow.size(); i++)
        ratios.push_back(slow[i] / fast[i]);
    const Ratio ratio = ratio_of(ratios);
    printf("%-42s %-8s %10.3f %10.3f   %.2f (%.2f to %.2f)%s\n", name, level, 1e3 * median_of(slow),
           1e3 * median_of(fast), ratio.median, ratio.low, ratio.high, aim);
    fflush(stdout);
}

void fail(const char* name, const char* level, const char* what) {
    printf("%-42s %-8s %s\n", name, level, what);
    failed = true;
}

std::vector<KernelLevel> fast_levels() {
    std::vector<KernelLevel> levels;
    for (KernelLevel level : {KernelLevel::sse2, KernelLevel::avx2, KernelLevel::avx512})
        if (level <= best_kernel_level())
            levels.push_back(level);
    return levels;
}

void compare_frame(const Frame& frame) {
    MappedSky sky(sky_of(frame));
    BenchImage image(1920, 1080);

    set_kernel_level(KernelLevel::plain);
    render(frame, sky.stars(), image);
    const std::vector<float> plain = floats_of(image);
    std::vector<float> first;
    for (KernelLevel level : fast_levels()) {
        set_kernel_level(level);
        render(frame, sky.stars(), image);
        const std::vector<float> fast = floats_of(image);
        if (!look_alike(plain, fast))
            return fail(frame.name, kernel_level_name(level), "another picture than the plain one");
        if (first.empty())
            first = fast;
        if (memcmp(first.data(), fast.data(), fast.size() * sizeof(float)) != 0)
            return fail(frame.name, kernel_level_name(level), "other bytes than the level below");
    }

    for (KernelLevel level : fast_levels()) {
        std::vector<double> slow, fast;
        for (int i = 0; i < pairs; i++) {
            set_kernel_level(KernelLevel::plain);
            slow.push_back(render(frame, sky.stars(), image));
            set_kernel_level(level);
            fast.push_back(render(frame, sky.stars(), image));
        }
        char aim[40] = "";
        if (level == KernelLevel::avx2 && frame.at_least > 0)
            snprintf(aim, sizeof aim, ", at least %.0f", frame.at_least);
        print_row(frame.name, kernel_level_name(level), slow, fast, aim);
    }
    set_kernel_level(best_kernel_level());
}

// ---- What is not plain against fast ----------------------------------------------------------

// A bare scan of the flux column against a render that keeps no star.
void compare_scan() {
    const Frame frame = {"1M stars below the threshold", 1000000, 50, 0, 2.5, Frame::NONE, 0};
    MappedSky sky(sky_of(frame));
    BenchImage image(1920, 1080);
    const MMAPStarFile& file = static_cast<MMAPStarFile&>(sky.stars());
    u32 bright = 0;
    std::vector<double> scan, frames_taken;
    for (int i = 0; i < pairs + 1; i++) { // the first touches the pages
        scan.push_back(seconds_of([&] {
            const star* s = file.cursor + 1;
            for (u32 n = 1; n < file.count; n++, s++)
                bright += !(s->flux < 0.0001f);
        }));
        frames_taken.push_back(render(frame, sky.stars(), image));
    }
    scan.erase(scan.begin());
    frames_taken.erase(frames_taken.begin());
    if (bright != 0)
        return fail(frame.name, "", "some star is above");
    print_row("1M stars below the threshold, over a scan", kernel_level_name(kernel_level()),
              frames_taken, scan, ", at most 1.2");
}

// Frames one after the other, and two processes side by side with half of them each.
void compare_jobs() {
    const Frame frame = {"", 1000000, 18, 1, 2.5, Frame::HALF, 0};
    MappedSky sky(sky_of(frame));
    const auto draw = [&](int count) {
        BenchImage image(1920, 1080);
        for (int i = 0; i < count; i++)
            render(frame, sky.stars(), image);
    };
    const auto draw_by = [&](int processes) {
        fflush(stdout);
        for (int i = 0; i < processes; i++)
            if (fork() == 0) {
                // A reader of its own: the cursor is not shared.
                draw(10 / processes);
                _exit(0);
            }
        while (wait(nullptr) > 0) {
        }
    };
    std::vector<double> one, two;
    for (int i = 0; i < pairs; i++) {
        one.push_back(seconds_by_the_wall([&] { draw_by(1); }));
        two.push_back(seconds_by_the_wall([&] { draw_by(2); }));
    }
    print_row("10 frames by one process, and by two", kernel_level_name(kernel_level()), one, two,
              ", at least 1.8");
}

// Hidden from the compiler, which would otherwise request zeroed memory.
__attribute__((noinline)) void clear(char* memory, size_t size) {
    memset(memory, 0, size);
    asm volatile("" : : "r"(memory) : "memory");
}

// The cost of a new 4096x2160 image until it is black, over a block from malloc.
void compare_image() {
    const size_t size = size_t(4096) * 2160 * 16;
    std::vector<double> block, image;
    for (int i = 0; i < pairs; i++) {
        block.push_back(seconds_of([&] {
            char* memory = static_cast<char*>(malloc(size));
            clear(memory, size);
            free(memory);
        }));
        image.push_back(seconds_of([&] {
            Kess::Image blank(Kess::ImageSpec(4096, 2160, Kess::ImageSpec::BGRA_FLOAT));
            blank.make_blank();
        }));
    }
    print_row("a blank 4096x2160 image, over malloc", "", block, image, ", at least 3");
}

bool wanted(const std::string& name, const std::vector<std::string>& filters) {
    return filters.empty() || std::any_of(filters.begin(), filters.end(), [&](const auto& filter) {
               return name.find(filter) != std::string::npos;
           });
}

} // namespace

int main(int argc, char** argv) {
    std::vector<std::string> filters;
    for (int i = 1; i < argc; i++) {
        if (strcmp(argv[i], "--quick") == 0)
            quick = true, pairs = 1;
        else if (strcmp(argv[i], "--pairs") == 0 && i + 1 < argc)
            pairs = std::max(1, atoi(argv[++i]));
        else
            filters.push_back(argv[i]);
    }
    print_heading();
    for (const Frame& frame : frames)
        if (wanted(frame.name, filters))
            compare_frame(frame);
    if (wanted("scan", filters))
        compare_scan();
    if (wanted("jobs", filters))
        compare_jobs();
    if (wanted("image", filters))
        compare_image();
    return failed ? 1 : 0;
}
