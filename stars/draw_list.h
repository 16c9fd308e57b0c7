// Stars that are drawn later, tile by tile, so that the pixels of a tile stay in the nearest caches
// while everything that reaches it is added. Within a tile stars are added in the order they came,
// so every pixel gets the same bits as without a list.
//
// Shapes:    meant for up to most_stars, for which memory is asked for at the start.
// Threads:   one list belongs to one thread.
#pragma once

#include "core/array.h"
#include "stars/rasteriser.h"

namespace velmora {

class DrawList {
public:
    static const u32 most_stars = 32768;

    // For an image whose stars have the brush in common. The list must be empty.
    void start(const Brush& brush);

    // Whether tiles gain anything: an image that the caches hold needs none.
    bool is_worth_it() const { return worth_it; }

    bool has_room_for(uword count) const { return stars.len() + count <= most_stars; }

    // Takes a star in that is to be drawn for record number `owner`; owners come in ascending
    // order.
    void append(const PlacedStar& star, u32 owner);

    // Draws and forgets what is there. Adds to `owners` how many of the owners got light into a
    // pixel, to `pixels` how many were written.
    void draw(u64& owners, u64& pixels);

private:
    struct Entry {
        PlacedStar star;
        u32 owner;
        bool lit, faint;
    };

    Brush brush;
    bool worth_it;
    s32 tiles_across, tiles_down;
    Array<Entry> stars;
    Array<u32> starts; // of each tile's part of `order`, and behind the last
    Array<u32> order;  // entries tile by tile

    template <class Visit>
    void for_each_tile(const PlacedStar& star, const Visit& visit) const;
    void sort_into_tiles();
    Window window_of(s32 across, s32 down) const;
};

} // namespace velmora
