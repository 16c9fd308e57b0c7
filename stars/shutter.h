// SPDX-License-Identifier: BSD-3-Clause

// When the camera is sampled for motion blur.
//
// Units:     frames.
// Threads:   pure functions.
#pragma once

namespace velmora {

// The most segments that are drawn. Each takes a camera of the host and a position of every star.
const int most_blur_segs = 100000;

// How many times the camera is sampled: blur_segs + 1, or once when blur_segs is below 1 or above
// most_blur_segs.
int camera_samples(int blur_segs);

// The time of sample n of camera_samples(blur_segs): spread evenly over the shutter, or the frame
// itself without segments.
double sample_time(double frame, int n, int blur_segs, double shutter, double shutter_offset);

} // namespace velmora
