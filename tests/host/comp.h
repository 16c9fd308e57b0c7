// SPDX-License-Identifier: BSD-3-Clause

// A comp of the tests' own plug-ins, and the images of its nodes.
#pragma once

#include "host/runtime/checks.h"
#include "host/runtime/graph.h"
#include "host/runtime/op_tree.h"
#include "host/runtime/scanlines.h"

#include <array>
#include <gtest/gtest.h>
#include <mutex>
#include <string>
#include <vector>

inline velmora::host::PluginPath test_plugins() {
    return velmora::host::PluginPath({VELMORA_TEST_PLUGINS});
}

// The whole message of what `action` throws; "no error" if nothing.
template <class Action>
std::string error_of(Action action) {
    try {
        action();
    } catch (const std::exception& error) {
        return error.what();
    }
    return "no error";
}

// Plug-ins are checked during the life of one of these.
struct Watch {
    const bool before = velmora::host::checks_plugins();
    Watch() { velmora::host::set_checks_plugins(true); }
    Watch(const Watch&) = delete;
    Watch& operator=(const Watch&) = delete;
    ~Watch() { velmora::host::set_checks_plugins(before); }
};

class CompTest : public testing::Test {
protected:
    Watch watch;
    velmora::host::Graph graph{test_plugins()};

    Node& create(const char* class_name, const char* name = "") {
        return graph.create(class_name, name);
    }
};

inline void set(Node& node, const char* knob, double value) {
    ASSERT_TRUE(node.knob(knob)) << knob;
    ASSERT_TRUE(node.knob(knob)->set_value(value)) << knob;
}

inline void set_text(Node& node, const char* knob, const char* text) {
    ASSERT_TRUE(node.knob(knob)) << knob;
    ASSERT_TRUE(node.knob(knob)->set_text(text)) << knob;
}

typedef std::array<float, 4> Pixel; // red, green, blue, alpha

// The pixels of `box`, bottom row first; each must come once.
inline std::vector<Pixel> pulled(DD::Image::Iop& iop, const DD::Image::Box& box,
                                 const velmora::host::Pulling& pulling = {}) {
    const std::size_t columns = std::size_t(box.w());
    std::vector<Pixel> pixels(columns * std::size_t(box.h()));
    std::vector<int> times(pixels.size());
    std::mutex lock;
    velmora::host::pull_rows(iop, box, DD::Image::Mask_RGBA, pulling,
                             [&](const DD::Image::Row& row, int y, int x, int r) {
                                 const std::lock_guard<std::mutex> guard(lock);
                                 for (int column = x; column < r; column++) {
                                     const std::size_t at = std::size_t(y - box.y()) * columns +
                                                            std::size_t(column - box.x());
                                     times[at]++;
                                     for (int z = 0; z < 4; z++)
                                         pixels[at][std::size_t(z)] =
                                             row[DD::Image::Channel(z + 1)][column];
                                 }
                             });
    EXPECT_EQ(times, std::vector<int>(pixels.size(), 1));
    return pixels;
}

// One row of one channel of a node at a frame, through the whole cycle.
inline std::vector<float> row_of(velmora::host::OpTree& tree, double frame, int y, int x, int r,
                                 DD::Image::Channel channel) {
    const velmora::host::Opened opened(tree.at(frame));
    DD::Image::Row row(x, r);
    opened.iop().get(y, x, r, channel, row);
    return {row[channel] + x, row[channel] + r};
}
