// SPDX-License-Identifier: BSD-3-Clause
#include "stars/fast/tiles.h"

#include <algorithm>
#include <cmath>

namespace velmora {

// A tile is 64 rows of 512 pixels: 512 KiB of interleaved floats.
static const s32 tile_width = 512;
static const s32 tile_height = 64;
static const s64 tile_floats = s64(tile_width) * tile_height * 4;
static const s64 tile_limit = 65536; // more would take longer to sort than the caches save
static const s64 fewest_tiles = 4;   // up to 2 MiB of pixels, the outer caches hold the image

// Slopes above this leave a row's columns to the whole box.
static const double steepest_followed = 1e4;

// Row centres are rounded to floats: six roundings of 6e-8, and as much again.
static const double float_rounding = 1e-6;

// Columns by which a row may reach beyond its half-width: roundings outwards, and one for safety.
static const double column_margin = 3;

static s32 tiles_for(s32 pixels, s32 tile) {
    return pixels / tile + (pixels % tile != 0);
}

template <class T>
static void make_room(Array<T>& array, uword count) {
    if (array.capacity < count * sizeof(T))
        array.realloc(count * sizeof(T));
}

void TileQueue::start(const Brush& b) {
    static_assert(most_reached >= tile_limit, "an empty queue has room for every stroke");
    brush = b;
    tiles_across = tiles_for(b.dst.width, tile_width);
    tiles_down = tiles_for(b.dst.height, tile_height);
    const s64 tiles = s64(tiles_across) * tiles_down;
    worth_it =
        s64(b.dst.width) * b.dst.height * 4 > fewest_tiles * tile_floats && tiles < tile_limit;
    if (!worth_it)
        return;
    make_room(stars, most_stars);
    make_room(reached, most_reached);
    make_room(order, most_reached);
    make_room(starts, uword(tiles) + 2);
}

bool TileQueue::append(const Stroke& star, u32 owner) {
    const uword before = reached.len();
    bool has_room = stars.len() < most_stars;
    if (has_room)
        for_each_tile(star, [&](u32 tile) {
            has_room = has_room && reached.len() < most_reached;
            if (has_room)
                reached.append(tile);
        });
    if (has_room)
        stars.append({star, owner, u32(reached.len() - before), false});
    else
        reached.length = before * sizeof(u32);
    return has_room;
}

Window TileQueue::window_of(s32 across, s32 down) const {
    const s32 x = across * tile_width, y = down * tile_height;
    return {x, y, std::min(x + tile_width, brush.dst.width),
            std::min(y + tile_height, brush.dst.height)};
}

// Finds columns [low, high] that hold all that a stroke's rows [y_lo, y_hi] can touch, and a few more.
static void columns_between(const Stroke& star, const StarFramebuffer& fb, s32 y_lo, s32 y_hi,
                            s32& low, s32& high) {
    const Path& path = star.path;
    const double mid_x = path.mid[0], mid_y = path.mid[1];
    // Whether adding 1.0 moves offsets. Where it does not, rows run on to the right edge, and row centres
    // stay in place.
    const bool columns_count = std::fabs(mid_x) + fb.width < double(counting_limit);
    const bool rows_count = std::fabs(mid_y) + fb.height < double(counting_limit);
    low = star.box.x_lo;
    high = columns_count ? star.box.x_hi : fb.width - 1;
    if (star.rows.is_flat() || !rows_count ||
        !(std::fabs(double(star.rows.slope)) < steepest_followed))
        return;

    // The path's columns at the first and the last row, and what a row reaches to either side.
    const double slope = star.rows.slope, from_x = path.from[0], from_y = path.from[1];
    const double first = from_x + (y_lo - from_y) * slope;
    const double last = from_x + (y_hi - from_y) * slope;
    const double rounding =
        float_rounding * (std::fabs(first) + std::fabs(last) + std::fabs(from_x) +
                          std::fabs(from_y * slope) + std::fabs(mid_y * slope));
    const double margin = column_margin + double(star.rows.half_width) + rounding;
    const double left = std::min(first, last) - margin, right = std::max(first, last) + margin;
    if (left > low)
        low = left < fb.width ? s32(left) : fb.width;
    if (columns_count && right < high)
        high = right > low ? s32(right) : low - 1;
}

template <class Visit>
void TileQueue::for_each_tile(const Stroke& star, const Visit& visit) const {
    for (s32 down = star.box.y_lo / tile_height; down <= star.box.y_hi / tile_height; down++) {
        const s32 y = down * tile_height;
        s32 low, high;
        columns_between(star, brush.dst, std::max(y, star.box.y_lo),
                        std::min(y + tile_height - 1, star.box.y_hi), low, high);
        if (low > high)
            continue;
        for (s32 across = low / tile_width; across <= high / tile_width; across++)
            visit(u32(down) * u32(tiles_across) + u32(across));
    }
}

// Turns tiles stroke by stroke into strokes tile by tile.
void TileQueue::sort_into_tiles() {
    const uword tiles = uword(tiles_across) * uword(tiles_down);
    starts.clear();
    for (uword tile = 0; tile < tiles + 2; tile++)
        starts.append(0);

    // A counting sort: count each tile's strokes two places ahead, add up, and let the filling move
    // every start to its own place.
    for (uword i = 0; i < reached.len(); i++)
        starts[reached[i] + 2]++;
    for (uword tile = 2; tile < tiles + 2; tile++)
        starts[tile] += starts[tile - 1];
    order.length = reached.length;
    const u32* tile = &reached[0];
    for (uword i = 0; i < stars.len(); i++)
        for (u32 n = stars[i].tiles; n > 0; n--)
            order[starts[*tile++ + 1]++] = u32(i);
}

void TileQueue::draw_tile(uword tile, const Window& window, u64& pixels) {
    for (u32 i = starts[tile]; i < starts[tile + 1]; i++) {
        // The queue does not fit the nearest caches: fetch what is needed in four strokes' time.
        const char* ahead =
            reinterpret_cast<const char*>(&stars[order[std::min<uword>(i + 4, order.len() - 1)]]);
        __builtin_prefetch(ahead);
        __builtin_prefetch(ahead + 64);
        Entry& entry = stars[order[i]];
        const Drawn drawn = draw_stroke(brush, entry.star, window);
        entry.lit |= drawn.lit;
        pixels += u64(drawn.pixels);
    }
}

void TileQueue::draw(LitOwners& lit, u64& pixels) {
    sort_into_tiles();

    // Tile by tile, from the top left.
    uword tile = 0;
    for (s32 down = 0; down < tiles_down; down++)
        for (s32 across = 0; across < tiles_across; across++, tile++)
            draw_tile(tile, window_of(across, down), pixels);

    // Report, in the order in which they came.
    for (uword i = 0; i < stars.len(); i++)
        if (stars[i].lit)
            lit.add(stars[i].owner);
    stars.clear();
    reached.clear();
}

} // namespace velmora
