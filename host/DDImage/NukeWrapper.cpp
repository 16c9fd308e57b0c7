// SPDX-License-Identifier: BSD-3-Clause
#include <DDImage/NukeWrapper.h>

namespace DD::Image {

NukeWrapper::NukeWrapper(Iop* op) : Iop(op->node()), wrapped(op) {
    // Errors, aborts and the hash are shared through these links.
    op->wrapper = this;
    Op::wrapped = op;
    Op::inputs(maximum_inputs());
}

NukeWrapper::~NukeWrapper() {}

NukeWrapper* NukeWrapper::noChannels() {
    channels_knob = false;
    return this;
}

NukeWrapper* NukeWrapper::noMask() {
    mask = false;
    Op::inputs(maximum_inputs());
    return this;
}

NukeWrapper* NukeWrapper::noMix() {
    mix = false;
    return this;
}

NukeWrapper* NukeWrapper::noUnpremult() {
    return this;
}

// ---- knobs and inputs --------------------------------------------------------------------------

void NukeWrapper::knobs(Knob_Callback f) {
    wrapped->knobs(f);
    if (channels_knob) {
        Input_ChannelMask_knob(f, &chosen, 0, "channels");
        SetFlags(f, Knob::NODE_KNOB);
    }
    if (mix) {
        Float_knob(f, &mix_amount, "mix");
        SetFlags(f, Knob::NODE_KNOB);
    }
}

int NukeWrapper::knob_change_finished(Knob* knob, bool finished) {
    return wrapped->knob_change_finished(knob, finished);
}

void NukeWrapper::inputs(int count) {
    wrapped->inputs(count - (mask ? 1 : 0));
    Op::inputs(count);
}

int NukeWrapper::optional_input() const {
    return mask ? mask_input() : wrapped->optional_input();
}

bool NukeWrapper::test_input(int n, Op* op) const {
    return n == mask_input() ? Iop::test_input(n, op) : wrapped->test_input(n, op);
}

Op* NukeWrapper::default_input(int n) const {
    return n == mask_input() ? nullptr : wrapped->default_input(n);
}

const char* NukeWrapper::input_label(int n, char* buffer) const {
    return n == mask_input() ? "mask" : wrapped->input_label(n, buffer);
}

float NukeWrapper::uses_input(int n) const {
    return n == mask_input() ? 1 : wrapped->uses_input(n);
}

int NukeWrapper::split_input(int n) const {
    return n == mask_input() ? 1 : wrapped->split_input(n);
}

const OutputContext& NukeWrapper::inputContext(int n, int m, OutputContext& scratch) const {
    return n == mask_input() ? outputContext() : wrapped->inputContext(n, m, scratch);
}

// The op sees its own inputs only, the wrapper all of them.
void NukeWrapper::set_input(int place, Op* op, int n, int m) {
    if (n != mask_input())
        wrapped->set_input(place, op, n, m);
    Op::set_input(place, op, n, m);
}

void NukeWrapper::setOutputContext(const OutputContext& context) {
    wrapped->setOutputContext(context);
    Op::setOutputContext(context);
}

void NukeWrapper::in_channels(int n, ChannelSet& channels) const {
    wrapped->in_channels(n, channels);
}

// ---- the cycle ---------------------------------------------------------------------------------

void NukeWrapper::_validate(bool for_real) {
    // The output is the op's; the first input and the mask are needed to mix.
    wrapped->validate(for_real);
    info_ = wrapped->info();
    set_out_channels(wrapped->out_channels());
    if (Iop* const holdout = mask ? input(mask_input()) : nullptr)
        holdout->validate(for_real);
    if (Iop* const source = input(0))
        source->validate(for_real);
}

void NukeWrapper::_request(int x, int y, int r, int t, ChannelMask channels, int count) {
    wrapped->request(x, y, r, t, channels, count);
    if (Iop* const holdout = mask ? input(mask_input()) : nullptr)
        holdout->request(x, y, r, t, Mask_Alpha, count);
}

void NukeWrapper::_open() {
    wrapped->open();
}

void NukeWrapper::_close() {
    wrapped->close();
}

void NukeWrapper::engine(int y, int x, int r, ChannelMask channels, Row& row) {
    // The chosen channels from the op, the others from its first input.
    const ChannelSet own = channels & chosen, others = channels - chosen;
    if (!own.empty())
        wrapped->engine(y, x, r, own, row);
    if (aborted())
        return;
    if (!others.empty()) {
        Row beneath(x, r);
        if (Iop* const source = input(0))
            source->get(y, x, r, others, beneath);
        row.copy(beneath, others, x, r);
    }
    if (mask || mix)
        blend(y, x, r, own, row);
}

void NukeWrapper::blend(int y, int x, int r, ChannelMask channels, Row& row) {
    Iop* const holdout = mask ? input(mask_input()) : nullptr;
    if (!holdout && mix_amount == 1)
        return;
    // Mix with the first input.
    Row beneath(x, r), amount(x, r);
    if (Iop* const source = input(0))
        source->get(y, x, r, channels, beneath);
    if (holdout)
        holdout->get(y, x, r, Mask_Alpha, amount);
    foreach (channel, channels) {
        const float* const below = beneath[channel];
        const float* const weight = amount[Chan_Alpha];
        float* const samples = row.writable(channel);
        for (int column = x; column < r; column++) {
            const float w = float(mix_amount) * (holdout ? weight[column] : 1);
            samples[column] = below[column] * (1 - w) + samples[column] * w;
        }
    }
}

} // namespace DD::Image
