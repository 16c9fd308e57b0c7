// SPDX-License-Identifier: BSD-3-Clause

// An image whose pixels encode their place: red is the column, green the row, blue the frame if
// the node is `timed`, alpha is `level`. It can fail in every way that is allowed.
#include <DDImage/Iop.h>
#include <DDImage/NukeWrapper.h>
#include <stdexcept>

using namespace DD::Image;

namespace {

const char* const troubles[] = {"none",
                                "error in validate",
                                "throw in validate",
                                "throw in open",
                                "error in engine",
                                "throw in engine",
                                "abort in engine",
                                nullptr};
enum {
    none,
    error_in_validate,
    throw_in_validate,
    throw_in_open,
    error_in_engine,
    throw_in_engine,
    abort_in_engine
};

class Ramp : public Iop {
public:
    explicit Ramp(Node* node) : Iop(node) { inputs(0); }

    const char* Class() const override { return "Ramp"; }
    const char* node_help() const override { return "Counts columns and rows."; }

    void knobs(Knob_Callback f) override {
        Format_knob(f, &formats, "format");
        Int_knob(f, &x_, "x");
        Int_knob(f, &y_, "y");
        Int_knob(f, &r_, "r");
        Int_knob(f, &t_, "t");
        Double_knob(f, &level, "level");
        Bool_knob(f, &outside, "black_outside");
        Bool_knob(f, &timed, "timed");
        Bool_knob(f, &without_blue, "without_blue");
        Enumeration_knob(f, &trouble, troubles, "trouble");
        Int_knob(f, &row_of_trouble, "row");
    }
    void append(Hash& hash) override {
        if (timed)
            outputContext().append(hash);
    }

    void engine(int y, int x, int r, ChannelMask channels, Row& row) override {
        if (y == row_of_trouble && trouble == error_in_engine)
            error("row %d does not do", y);
        if (y == row_of_trouble && trouble == throw_in_engine)
            throw std::runtime_error("row " + std::to_string(y) + " is thrown");
        if (y == row_of_trouble && trouble == abort_in_engine)
            abort();
        if (aborted())
            return;
        foreach (z, channels) {
            float* const samples = row.writable(z);
            for (int column = x; column < r; column++)
                samples[column] = z == Chan_Red     ? float(column)
                                  : z == Chan_Green ? float(y)
                                  : z == Chan_Blue  ? float(timed ? outputContext().frame() : 0)
                                                    : float(level);
        }
    }

protected:
    void _validate(bool for_real) override {
        info_.format(*formats.format());
        info_.full_size_format(*formats.fullSizeFormat());
        info_.set(x_, y_, r_, t_);
        info_.channels(without_blue ? ChannelSet(Mask_RGBA) - Mask_Blue : ChannelSet(Mask_RGBA));
        info_.black_outside(outside);
        if (for_real && trouble == error_in_validate)
            error("level %g does not do", level);
        if (for_real && trouble == throw_in_validate)
            throw std::runtime_error("the validation is thrown");
    }
    void _open() override {
        if (trouble == throw_in_open)
            throw std::runtime_error("the opening is thrown");
    }

private:
    FormatPair formats;
    int x_ = 0, y_ = 0, r_ = 4, t_ = 3;
    double level = 1;
    bool outside = false, timed = false, without_blue = false;
    int trouble = none, row_of_trouble = 0;
};

Op* make(Node* node) {
    return new Ramp(node);
}

// An op that adds 100 to its input, in the wrapper with everything.
class Raise : public Iop {
public:
    explicit Raise(Node* node) : Iop(node) {}
    const char* Class() const override { return "Raise"; }
    const char* node_help() const override { return "Adds 100."; }
    const char* input_label(int, char*) const override { return "source"; }

    void engine(int y, int x, int r, ChannelMask channels, Row& row) override {
        Row below(x, r);
        input0().get(y, x, r, channels, below);
        foreach (z, channels) {
            float* const samples = row.writable(z);
            for (int column = x; column < r; column++)
                samples[column] = below[z][column] + 100;
        }
    }
};

Op* make_raise(Node* node) {
    return new NukeWrapper(new Raise(node));
}

Iop* make_bare_raise(Node* node) {
    return (new NukeWrapper(new Raise(node)))->noChannels()->noMask()->noMix()->noUnpremult();
}

const Op::Description ramp("Ramp", make);
const Op::Description raise("Raise", make_raise);
const Op::Description bare_raise("BareRaise", "Filter/Raise", make_bare_raise);

} // namespace
