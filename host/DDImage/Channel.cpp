// SPDX-License-Identifier: BSD-3-Clause
#include <DDImage/Channel.h>
#include <deque>
#include <string>

namespace DD::Image {

// By number. A deque, because getName() returns pointers that must survive its growth.
static std::deque<std::string>& names() {
    static std::deque<std::string> all = {"none",       "rgba.red",   "rgba.green", "rgba.blue",
                                          "rgba.alpha", "depth.Z",    "forward.u",  "forward.v",
                                          "backward.u", "backward.v", "mask.a"};
    return all;
}

const char* getName(Channel channel) {
    const std::size_t number = channel;
    return number < names().size() ? names()[number].c_str() : nullptr;
}

// Names without a layer belong to "rgba".
static std::string full_name(const char* name) {
    const std::string text = name ? name : "";
    return text.find('.') == std::string::npos ? "rgba." + text : text;
}

Channel findChannel(const char* name) {
    const std::string wanted = full_name(name);
    for (std::size_t number = 1; number < names().size(); number++)
        if (names()[number] == wanted)
            return Channel(number);
    return Chan_Black;
}

Channel channel(const char* name) {
    const Channel found = findChannel(name);
    if (found || names().size() > std::size_t(Chan_Last))
        return found;
    names().push_back(full_name(name));
    return Channel(names().size() - 1);
}

} // namespace DD::Image
