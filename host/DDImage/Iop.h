// An op that makes an image, row by row.
//
// Shapes:    row 0 is the bottom one; spans are half-open.
// Errors:    while the host checks its plug-ins, get() throws velmora::host::PluginMisuse.
// Threads:   get and engine run in several threads at once, in any order of rows.
#pragma once

#include <DDImage/Box.h>
#include <DDImage/ChannelSet.h>
#include <DDImage/IopInfo.h>
#include <DDImage/Op.h>
#include <DDImage/Row.h>

namespace DD::Image {

class DDImage_API Iop : public Op, public IopInfoOwner {
public:
    // One image input, black when nothing is there.
    explicit Iop(Node* node);
    ~Iop() override;

    Iop* iop() override { return this; }

    // The inputs that are images; null where another kind of op or none is there.
    Iop* input(int n) const { return dynamic_cast<Iop*>(Op::input(n)); }
    Iop* input(int n, int m) const { return dynamic_cast<Iop*>(Op::input(n, m)); }
    Iop& input0() const { return *input(0); }
    Iop& input1() const { return *input(1); }

    bool test_input(int n, Op* op) const override; // images only
    Op* default_input(int n) const override;       // a black image of the project's format

    // Fills columns [x, r) of row `y`, once opened. Every channel of `channels` must be filled or
    // erased, unless the op is aborted.
    virtual void engine(int y, int x, int r, ChannelMask channels, Row& row) = 0;

    // engine for what lies in the box; beside it the edge goes on, or black when the info says so.
    virtual void get(int y, int x, int r, ChannelMask channels, Row& row);

    // Tells which pixels will be asked for, `count` times.
    void request(int x, int y, int r, int t, ChannelMask channels, int count);
    void request(const Box& box, ChannelMask channels, int count);
    void request(ChannelMask channels, int count);
    const Box& requestedBox() const { return requested_box; } // of all requests for this hash

    void force_validate(bool for_real = true);

    ChannelMask out_channels() const { return out; }
    virtual void in_channels(int n, ChannelSet& channels) const;

protected:
    void _validate(bool for_real) override; // the first input's info
    virtual void _request(int x, int y, int r, int t, ChannelMask channels, int count);

    void set_out_channels(ChannelMask channels) { out = channels; }
    void copy_info(int n = 0);

private:
    friend class NukeWrapper;
    Box requested_box;
    bool is_requested = false;
    Hash requested_for;
    ChannelSet out = Mask_All; // the channels that it may change

    void checked_engine(int y, int x, int r, ChannelMask channels, Row& row);
};

} // namespace DD::Image
