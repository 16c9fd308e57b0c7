// SPDX-License-Identifier: BSD-3-Clause

// Byte streams: an input, an output, and a buffer on top of either.
//
// Units:     positions and counts are bytes.
// Ownership: a buffered stream owns its buffer and refers to the underlying stream, which must
//            outlive it. Buffered streams cannot be copied.
// Errors:    StrXception "read error", "write error" and "can't unread more than 1 byte";
//            exceptions of the underlying stream pass through.
// Threads:   one object belongs to one thread at a time.
#pragma once

#include "core/string.h"
#include "core/types.h"

// The order of the virtual functions is part of the interface, here and in Output.
class Input {
public:
    virtual ~Input() {}

    virtual s64 curpos() const = 0;

    // Reads up to `n` bytes into `buf`; returns how many, 0 at the end, a negative number on error.
    virtual int read(char* buf, int n) = 0;

    // Return the new position.
    virtual s64 seek_from_start(s64 pos) = 0;
    virtual s64 seek_from_curpos(s64 delta) = 0;
};

class Output {
public:
    virtual ~Output() noexcept(false) {} // those that flush may throw

    virtual s64 curpos() const = 0;

    // Writes up to `n` bytes of `buf`; returns how many, a negative number on error.
    virtual int write(const char* buf, int n) = 0;

    // Return the new position.
    virtual s64 seek_from_start(s64 pos) = 0;
    virtual s64 seek_from_curpos(s64 delta) = 0;
};

// Reads through a buffer, lets one byte be pushed back, and splits lines.
//
// When the underlying stream returns fewer bytes than requested, that is taken as the end of the
// data, so pipes and sockets may seem to end early; only a seek to another position clears it.
class BufferedInput : public Input {
public:
    // Reads nothing yet. `bufsize` 0 reads without a buffer; a byte that is pushed back is then
    // never returned, so readline() needs a buffer.
    BufferedInput(Input& src, int bufsize);
    BufferedInput(const BufferedInput&) = delete;
    BufferedInput& operator=(const BufferedInput&) = delete;
    ~BufferedInput() override;

    // The position of the next byte that read() returns, counted from 0 at the position of `src`
    // when this object was made.
    s64 curpos() const override;

    // Returns fewer than `n` bytes only at the end or on error. An error while the buffer is being
    // filled counts as the end. A part as large as the buffer is read directly into `buf`, and the
    // result of `src` is added to the count and the position even when it is negative: -1 after 5
    // buffered bytes returns 4, so only a negative result is certainly an error.
    int read(char* buf, int n) override;

    // Both do nothing when the position would not change. Otherwise they discard the buffer, the
    // byte pushed back and the end of the data; `src` is always moved by seek_from_start.
    s64 seek_from_start(s64 pos) override;
    s64 seek_from_curpos(s64 delta) override;

    // Pushes `ch` back, to be read next; throws "can't unread more than 1 byte" while one is pushed
    // back already. The byte 0xFF is lost, as -1 marks no byte: only the position moves.
    void unread(char ch);

    // Returns the next line with its end, which is LF, CR, CR LF or LF CR; the last line may have
    // none; empty at the end of the data. Lines may be of any length. NUL bytes are left out, as a
    // String cannot hold them; so is a byte 0xFF that starts a line, as it is pushed back when the
    // end of the line before is read. Throws "read error".
    String readline();

private:
    Input& src;
    s64 pos;
    char* buffer;
    s32 bufsize;
    s32 fill;     // unread bytes, at the front of `buffer`
    s32 pushback; // the byte, sign-extended, or -1 for none
    s32 at_eof;   // 1 once `src` has returned fewer bytes than requested, else 0

    int take_pushback(char* buf);
    void hand_out(char* buf, int n);
    void refill();
    void forget();
};

// Collects small writes in a buffer and passes them on together.
class BufferedOutput : public Output {
public:
    // Writes nothing yet. `bufsize` 0 writes without a buffer.
    BufferedOutput(Output& dst, int bufsize);
    BufferedOutput(const BufferedOutput&) = delete;
    BufferedOutput& operator=(const BufferedOutput&) = delete;

    // Flushes and may throw, except during unwinding, when a failed write is silently dropped. Call
    // flush() first to see errors.
    ~BufferedOutput() noexcept(false) override;

    // The position after the last byte written here, counted from 0 at the position of `dst` when
    // this object was made.
    s64 curpos() const override;

    // Stores all `n` bytes when they fit in the buffer, which is flushed first if necessary. Larger
    // writes go directly to `dst`, after the buffered bytes; the result of `dst` is returned, and
    // added to the position even when it is negative.
    int write(const char* buf, int n) override;

    // Both do nothing when the position would not change. Otherwise they flush; `dst` is always
    // moved by seek_from_start.
    s64 seek_from_start(s64 pos) override;
    s64 seek_from_curpos(s64 delta) override;

    // Writes all buffered bytes to `dst`, retrying without limit while that takes none. Throws
    // "write error"; the bytes that were not written stay buffered.
    void flush();

private:
    Output& dst;
    s64 pos;
    char* buffer;
    s32 bufsize;
    s32 fill; // bytes to be written, at the front of `buffer`
};

static_assert(sizeof(Input) == sizeof(void*) && sizeof(Output) == sizeof(void*),
              "operations and nothing else");
static_assert(sizeof(BufferedInput) == 4 * sizeof(void*) + 4 * sizeof(s32),
              "src, pos, buffer, bufsize, fill, pushback, at_eof, closely packed");
static_assert(sizeof(BufferedOutput) == 4 * sizeof(void*) + 2 * sizeof(s32),
              "dst, pos, buffer, bufsize, fill, closely packed");
