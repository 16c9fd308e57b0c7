// SPDX-License-Identifier: BSD-3-Clause

// Any bytes read through a buffer of any small size, with pushed back bytes, line reads and seeks in
// between: the result is the same as from the plain bytes.
//
// Input: the buffer's size less 1, the number of steps, two bytes for each step, the bytes to read.
#include "core/io.h"
#include "core/xception.h"
#include "fuzz/law.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

using namespace velmora;

namespace {

// The bytes as a stream, which gives as much as it is asked for.
class Bytes : public Input {
public:
    explicit Bytes(const std::string& bytes) : bytes(bytes), pos(0) {}

    s64 curpos() const override { return pos; }
    int read(char* buf, int n) override {
        require(n > 0, "no stream is asked for nothing");
        const std::size_t count = bytes.copy(buf, std::size_t(n), std::size_t(pos));
        pos += s64(count);
        return int(count);
    }
    s64 seek_from_start(s64 target) override {
        return pos = std::clamp(target, s64(0), s64(bytes.size()));
    }
    s64 seek_from_curpos(s64 delta) override { return seek_from_start(pos + delta); }

private:
    const std::string& bytes;
    s64 pos;
};

// What must come out.
class Model {
public:
    explicit Model(const std::string& bytes) : pos(0), bytes(bytes), rest(bytes) {}

    s64 pos;

    std::string read(std::size_t n) {
        const std::string all = left(), taken = all.substr(0, n);
        if (n > 0)
            keep(std::nullopt, all.substr(taken.size()));
        pos += s64(taken.size());
        return taken;
    }

    bool may_unread() const { return !pushed; }

    void unread(char ch) {
        pos--;
        if (ch != '\xff')
            pushed = ch;
    }

    std::string readline() {
        const std::string all = left();
        const std::size_t end = all.find_first_of("\r\n");
        if (end == std::string::npos)
            return read(all.size());
        const std::string two = all.substr(end, 2);
        const std::size_t length = end + (two == "\r\n" || two == "\n\r" ? 2 : 1);
        if (length == end + 2 || two.size() == 1)
            return read(length);
        // The byte after the end was looked at, pushed back, and lost if it is 0xFF.
        pos += s64(length);
        keep(two[1] == '\xff' ? std::nullopt : std::optional<char>(two[1]), all.substr(end + 2));
        return all.substr(0, length);
    }

    void seek(s64 target) {
        if (target == pos)
            return;
        pos = std::clamp(target, s64(0), s64(bytes.size()));
        keep(std::nullopt, bytes.substr(std::size_t(pos)));
    }

private:
    const std::string& bytes;
    std::optional<char> pushed;
    std::string rest;

    std::string left() const { return pushed ? *pushed + rest : rest; }

    void keep(std::optional<char> first, const std::string& others) {
        pushed = first;
        rest = others;
    }
};

std::string read(BufferedInput& input, std::size_t n) {
    std::vector<char> buffer(n); // of exactly that size, so that a sanitizer sees writes beyond it
    const int count = input.read(buffer.data(), int(n));
    require(count >= 0 && std::size_t(count) <= n, "no more is given than was asked for");
    return std::string(buffer.data(), std::size_t(count));
}

bool unread(BufferedInput& input, char ch) {
    try {
        input.unread(ch);
        return true;
    } catch (const StrXception&) {
        return false;
    }
}

std::string readline(BufferedInput& input) {
    const String line = input.readline();
    return line.str ? line.str : "";
}

std::string without_nuls(std::string text) {
    text.erase(std::remove(text.begin(), text.end(), '\0'), text.end());
    return text;
}

void take_step(BufferedInput& input, Model& model, uint8_t step, uint8_t argument) {
    const char ch = char(argument);
    const s64 delta = s64(argument) - 128;
    switch (step % 5) {
    case 0:
        require(read(input, argument) == model.read(argument), "reads give the bytes");
        break;
    case 1: {
        const bool may = model.may_unread();
        require(unread(input, ch) == may, "one byte at a time is pushed back");
        if (may)
            model.unread(ch);
        break;
    }
    case 2:
        require(readline(input) == without_nuls(model.readline()), "lines are cut at their ends");
        break;
    case 3:
        model.seek(argument);
        require(input.seek_from_start(argument) == model.pos, "seeks lead where they should");
        break;
    case 4:
        model.seek(model.pos + delta);
        require(input.seek_from_curpos(delta) == model.pos, "seeks lead as far as they should");
        break;
    }
    require(input.curpos() == model.pos, "the position is that of the next byte");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 2)
        return 0;
    const int bufsize = data[0] + 1;
    const size_t steps = std::min(size_t(data[1]), (size - 2) / 2);
    const std::string bytes(data + 2 + 2 * steps, data + size);
    Bytes source(bytes);
    BufferedInput input(source, bufsize);
    Model model(bytes);
    for (size_t step = 0; step < steps; step++)
        take_step(input, model, data[2 + 2 * step], data[3 + 2 * step]);
    return 0;
}
