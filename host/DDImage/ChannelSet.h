// SPDX-License-Identifier: BSD-3-Clause

// A set of channels.
//
// Shapes:    foreach (z, channels) { ... } visits the channels in the order of their numbers.
// Threads:   a value.
#pragma once

#include <DDImage/Channel.h>
#include <DDImage/Hash.h>

#include <bitset>
#include <utility>

namespace DD::Image {

// One bit per channel, channel 1 the lowest.
enum ChannelSetInit {
    Mask_None = 0,
    Mask_Red = 1,
    Mask_Green = 2,
    Mask_Blue = 4,
    Mask_RGB = 7,
    Mask_Alpha = 8,
    Mask_RGBA = 15,
    Mask_Z = 16,
    Mask_All = -1, // every possible channel
};

class DDImage_API ChannelSet {
public:
    ChannelSet() {}
    ChannelSet(ChannelSetInit init);
    ChannelSet(Channel channel) { insert(channel); }
    ChannelSet(const Channel* channels, int count);

    bool empty() const { return members.none(); }
    bool all() const { return members.count() == std::size_t(Chan_Last); }
    operator bool() const { return !empty(); }
    unsigned size() const { return unsigned(members.count()); }

    // ---- one after the other --------------------------------------------------------------------

    // The first channel, and the one after `channel`; Chan_Black at the end.
    Channel first() const { return next(Chan_Black); }
    Channel next(Channel channel) const;

    // ---- members --------------------------------------------------------------------------------

    // Chan_Black is never a member.
    void insert(Channel channel) {
        if (channel > Chan_Black && channel <= Chan_Last)
            members.set(channel);
    }
    void insert(const ChannelSet& set) { members |= set.members; }
    void erase(Channel channel) {
        if (channel > Chan_Black && channel <= Chan_Last)
            members.reset(channel);
    }
    void erase(const ChannelSet& set) { members &= ~set.members; }
    void clear() { members.reset(); }
    bool contains(Channel channel) const {
        return channel > Chan_Black && channel <= Chan_Last && members.test(channel);
    }
    bool contains(const ChannelSet& set) const { return (set.members & ~members).none(); }

    void insert(const Channel* channels, int count) { insert(ChannelSet(channels, count)); }
    void erase(const Channel* channels, int count) { erase(ChannelSet(channels, count)); }
    void swap(ChannelSet& set) { std::swap(members, set.members); }
    ChannelSet intersection(const ChannelSet& set) const { return *this & set; }

    // ---- operators ------------------------------------------------------------------------------

    // With a set, a Channel or a ChannelSetInit. Templates, because the conversion to bool would
    // make the built-in operators equally good matches for the latter two.
    template <class Set>
    ChannelSet& operator+=(const Set& set) {
        return insert(ChannelSet(set)), *this;
    }
    template <class Set>
    ChannelSet& operator-=(const Set& set) {
        return erase(ChannelSet(set)), *this;
    }
    template <class Set>
    ChannelSet& operator&=(const Set& set) {
        return members &= ChannelSet(set).members, *this;
    }
    template <class Set>
    ChannelSet operator+(const Set& set) const {
        return ChannelSet(*this) += set;
    }
    template <class Set>
    ChannelSet operator-(const Set& set) const {
        return ChannelSet(*this) -= set;
    }
    template <class Set>
    ChannelSet operator&(const Set& set) const {
        return ChannelSet(*this) &= set;
    }
    template <class Set>
    bool operator==(const Set& set) const {
        return members == ChannelSet(set).members;
    }
    template <class Set>
    bool operator!=(const Set& set) const {
        return !(*this == set);
    }

    // An arbitrary total order, for containers.
    bool operator<(const ChannelSet& set) const;

    void append(Hash& hash) const;

private:
    std::bitset<Chan_Last + 1> members;
};

typedef const ChannelSet& ChannelMask;

} // namespace DD::Image

// Evaluates CHANNELS once. Two loops, so that `break` and one statement work as in a plain one.
#define foreach(VAR, CHANNELS)                                                                     \
    for (const DD::Image::ChannelSet &VAR##_set = (CHANNELS), *VAR##_left = &VAR##_set;            \
         VAR##_left; VAR##_left = nullptr)                                                         \
        for (DD::Image::Channel VAR = VAR##_left->first(); VAR; VAR = VAR##_left->next(VAR))
