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

// Moves the pushed-back byte, if there is one, to `buf`; gives how many bytes that were.
int BufferedInput::take_pushback(char* buf) {
    if (pushback == no_pushback)
        return 0;
    *buf = static_cast<char>(pushback);
    pushback = no_pushback;
    return 1;
}

// Moves the first `n` buffered bytes to `buf` and the others to the front.
void BufferedInput::hand_out(char* buf, int n) {
    memcpy(buf, buffer, uword(n));
    fill -= n;
    memmove(buffer, buffer + n, uword(fill));
}

// An error leaves the buffer empty, like the end.
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

    int got = take_pushback(buf);
    while (n - got > fill) {
        const int waiting = fill;
        hand_out(buf + got, waiting);
        got += waiting;

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

// Whether `second` belongs to the line's end that `first` starts.
static bool is_pair(char first, char second) {
    return (first == '\r' && second == '\n') || (first == '\n' && second == '\r');
}

// Makes a text of the characters by taking their block over, which both free in the same way. The
// constructor from a count would copy them, and no more than 32 bits count.
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
        if (n > bufsize - fill)
            flush();
        if (n <= bufsize) {
            memcpy(buffer + fill, buf, uword(n));
            fill += n;
            pos += n;
            return n;
        }
    }
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
