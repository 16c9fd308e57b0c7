#include "tools/shot.h"

#include "host/lens.h"
#include "stars/setup.h"
#include "tools/failure.h"

namespace velmora {

// The host's camera as it is made.
static const double default_focal = 50;
static const double default_horizontal_aperture = 24.576;
static const double default_vertical_aperture = 18.672;

static void check_positive(const char* option, const std::optional<double>& value) {
    if (value && !(*value > 0))
        throw UsageFailure(option, "must be above 0");
}

static void check_exclusive(bool first, bool second, const char* what, const char* why) {
    if (first && second)
        throw UsageFailure(what, why);
}

static void check(const CameraOptions& options, op_stars_projection projection) {
    check_positive("--focal", options.focal);
    check_positive("--haperture", options.horizontal_aperture);
    check_positive("--vaperture", options.vertical_aperture);
    if (options.fov && !(*options.fov > 0 && *options.fov < 180))
        throw UsageFailure("--fov", "must lie between 0 and 180 degrees");
    check_exclusive(bool(options.fov), projection != OP_STARS_PERSPECTIVE, "--fov",
                    "is for the perspective projection only");
    check_exclusive(bool(options.fov), bool(options.focal), "--fov", "says the same as --focal");

    const bool from_file = !options.chan_file.empty();
    check_exclusive(from_file, !options.translate.empty(), "--translate",
                    "is what the --camera file says");
    check_exclusive(from_file, !options.rotate.empty(), "--rotate",
                    "is what the --camera file says");
    check_exclusive(from_file, !options.look_at.empty(), "--look-at",
                    "is what the --camera file says");
    check_exclusive(!options.rotate.empty(), !options.look_at.empty(), "--look-at",
                    "turns the camera, as --rotate does");

    const bool lens =
        options.focal || options.fov || options.horizontal_aperture || options.vertical_aperture;
    check_exclusive(!options.connected, lens || from_file, "--no-camera",
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

Shot::Shot(const CameraOptions& options, KnobValues& knobs)
    : connected(options.connected),
      horizontal_aperture(options.horizontal_aperture.value_or(default_horizontal_aperture)),
      vertical_aperture(options.vertical_aperture.value_or(default_vertical_aperture)),
      fixed_focal(options.focal), still(transform_of(options)) {
    check(options, projection_of_index(knobs.projection));
    if (options.fov)
        fixed_focal = focal_of_fov(*options.fov, horizontal_aperture);
    if (!options.chan_file.empty())
        chan = read_chan(options.chan_file);

    const bool oriented =
        !options.translate.empty() || !options.rotate.empty() || !options.look_at.empty();
    if (!connected && oriented)
        knobs.transform = still.matrix();
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
