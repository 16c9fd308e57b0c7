// From artists' controls and the host's camera to what the renderer takes.
//
// Units:     the host's matrices are 16 floats, column by column, for column vectors, camera to
//            world, looking along -z; its focal length and apertures are in millimetres.
// Threads:   pure functions.
#pragma once

#include "kessimage/image.h"
#include "stars/stars.h"

namespace velmora {

// Focal length of a view without a camera, in units of the default film window.
const double focal_without_camera = 3.2f;

// Whether an image of four floats per pixel stays below 4 GiB, which is as far as its sizes and
// positions are counted, and has any pixels at all.
bool image_fits(int width, int height);

// The most segments that are drawn. Each takes a camera of the host and a position of every star.
const int most_blur_segs = 100000;

// How many times the camera is sampled, and when: sample n of `blur_segs` + 1 is spread over the
// shutter; without segments there is one, at the frame itself. More than most_blur_segs count as
// none.
int camera_samples(int blur_segs);
double sample_time(double frame, int n, int blur_segs, double shutter, double shutter_offset);

// The projection of an index; indices that are none give the perspective one.
op_stars_projection projection_of_index(int index);

// 1 / bias; 100 for a bias of 0.
double bias_exponent_of(double bias);

// The renderer's camera for a host camera-to-world matrix: widened, z reversed on both sides, so
// that it looks along +z, and inverted. A singular matrix warns.
camera camera_of_host(const float columns[16], double focal);

// The film window of a camera's apertures, or, without a camera, ±width/height by ±1, in which the
// unit disc just fits the image's height.
void set_film_window(StarRendererData& data, double horizontal_aperture, double vertical_aperture);
void set_default_film_window(StarRendererData& data, int width, int height);

// How much wider a film unit comes out across x than across y on an image of this size.
double film_stretch(const StarRendererData& data, int width, int height);

// A view of a BGRA_FLOAT image, whose four floats per pixel the renderer takes as alpha, red,
// green, blue. It must not outlive the image.
StarFramebuffer framebuffer_of(const Kess::Image& image);

} // namespace velmora
