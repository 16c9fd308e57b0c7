// SPDX-License-Identifier: BSD-3-Clause
#include <DDImage/ChannelSet.h>

namespace DD::Image {

ChannelSet::ChannelSet(ChannelSetInit init) {
    if (init == Mask_All) {
        members.set();
        members.reset(Chan_Black); // number 0 is no channel
        return;
    }
    // Bit 0 is channel 1.
    for (int bit = 0; bit < 31; bit++)
        if (init >> bit & 1)
            insert(Channel(bit + 1));
}

ChannelSet::ChannelSet(const Channel* channels, int count) {
    for (int i = 0; i < count; i++)
        insert(channels[i]);
}

Channel ChannelSet::next(Channel channel) const {
    for (int number = channel + 1; number <= Chan_Last; number++)
        if (members.test(std::size_t(number)))
            return Channel(number);
    return Chan_Black;
}

// Decided by the first channel that only one of the sets has.
bool ChannelSet::operator<(const ChannelSet& set) const {
    for (int number = 1; number <= Chan_Last; number++)
        if (contains(Channel(number)) != set.contains(Channel(number)))
            return set.contains(Channel(number));
    return false;
}

void ChannelSet::append(Hash& hash) const {
    foreach (channel, *this)
        hash.append(int(channel));
}

} // namespace DD::Image
