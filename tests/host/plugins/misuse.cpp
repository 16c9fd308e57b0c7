// SPDX-License-Identifier: BSD-3-Clause

// An op that breaks the host's rules, one for each setting of its knob.
#include <DDImage/Iop.h>

using namespace DD::Image;

namespace {

const char* const ways[] = {"none",
                            "write before",
                            "write after",
                            "store a text",
                            "store one number",
                            "declare another knob",
                            "declare one more",
                            nullptr};
enum {
    none,
    write_in_front,
    write_behind,
    store_a_text,
    store_one_number,
    declare_another,
    declare_one_more
};

class Misuse : public Iop {
public:
    explicit Misuse(Node* node) : Iop(node) { inputs(0); }

    const char* Class() const override { return "Misuse"; }
    const char* node_help() const override { return "Does what it must not."; }

    void knobs(Knob_Callback f) override {
        Enumeration_knob(f, &way, ways, "way");
        SetFlags(f, Knob::EARLY_STORE); // the others depend on it
        if (way == store_a_text)
            File_knob(f, &text, "value");
        else
            Double_knob(f, &value, way == declare_another ? "other" : "value");
        if (way == store_one_number)
            Double_knob(f, &value, "colour");
        else
            Color_knob(f, colour, "colour");
        if (way == declare_one_more)
            Bool_knob(f, &more, "more");
    }

    void engine(int, int x, int r, ChannelMask channels, Row& row) override {
        foreach (z, channels)
            row.writableConstant(float(value), z);
        if (way == write_in_front)
            row.writable(Chan_Green)[x - 1] = 0;
        if (way == write_behind)
            row.writable(Chan_Alpha)[r] = 0;
    }

protected:
    void _validate(bool) override {
        info_.set(0, 0, 10, 10);
        info_.channels(Mask_RGBA);
    }

private:
    int way = none;
    double value = 1;
    const char* text = "unchanged";
    float colour[3] = {0, 0, 0};
    bool more = false;
};

Op* make(Node* node) {
    return new Misuse(node);
}

const Op::Description description("Misuse", make);

} // namespace
