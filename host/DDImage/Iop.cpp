// SPDX-License-Identifier: BSD-3-Clause
#include <algorithm>
#include <DDImage/Iop.h>

namespace DD::Image {

Iop::Iop(Node* node) : Op(node) {
    Op::inputs(1);
}

Iop::~Iop() {}

bool Iop::test_input(int, Op* op) const {
    return dynamic_cast<Iop*>(op) != nullptr;
}

void Iop::in_channels(int, ChannelSet&) const {}

// An unconnected input leaves the info as it is.
void Iop::copy_info(int n) {
    Iop* const source = input(n);
    if (!source)
        return;
    source->validate(true);
    info_ = source->info();
}

void Iop::_validate(bool) {
    copy_info(0);
}

void Iop::force_validate(bool for_real) {
    invalidate();
    validate(for_real);
}

void Iop::request(int x, int y, int r, int t, ChannelMask channels, int count) {
    // A new hash forgets the requests for the old one.
    if (requested_for != hash())
        is_requested = false;
    requested_for = hash();
    if (is_requested)
        requested_box.set(std::min(requested_box.x(), x), std::min(requested_box.y(), y),
                          std::max(requested_box.r(), r), std::max(requested_box.t(), t));
    else
        requested_box.set(x, y, r, t);
    is_requested = true;
    _request(x, y, r, t, channels, count);
}

void Iop::request(const Box& box, ChannelMask channels, int count) {
    request(box.x(), box.y(), box.r(), box.t(), channels, count);
}

void Iop::request(ChannelMask channels, int count) {
    request(info_, channels, count);
}

void Iop::_request(int x, int y, int r, int t, ChannelMask channels, int count) {
    if (Iop* const source = input(0))
        source->request(x, y, r, t, channels, count);
}

void Iop::get(int y, int x, int r, ChannelMask channels, Row& row) {
    // Erase what the op does not make, and everything where it is black.
    const ChannelSet made = channels & info_.channels();
    row.erase(channels - made);
    const bool beside = y < info_.y() || y >= info_.t() || x >= info_.r() || r <= info_.x();
    if (made.empty() || r <= x || (beside && info_.black_outside())) {
        row.erase(made);
        return;
    }
    // The whole span is inside.
    if (!beside && x >= info_.x() && r <= info_.r()) {
        checked_engine(y, x, r, made, row);
        return;
    }

    // Make the part inside, or the nearest pixel, and extend it.
    const int from = info_.clampx(x), to = info_.clampx(r - 1) + 1;
    Row inside(from, to);
    checked_engine(info_.clampy(y), from, to, made, inside);
    foreach (channel, made) {
        const float* const samples = inside[channel];
        float* const wanted = row.writable(channel);
        for (int column = x; column < r; column++) {
            const int nearest = info_.clampx(column);
            wanted[column] = nearest != column && info_.black_outside() ? 0 : samples[nearest];
        }
    }
}

} // namespace DD::Image
