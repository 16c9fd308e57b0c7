// SPDX-License-Identifier: BSD-3-Clause
#include "host/runtime/scanlines.h"

#include <algorithm>
#include <atomic>
#include <exception>
#include <mutex>
#include <random>
#include <system_error>
#include <thread>
#include <vector>

namespace velmora::host {

using DD::Image::Box;
using DD::Image::ChannelMask;
using DD::Image::Iop;
using DD::Image::Op;
using DD::Image::Row;

static void throw_error_of(Op& op) {
    if (const Op* const failed = op.error_op())
        throw OpFailure(failed->node_name(), failed->error_message());
}

void validate(Op& op) {
    op.validate(true);
    throw_error_of(op);
}

static Iop& image_of(Op& op) {
    Iop* const iop = op.iop();
    if (!iop)
        throw OpFailure(op.node_name(), "makes no image");
    return *iop;
}

Opened::Opened(Op& op, const DD::Image::ChannelSet& channels) : image(image_of(op)) {
    validate(op);
    image.request(channels, 1);
    image.open();
}

Opened::~Opened() {
    image.close();
}

namespace {

struct Span {
    int y, x, r;
};

// Hands out spans to threads, and keeps the first exception.
class Work {
public:
    Work(Iop& iop, ChannelMask channels, std::vector<Span> spans, const RowSink& sink)
        : iop(iop), channels(channels), spans(std::move(spans)), sink(sink) {}

    // Runs in each thread, until no span is left.
    void run() {
        try {
            for (std::size_t i = next++; i < spans.size() && !failed && !iop.aborted(); i = next++)
                pull(spans[i]);
        } catch (...) {
            const std::lock_guard<std::mutex> guard(lock);
            if (!failed)
                exception = std::current_exception();
            failed = true;
        }
    }

    void rethrow() const {
        if (exception)
            std::rethrow_exception(exception);
    }

private:
    Iop& iop;
    ChannelMask channels;
    const std::vector<Span> spans;
    const RowSink& sink;
    std::atomic<std::size_t> next{0};
    std::atomic<bool> failed{false};
    std::mutex lock;
    std::exception_ptr exception;

    // A row that was aborted half way is not delivered.
    void pull(const Span& span) {
        Row row(span.x, span.r);
        iop.get(span.y, span.x, span.r, channels, row);
        if (!iop.aborted())
            sink(row, span.y, span.x, span.r);
    }
};

} // namespace

// The box in pieces, in the order in which they are handed out.
static std::vector<Span> spans_of(const Box& box, const Pulling& pulling) {
    std::vector<Span> spans;
    // Rows from the bottom, cut into spans, perhaps shuffled.
    const int columns = pulling.span > 0 ? pulling.span : std::max(box.w(), 1);
    for (int y = box.y(); y < box.t(); y++)
        for (int x = box.x(); x < box.r(); x += columns)
            spans.push_back({y, x, std::min(x + columns, box.r())});
    if (pulling.shuffled)
        std::shuffle(spans.begin(), spans.end(), std::mt19937(pulling.shuffled));
    return spans;
}

namespace {

// Threads that run the work, joined at the end; fewer than `count` if the system has no more.
class Helpers {
public:
    Helpers(Work& work, int count) {
        try {
            for (int i = 0; i < count; i++)
                threads.emplace_back([&work] { work.run(); });
        } catch (const std::system_error&) {
            // The other threads take their rows.
        }
    }
    Helpers(const Helpers&) = delete;
    Helpers& operator=(const Helpers&) = delete;
    ~Helpers() {
        for (std::thread& thread : threads)
            thread.join();
    }

private:
    std::vector<std::thread> threads;
};

} // namespace

void pull_rows(Iop& iop, const Box& box, ChannelMask channels, const Pulling& pulling,
               const RowSink& sink) {
    // This thread works, too.
    Work work(iop, channels, spans_of(box, pulling), sink);
    {
        Helpers helpers(work, pulling.threads - 1);
        work.run();
    }
    work.rethrow();
    throw_error_of(iop);
}

} // namespace velmora::host
