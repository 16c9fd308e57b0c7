// SPDX-License-Identifier: BSD-3-Clause

// The host's camera text form, `.chan`: one line per frame with seven or eight numbers.
//
//     frame  tx ty tz  rx ry rz  [vfov]
//
// Units:     translation in scene units; rotation and vertical field of view in degrees, the
//            rotation in the order of Transform, the field of view strictly between 0 and 180.
// Shapes:    blanks and tabs separate the numbers; lines end in LF or CRLF. Empty lines are
//            skipped, as is everything from a # at the start of a word to the end of the line. All
//            lines have the same number of columns; frames increase and may be fractions.
// Errors:    ChanError, at the first line that is wrong.
// Threads:   a Chan is immutable.
#pragma once

#include "host/script/transform.h"
#include "text/text_error.h"

#include <optional>
#include <string>
#include <vector>

namespace velmora::host {

// `where` is FILE:LINE, or FILE for an error in the file as a whole.
class ChanError : public TextError {
public:
    using TextError::TextError;
};

struct ChanSample {
    Transform transform;
    std::optional<double> vfov; // of files with eight columns
};

class Chan {
public:
    // `name` is the file's name in messages.
    static Chan parse(const std::string& text, const std::string& name);

    bool has_vfov() const { return lines.front().sample.vfov.has_value(); }
    std::vector<double> frames() const; // ascending
    double first_frame() const { return lines.front().frame; }
    double last_frame() const { return lines.back().frame; }

    // Each column is interpolated linearly by itself, angles as plain numbers, and is constant
    // before the first frame and after the last. At a frame's own time the result is exactly what
    // the file says. `time` must not be NaN.
    ChanSample sample(double time) const;

private:
    struct Line {
        double frame;
        ChanSample sample;
    };
    std::vector<Line> lines; // at least one, by ascending frame

    Chan() {}
};

} // namespace velmora::host
