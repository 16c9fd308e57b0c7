// SPDX-License-Identifier: BSD-3-Clause

// Ways to take the records of a mapped file in blocks, and what a scan of faint stars costs in all.
//
// Only the copies survive a file that is cut while it is read: the others check whether its pages
// exist, or fault them in, and read the block after that.
#include "bench/sky.h"

#include <benchmark/benchmark.h>
#include <cstring>
#include <memory>
#include <sys/mman.h>
#include <unistd.h>

using namespace velmora;

static const u32 star_count = 1000000;

// A database of faint stars; its file is already unlinked, but still mapped.
class FaintSky {
public:
    FaintSky() {
        char path[] = "velmora-bench-XXXXXX";
        const OSAPI::FileDescriptor fd(mkstemp(path));
        std::vector<star> records(1 + star_count);
        std::memcpy(static_cast<void*>(&records[0]), "VELMORA2", 8);
        for (u32 i = 1; i <= star_count; i++)
            records[i].flux = 1e-6f;
        OSAPI::write(fd.fd, reinterpret_cast<const char*>(records.data()),
                     records.size() * sizeof(star));
        file = std::make_unique<MMAPStarFile>(path);
        unlink(path);
    }

    const star* records() const { return static_cast<const star*>(file->mapping.data); }

    std::unique_ptr<MMAPStarFile> file;
};

static FaintSky& faint_sky() {
    static FaintSky sky;
    return sky;
}

static u32 kept_of(const star* records, u32 count) {
    u32 kept = 0;
    for (u32 i = 0; i < count; i++)
        kept += !(records[i].flux < 1e-4f);
    return kept;
}

// `block` prepares a stretch of records and returns where to read it.
template <class Block>
static void walk(benchmark::State& state, const Block& block) {
    const star* const records = faint_sky().records();
    const u32 size = u32(state.range(0));
    u32 kept = kept_of(records, star_count);
    for (auto _ : state)
        for (u32 i = 0; i < star_count; i += size) {
            const u32 count = std::min(size, star_count - i);
            kept += kept_of(block(records + i, count), count);
        }
    if (kept != 0)
        state.SkipWithError("a star was kept");
    state.SetItemsProcessed(int64_t(star_count) * state.iterations());
}

static void RecordsBare(benchmark::State& state) {
    walk(state, [](const star* records, u32) { return records; });
}

static void RecordsCopied(benchmark::State& state) {
    const std::unique_ptr<star[]> copy(new star[std::size_t(state.range(0))]);
    walk(state, [&](const star* records, u32 count) {
        if (OSAPI::copy_can_fail(copy.get(), records, count * sizeof(star)) != count * sizeof(star))
            state.SkipWithError("records are lost");
        return copy.get();
    });
}

static void RecordsPopulated(benchmark::State& state) {
    const std::size_t page = std::size_t(OSAPI::get_page_size());
    walk(state, [&](const star* records, u32 count) {
        const std::size_t address = reinterpret_cast<std::size_t>(records);
        void* const from = reinterpret_cast<void*>(address / page * page);
        madvise(from, address % page + count * sizeof(star), MADV_POPULATE_READ);
        return records;
    });
}

static void RecordsAfterFstat(benchmark::State& state) {
    const OSAPI::FileDescriptor fd(OSAPI::open("/proc/self/exe", OSAPI::OPEN_READ));
    walk(state, [&](const star* records, u32) {
        benchmark::DoNotOptimize(OSAPI::getsize(fd.fd));
        return records;
    });
}

static void blocks(benchmark::internal::Benchmark* bench) {
    bench->ArgName("records")->Unit(benchmark::kMillisecond);
    for (const int records : {1024, 4096, 16384, 32768})
        bench->Arg(records);
}
BENCHMARK(RecordsBare)->Apply(blocks);
BENCHMARK(RecordsCopied)->Apply(blocks);
BENCHMARK(RecordsPopulated)->Apply(blocks);
BENCHMARK(RecordsAfterFstat)->Apply(blocks);

// The whole of it: a renderer that keeps no star of a mapped file.
static void ScanOfFaintStars(benchmark::State& state) {
    MMAPStarFile& file = *faint_sky().file;
    BenchImage image(64, 36);
    const StarRendererData data = default_render_data(64, 36);
    Array<camera> cameras;
    cameras.append(panned_camera(0, 50));
    for (auto _ : state) {
        bool drew = false;
        StarRenderer renderer(data, image.framebuffer(), file, cameras);
        renderer.render_all(drew);
        file.reset();
        if (drew || renderer.counts().read != star_count)
            state.SkipWithError("stars were drawn or left out");
    }
    state.SetItemsProcessed(int64_t(star_count) * state.iterations());
}
BENCHMARK(ScanOfFaintStars)->Unit(benchmark::kMillisecond);
