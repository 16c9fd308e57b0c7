// SPDX-License-Identifier: BSD-3-Clause

// The node: stars of a database, seen through the comp's camera, as an image.
//
// Each validation turns the knobs and the camera's samples into what the renderer takes; opening
// renders the whole frame into an image of its own; engine copies its rows out.
//
// Inputs:    0 "parent", an axis, which is not read; 1 "cam", a camera, of which blur_segs + 1
//            copies are asked for, spread over the shutter.
// Units:     rows count from the bottom, as the host has them; the image's from the top.
// Errors:    reported by error(), with a black picture: formats without pixels or of 4 GiB and more,
//            and more segments than most_blur_segs, at every validation; a database that cannot be
//            opened, once until the path changes; one that was written to or cut short since it was
//            opened, at every opening. A database that another file has replaced is still drawn as
//            it was, with one warning on standard error. Other exceptions of the renderer leave
//            _open.
// Threads:   engine in any number of threads; everything else one at a time.
// Ownership: the host owns the node, the node its image and its star input.
#pragma once

#include "core/array.h"
#include "core/string.h"
#include "kessimage/image.h"
#include "stars/stars.h"

#include <DDImage/CameraOp.h>
#include <DDImage/Format.h>
#include <DDImage/Iop.h>
#include <DDImage/Knobs.h>
#include <DDImage/Matrix4.h>
#include <DDImage/Row.h>

class VelmoraNK : public DD::Image::Iop {
public:
    static const DD::Image::Op::Description d;

    explicit VelmoraNK(Node* node);
    ~VelmoraNK() override;

    // Description.
    const char* Class() const override;
    const char* node_help() const override;
    void knobs(DD::Image::Knob_Callback f) override;
    void append(DD::Image::Hash& hash) override;

    // Inputs.
    bool test_input(int n, DD::Image::Op* op) const override;
    DD::Image::Op* default_input(int n) const override;
    const char* input_label(int n, char* buffer) const override;
    int split_input(int n) const override;
    const DD::Image::OutputContext& inputContext(int n, int m,
                                                 DD::Image::OutputContext& scratch) const override;

    // The host's cycle: describe and read, open and draw, copy rows out, close.
    void _validate(bool for_real) override;
    void _request(int x, int y, int r, int t, DD::Image::ChannelMask channels, int count) override;
    void _open() override;
    void engine(int y, int x, int r, DD::Image::ChannelMask channels, DD::Image::Row& row) override;
    void _close() override;

    // What the knobs store: the host writes here, and the initial values are the defaults.
    double brightness = 5.0;
    double bias = 1.0;
    double saturation = 0.4;
    double tint_strength = 0.0;
    double tint_color[3] = {0.0, 0.0, 0.0};
    double lum_max = 0.5;
    double lum_threshold = 0.0001;
    double star_size = 2.5;
    double star_aspect = 1.0;
    s32 blur_segs = 1;
    double shutter = 0.5;
    double shutter_offset = 0.0;
    s32 projection = 0;      // menu index
    s32 projection_mode = 0; // the same once validated, unknown ones as 0
    bool threed = true;
    double parallax = 100.0;
    bool anamorphic_dof = false; // kept with the node; not read
    const char* starfile = "";
    String starfile_loaded; // the path of the last attempt to open, whatever came of it
    DD::Image::FormatPair formats;
    DD::Image::Matrix4 transform;
    DD::Image::Matrix4 camera_matrix; // of the last sample, with `transform`

    // What the renderer takes, as of the last validation.
    StarRendererData render_data = {};
    Array<camera> cameras; // one per sample

    velmora::RenderCounts counts = {}; // of the last opening

    Kess::Image* image = nullptr;    // owned; from _open to _close, null when nothing can be drawn
    StarInput* star_input = nullptr; // owned; the open database, kept from frame to frame

private:
    bool warned_of_replacement = false; // that another file has the open database's name

    // Steps of _validate and of _open. The bools: whether there is nothing to draw, and whether all
    // stars were still there.
    bool refuse_sizes();
    void draw_star_file();
    bool draw_stars();
    void describe_output();
    const DD::Image::CameraOp* sample_cameras(bool for_real);
    void fill_render_data();
    void open_star_file();
};

// A new node's op, in the host's wrapper without mix and mask.
DD::Image::Op* VelmoraNKCreate(Node* node);
