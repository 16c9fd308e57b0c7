// SPDX-License-Identifier: BSD-3-Clause
#include "node/VelmoraNK.h"

#include "core/xception.h"
#include "node/doors.h"
#include "node/sdk.h"
#include "stars/film.h"
#include "stars/host_camera.h"
#include "stars/shutter.h"

#include <algorithm>
#include <cmath>
#include <DDImage/NukeWrapper.h>
#include <memory>

using namespace DD::Image;

static const char* const projection_names[] = {"Perspective", "Hemispherical",
                                               "Azimuthal Equidistant", nullptr};

enum { INPUT_PARENT, INPUT_CAMERA, INPUTS };

const Op::Description VelmoraNK::d("VelmoraNK", &VelmoraNKCreate);

Op* VelmoraNKCreate(Node* node) {
    return (new NukeWrapper(new VelmoraNK(node)))->noMix()->noMask();
}

VelmoraNK::VelmoraNK(Node* node) : Iop(node) {
    transform.makeIdentity();
    camera_matrix.makeIdentity();
    Op::inputs(INPUTS);
}

VelmoraNK::~VelmoraNK() {
    try {
        delete star_input;
    } catch (const Xception& exception) {
        exception.print(); // a file that cannot be unmapped must not end the host
    }
    delete image;
}

const char* VelmoraNK::Class() const {
    return d.name;
}

const char* VelmoraNK::node_help() const {
    return "Velmora: Renders realistic star fields.\n"
           "------------------------------------------\n";
}

// ---- knobs -------------------------------------------------------------------------------------

// A slider over [low, high]. It is logarithmic when `low` is 0 and `high` the square of a whole
// number.
static void slider(Knob_Callback f, double* value, const char* name, const char* label, double low,
                   double high, Knob::FlagMask flags = 0) {
    Float_knob(f, value, name, label);
    SetRange(f, low, high);
    if (low == 0 && std::fmod(std::sqrt(high), 1) == 0)
        flags |= Knob::LOG_SLIDER;
    if (flags)
        SetFlags(f, flags);
}

void VelmoraNK::knobs(Knob_Callback f) {
    Format_knob(f, &formats, "format");
    slider(f, &brightness, "brightness", "Star Brightness", 0, 20);
    slider(f, &bias, "bias", "Brightness Bias", 0, 5);
    slider(f, &saturation, "saturation", "Star Saturation", 0, 1);
    slider(f, &tint_strength, "tint_strength", "Tint Strength", 0, 1);
    Color_knob(f, tint_color, "tint_color", "Tint Color");
    slider(f, &lum_max, "lum_max", "Maximum Luminance", 0, 2);
    slider(f, &lum_threshold, "lum_threshold", "Luminance Threshold", 0, 0.1);
    slider(f, &star_size, "star_size", "Star Spot Size", 0, 10);
    slider(f, &star_aspect, "star_aspect", "Star Aspect Ratio", 0, 4);
    // The shutter decides how many cameras are asked for, and when: the host needs it early.
    Int_knob(f, &blur_segs, "blur_segs", "Motion Blur Segments");
    SetRange(f, 0, 10);
    SetFlags(f, Knob::EARLY_STORE);
    slider(f, &shutter, "shutter", "Shutter Duration", 0, 2, Knob::EARLY_STORE);
    slider(f, &shutter_offset, "shutter_offset", "Shutter Open Offset", -1, 1, Knob::EARLY_STORE);
    Enumeration_knob(f, &projection, projection_names, "projection", "Projection");
    Bool_knob(f, &threed, "threed", "Enable 3D Stars");
    slider(f, &parallax, "parallax", "Parallax Crush", 0, 100);
    Bool_knob(f, &anamorphic_dof, "anamorphic_dof", "Anamorphic DOF");
    File_knob(f, &starfile, "starfile", "Star Database File");
    Axis_knob(f, &transform, "transform");
}

// The knobs reach the hash through the host; the axis knob's matrix does not.
void VelmoraNK::append(Hash& hash) {
    Op::append(hash);
    for (int i = 0; i < 16; i++)
        hash.append(transform.array()[i]);
}

// ---- inputs ------------------------------------------------------------------------------------

