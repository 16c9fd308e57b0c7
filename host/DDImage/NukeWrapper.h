// SPDX-License-Identifier: BSD-3-Clause

// Wraps an image op, and adds the usual controls: a choice of channels, a mask and a mix.
//
// The result is w * output + (1 - w) * first input, where w is mix times the alpha of the mask (the
// input after the op's own). Channels that are not chosen are the first input's. Without an image
// there, the first input is black.
//
// Ownership: the wrapper owns the op.
// Threads:   as Iop.
#pragma once

#include <DDImage/Iop.h>

namespace DD::Image {

class DDImage_API NukeWrapper : public Iop {
public:
    explicit NukeWrapper(Iop* op);
    ~NukeWrapper() override;

    // Leave out one of the additions. noUnpremult has no effect: that one is never added here.
    NukeWrapper* noChannels();
    NukeWrapper* noMask();
    NukeWrapper* noMix();
    NukeWrapper* noUnpremult();

    Iop* wrapped_iop() const { return wrapped.get(); }

    const char* Class() const override { return wrapped->Class(); }
    const char* node_help() const override { return wrapped->node_help(); }
    const char* displayName() const override { return wrapped->displayName(); }
    const char* node_shape() const override { return wrapped->node_shape(); }
    unsigned node_color() const override { return wrapped->node_color(); }
    bool can_clone() const override { return wrapped->can_clone(); }

    void knobs(Knob_Callback f) override;
    int knob_changed(Knob* knob) override { return wrapped->knob_changed(knob); }
    int knob_change_finished(Knob* knob, bool finished) override;

    void inputs(int count) override;
    int minimum_inputs() const override { return wrapped->minimum_inputs(); }
    int maximum_inputs() const override { return wrapped->maximum_inputs() + (mask ? 1 : 0); }
    int optional_input() const override;
    bool test_input(int n, Op* op) const override;
    Op* default_input(int n) const override;
    const char* input_label(int n, char* buffer) const override;
    float uses_input(int n) const override;
    int split_input(int n) const override;
    const OutputContext& inputContext(int n, int m, OutputContext& scratch) const override;
    void set_input(int place, Op* op, int n, int m) override;

    void setOutputContext(const OutputContext& context) override;
    void append(Hash& hash) override { wrapped->append(hash); }
    void in_channels(int n, ChannelSet& channels) const override;
    void engine(int y, int x, int r, ChannelMask channels, Row& row) override;

protected:
    void _validate(bool for_real) override;
    void _request(int x, int y, int r, int t, ChannelMask channels, int count) override;
    void _open() override;
    void _close() override;

private:
    std::unique_ptr<Iop> wrapped;
    bool channels_knob = true, mask = true, mix = true;
    ChannelSet chosen = Mask_All;
    double mix_amount = 1;

    int mask_input() const { return mask ? wrapped->maximum_inputs() : -1; }
    void blend(int y, int x, int r, ChannelMask channels, Row& row);
};

} // namespace DD::Image
