// SPDX-License-Identifier: BSD-3-Clause
#define XSOURCE "io"

#include "core/io.h"
#include "core/array.h"
#include "core/unwinding.h"
#include "core/xception.h"

#include <algorithm>
#include <cstring>

// ---- Input -----------------------------------------------------------------------------------

static const s32 no_pushback = -1;

BufferedInput::BufferedInput(Input& src, int bufsize)
    : src(src), pos(0), buffer(new char[bufsize]), bufsize(bufsize), fill(0), pushback(no_pushback),
      at_eof(0) {}

BufferedInput::~BufferedInput() {
    delete[] buffer;
}

s64 BufferedInput::curpos() const {
    return pos;
}

// Moves the byte that was pushed back, if any, to `buf`; returns 1 or 0, the bytes moved.
int BufferedInput::take_pushback(char* buf) {
    if (pushback == no_pushback)
        return 0;
    *buf = static_cast<char>(pushback);
    pushback = no_pushback;
    return 1;
}

// Moves the first `n` buffered bytes to `buf`, and the rest to the front of the buffer.
void BufferedInput::hand_out(char* buf, int n) {
    memcpy(buf, buffer, uword(n));
    fill -= n;
    memmove(buffer, buffer + n, uword(fill));
}

// Fills the empty buffer with one read; a short result, an error among them, is the end.
void BufferedInput::refill() {
    const int count = src.read(buffer, bufsize);
    at_eof = count < bufsize;
    fill = std::max(count, 0);
}

int BufferedInput::read(char* buf, int n) {
    if (n < 1)
        return 0;
    if (bufsize == 0) {
        const int count = src.read(buf, n);
        pos += count;
        return count;
    }

    // First the byte that was pushed back, then what is buffered, until that is enough.
    int got = take_pushback(buf);
    while (n - got > fill) {
        const int buffered = fill;
        hand_out(buf + got, buffered);
        got += buffered;

        // The data have ended, or the rest is large enough to bypass the buffer, or fill it again.
        const int wanted = n - got;
        if (at_eof) {
            pos += got;
            return got;
        }
        if (wanted >= bufsize) {
            const int count = src.read(buf + got, wanted);
            at_eof = count < wanted;
            got += count;
            pos += got;
            return got;
        }
        refill();
    }
    hand_out(buf + got, n - got);
    pos += n;
    return n;
}

void BufferedInput::forget() {
    fill = 0;
    pushback = no_pushback;
    at_eof = 0;
}

s64 BufferedInput::seek_from_start(s64 target) {
    if (target == pos)
        return pos;
    forget();
    return pos = src.seek_from_start(target);
}

s64 BufferedInput::seek_from_curpos(s64 delta) {
    if (delta == 0)
        return pos;
    forget();
    return pos = src.seek_from_start(pos + delta);
}

void BufferedInput::unread(char ch) {
    if (pushback != no_pushback)
        XTHROW("can't unread more than 1 byte");
    pos--;
    pushback = static_cast<signed char>(ch);
}

// Whether `second` completes the line end that `first` starts.
static bool is_pair(char first, char second) {
    return (first == '\r' && second == '\n') || (first == '\n' && second == '\r');
}

// Turns the characters into a String by moving their block, which both types free in the same way.
// The constructor of a String from characters would copy them, at most 4 GB.
static String text_from(Array<char>& characters) {
    String text;
    if (characters.length == 0)
        return text;
    characters.append('\0');
    characters.trim();
    text.str = characters.data;
    characters.data = nullptr;
    characters.capacity = characters.length = 0;
    return text;
}

String BufferedInput::readline() {
    // Collect characters up to the first CR or LF.
    Array<char> line;
    char ch;
    do {
        const int count = read(&ch, 1);
        if (count < 0)
            XTHROW("read error");
        if (count == 0)
            return text_from(line);
        if (ch)
            line.append(ch);
    } while (ch != '\r' && ch != '\n');

    // Take the second half of a two-character line end; anything else belongs to the next line.
    char next;
    if (read(&next, 1) > 0) {
        if (is_pair(ch, next))
            line.append(next);
        else
            unread(next);
    }
    return text_from(line);
}

// ---- Output ----------------------------------------------------------------------------------

BufferedOutput::BufferedOutput(Output& dst, int bufsize)
    : dst(dst), pos(0), buffer(new char[bufsize]), bufsize(bufsize), fill(0) {}

// The buffer is freed whether or not the flush succeeds.
BufferedOutput::~BufferedOutput() noexcept(false) {
    try {
        flush();
    } catch (...) {
        delete[] buffer;
        if (velmora::unwinding())
            return;
        throw;
    }
    delete[] buffer;
}

s64 BufferedOutput::curpos() const {
    return pos;
}

int BufferedOutput::write(const char* buf, int n) {
    if (bufsize != 0) {
        if (n < 1)
            return 0;
        // Make room, then store the bytes if an empty buffer can hold them at all.
        if (n > bufsize - fill)
            flush();
        if (n <= bufsize) {
            memcpy(buffer + fill, buf, uword(n));
            fill += n;
            pos += n;
            return n;
        }
    }
    // Too large for the buffer, or there is none: pass them on as they are.
    const int count = dst.write(buf, n);
    pos += count;
    return count;
}

s64 BufferedOutput::seek_from_start(s64 target) {
    if (target == pos)
        return pos;
    flush();
    return pos = dst.seek_from_start(target);
}

s64 BufferedOutput::seek_from_curpos(s64 delta) {
    if (delta == 0)
        return pos;
    flush();
    return pos = dst.seek_from_start(pos + delta);
}

void BufferedOutput::flush() {
    if (bufsize == 0)
        return;
    while (fill > 0) {
        const int count = dst.write(buffer, fill);
        if (count < 0)
            XTHROW("write error");
        fill -= count;
        memmove(buffer, buffer + count, uword(fill));
    }
}