bool VelmoraNK::test_input(int n, Op* op) const {
    switch (n) {
    case INPUT_PARENT:
        return !op || dynamic_cast<AxisOp*>(op);
    case INPUT_CAMERA:
        return !op || dynamic_cast<CameraOp*>(op);
    default:
        return Iop::test_input(n, op);
    }
}

Op* VelmoraNK::default_input(int) const {
    return nullptr;
}

const char* VelmoraNK::input_label(int n, char* buffer) const {
    switch (n) {
    case INPUT_PARENT:
        return "parent";
    case INPUT_CAMERA:
        return "cam";
    default:
        return Op::input_label(n, buffer);
    }
}

// As many copies of the camera as there are samples.
int VelmoraNK::split_input(int n) const {
    return n == INPUT_CAMERA ? velmora::camera_samples(blur_segs) : 1;
}

// Each copy of the camera is asked for at its sample's time.
const OutputContext& VelmoraNK::inputContext(int n, int m, OutputContext& scratch) const {
    if (n != INPUT_CAMERA)
        return outputContext();
    scratch = outputContext();
    scratch.setFrame(velmora::sample_time(scratch.frame(), m, blur_segs, shutter, shutter_offset));
    return scratch;
}

// ---- validation --------------------------------------------------------------------------------

void VelmoraNK::_validate(bool for_real) {
    describe_output();
    if (refuse_sizes())
        return;

    // Cameras, parameters, and the film window: the last sample decides it.
    const CameraOp* const last = sample_cameras(for_real);
    fill_render_data();
    if (last)
        velmora::set_film_window(render_data, velmora::horizontal_aperture(*last),
                                 velmora::vertical_aperture(*last));
    else
        velmora::set_default_film_window(render_data, format().width(), format().height());

    // Star database.
    open_star_file();
}

void VelmoraNK::describe_output() {
    info_.format(*formats.format());
    info_.full_size_format(*formats.fullSizeFormat());
    info_.set(info_.format());
    info_.channels(Mask_RGBA);
    set_out_channels(Mask_RGBA);
}

// Whether the format or the segments cannot be drawn; reports why.
bool VelmoraNK::refuse_sizes() {
    const int width = format().width(), height = format().height();
    if (width <= 0 || height <= 0)
        error("Format %d x %d has no pixels", width, height);
    else if (!velmora::image_fits(width, height))
        error("Format %d x %d is too large: an image takes 16 bytes per pixel and must stay below "
              "4 GiB",
              width, height);
    else if (blur_segs > velmora::most_blur_segs)
        error("Motion Blur Segments %d are too many: the most is %d", blur_segs,
              velmora::most_blur_segs);
    else
        return false;
    return true;
}

// Fills `cameras`. Returns the camera op of the last sample, null without one.
const CameraOp* VelmoraNK::sample_cameras(bool for_real) {
    CameraOp* sample = nullptr;
    cameras.clear();
    for (int n = 0; n < velmora::camera_samples(blur_segs); n++) {
        // Camera to world: the camera input's, or the transform alone.
        double focal = velmora::focal_without_camera;
        camera_matrix = transform;
        sample = dynamic_cast<CameraOp*>(Op::input(INPUT_CAMERA, n));
        if (sample) {
            sample->validate(for_real);
            camera_matrix = velmora::camera_to_world(*sample) * transform;
            focal = velmora::focal_length(*sample);
        }
        cameras.append(velmora::camera_of_host(camera_matrix.array(), focal));
    }
    return sample;
}

void VelmoraNK::fill_render_data() {
    projection_mode = velmora::projection_of_index(projection);
    render_data.projection = op_stars_projection(projection_mode);
    render_data.spot_width = star_size * star_aspect;
    render_data.star_size = star_size;
    render_data.lum_threshold = lum_threshold;
    render_data.lum_max = lum_max;
    render_data.brightness = brightness;
    render_data.saturation = saturation;
    render_data.bias_exponent = velmora::bias_exponent_of(bias);
    render_data.tint_strength = tint_strength;
    render_data.parallax = parallax;
    for (int k = 0; k < 3; k++)
        render_data.tint_color[k] = float(tint_color[k]);
    render_data.threed = threed;
    render_data.lines = OP_STARS_LINES_ALL;
}

