#include "tools/shot.h"

#include "host/lens.h"
#include "stars/setup.h"
#include "tools/failure.h"
#include "tools/numbers.h"

#include <algorithm>
#include <cmath>

namespace velmora {

// The host's camera as it is made.
static const double default_focal = 50;
static const double default_horizontal_aperture = 24.576;
static const double default_vertical_aperture = 18.672;

static void check_positive(const char* option, const std::optional<double>& value) {
    if (value && !(*value > 0))
        throw UsageFailure(option, "must be above 0");
}

static void check_lens(const CameraOptions& options, op_stars_projection projection) {
    check_positive("--focal", options.focal);
    check_positive("--haperture", options.horizontal_aperture);
    check_positive("--vaperture", options.vertical_aperture);
    if (!options.fov)
        return;
    if (!(*options.fov > 0 && *options.fov < 180))
        throw UsageFailure("--fov", "must lie between 0 and 180 degrees");
    if (projection != OP_STARS_PERSPECTIVE)
        throw UsageFailure("--fov", "is for the perspective projection only");
    if (options.focal)
        throw UsageFailure("--fov", "says the same as --focal");
}

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

static void check_connected(const CameraOptions& options) {
    const bool lens =
        options.focal || options.fov || options.horizontal_aperture || options.vertical_aperture;
    if (!options.connected && (lens || !options.chan_file.empty()))
        throw UsageFailure(
            "--no-camera",
            "leaves nothing for --camera, --focal, --fov, --haperture or --vaperture");
}

static Chan read_chan(const std::string& path) {
    try {
        return Chan::read(path);
    } catch (const ChanError& error) {
        throw WorkFailure(error.where, error.why);
    }
}

static Transform transform_of(const CameraOptions& options) {
    Transform transform;
    if (!options.translate.empty())
        std::copy_n(options.translate.begin(), 3, transform.translate.begin());
    if (!options.rotate.empty())
        std::copy_n(options.rotate.begin(), 3, transform.rotate.begin());
    if (!options.look_at.empty())
        transform.rotate = look_at_rotation(options.look_at[0], options.look_at[1],
                                            options.look_at.size() > 2 ? options.look_at[2] : 0);
    return transform;
}

Shot::Shot(const CameraOptions& options, op_stars_projection projection)
    : connected(options.connected), gives_view(options.gives_view()),
      horizontal_aperture(options.horizontal_aperture.value_or(default_horizontal_aperture)),
      vertical_aperture(options.vertical_aperture.value_or(default_vertical_aperture)),
      fixed_focal(options.focal) {
    check_lens(options, projection);
    check_view(options);
    check_connected(options);
    still = transform_of(options);
    if (options.fov)
        fixed_focal = focal_of_fov(*options.fov, horizontal_aperture);
    if (!options.chan_file.empty())
        chan = read_chan(options.chan_file);
}

std::optional<HostMatrix> Shot::view_without_camera() const {
    if (connected || !gives_view)
        return std::nullopt;
    return still.matrix();
}

// The host's matrices are of floats, which hold no more than 3e38.
static void check_finite(const HostMatrix& matrix, double time) {
    for (const float element : matrix)
        if (!std::isfinite(element))
            throw WorkFailure("camera at frame " + shortest_text(time),
                              "is placed too far away to be computed");
}

CameraSample Shot::sample(double time) const {
    CameraSample sample{still.matrix(), fixed_focal.value_or(default_focal)};
    if (!chan)
        return sample;
    const ChanSample line = chan->sample(time);
    sample.to_world = line.transform.matrix();
    // A lens given outright holds against the file's.
    if (line.vfov && !fixed_focal)
        sample.focal = focal_of_fov(*line.vfov, vertical_aperture);
    return sample;
}

Array<camera> Shot::cameras(const KnobValues& knobs, double frame) const {
    Array<camera> cameras;
    for (int n = 0; n < camera_samples(knobs.blur_segs); n++) {
        if (!connected) {
            cameras.append(camera_of_host(knobs.transform.data(), focal_without_camera));
            continue;
        }
        const double time =
            sample_time(frame, n, knobs.blur_segs, knobs.shutter, knobs.shutter_offset);
        const CameraSample at = sample(time);
        const HostMatrix to_world = multiply(at.to_world.data(), knobs.transform.data());
        check_finite(to_world, time);
        cameras.append(camera_of_host(to_world.data(), at.focal));
    }
    return cameras;
}

void Shot::set_window(const KnobValues& knobs, StarRendererData& data) const {
    if (connected)
        set_film_window(data, horizontal_aperture, vertical_aperture);
    else
        set_default_film_window(data, knobs.format.width, knobs.format.height);
}

} // namespace velmora
