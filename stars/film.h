// SPDX-License-Identifier: BSD-3-Clause

// The film window: the rectangle of the image plane that the image shows.
//
// Units:     film units: those of the camera's apertures and focal length (millimetres from a host)
//            with a camera; without one, half the image's height.
// Threads:   pure functions.
#pragma once

#include "stars/render_data.h"

namespace velmora {

// The window of a camera's apertures, centred on the axis.
void set_film_window(StarRendererData& data, double horizontal_aperture, double vertical_aperture);

// The window without a camera: ±width/height by ±1, in which the unit disc just fits the image's
// height.
void set_default_film_window(StarRendererData& data, int width, int height);

// How much wider a film unit comes out across x than across y on a width x height image.
double film_stretch(const StarRendererData& data, int width, int height);

} // namespace velmora
