// Byte streams: what can be read from, what can be written to, and a buffer laid over either.
//
// Units:     positions and counts are bytes.
// Ownership: a buffered stream refers to the stream beneath, which must outlive it, and owns its
//            buffer. Neither copies.
// Errors:    StrXception "read error", "write error" and "can't unread more than 1 byte"; whatever
//            the stream beneath throws passes through.
// Threads:   one object belongs to one thread at a time.
#pragma once

#include "core/string.h"
#include "core/types.h"

// The order of the virtual functions is part of the interface, here and in Output.
class Input {
public:
    virtual ~Input() {}

    virtual s64 curpos() const = 0;

    // Reads up to `n` bytes into `buf`. Gives how many, 0 at the end, a negative number on error.
    virtual int read(char* buf, int n) = 0;

    // Give the new position.
    virtual s64 seek_from_start(s64 pos) = 0;
    virtual s64 seek_from_curpos(s64 delta) = 0;
};

class Output {
public:
    virtual ~Output() noexcept(false) {} // those that flush may throw

    virtual s64 curpos() const = 0;

    // Writes up to `n` bytes of `buf`. Gives how many, a negative number on error.
    virtual int write(const char* buf, int n) = 0;

    // Give the new position.
    virtual s64 seek_from_start(s64 pos) = 0;
    virtual s64 seek_from_curpos(s64 delta) = 0;
};

// Reads through a block, takes one byte back, and cuts lines.
//
// A read of the stream beneath that gives fewer bytes than it was asked for is taken as the end of
// the data, so pipes and sockets may end early here; only a seek to another position leads on.
class BufferedInput : public Input {
public:
    // Reads nothing yet. `bufsize` 0 reads straight through; what is pushed back then never comes
    // out again, so lines must not be cut without a buffer.
    BufferedInput(Input& src, int bufsize);
    BufferedInput(const BufferedInput&) = delete;
    BufferedInput& operator=(const BufferedInput&) = delete;
    ~BufferedInput() override;

    // The position of the next byte that read() gives, counted from 0 where `src` stood.
    s64 curpos() const override;

    // Gives fewer bytes than `n` only at the end or on error. An error while the buffer is filled
    // counts as the end. What is as large as the buffer goes straight from `src` to `buf`, and
    // there the result of `src` is added to the count and the position as it is: -1 after 5
    // buffered bytes gives 4, so only a negative result is sure to be an error.
    int read(char* buf, int n) override;

    // Both do nothing when they lead to where this stream stands. Otherwise they forget what is
    // buffered or pushed back, and the end; `src` is always told a position from the start.
    s64 seek_from_start(s64 pos) override;
    s64 seek_from_curpos(s64 delta) override;

    // Pushes `ch` back, to be read next; throws "can't unread more than 1 byte" while another one
    // waits. The byte 0xFF is lost: it is the mark for no byte, and only the position moves.
    void unread(char ch);

    // The next line with its end, which is LF, CR, CR LF or LF CR; without one when the data end
    // first; empty at the end of the data. A NUL byte is left out, as a String cannot hold it, and
    // so is a byte 0xFF that starts a line, since looking for the second half of the end before it
    // pushes it back. A line may be of any length that memory holds. Throws "read error".
    String readline();

private:
    Input& src;
    s64 pos;
    char* buffer;
    s32 bufsize;
    s32 fill;     // bytes that wait at the front of `buffer`
    s32 pushback; // the byte, with its sign, or -1 for none
    s32 at_eof;   // 1 once `src` has given fewer bytes than asked for, else 0

    int take_pushback(char* buf);
    void hand_out(char* buf, int n);
    void refill();
    void forget();
};

// Collects small writes in a block and passes them on together.
class BufferedOutput : public Output {
public:
    // Writes nothing yet. `bufsize` 0 writes straight through.
    BufferedOutput(Output& dst, int bufsize);
    BufferedOutput(const BufferedOutput&) = delete;
    BufferedOutput& operator=(const BufferedOutput&) = delete;

    // Flushes, and throws as flush does, but for a destructor that runs because of another
    // exception: what cannot be written is then lost without a word. To be told, flush first.
    ~BufferedOutput() noexcept(false) override;

    // The position behind all that was written here, counted from 0 where `dst` stood.
    s64 curpos() const override;

    // Takes all `n` bytes when the buffer can hold them, having flushed it if it must. What is
    // larger goes straight to `dst`, behind what was buffered, and the result of `dst` is given and
    // added to the position as it is, also when it is negative.
    int write(const char* buf, int n) override;

    // Both do nothing when they lead to where this stream stands. Otherwise they flush; `dst` is
    // always told a position from the start.
    s64 seek_from_start(s64 pos) override;
    s64 seek_from_curpos(s64 delta) override;

    // Passes on all that is buffered. A `dst` that takes no byte is asked again, for ever. Throws
    // "write error"; what was not written stays buffered.
    void flush();

private:
    Output& dst;
    s64 pos;
    char* buffer;
    s32 bufsize;
    s32 fill; // bytes that wait to be written
};

static_assert(sizeof(Input) == sizeof(void*) && sizeof(Output) == sizeof(void*),
              "operations and nothing else");
static_assert(sizeof(BufferedInput) == 4 * sizeof(void*) + 4 * sizeof(s32),
              "src, pos, buffer, bufsize, fill, pushback, at_eof, closely packed");
static_assert(sizeof(BufferedOutput) == 4 * sizeof(void*) + 2 * sizeof(s32),
              "dst, pos, buffer, bufsize, fill, closely packed");
