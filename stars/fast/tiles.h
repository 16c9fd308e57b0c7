// Stars that are drawn later, tile by tile, so that the pixels of a tile stay in the nearest caches
// while everything that reaches it is added. Within a tile stars are added in the order they came,
// so every pixel gets the same bits as without a list.
//
// Shapes:    up to most_stars, which reach up to most_reached tiles together.
// Errors:    start() asks for all memory and throws StrXception "out of memory …", with nothing
//            taken; nothing else throws.
// Threads:   one list belongs to one thread.
#pragma once

#include "core/array.h"
#include "stars/fast/rasterise.h"

namespace velmora {

// How many of the owners got light into a pixel, each counted once however many of its segments
// did. Owners come in ascending order, from 1 on.
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

    // For an image whose stars have the brush in common. The list must be empty.
    void start(const Brush& brush);

    // Whether tiles gain anything: an image that the caches hold needs none.
    bool is_worth_it() const { return worth_it; }

    // Takes a star that is to be drawn for record number `owner`; owners come in ascending order.
    // False, with nothing taken, when there is no room before the next draw(); an empty list has
    // room for every star.
    bool append(const Stroke& star, u32 owner);

    // Draws and forgets what is there. Adds the owners that got light into a pixel to `lit`, and to
    // `pixels` how many were written.
    void draw(LitOwners& lit, u64& pixels);

private:
    struct Entry {
        Stroke star;
        u32 owner;
        u32 tiles; // that it reaches
        bool lit;
    };

    Brush brush;
    bool worth_it;
    s32 tiles_across, tiles_down;
    Array<Entry> stars;
    Array<u32> reached; // tiles, star by star
    Array<u32> order;   // the same sorted: stars, tile by tile
    Array<u32> starts;  // of each tile's part of `order`, and the end of the last

    template <class Visit>
    void for_each_tile(const Stroke& star, const Visit& visit) const;
    void sort_into_tiles();
    void draw_tile(uword tile, const Window& window, u64& pixels);
    Window window_of(s32 across, s32 down) const;
};

} // namespace velmora
