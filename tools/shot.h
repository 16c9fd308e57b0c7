// The camera of a shot as the command line describes it, sampled as the node samples its camera.
//
// Units:     focal length and apertures in millimetres, angles in degrees, translation in scene units.
// Errors:    UsageFailure for options that contradict each other or are out of range, WorkFailure for a
//            camera file that cannot be read or is malformed.
#pragma once

#include "host/chan.h"
#include "host/transform.h"
#include "tools/knobs.h"

#include <optional>
#include <string>

namespace velmora {

// What the user asked for; what is not given stays empty.
struct CameraOptions {
    bool connected = true; // false leaves the node's camera input open
    std::string chan_file;
    std::optional<double> focal, horizontal_aperture, vertical_aperture;
    std::optional<double> fov; // horizontal
    std::vector<double> translate, rotate;
    std::vector<double> look_at; // right ascension, declination and, if given, roll

    // Whether the camera is placed or turned outright.
    bool gives_view() const { return !translate.empty() || !rotate.empty() || !look_at.empty(); }
};

struct CameraSample {
    HostMatrix to_world;
    double focal;
};

class Shot {
public:
    // Checks the options and reads the camera file. A field of view needs the perspective projection.
    Shot(const CameraOptions& options, op_stars_projection projection);

    // What the node's transform knob is to be: without a camera, it takes the view that the options give.
    std::optional<HostMatrix> view_without_camera() const;

    // The cameras of the samples within the shutter that opens at `frame`.
    Array<camera> cameras(const KnobValues& knobs, double frame) const;

    // Fills the film window, which follows the format when there is no camera.
    void set_window(const KnobValues& knobs, StarRendererData& data) const;

private:
    bool connected;
    bool gives_view;
    double horizontal_aperture, vertical_aperture;
    std::optional<double> fixed_focal; // given outright, or by the field of view
    std::optional<Chan> chan;
    Transform still;

    CameraSample sample(double time) const;
};

} // namespace velmora
