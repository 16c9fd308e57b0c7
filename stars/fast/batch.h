// SPDX-License-Identifier: BSD-3-Clause

// Some stars at a time: their places on the image in each camera sample, and which of them can
// reach it.
//
// Units:     degrees in, pixels out, as in stars.h.
// Shapes:    holds up to capacity() stars, fewer with more samples, so that their places stay in
//            the nearest cache.
// Accuracy:  directions within 4e-16 of the plain reading's; the rest is its arithmetic, but for the
//            film window's quotient, which is taken once per batch and not per star.
// Threads:   one batch belongs to one thread.
#pragma once

#include "core/array.h"
#include "stars/fast/lane_kernels.h"
#include "stars/kept_stars.h"
#include "stars/render_data.h"
#include "stars/starfile.h"

#include <memory>

namespace velmora {

class StarBatch {
public:
    // For a camera that is sampled `samples` times.
    explicit StarBatch(uword samples);

    int capacity() const { return most; }
    int len() const { return count; }
    void clear() { count = 0; }
    const star& operator[](int i) const { return stars[i]; }

    // Copies the record. REQUIRES: len() < capacity().
    void append(const star& s) { stars[count++] = s; }

    // Replaces the stars by the next ones, at most capacity(). When the input loses records, those
    // before are here.
    void fill(KeptStars& input);

    // How the stars are seen.
    struct View {
        const StarRendererData* data;
        const Array<DblMatrix4>* matrices; // one per sample
        bool has_distances;
        int width, height;      // of the image
        float reach_x, reach_y; // pixels beyond which no star of any brightness draws
    };

    // Whether find_places() gives what the plain reading does: the projection must be known, and
    // the film window have a size.
    static bool can_place(const StarRendererData& data, int width, int height);

    // Finds every star's places, and whether it can reach the image. A star that cannot would draw
    // nothing; one that can may draw nothing, too. REQUIRES: can_place().
    void find_places(const LaneKernels& kernels, const View& view);

    // Of find_places(): star i, and what it is in a sample.
    bool reaches(int i) const { return reaching[i] != 0; }
    bool is_seen(uword sample, int i) const { return places(sample).seen[i] != 0; }
    Vector2 place(uword sample, int i) const {
        const Places at = places(sample);
        return {{at.x[i], at.y[i]}};
    }

private:
    uword samples;
    int most, count;
    std::unique_ptr<star[]> stars;
    std::unique_ptr<double[]> numbers; // seven columns, see find_places()
    std::unique_ptr<float[]> placed;   // x, y, seen of each sample in turn
    std::unique_ptr<float[]> reaching; // not 0 where a star can reach the image

    Places places(uword sample) const {
        float* first = placed.get() + sample * 3 * uword(most);
        return {first, first + most, first + 2 * most};
    }
};

} // namespace velmora
