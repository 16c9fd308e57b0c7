// SPDX-License-Identifier: BSD-3-Clause
#include "stars/streak.h"

#include "stars/dispatch.h"

bool op_star_streak(const StarFramebuffer& dst, const Vector2& from, const Vector2& to,
                    float amplitude, const Color3& color, float size_x, float size_y,
                    op_stars_lines lines) {
    return velmora::draw_star_streak({dst, from, to, amplitude, color, size_x, size_y, lines}).lit;
}
