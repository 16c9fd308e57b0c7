// Some stars at a time: their directions and places on the image, and which of them can reach it.
//
// Units:     as in stars.h.
// Shapes:    holds up to capacity() stars; places are kept per camera sample.
// Threads:   one block belongs to one thread.
#pragma once

#include "core/array.h"
#include "stars/fast/lane_kernels.h"
#include "stars/render_data.h"
#include "stars/starfile.h"

#include <memory>

namespace velmora {

class StarBlock {
public:
    // For a camera that is sampled `samples` times.
    explicit StarBlock(uword samples);

    int capacity() const { return most; }
    int len() const { return count; }
    void clear() { count = 0; }

    // Copies the record. REQUIRES: len() < capacity().
    void append(const star& s) { stars[count++] = s; }

    // The copies, to be filled in place; set_len() says how many there are now.
    star* records() { return stars.get(); }
    void set_len(int n) { count = n; }
    const star& operator[](int i) const { return stars[i]; }

    // How the stars are seen.
    struct View {
        const StarRendererData* data;
        const Array<DblMatrix4>* matrices; // one per sample
        bool has_distances;
        int width, height;      // of the image
        float reach_x, reach_y; // beyond which no star of any brightness draws
    };

    // Whether decode() gives what the plain reading does: the projection must be known, and the
    // film window have a size.
    static bool can_decode(const View& view);

    // Finds every star's places, and whether it can reach the image: stars that cannot would draw
    // nothing; some that can will not, either.
    void decode(const LaneKernels& kernels, const View& view);

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
    std::unique_ptr<double[]> numbers; // seven columns, see decode()
    std::unique_ptr<float[]> placed;   // x, y, seen of each sample in turn
    std::unique_ptr<float[]> reaching; // other than 0 where a star can reach the image

    Places places(uword sample) const {
        float* first = placed.get() + sample * 3 * uword(most);
        return {first, first + most, first + 2 * most};
    }
};

} // namespace velmora
