// SPDX-License-Identifier: BSD-3-Clause

// Rows pulled by many threads at once.
#include "tests/node/comp.h"
#include "tests/node/sky.h"

#include <atomic>
#include <thread>

using namespace node_test;
using DD::Image::Op;
using DD::Image::Row;
using velmora::host::Opened;

namespace {

class NodeThreads : public testing::Test {
protected:
    const ScratchFolder folder;
    Comp comp;

    NodeThreads() {
        comp.graph.set_format(DD::Image::Format(30, 20));
        comp.set_star_file(folder.write("sky", sky(100)));
    }
};

} // namespace

TEST_F(NodeThreads, ReceiveThePictureOfOne) {
    Op& op = comp.validated();
    const Opened opened(op);
    const Pixels alone = pulled(opened.iop());
    ASSERT_FALSE(alone.is_black());
    const int spans[] = {0, 1, 7, 29, 16};
    for (int pull = 0; pull < 100; pull++) {
        velmora::host::Pulling pulling;
        pulling.threads = 8;
        pulling.shuffled = unsigned(pull + 1);
        pulling.span = spans[pull % 5];
        ASSERT_TRUE(same_bits(pulled(opened.iop(), pulling), alone)) << pull;
    }
}

// What has been delivered when the render is called off is right, and the rest was never touched.
TEST_F(NodeThreads, LeaveOffInTheMiddle) {
    const Pixels whole = comp.picture();
    for (int stop = 0; stop < 40; stop++) {
        Op& op = comp.validated();
        const Opened opened(op);
        const Kess::Image& image = *inside(op).image;
        const std::string memory(image.data, image.stride * u32(image.height));

        Pixels pixels(opened.iop().info());
        std::atomic<int> spans{0};
        velmora::host::Pulling pulling;
        pulling.threads = 8;
        pulling.shuffled = unsigned(stop + 1);
        pulling.span = 10;
        velmora::host::pull_rows(opened.iop(), opened.iop().info(), DD::Image::Mask_RGBA, pulling,
                                 [&](const Row& row, int y, int x, int r) {
                                     pixels.take(row, y, x, r);
                                     if (++spans == stop + 1)
                                         comp.tree.abort();
                                 });
        // 60 spans in all; each of the other threads may be one ahead.
        EXPECT_GE(spans, stop + 1);
        EXPECT_LE(spans, stop + 8);
        int delivered = 0;
        for (std::size_t i = 0; i < pixels.samples.size(); i++) {
            if (pixels.samples[i] == Pixels::guard)
                continue;
            delivered++;
            ASSERT_EQ(pixels.samples[i], whole.samples[i]) << stop;
        }
        EXPECT_EQ(delivered, 4 * 10 * spans);
        EXPECT_EQ(std::string(image.data, image.stride * u32(image.height)), memory);
    }
    EXPECT_TRUE(same_bits(comp.picture(), whole));
}

// Threads that go on asking after the switch was thrown get their rows back as they were.
TEST_F(NodeThreads, GetNothingOnceTheRenderIsCalledOff) {
    Op& op = comp.validated();
    const Opened opened(op);
    std::atomic<int> rows{0}, torn{0}, late{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < 8; t++)
        threads.emplace_back([&, t] {
            for (int i = 0; i < 200; i++) {
                const int y = (7 * i + t) % 20;
                const bool was_off = op.aborted();
                Row row(0, 30);
                opened.iop().get(y, 0, 30, DD::Image::Mask_RGBA, row);
                const DD::Image::ChannelSet written = row.writable_channels();
                const bool none = written == DD::Image::ChannelSet(DD::Image::Mask_None);
                const bool all = written == DD::Image::ChannelSet(DD::Image::Mask_RGBA);
                torn += !none && !all;
                late += was_off && !none;
                if (++rows == 700)
                    comp.tree.abort();
            }
        });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(torn, 0);
    EXPECT_EQ(late, 0);
}
