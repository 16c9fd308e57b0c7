// SPDX-License-Identifier: BSD-3-Clause

// A queue of strokes that are drawn tile by tile, so that a tile's pixels stay in the nearest caches
// while everything that reaches it is added. Within a tile strokes are added in the order in which
// they came, so every pixel gets the same bits as without a queue.
//
// Shapes:    up to most_stars strokes, which together reach up to most_reached tiles.
// Errors:    start() asks for all memory and throws StrXception "out of memory …", with nothing
//            taken; nothing else throws.
// Threads:   one queue belongs to one thread.
#pragma once

#include "core/array.h"
#include "stars/fast/rasterise.h"

namespace velmora {

// Counts the owners that put light into a pixel, each once, however many of its segments did.
// REQUIRES: owners come in ascending order, from 1 on.
class LitOwners {
public:
    void add(u32 owner) {
        number += owner != last;
        last = owner;
    }

    u64 count() const { return number; }

private:
    u64 number = 0;
    u32 last = 0;
};

class TileQueue {
public:
    static const u32 most_stars = 32768;
    static const u32 most_reached = 16 * most_stars;

    // Prepares for the strokes of one brush. REQUIRES: the queue is empty.
    void start(const Brush& brush);

    // Whether tiles save time: an image that fits the caches needs none.
    bool is_worth_it() const { return worth_it; }

    // Takes a stroke of the star numbered `owner`; owners come in ascending order. False, with
    // nothing taken, when there is no room before the next draw(); an empty queue has room for every
    // stroke.
    bool append(const Stroke& stroke, u32 owner);

    // Draws all strokes and empties the queue. Adds the owners that put light into a pixel to
    // `lit`, and the number of pixels written to `pixels`.
    void draw(LitOwners& lit, u64& pixels);

private:
    struct Entry {
        Stroke star;
        u32 owner;
        u32 tiles; // how many it reaches
        bool lit;  // whether it put light into a pixel
    };

    Brush brush;
    bool worth_it;
    s32 tiles_across, tiles_down;
    Array<Entry> stars;
    Array<u32> reached; // tiles, stroke by stroke
    Array<u32> order;   // the same, sorted: strokes, tile by tile
    Array<u32> starts;  // where each tile's part of `order` starts, and the end of the last

    template <class Visit>
    void for_each_tile(const Stroke& star, const Visit& visit) const;
    void sort_into_tiles();
    void draw_tile(uword tile, const Window& window, u64& pixels);
    Window window_of(s32 across, s32 down) const;
};

} // namespace velmora
