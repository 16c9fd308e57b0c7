// SPDX-License-Identifier: BSD-3-Clause
#include "tools/frames/render_frame.h"

#include "host/runtime/scanlines.h"
#include "tools/comp/knobs.h"
#include "tools/comp/star_node.h"
#include "tools/failure.h"
#include "tools/frames/stopwatch.h"

namespace velmora {

using DD::Image::Op;
using DD::Image::Row;

NodeRenderer::NodeRenderer(Node& node, const std::string& where)
    : node(node), where(where), tree(node), doors(node.description()),
      star_file(node.knob("starfile")->get_text()),
      has_stamp(OSAPI::get_stamp_can_fail(star_file.c_str(), stamp)) {}

// A frame in a process of its own opens the file itself, and later than others.
void NodeRenderer::check_same_stars() const {
    OSAPI::FileStamp now;
    if (has_stamp && OSAPI::get_stamp_can_fail(star_file.c_str(), now) && now != stamp)
        throw WorkFailure(node.name(), "Star database file '" + star_file +
                                           "' was replaced or written to while frames were "
                                           "rendered");
}

Op& NodeRenderer::validated(double frame) {
    check_sizes(node, frame, where);
    Op& op = tree.at(frame);
    check_cameras(op);
    check_star_file(op);
    return op;
}

// The node reports a database that it cannot open once, and then renders black: every frame of that
// database fails with the same message.
void NodeRenderer::check_star_file(Op& op) {
    const std::string file = node.knob("starfile")->get_text();
    if (!failure.empty() && file == failed_file)
        throw WorkFailure(node.name(), failure);
    failure.clear();
    try {
        host::validate(op);
    } catch (const host::OpFailure& failed) {
        failed_file = file;
        failure = failed.why;
        throw;
    }
}

// The host counts rows from the bottom, pictures from the top.
static void put_row(const Row& row, int y, RenderedFrame& frame) {
    const std::size_t from_top = std::size_t(frame.view.height - 1 - y);
    float* pixel =
        &frame.pixels[4 * (from_top * std::size_t(frame.view.width) + std::size_t(row.getLeft()))];
    const float* const red = row[DD::Image::Chan_Red];
    const float* const green = row[DD::Image::Chan_Green];
    const float* const blue = row[DD::Image::Chan_Blue];
    const float* const alpha = row[DD::Image::Chan_Alpha];
    for (int x = row.getLeft(); x < row.getRight(); x++, pixel += 4) {
        pixel[0] = alpha[x];
        pixel[1] = red[x];
        pixel[2] = green[x];
        pixel[3] = blue[x];
    }
}

std::unique_ptr<RenderedFrame> NodeRenderer::render(double frame) {
    std::unique_ptr<RenderedFrame> rendered;
    working_in_host([&] {
        Stopwatch watch;
        // Validate, and note what will be drawn.
        Op& op = validated(frame);
        rendered.reset(new RenderedFrame{node, frame, view_of(op, doors), {}, {}});
        rendered->times.setting_up = watch.lap();
        const std::size_t pixels =
            std::size_t(rendered->view.width) * std::size_t(rendered->view.height);
        rendered->pixels.resize(4 * pixels);
        // Opening draws the whole frame.
        check_same_stars();
        const host::Opened opened(op);
        rendered->times.drawing = watch.lap();
        // Take its rows, from a database that was the same before and after.
        host::pull_rows(opened.iop(), opened.iop().info(), DD::Image::Mask_RGBA, {},
                        [&](const Row& row, int y, int, int) { put_row(row, y, *rendered); });
        rendered->times.taking_rows = watch.lap();
        check_same_stars();
    });
    return rendered;
}

} // namespace velmora
