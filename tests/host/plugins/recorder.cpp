// SPDX-License-Identifier: BSD-3-Clause

// An image op that records every call of the host.
//
// Inputs:    0, an image, which it passes on with `gain` added; 1, an image over time: as many
//            copies as `copies` says, `step` frames apart, whose reds are added to alpha.
#include "tests/host/call_log.h"

#include <DDImage/Iop.h>
#include <DDImage/NukeWrapper.h>
#include <stdexcept>

using namespace DD::Image;

namespace {

class Recorder : public Iop {
public:
    explicit Recorder(Node* node) : Iop(node) {
        inputs(2);
        tell("constructor");
    }
    ~Recorder() override { log_call("destructor"); }

    const char* Class() const override { return "Recorder"; }
    const char* node_help() const override { return "Tells what is called."; }

    void knobs(Knob_Callback f) override {
        Int_knob(f, &copies, "copies");
        SetFlags(f, Knob::EARLY_STORE);
        Double_knob(f, &step, "step");
        SetFlags(f, Knob::EARLY_STORE);
        Double_knob(f, &gain, "gain");
        Double_knob(f, &added, "added");
        SetFlags(f, Knob::DO_NOT_WRITE);
        Float_knob(f, &note, "note");
        SetFlags(f, Knob::NO_RERENDER);
        File_knob(f, &file, "file");
        Bool_knob(f, &timed, "timed");
        Bool_knob(f, &fails, "fails");
        Bool_knob(f, &throws, "throws");
        tell(f.makeKnobs() ? "knobs made"
                           : "knobs stored: copies " + std::to_string(copies) + ", gain " +
                                 std::to_string(int(gain)) + ", note " + std::to_string(int(note)));
    }

    int knob_changed(Knob* knob) override {
        tell("knob_changed " + knob->name());
        return 1;
    }

    bool test_input(int n, Op* op) const override {
        tell("test_input " + std::to_string(n));
        return Iop::test_input(n, op);
    }
    Op* default_input(int n) const override {
        tell("default_input " + std::to_string(n));
        return n == 0 ? Iop::default_input(n) : nullptr;
    }
    int split_input(int n) const override {
        const int count = n == 1 ? copies : 1;
        tell("split_input " + std::to_string(n) + ": " + std::to_string(count));
        return count;
    }
    const OutputContext& inputContext(int n, int m, OutputContext& scratch) const override {
        scratch = outputContext();
        if (n == 1)
            scratch.setFrame(scratch.frame() + m * step);
        tell("inputContext " + std::to_string(n) + " " + std::to_string(m));
        return scratch;
    }
    void set_input(int place, Op* op, int n, int m) override {
        tell("set_input " + std::to_string(place) + ": " + std::to_string(n) + " " +
             std::to_string(m) + (op ? "" : " null"));
        Iop::set_input(place, op, n, m);
    }
    void setOutputContext(const OutputContext& context) override {
        Iop::setOutputContext(context);
        tell("setOutputContext");
    }
    void append(Hash& hash) override {
        tell("append");
        hash.append(added);
        if (timed)
            outputContext().append(hash);
    }

    void engine(int y, int x, int r, ChannelMask channels, Row& row) override {
        tell("engine " + std::to_string(y) + ": " + std::to_string(x) + " " + std::to_string(r));
        input0().get(y, x, r, channels, row);
        foreach (z, channels) {
            const Row::ReadablePtr below = row[z];
            std::vector<float> sums(below + x, below + r);
            for (float& sum : sums)
                sum += float(gain);
            for (int m = 0; z == Chan_Alpha && m < copies; m++) {
                Iop* const copy = input(1, m);
                Row one(x, r);
                if (copy)
                    copy->get(y, x, r, Mask_Red, one);
                for (int column = x; column < r; column++)
                    sums[std::size_t(column - x)] += one[Chan_Red][column];
            }
            std::copy(sums.begin(), sums.end(), row.writable(z) + x);
        }
    }

protected:
    void _validate(bool for_real) override {
        tell(for_real ? "_validate for real" : "_validate roughly");
        input0().validate(for_real);
        info_ = input0().info();
        info_.turn_on(Mask_RGBA);
        for (int m = 0; m < copies; m++) {
            if (Iop* const copy = input(1, m)) {
                copy->validate(for_real);
                info_.merge(copy->info());
            }
        }
        if (fails)
            error("gain %d does not do", int(gain));
        if (throws)
            throw std::runtime_error("thrown in _validate");
    }
    void _request(int x, int y, int r, int t, ChannelMask channels, int count) override {
        tell("_request " + std::to_string(x) + " " + std::to_string(y) + " " + std::to_string(r) +
             " " + std::to_string(t) + ", " + std::to_string(channels.size()) + " channels");
        Iop::_request(x, y, r, t, channels, count);
    }
    void _open() override { tell("_open"); }
    void _close() override { tell("_close"); }
    void _invalidate() override { tell("_invalidate"); }

private:
    int copies = 1;
    double step = 1;
    double gain = 0, added = 0;
    float note = 0;
    const char* file = nullptr;
    bool timed = false, fails = false, throws = false;

    void tell(const std::string& call) const {
        std::string frame = std::to_string(outputContext().frame());
        frame.erase(frame.find_last_not_of("0") + 1);
        if (frame.back() == '.')
            frame.pop_back();
        log_call((node() ? node_name() : "no node") + ("@" + frame + " ") + call);
    }
};

Op* make(Node* node) {
    return new Recorder(node);
}

Op* make_wrapped(Node* node) {
    return (new NukeWrapper(new Recorder(node)))->noChannels()->noMask()->noMix();
}

const Op::Description plain("Recorder", make);
const Op::Description wrapped("WrappedRecorder", make_wrapped);

} // namespace
