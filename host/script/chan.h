// The host's camera text form, `.chan`: one line per frame with seven or eight numbers.
//
//     frame  tx ty tz  rx ry rz  [vfov]
//
// Units:     translation in scene units; rotation and vertical field of view in degrees, the
//            rotation in the order of Transform, the field of view strictly between 0 and 180.
// Shapes:    blanks and tabs between the numbers; lines end in LF or CRLF. Empty lines, and the
//            rest of a line from a # that starts a word on, are skipped. All lines have the same
//            number of columns; frames grow from line to line and need not be whole.
// Errors:    ChanError.
// Threads:   a Chan that is made never changes.
#pragma once

#include "host/script/transform.h"
#include "text/text_error.h"

#include <optional>
#include <string>
#include <vector>

namespace velmora::host {

// Says "<where>: <why>", printable, where <where> is FILE:LINE, or FILE when the whole file is at fault.
class ChanError : public TextError {
public:
    using TextError::TextError;
};

struct ChanSample {
    Transform transform;
    std::optional<double> vfov; // there in files with eight columns
};

class Chan {
public:
    // `name` stands for the file in messages.
    static Chan parse(const std::string& text, const std::string& name);

    bool has_vfov() const { return lines.front().sample.vfov.has_value(); }
    std::vector<double> frames() const; // growing
    double first_frame() const { return lines.front().frame; }
    double last_frame() const { return lines.back().frame; }

    // Every column by itself goes linearly from one frame to the next, angles too, as plain
    // numbers; it stays what it is before the first frame and after the last. At a frame's own time
    // the file's numbers come back exactly. `time` must be a number.
    ChanSample sample(double time) const;

private:
    struct Line {
        double frame;
        ChanSample sample;
    };
    std::vector<Line> lines; // at least one, by growing frame

    Chan() {}
};

} // namespace velmora::host
