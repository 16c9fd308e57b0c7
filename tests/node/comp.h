// SPDX-License-Identifier: BSD-3-Clause

// A comp with one node of ours, loaded from the plug-in and taken through the host's cycle.
#pragma once

#include "host/runtime/graph.h"
#include "host/runtime/op_tree.h"
#include "host/runtime/scanlines.h"
#include "node/VelmoraNK.h"
#include "tests/scratch_folder.h"

#include <cstring>
#include <DDImage/NukeWrapper.h>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace node_test {

inline velmora::host::PluginPath plugin_path() {
    return velmora::host::PluginPath({VELMORA_PLUGIN_FOLDER});
}

// The node's op inside the host's wrapper.
inline const VelmoraNK& inside(DD::Image::Op& op) {
    return *static_cast<const VelmoraNK*>(dynamic_cast<DD::Image::NukeWrapper&>(op).wrapped_iop());
}

// Sets a knob to what a saved script would have after its name.
inline void set(Node& node, const std::string& knob, const std::string& value) {
    velmora::host::HostKnob* const known = node.knob(knob);
    ASSERT_NE(known, nullptr) << knob;
    ASSERT_TRUE(known->from_script(value.c_str())) << knob << " " << value;
}

// Pixels of a box, bottom row first: red, green, blue, alpha. What was not pulled keeps the guard.
struct Pixels {
    DD::Image::Box box;
    std::vector<float> samples;

    explicit Pixels(const DD::Image::Box& box)
        : box(box), samples(4 * std::size_t(box.w()) * std::size_t(box.h()), guard) {}

    static constexpr float guard = -7777.25f;

    float* at(int x, int y) {
        return &samples[4 * (std::size_t(y - box.y()) * std::size_t(box.w()) +
                             std::size_t(x - box.x()))];
    }
    const float* at(int x, int y) const { return const_cast<Pixels*>(this)->at(x, y); }

    void take(const DD::Image::Row& row, int y, int x, int r) {
        static const DD::Image::Channel channels[] = {DD::Image::Chan_Red, DD::Image::Chan_Green,
                                                      DD::Image::Chan_Blue, DD::Image::Chan_Alpha};
        for (int k = 0; k < 4; k++) {
            const float* const from = row[channels[k]];
            for (int column = x; column < r; column++)
                at(column, y)[k] = from[column];
        }
    }

    bool is_black() const {
        for (const float sample : samples)
            if (sample != 0)
                return false;
        return true;
    }
};

inline testing::AssertionResult same_bits(const Pixels& a, const Pixels& b) {
    if (!(a.box == b.box))
        return testing::AssertionFailure() << "pictures of different boxes";
    for (std::size_t i = 0; i < a.samples.size(); i++)
        if (std::memcmp(&a.samples[i], &b.samples[i], sizeof(float)) != 0)
            return testing::AssertionFailure()
                   << "sample " << i % 4 << " of pixel (" << int(i / 4) % a.box.w() << ", "
                   << int(i / 4) / a.box.w() << ") of the box is " << std::hexfloat << a.samples[i]
                   << " in one and " << b.samples[i] << " in the other";
    return testing::AssertionSuccess();
}

// The whole box of an op that is open.
inline Pixels pulled(DD::Image::Iop& iop, const velmora::host::Pulling& pulling = {}) {
    Pixels pixels(iop.info());
    velmora::host::pull_rows(
        iop, iop.info(), DD::Image::Mask_RGBA, pulling,
        [&](const DD::Image::Row& row, int y, int x, int r) { pixels.take(row, y, x, r); });
    return pixels;
}

class Comp {
public:
    velmora::host::Graph graph{plugin_path()};
    Node& stars = graph.create("VelmoraNK");
    velmora::host::OpTree tree{stars};

    Comp() { graph.set_format(DD::Image::Format(24, 16)); }

    void set(const std::string& knob, const std::string& value) {
        node_test::set(stars, knob, value);
    }

    void set_star_file(const std::string& path) { stars.knob("starfile")->set_text(path.c_str()); }

    // A node of the class, connected to the camera input.
    Node& connect_camera(const std::string& class_name = "Camera2") {
        Node& camera = graph.create(class_name);
        EXPECT_TRUE(stars.set_input(1, &camera));
        return camera;
    }

    DD::Image::Op& validated(double frame = 1) {
        DD::Image::Op& op = tree.at(frame);
        velmora::host::validate(op);
        return op;
    }

    // Validates, and returns the op whether it has failed or not.
    DD::Image::Op& tried(double frame = 1) {
        DD::Image::Op& op = tree.at(frame);
        op.validate(true);
        return op;
    }

    // The picture of an op whose error, if it has one, the host looks past.
    Pixels picture(double frame = 1) {
        DD::Image::Op& op = tried(frame);
        DD::Image::Iop& iop = *op.iop();
        iop.request(DD::Image::Mask_RGBA, 1);
        iop.open();
        Pixels pixels(iop.info());
        for (int y = pixels.box.y(); y < pixels.box.t(); y++) {
            DD::Image::Row row(pixels.box.x(), pixels.box.r());
            iop.get(y, pixels.box.x(), pixels.box.r(), DD::Image::Mask_RGBA, row);
            pixels.take(row, y, pixels.box.x(), pixels.box.r());
        }
        iop.close();
        return pixels;
    }
};

} // namespace node_test