// Opens the database when the path has changed, so that a failure is reported once.
void VelmoraNK::open_star_file() {
    const String path(starfile);
    if (path == starfile_loaded)
        return;
    starfile_loaded = path;
    warned_of_replacement = false;
    StarInput* opened = nullptr;
    if (path.str) {
        try {
            opened = op_stars_file_input(path.str);
        } catch (const Xception&) {
            error("Star database file '%s' is missing or invalid", path.str);
        }
    }
    StarInput* const old = star_input;
    star_input = opened;
    delete old;
}

// ---- picture -----------------------------------------------------------------------------------

// Nothing is read from the inputs' images.
void VelmoraNK::_request(int, int, int, int, ChannelMask, int) {}

namespace {

// Puts the input back to its header when drawing ends, even by an exception, for the next frame.
struct Rewound {
    StarInput& input;
    explicit Rewound(StarInput& input) : input(input) {}
    ~Rewound() { input.reset(); }
};

} // namespace

void VelmoraNK::_open() {
    counts = {};
    velmora::note_opening(counts);
    const int width = format().width(), height = format().height();
    if (!velmora::image_fits(width, height) || blur_segs > velmora::most_blur_segs) {
        _close();
        return;
    }

    // A blank image.
    auto fresh =
        std::make_unique<Kess::Image>(Kess::ImageSpec(width, height, Kess::ImageSpec::BGRA_FLOAT));
    delete image;
    image = fresh.release();
    image->make_blank();

    // The stars.
    if (star_input)
        draw_star_file();
    velmora::note_opening(counts);
}

static velmora::SinceOpened since_opened(const StarInput& input) {
    const auto* const file = dynamic_cast<const MMAPStarFile*>(&input);
    return file ? file->since_opened() : velmora::SinceOpened::unchanged;
}

// Checks the file before and after drawing, so that no picture mixes two states of it.
void VelmoraNK::draw_star_file() {
    const velmora::SinceOpened before = since_opened(*star_input);
    if (before == velmora::SinceOpened::replaced && !warned_of_replacement) {
        warned_of_replacement = true;
        Xception::warning(__PRETTY_FUNCTION__,
                          "Star database file '%s' was replaced since it was opened; the old one "
                          "is drawn until the path is changed",
                          starfile_loaded.str);
    }
    if (before != velmora::SinceOpened::changed && draw_stars() &&
        since_opened(*star_input) != velmora::SinceOpened::changed)
        return;
    counts = {};
    image->make_blank();
    error("Star database file '%s' was written to or cut short since it was opened; it is not "
          "drawn until the path is changed",
          starfile_loaded.str);
}

// Returns whether all stars were still there.
bool VelmoraNK::draw_stars() {
    const StarFramebuffer framebuffer = velmora::framebuffer_of(*image);
    const Rewound rewound(*star_input);
    try {
        StarRenderer renderer(render_data, framebuffer, *star_input, cameras);
        bool drew = false;
        renderer.render_all(drew);
        counts = renderer.counts();
    } catch (const velmora::StarsLost&) {
        return false;
    }
    return true;
}

// Copies the part of the row that lies in the image; the rest is black.
void VelmoraNK::engine(int y, int x, int r, ChannelMask, Row& row) {
    if (aborted())
        return;
    float* const red = row.writable(Chan_Red);
    float* const green = row.writable(Chan_Green);
    float* const blue = row.writable(Chan_Blue);
    float* const alpha = row.writable(Chan_Alpha);

    // Columns [begin, end) have pixels; the rest is black.
    const bool has_row = image && y >= 0 && y < image->height;
    const int begin = has_row ? std::max(x, 0) : r;
    const int end = has_row ? std::min(r, image->width) : r;
    for (float* const channel : {red, green, blue, alpha}) {
        for (int column = x; column < std::min(begin, r); column++)
            channel[column] = 0;
        for (int column = std::max(end, x); column < r; column++)
            channel[column] = 0;
    }
    if (begin >= end)
        return;

    // The host counts rows from the bottom, the image from the top.
    const StarFramebuffer source = velmora::framebuffer_of(*image);
    const std::ptrdiff_t first = std::ptrdiff_t(source.height - 1 - y) * source.row_stride;
    for (int column = begin; column < end; column++) {
        const std::ptrdiff_t at = first + std::ptrdiff_t(column) * source.pixel_stride;
        red[column] = source.red[at];
        green[column] = source.green[at];
        blue[column] = source.blue[at];
        alpha[column] = source.alpha[at];
    }
}

void VelmoraNK::_close() {
    delete image;
    image = nullptr;
}
