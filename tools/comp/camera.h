// SPDX-License-Identifier: BSD-3-Clause

// The camera that the command line describes, as a camera node of a comp.
//
// Units:     focal length and apertures in millimetres, angles in degrees, translation in scene
//            units.
// Errors:    UsageFailure for options that contradict each other or are out of range, WorkFailure
//            for a camera file that cannot be read or is malformed.
#pragma once

#include "host/runtime/graph.h"
#include "host/script/chan.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace velmora {

// The camera options; those not given are empty.
struct CameraOptions {
    bool connected = true; // false leaves the node's camera input open
    std::string chan_file;
    std::optional<double> focal, horizontal_aperture, vertical_aperture;
    std::optional<double> fov; // horizontal
    std::vector<double> translate, rotate;
    std::vector<double> look_at; // right ascension, declination and, if given, roll

    // Whether a position, rotation or direction is given as an option.
    bool gives_view() const { return !translate.empty() || !rotate.empty() || !look_at.empty(); }

    // Whether any camera option is given.
    bool given() const;
};

// The camera file at `path`.
std::shared_ptr<const host::Chan> read_chan(const std::string& path);

// Makes the camera and connects it to `stars`, whose projection a field of view needs to be the
// perspective one. Without a camera the view, if one is given, goes into the node's transform.
void add_camera(host::Graph& graph, Node& stars, const CameraOptions& options);

} // namespace velmora
