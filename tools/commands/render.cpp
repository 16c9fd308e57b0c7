// SPDX-License-Identifier: BSD-3-Clause
#include "tools/commands/render.h"

#include "tools/comp/notes.h"
#include "tools/comp/plugin_doors.h"
#include "tools/failure.h"
#include "tools/files/star_database.h"
#include "tools/frames/frame_range.h"
#include "tools/frames/jobs.h"
#include "tools/frames/progress.h"
#include "tools/frames/stopwatch.h"
#include "tools/numbers.h"
#include "tools/say.h"

#include <cstdio>

namespace velmora {

namespace {

// A node to render, and the files that its frames go to.
struct Rendering {
    std::string where; // before messages about a script's node: "<node>: "
    std::unique_ptr<NodeRenderer> renderer;
    std::unique_ptr<Outputs> outputs;
};

// One frame of one node.
struct Piece {
    const Rendering* rendering;
    int frame;
};

} // namespace

// The given frames, else the script's range, else frame 1.
static std::vector<int> frames_of(const RenderOptions& options, const host::Graph& graph) {
    if (!options.frames.empty())
        return parse_frame_range(options.frames);
    if (options.comp.script.empty())
        return {1};
    return frames_from_to(graph.first_frame, graph.last_frame);
}

// One for each node. Names are checked against those of the nodes before.
static std::vector<Rendering> renderings_of(const Comp& comp, const RenderOptions& options,
                                            const std::vector<int>& frames) {
    const bool several = comp.stars.size() > 1;
    OutputPlaces taken;
    std::vector<Rendering> renderings;
    for (Node* const node : comp.stars) {
        const std::string where = options.comp.script.empty() ? "" : node->name() + ": ";
        OutputOptions named = outputs_of_node(options.outputs, node->name(), several);
        named.fps = named.fps.value_or(comp.graph.fps);
        renderings.push_back({where, std::make_unique<NodeRenderer>(*node, where),
                              std::make_unique<Outputs>(named, frames, comp.inputs, taken)});
    }
    return renderings;
}

// Refuses missing databases before anything is rendered. Returns how many stars the largest has.
static std::size_t check_star_files(const Comp& comp) {
    std::size_t stars = 0;
    for (const Node* const node : comp.stars) {
        const std::string path = node->knob("starfile")->get_text();
        if (!path.empty())
            stars = std::max(stars, stars_in(path));
    }
    return stars;
}

static std::string milliseconds(double seconds) {
    char text[32];
    snprintf(text, sizeof text, "%.1f ms", seconds * 1000);
    return text;
}

// The counts are those of the last opening, which was this frame's.
static void say_stats(const std::string& where, const RenderedFrame& frame,
                      const RenderCounts& counts, double writing) {
    say("stats: " + where + "frame " + shortest_text(frame.frame) + ": " +
        std::to_string(counts.read) + " stars read, " + std::to_string(counts.kept) + " kept, " +
        std::to_string(counts.drawn) + " drawn, " + std::to_string(counts.pixels) +
        " pixels written; set-up " + milliseconds(frame.times.setting_up) + ", drawing " +
        milliseconds(frame.times.drawing) + ", rows " + milliseconds(frame.times.taking_rows) +
        ", writing " + milliseconds(writing));
}

void render(const RenderOptions& options) {
    // Check everything that can fail before the first frame.
    const std::unique_ptr<Comp> comp = make_comp(options.comp);
    const std::vector<int> frames = frames_of(options, comp->graph);
    const std::vector<Rendering> renderings = renderings_of(*comp, options, frames);
    const std::size_t stars = check_star_files(*comp);
    const PluginDoors doors(comp->stars[0]->description());
    if (options.reference)
        doors.draw_plainly();
    for (const std::string& note : comp->notes)
        say(note);

    // One piece of work for each node and frame.
    std::vector<Piece> pieces;
    for (const Rendering& rendering : renderings)
        for (const int frame : frames)
            pieces.push_back({&rendering, frame});
    const auto render_piece = [&](std::size_t i) {
        const Rendering& rendering = *pieces[i].rendering;
        const auto frame = rendering.renderer->render(pieces[i].frame);
        if (pieces[i].frame == frames[0])
            say_notes(frame->view);
        Stopwatch watch;
        rendering.outputs->write(*frame, pieces[i].frame);
        if (options.stats)
            say_stats(rendering.where, *frame, doors.last_counts(), watch.lap());
    };
    // A single frame fails with its own message; of several, each failure is reported and counted.
    if (pieces.size() == 1) {
        render_piece(0);
        return;
    }

    std::size_t failed;
    {
        Progress progress(pieces.size(), stars);
        failed = run_jobs(
            pieces.size(), options.jobs, render_piece,
            [&](std::size_t i) {
                return pieces[i].rendering->where + "frame " + std::to_string(pieces[i].frame);
            },
            [&] { progress.frame_done(); });
    }
    if (failed > 0)
        throw WorkFailure("render", std::to_string(failed) + " of " +
                                        std::to_string(pieces.size()) + " frames failed");
}

} // namespace velmora
