// SPDX-License-Identifier: BSD-3-Clause

// The sum of one to four images.
#include <DDImage/Iop.h>

using namespace DD::Image;

namespace {

class Sum : public Iop {
public:
    explicit Sum(Node* node) : Iop(node) {}

    const char* Class() const override { return "Sum"; }
    const char* node_help() const override { return "Adds its inputs."; }
    int minimum_inputs() const override { return 1; }
    int maximum_inputs() const override { return 4; }

    void engine(int y, int x, int r, ChannelMask channels, Row& row) override {
        foreach (z, channels)
            row.writableConstant(0, z);
        for (int n = 0; n < inputs(); n++) {
            Row one(x, r);
            input(n)->get(y, x, r, channels, one);
            foreach (z, channels)
                for (int column = x; column < r; column++)
                    row.writable(z)[column] += one[z][column];
        }
    }

protected:
    void _validate(bool for_real) override {
        info_ = IopInfo();
        for (int n = 0; n < inputs(); n++) {
            input(n)->validate(for_real);
            info_.merge(input(n)->info());
            info_.turn_on(input(n)->info().channels());
        }
    }
};

Op* make(Node* node) {
    return new Sum(node);
}

const Op::Description description("Sum", make);

} // namespace
