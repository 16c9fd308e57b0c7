// SPDX-License-Identifier: BSD-3-Clause
#include "tools/comp/camera.h"

#include "host/knobs/number_knob.h"
#include "host/script/chan.h"
#include "host/script/lens.h"
#include "host/script/transform.h"
#include "stars/render_data.h"
#include "tools/comp/look_at.h"
#include "tools/comp/star_node.h"
#include "tools/failure.h"
#include "tools/files/text_file.h"

#include <cmath>
#include <memory>

namespace velmora {

// ---- what does not go together -----------------------------------------------------------------

bool CameraOptions::given() const {
    return !connected || !chan_file.empty() || focal || horizontal_aperture || vertical_aperture ||
           fov || gives_view();
}

static void check_positive(const char* option, const std::optional<double>& value) {
    if (value && !(*value > 0))
        throw UsageFailure(option, "must be above 0");
}

// A field of view replaces the focal length, and only the perspective projection has one.
static void check_lens(const CameraOptions& options, const Node& stars) {
    check_positive("--focal", options.focal);
    check_positive("--haperture", options.horizontal_aperture);
    check_positive("--vaperture", options.vertical_aperture);
    if (!options.fov)
        return;
    if (!(*options.fov > 0 && *options.fov < 180))
        throw UsageFailure("--fov", "must lie between 0 and 180 degrees");
    const int projection = int(stars.knob("projection")->get_value_at(0, 0));
    if (projection_of_index(projection) != OP_STARS_PERSPECTIVE)
        throw UsageFailure("--fov", "is for the perspective projection only");
    if (options.focal)
        throw UsageFailure("--fov", "says the same as --focal");
}

// The file, --look-at and --rotate each give the rotation.
static void check_view(const CameraOptions& options) {
    if (!options.chan_file.empty()) {
        const char* const why = "is what the --camera file says";
        if (!options.translate.empty())
            throw UsageFailure("--translate", why);
        if (!options.rotate.empty())
            throw UsageFailure("--rotate", why);
        if (!options.look_at.empty())
            throw UsageFailure("--look-at", why);
    }
    if (options.look_at.empty())
        return;
    if (!options.rotate.empty())
        throw UsageFailure("--look-at", "turns the camera, as --rotate does");
    if (std::fabs(options.look_at[0]) > 360)
        throw UsageFailure("--look-at",
                           "the right ascension must lie between -360 and 360 degrees");
    if (std::fabs(options.look_at[1]) > 90)
        throw UsageFailure("--look-at", "the declination must lie between -90 and 90 degrees");
}

// Without a camera there is no lens to set and nothing to move.
static void check_connected(const CameraOptions& options) {
    const bool lens =
        options.focal || options.fov || options.horizontal_aperture || options.vertical_aperture;
    if (!options.connected && (lens || !options.chan_file.empty()))
        throw UsageFailure(
            "--no-camera",
            "leaves nothing for --camera, --focal, --fov, --haperture or --vaperture");
}

// ---- the camera --------------------------------------------------------------------------------

static void set_three(Node& node, const char* name, const std::vector<double>& numbers) {
    for (std::size_t i = 0; i < numbers.size(); i++)
        node.knob(name)->set_value(numbers[i], int(i));
}

static void set_one(Node& node, const char* name, const std::optional<double>& number) {
    if (number)
        node.knob(name)->set_value(*number);
}

// A camera and the node's own transform have the same axis knobs.
static void set_view(Node& node, const CameraOptions& options) {
    set_three(node, "translate", options.translate);
    set_three(node, "rotate", options.rotate);
    if (options.look_at.empty())
        return;
    const double roll = options.look_at.size() > 2 ? options.look_at[2] : 0;
    const auto rotate = look_at_rotation(options.look_at[0], options.look_at[1], roll);
    set_three(node, "rotate", {rotate.begin(), rotate.end()});
}

std::shared_ptr<const host::Chan> read_chan(const std::string& path) {
    try {
        return std::make_shared<host::Chan>(host::Chan::parse(read_text_file(path), path));
    } catch (const host::ChanError& error) {
        throw WorkFailure(error.where, error.why);
    }
}

static host::NumberKnob& number_knob(const Node& node, const char* name) {
    return dynamic_cast<host::NumberKnob&>(*node.knob(name));
}

// Moves the camera as the file says. A focal length given as an option overrides the file's.
static void follow(Node& camera, const std::string& path, bool with_lens) {
    const std::shared_ptr<const host::Chan> chan = read_chan(path);
    for (std::size_t i = 0; i < 3; i++) {
        number_knob(camera, "translate").follow(int(i), [chan, i](double time) {
            return chan->sample(time).transform.translate[i];
        });
        number_knob(camera, "rotate").follow(int(i), [chan, i](double time) {
            return chan->sample(time).transform.rotate[i];
        });
    }
    if (!chan->has_vfov() || !with_lens)
        return;
    const double aperture = camera.knob("vaperture")->get_value_at(0, 0);
    number_knob(camera, "focal").follow(0, [chan, aperture](double time) {
        return host::focal_of_fov(*chan->sample(time).vfov, aperture);
    });
}

void add_camera(host::Graph& graph, Node& stars, const CameraOptions& options) {
    // Check what excludes what.
    check_lens(options, stars);
    check_view(options);
    check_connected(options);
    // Without a camera the node's own transform turns the sky.
    if (!options.connected) {
        if (options.gives_view())
            set_view(stars, options);
        return;
    }
    Node& camera = graph.create("Camera2");
    // Apertures first: the focal length of a field of view depends on them.
    set_one(camera, "haperture", options.horizontal_aperture);
    set_one(camera, "vaperture", options.vertical_aperture);
    set_one(camera, "focal", options.focal);
    if (options.fov)
        set_one(camera, "focal",
                host::focal_of_fov(*options.fov, camera.knob("haperture")->get_value_at(0, 0)));
    // Place it, or let it follow the file.
    set_view(camera, options);
    if (!options.chan_file.empty())
        follow(camera, options.chan_file, !options.focal && !options.fov);
    stars.set_input(star_camera_input, &camera);
}

} // namespace velmora
