// SPDX-License-Identifier: BSD-3-Clause

// The node's pictures against those that the renderer draws by itself.
#include "host/script/transform.h"
#include "stars/film.h"
#include "stars/host_camera.h"
#include "stars/shutter.h"
#include "tests/node/comp.h"
#include "tests/node/sky.h"

#include <functional>
#include <sstream>

using namespace node_test;
using DD::Image::Box;
typedef DD::Image::Matrix4 HostMatrix4;

namespace {

struct Shot {
    const char* what;
    DD::Image::Format format;
    const char* magic;
    const char* knobs;                           // "knob value; knob value"
    std::function<void(StarRendererData&)> same; // what they come to
    std::vector<double> times;                   // of the samples at frame 10
    const char* camera = nullptr;                // its knobs; null for none
    const char* parent = nullptr;                // of the camera
};

void set_all(Node& node, const char* knobs) {
    std::istringstream settings(knobs);
    for (std::string setting; std::getline(settings, setting, ';');) {
        const std::size_t name = setting.find_first_not_of(' ');
        const std::size_t value = setting.find(' ', name);
        set(node, setting.substr(name, value - name), setting.substr(value + 1));
    }
}

const DD::Image::Format small(24, 16), square(24, 24);

const Shot shots[] = {
    {"as it is created", small, "VELMORA1", "", {}, {10, 10.5}},
    {"the disc, one sample",
     DD::Image::Format(20, 20),
     "VELMORA1",
     "projection Hemispherical; blur_segs 0",
     [](StarRendererData& d) { d.projection = OP_STARS_HEMISPHERICAL; },
     {10}},
    {"the equidistant disc",
     DD::Image::Format(31, 17),
     "VELMORA2",
     "projection 2; parallax 0; rotate 5 40 10; translate 0.3 0 0.1",
     [](StarRendererData& d) {
         d.projection = OP_STARS_AZIMUTHAL_EQUIDISTANT;
         d.parallax = 0;
     },
     {10, 10.5}},
    {"another look",
     DD::Image::Format(40, 12),
     "VELMORA1",
     "brightness 0.7; bias 2; saturation 1.2; tint_strength 0.3; tint_color 0.1 0.6 0.9; "
     "lum_max 0.2; lum_threshold 0.01; star_size 40; star_aspect 2.5",
     [](StarRendererData& d) {
         d.brightness = 0.7;
         d.bias_exponent = 0.5;
         d.saturation = 1.2;
         d.tint_strength = 0.3;
         d.tint_color = {{0.1f, 0.6f, 0.9f}};
         d.lum_max = 0.2;
         d.lum_threshold = 0.01;
         d.star_size = 40;
         d.spot_width = 100;
     },
     {10, 10.5}},
    {"no bias at all",
     small,
     "VELMORA1",
     "bias 0",
     [](StarRendererData& d) { d.bias_exponent = 100; },
     {10, 10.5}},
    {"distances switched off",
     square,
     "VELMORA2",
     "threed false; parallax 0; translate 1 1 1",
     [](StarRendererData& d) {
         d.threed = false;
         d.parallax = 0;
     },
     {10, 10.5}},
    {"a camera at rest", small, "VELMORA1", "", {}, {10, 10.5}, "focal 30"},
    {"a panning camera",
     DD::Image::Format(32, 18),
     "VELMORA1",
     "blur_segs 4; shutter 2; shutter_offset -1",
     {},
     {9, 9.5, 10, 10.5, 11},
     "rotate 2 {curve L x0 -20 x20 20} 5; focal {curve L x0 20 x20 40}; "
     "haperture {curve L x0 20 x20 30}"},
    {"a flight on an axis",
     square,
     "VELMORA2",
     "blur_segs 2; shutter 1; parallax 1; rotate 0 0 15",
     [](StarRendererData& d) { d.parallax = 1; },
     {10, 10.5, 11},
     "translate 0.2 0 {curve L x0 0 x20 -4}; focal 25",
     "rotate 3 -4 0; scaling 1 1 1.5"},
};

StarRendererData data_by_default() {
    StarRendererData d = {};
    d.brightness = 5;
    d.bias_exponent = 1;
    d.saturation = 0.4;
    d.lum_max = 0.5;
    d.lum_threshold = 0.0001;
    d.star_size = d.spot_width = 2.5;
    d.parallax = 100;
    d.threed = true;
    return d;
}

// The axis of a node at a time, as its knobs have it.
HostMatrix4 placed(Node& node, double time) {
    const auto three = [&](const char* knob) {
        std::array<double, 3> values;
        for (int i = 0; i < 3; i++)
            values[std::size_t(i)] = node.knob(knob)->get_value_at(time, i);
        return values;
    };
    velmora::host::Transform transform;
    transform.translate = three("translate");
    transform.rotate = three("rotate");
    transform.scaling = three("scaling");
    return HostMatrix4(transform.matrix().data());
}

// The same shot by the renderer alone, into an image of its own.
void draw(const Shot& shot, Comp& comp, Node* camera_node, Node* parent,
          const std::string& star_file, Kess::Image& image) {
    StarRendererData data = data_by_default();
    if (shot.same)
        shot.same(data);
    velmora::set_default_film_window(data, shot.format.width(), shot.format.height());
    const HostMatrix4 transform = placed(comp.stars, 10);
    Array<camera> cameras;
    for (const double time : shot.times) {
        HostMatrix4 to_world = transform;
        double focal = velmora::focal_without_camera;
        if (camera_node) {
            HostMatrix4 place = placed(*camera_node, time);
            if (parent)
                place = placed(*parent, time) * place;
            to_world = place * transform;
            focal = camera_node->knob("focal")->get_value_at(time);
            velmora::set_film_window(data, camera_node->knob("haperture")->get_value_at(time),
                                     camera_node->knob("vaperture")->get_value_at(time));
        }
        cameras.append(velmora::camera_of_host(to_world.array(), focal));
    }
    image.make_blank();
    const std::unique_ptr<StarInput> input(op_stars_file_input(star_file.c_str()));
    const StarFramebuffer framebuffer = velmora::framebuffer_of(image);
    StarRenderer renderer(data, framebuffer, *input, cameras);
    bool drew = false;
    for (u32 i = 1; i < input->count && renderer.render_star(drew); i++) {
    }
}

// An image as the host counts its rows.
Pixels pixels_of(const Kess::Image& image) {
    Pixels pixels(Box(0, 0, image.width, image.height));
    const float* sample = reinterpret_cast<const float*>(image.data);
    for (int y = image.height - 1; y >= 0; y--)
        for (int x = 0; x < image.width; x++, sample += 4) {
            std::copy(sample + 1, sample + 4, pixels.at(x, y));
            pixels.at(x, y)[3] = sample[0];
        }
    return pixels;
}

} // namespace

TEST(NodePictures, AreTheRenderersBitForBit) {
    const ScratchFolder folder;
    for (const Shot& shot : shots) {
        SCOPED_TRACE(shot.what);
        const std::string star_file = folder.write("sky", sky(200, 3, shot.magic));
        Comp comp;
        comp.graph.set_format(shot.format);
        comp.set_star_file(star_file);
        set_all(comp.stars, shot.knobs);
        Node* const camera = shot.camera ? &comp.connect_camera() : nullptr;
        if (camera)
            set_all(*camera, shot.camera);
        Node* const parent = shot.parent ? &comp.graph.create("Axis2") : nullptr;
        if (parent) {
            set_all(*parent, shot.parent);
            ASSERT_TRUE(camera->set_input(0, parent));
        }

        Kess::Image image(Kess::ImageSpec(shot.format.width(), shot.format.height(),
                                          Kess::ImageSpec::BGRA_FLOAT));
        draw(shot, comp, camera, parent, star_file, image);
        const Pixels expected = pixels_of(image);
        EXPECT_FALSE(expected.is_black());
        EXPECT_TRUE(same_bits(comp.picture(10), expected));
    }
}
