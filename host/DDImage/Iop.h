// SPDX-License-Identifier: BSD-3-Clause

// An op that makes an image, row by row.
//
// Shapes:    row 0 is at the bottom; spans of columns are half-open, [x, r).
// Errors:    while plug-ins are checked, get() throws velmora::host::PluginMisuse.
// Threads:   get() and engine() run in several threads at once, rows in any order; the rest in one.
#pragma once

#include <DDImage/Box.h>
#include <DDImage/ChannelSet.h>
#include <DDImage/IopInfo.h>
#include <DDImage/Op.h>
#include <DDImage/Row.h>

namespace DD::Image {

class DDImage_API Iop : public Op, public IopInfoOwner {
public:
    // With one image input, which is black when unconnected.
    explicit Iop(Node* node);
    ~Iop() override;

    Iop* iop() override { return this; }

    // The inputs that are images; null for other ops and where there is none.
    Iop* input(int n) const { return dynamic_cast<Iop*>(Op::input(n)); }
    Iop* input(int n, int m) const { return dynamic_cast<Iop*>(Op::input(n, m)); }
    Iop& input0() const { return *input(0); }
    Iop& input1() const { return *input(1); }

    bool test_input(int n, Op* op) const override; // images only
    Op* default_input(int n) const override;       // a black image of the project's format

    // Fills columns [x, r) of row `y`, between open() and close(). Must write or erase all of
    // `channels`, unless the op is aborted.
    virtual void engine(int y, int x, int r, ChannelMask channels, Row& row) = 0;

    // Calls engine() for the part inside the box; outside, repeats the edge, or is black if the
    // info says so. Channels that the info does not list are erased.
    virtual void get(int y, int x, int r, ChannelMask channels, Row& row);

    // Announces that these pixels will be asked for, `count` times.
    void request(int x, int y, int r, int t, ChannelMask channels, int count);
    void request(const Box& box, ChannelMask channels, int count);
    void request(ChannelMask channels, int count);
    const Box& requestedBox() const { return requested_box; } // around all requests for this hash

    // Validates even if nothing has changed.
    void force_validate(bool for_real = true);

    // The channels that the op may change. in_channels() replaces output channels by those that the
    // op needs of input `n` for them.
    ChannelMask out_channels() const { return out; }
    virtual void in_channels(int n, ChannelSet& channels) const;

protected:
    void _validate(bool for_real) override; // the first input's info
    virtual void _request(int x, int y, int r, int t, ChannelMask channels, int count);

    void set_out_channels(ChannelMask channels) { out = channels; }
    void copy_info(int n = 0); // from input `n`, validated first

private:
    friend class NukeWrapper;
    Box requested_box;
    bool is_requested = false;
    Hash requested_for;
    ChannelSet out = Mask_All; // the channels that the op may change

    void checked_engine(int y, int x, int r, ChannelMask channels, Row& row);
};

} // namespace DD::Image
