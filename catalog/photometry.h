// SPDX-License-Identifier: BSD-3-Clause

// From catalogue magnitudes and colour indices to a record's flux and colour bytes, and back.
//
// Units:     V and B-V in Johnson magnitudes, flux linear with V = 0 at 1, temperatures in kelvin.
// Errors:    none. Outside a formula's range the nearest end of the range is used, as said below.
//            REQUIRES: no argument is NaN.
// Threads:   pure functions of their arguments.
// Accuracy:  for magnitudes in [-90, 90] the flux is exact to 2e-14 of itself, the magnitude to
//            4e-14. A colour byte is at most 1 from what a finer sampling of the spectrum gives.
// Source:    B-V to temperature: Ballesteros 2012, EPL 97, 34008. Colour-matching functions: the
//            multi-lobe fits of Wyman, Sloan & Shirley 2013, JCGT 2(2). XYZ to sRGB and its
//            transfer curve: IEC 61966-2-1.
#pragma once

namespace velmora {

// 10^(-0.4 v): 1 for magnitude 0, and 100 times less for every 5 magnitudes more.
double flux_of_magnitude(double v);

// The inverse of flux_of_magnitude. REQUIRES: flux > 0.
double magnitude_of_flux(double flux);

// The range of colour indices: values outside are noise, and the formula has its pole at -0.67.
const double bluest_bv = -0.4;
const double reddest_bv = 3.0;

// The temperature of the black body with this B-V, which is clamped to [bluest_bv, reddest_bv]. It
// describes the star's colour: a hot star's effective temperature is far higher.
double temperature_of_bv(double bv);

// sRGB-encoded bytes, brightest channel 255: they carry the hue, the flux carries the brightness.
struct ColorBytes {
    unsigned char red, green, blue;
};

// A star of unknown colour is white.
const ColorBytes unknown_color = {255, 255, 255};

// The range that color_of_temperature distinguishes: below it, black bodies are pure red in sRGB.
const double coolest = 500;
const double hottest = 1e6;

// The colour of a black body, whose temperature is clamped to [coolest, hottest].
ColorBytes color_of_temperature(double kelvin);

// color_of_temperature of temperature_of_bv.
ColorBytes color_of_bv(double bv);

} // namespace velmora
