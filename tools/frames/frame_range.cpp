// SPDX-License-Identifier: BSD-3-Clause
#include "tools/frames/frame_range.h"

#include "text/number.h"
#include "text/quoted.h"
#include "tools/failure.h"

#include <algorithm>
#include <string_view>
#include <unordered_set>
#include <utility>

namespace velmora {

namespace {

// The words of <first>, <first>-<last> or <first>-<last>x<step>; empty where absent.
struct Words {
    std::string_view first, last, step;
};

// From `first` towards `last`, every `step`th frame; `step` is 1 or more.
struct Run {
    long first, last, step;

    long count() const { return (last < first ? first - last : last - first) / step + 1; }
    int at(long n) const { return int(last < first ? first - n * step : first + n * step); }
};

class FrameRangeReader {
public:
    explicit FrameRangeReader(const std::string& text) : text(text) {}

    std::vector<int> read();

private:
    const std::string& text;
    std::vector<int> frames;
    std::unordered_set<int> named;

    [[noreturn]] void fail(const std::string& why) const;
    [[noreturn]] void refuse_colon(std::string_view piece) const;
    int number_of(std::string_view word) const;
    Run run_of(std::string_view piece) const;
    void add(const Run& run);
    void read_pieces(std::string_view rest);
};

} // namespace

static std::string too_many_frames() {
    return "more than " + std::to_string(most_frames) + " frames";
}

// Removes a number, with its sign, from the front of `rest`; empty if there is none.
static std::string_view take_number(std::string_view& rest) {
    const std::size_t sign = !rest.empty() && rest[0] == '-' ? 1 : 0;
    const std::size_t end = std::min(rest.find_first_not_of("0123456789", sign), rest.size());
    const std::string_view word = end == sign ? std::string_view() : rest.substr(0, end);
    rest.remove_prefix(word.size());
    return word;
}

static bool take(char ch, std::string_view& rest) {
    if (rest.empty() || rest[0] != ch)
        return false;
    rest.remove_prefix(1);
    return true;
}

// False when the piece has none of the forms of Words, with `step_mark` for the x.
static bool split_piece(std::string_view piece, char step_mark, Words& words) {
    words = Words();
    words.first = take_number(piece);
    if (words.first.empty() || piece.empty())
        return !words.first.empty();
    if (!take('-', piece))
        return false;
    words.last = take_number(piece);
    if (words.last.empty() || piece.empty())
        return !words.last.empty();
    if (!take(step_mark, piece))
        return false;
    words.step = take_number(piece);
    return !words.step.empty() && piece.empty();
}

void FrameRangeReader::fail(const std::string& why) const {
    throw UsageFailure("frame range " + in_quotes(text, in_full), why);
}

// Suggests the form with an x, which has one meaning.
void FrameRangeReader::refuse_colon(std::string_view piece) const {
    Words words;
    if (!split_piece(piece, ':', words))
        words = {"1", "100", "2"};
    std::string with_x(words.first);
    with_x.append("-").append(words.last).append("x").append(words.step);
    fail(in_quotes(piece) + " has two readings: every Nth frame, to be written as " + with_x +
         ", or staggered, every Nth frame first and then the gaps in finer steps");
}

int FrameRangeReader::number_of(std::string_view word) const {
    int number;
    if (!parse_number(word, number))
        fail(in_quotes(word) + " is out of range");
    return number;
}

Run FrameRangeReader::run_of(std::string_view piece) const {
    Words words;
    if (!split_piece(piece, 'x', words)) {
        if (piece.find(':') != std::string_view::npos)
            refuse_colon(piece);
        fail(in_quotes(piece) + " is neither a frame nor a range such as 1-100 or 1-100x2");
    }
    Run run;
    run.first = number_of(words.first);
    run.last = words.last.empty() ? run.first : number_of(words.last);
    run.step = words.step.empty() ? 1 : number_of(words.step);
    if (run.step < 1)
        fail("the step of " + in_quotes(piece) + " is not 1 or more");
    return run;
}

// The first mention of a frame decides its place.
void FrameRangeReader::add(const Run& run) {
    if (run.count() > most_frames)
        fail(too_many_frames());
    for (long n = 0; n < run.count(); n++)
        if (named.insert(run.at(n)).second)
            frames.push_back(run.at(n));
    if (frames.size() > std::size_t(most_frames))
        fail(too_many_frames());
}

// Reads the text between two commas: pieces separated by blanks.
void FrameRangeReader::read_pieces(std::string_view rest) {
    static const char* const blanks = " \t\r\n";
    std::size_t start = rest.find_first_not_of(blanks);
    // An empty list is refused: it is what is left when a shell has split an argument.
    if (start == std::string_view::npos)
        fail("nothing on one side of a comma");
    while (start != std::string_view::npos) {
        const std::size_t end = std::min(rest.find_first_of(blanks, start), rest.size());
        add(run_of(rest.substr(start, end - start)));
        start = rest.find_first_not_of(blanks, end);
    }
}

std::vector<int> FrameRangeReader::read() {
    if (text.find_first_not_of(" \t\r\n") == std::string::npos)
        fail("no frame given");
    // Pieces between commas, then the rest.
    std::string_view rest = text;
    for (std::size_t comma; (comma = rest.find(',')) != std::string_view::npos;) {
        read_pieces(rest.substr(0, comma));
        rest.remove_prefix(comma + 1);
    }
    read_pieces(rest);
    return std::move(frames);
}

std::vector<int> frames_from_to(int first, int last) {
    const Run run = {first, last, 1};
    if (run.count() > most_frames)
        throw UsageFailure("frame range '" + std::to_string(first) + "-" + std::to_string(last) +
                               "'",
                           too_many_frames());
    std::vector<int> frames;
    for (long n = 0; n < run.count(); n++)
        frames.push_back(run.at(n));
    return frames;
}

std::vector<int> parse_frame_range(const std::string& text) {
    return FrameRangeReader(text).read();
}

} // namespace velmora
