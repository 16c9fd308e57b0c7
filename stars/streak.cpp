// Says which reading draws a call of op_star_streak.
#include "stars/streak.h"

#include "stars/draw_call.h"
#include "stars/fast/rasterise.h"
#include "stars/kernels.h"
#include "stars/plain/rasterise.h"

using namespace velmora;

Drawn velmora::draw_star_streak(const StarCall& call) {
    const Brush brush = brush_of(lane_kernels(), call);
    PlacedStar star;
    const Fit fit = brush.kernels ? place_star(call, star) : Fit::left_to_plain;
    if (fit == Fit::left_to_plain)
        return plain_star_streak(call);
    if (fit == Fit::outside)
        return {false, 0};
    return draw_placed(brush, star, {0, 0, call.dst.width, call.dst.height});
}

bool op_star_streak(const StarFramebuffer& dst, const Vector2& from, const Vector2& to,
                    float amplitude, const Color3& color, float size_x, float size_y,
                    op_stars_lines lines) {
    return draw_star_streak({dst, from, to, amplitude, color, size_x, size_y, lines}).lit;
}
