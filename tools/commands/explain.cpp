// SPDX-License-Identifier: BSD-3-Clause
#include "tools/commands/explain.h"

#include "host/knobs/format_knob.h"
#include "stars/kernels.h"
#include "text/number.h"
#include "text/quoted.h"
#include "tools/failure.h"
#include "tools/files/catalog_failure.h"
#include "tools/files/output_file.h"
#include "tools/frames/frame_range.h"
#include "tools/frames/pixel_trace.h"
#include "tools/frames/render_frame.h"
#include "tools/say.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>

namespace velmora {

namespace {

// As the renderer counts: x from the left, y down from the top row.
struct Pixel {
    int x, y;
};

} // namespace

// ---- what is asked for -------------------------------------------------------------------------

static int frame_of(const ExplainOptions& options, const host::Graph& graph) {
    if (options.frame.empty())
        return options.comp.script.empty() ? 1 : graph.first_frame;
    const std::vector<int> frames = parse_frame_range(options.frame);
    if (frames.size() > 1)
        throw UsageFailure("--frames " + options.frame, "one frame is explained at a time");
    return frames[0];
}

static Node& node_of(const Comp& comp) {
    if (comp.stars.size() > 1)
        throw UsageFailure("arguments",
                           "the script has several nodes to render: --node names one of them");
    return *comp.stars[0];
}

static Pixel pixel_of(const std::string& text, const DD::Image::Format& format) {
    const std::string what = "--pixel " + in_quotes(text, in_full);
    const std::size_t comma = text.find(',');
    int x, y;
    if (comma == std::string::npos || !parse_number(text.substr(0, comma), x) ||
        !parse_number(text.substr(comma + 1), y))
        throw UsageFailure(what, "takes two whole numbers: x,y");
    if (x < 0 || x >= format.width() || y < 0 || y >= format.height())
        throw UsageFailure(what, "lies outside the image: x goes from 0 to " +
                                     std::to_string(format.width() - 1) + ", y from 0 to " +
                                     std::to_string(format.height() - 1));
    return {x, format.height() - 1 - y};
}

// ---- the records -------------------------------------------------------------------------------

// A node without a database draws nothing.
static PixelTrace trace_of(const Node& node, const View& view, const Pixel& pixel,
                           KernelLevel level) {
    const std::string path = node.knob("starfile")->get_text();
    if (path.empty())
        return {};
    return working_on(path, [&] {
        const std::unique_ptr<StarInput> input(op_stars_file_input(path.c_str()));
        return trace_pixel(view, *input, pixel.x, pixel.y, level);
    });
}

static Light light_at(const RenderedFrame& frame, const Pixel& pixel) {
    const std::size_t at = std::size_t(pixel.y) * std::size_t(frame.view.width);
    const float* const floats = &frame.pixels[4 * (at + std::size_t(pixel.x))];
    return {floats[1], floats[2], floats[3]};
}

// Bit for bit, but for the signs of NaNs, which depend on the order of operands.
static bool is_same(const Light& a, const Light& b) {
    return std::equal(a.begin(), a.end(), b.begin(), [](float one, float other) {
        return one == other || (std::isnan(one) && std::isnan(other));
    });
}

// ---- the report --------------------------------------------------------------------------------

// The shortest text that reads back as the same float.
static std::string float_text(float number) {
    char text[32];
    return {text, std::to_chars(text, text + sizeof text, number).ptr};
}

template <class Three>
static std::string three_text(const Three& three, const char* between) {
    return float_text(float(three[0])) + between + float_text(float(three[1])) + between +
           float_text(float(three[2]));
}

// With y counted from the bottom, as the pixel is named.
static std::string place_text(const Vector2& position, const View& view) {
    char text[64];
    snprintf(text, sizeof text, "%.7g,%.7g", double(position[0]),
             double(view.height - 1) - double(position[1]));
    return text;
}

// The first sample's place and, of a streak, the last one's.
static std::string path_text(const StarTrace& trace, const View& view) {
    const std::string first = place_text(trace.samples.front().position, view);
    const std::string last = place_text(trace.samples.back().position, view);
    return first == last ? first : first + ".." + last;
}

typedef std::vector<std::string> Cells;

static Cells cells_of(const TracedStar& star, const PixelTrace& traced, const View& view) {
    const bool has_distance = traced.has_distances && star.bytes.distance > 0;
    return {std::to_string(star.record),
            number_text(star.bytes.ra),
            number_text(star.bytes.dec),
            float_text(star.bytes.flux),
            has_distance ? number_text(star.bytes.distance) : "unknown",
            path_text(star.trace, view),
            float_text(star.trace.size_x) + "x" + float_text(star.trace.size_y),
            float_text(star.trace.amplitude),
            three_text(star.trace.color, ","),
            three_text(star.added(), ",")};
}

// Columns as wide as their widest cell, with two blanks between.
static void print_table(const std::vector<Cells>& rows) {
    std::vector<std::size_t> widths(rows[0].size(), 0);
    for (const Cells& row : rows)
        for (std::size_t i = 0; i < row.size(); i++)
            widths[i] = std::max(widths[i], row[i].size());
    for (const Cells& row : rows) {
        std::string line;
        for (std::size_t i = 0; i + 1 < row.size(); i++)
            line += row[i] + std::string(widths[i] + 2 - row[i].size(), ' ');
        printf("%s%s\n", line.c_str(), row.back().c_str());
    }
}

static void print_stars(const PixelTrace& traced, const View& view) {
    if (traced.stars.empty())
        return;
    std::vector<Cells> rows = {{"record", "ra", "dec", "flux", "distance", "place", "size",
                                "amplitude", "colour", "added"}};
    for (const TracedStar& star : traced.stars)
        rows.push_back(cells_of(star, traced, view));
    print_table(rows);
}

static void print_report(const ExplainOptions& options, const Node& node, int frame,
                         const Pixel& pixel, const View& view, const PixelTrace& traced) {
    const int from_bottom = view.height - 1 - pixel.y;
    const std::string where = options.comp.script.empty() ? "" : node.name() + ": ";
    printf("%sframe %d, pixel %d,%d (row %d from the top) of %dx%d\n", printable(where).c_str(),
           frame, pixel.x, from_bottom, pixel.y, view.width, view.height);
    print_stars(traced, view);
    printf("records: %zu\n", traced.stars.size());
    printf("light: %s\n", three_text(traced.light(), ",").c_str());
}

// ---- the same picture from just those records --------------------------------------------------

// The file's own header, so that the version and with it the distances stay.
static void save(const std::string& path, const PixelTrace& traced) {
    if (traced.stars.empty())
        throw WorkFailure(path, "is not written, as no record puts light into the pixel");
    std::string bytes;
    const auto append = [&](const star& record) {
        bytes.append(reinterpret_cast<const char*>(&record), sizeof record);
    };
    append(traced.header);
    for (const TracedStar& star : traced.stars)
        append(star.bytes);
    write_file(path, bytes);
}

// Safe characters as they are, everything else in single quotes.
static std::string in_shell(const std::string& word) {
    static const char* const plain =
        "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_./,:=%+-";
    if (!word.empty() && word.find_first_not_of(plain) == std::string::npos)
        return word;
    std::string quoted = "'";
    for (const char ch : word)
        quoted += ch == '\'' ? std::string("'\\''") : std::string(1, ch);
    return quoted + "'";
}

static void print_render_command(const ExplainOptions& options, int frame) {
    std::string command = "velmora render";
    for (const std::string& word : options.render_words)
        command += " " + in_shell(word);
    command += " -F " + std::to_string(frame) + " --star-file " + in_shell(options.save);
    printf("render: %s -o pixel.exr\n", printable(command).c_str());
}

void explain(const ExplainOptions& options) {
    // Check the arguments.
    const std::unique_ptr<Comp> comp = make_comp(options.comp);
    Node& node = node_of(*comp);
    const int frame = frame_of(options, comp->graph);
    const auto& format = dynamic_cast<const host::FormatKnob&>(*node.knob("format")).format();
    const Pixel pixel = pixel_of(options.pixel, format);
    if (!options.save.empty())
        check_output(options.save, comp->inputs);

    // The node draws in the plug-in, which chooses its engine itself.
    if (options.reference)
        PluginDoors(node.description()).draw_plainly();
    const KernelLevel level = options.reference ? KernelLevel::plain : best_kernel_level();
    for (const std::string& note : comp->notes)
        say(note);
    // Draw the frame as render does, then star by star, and compare.
    const std::unique_ptr<RenderedFrame> rendered = NodeRenderer(node).render(frame);
    const PixelTrace traced = trace_of(node, rendered->view, pixel, level);
    if (!is_same(traced.light(), light_at(*rendered, pixel)))
        throw WorkFailure(node.knob("starfile")->get_text(),
                          "its records do not add up to the rendered pixel, so it was changed "
                          "meanwhile");

    print_report(options, node, frame, pixel, rendered->view, traced);
    if (options.save.empty())
        return;
    save(options.save, traced);
    print_render_command(options, frame);
}

} // namespace velmora
