// SPDX-License-Identifier: BSD-3-Clause
#include "host/runtime/checks.h"

#include "text/quoted.h"

#include <DDImage/Iop.h>

namespace velmora::host {

// A process-wide switch: rows ask it, and they know no graph.
#ifdef NDEBUG
static bool checking = false;
#else
static bool checking = true;
#endif

bool checks_plugins() {
    return checking;
}

void set_checks_plugins(bool on) {
    checking = on;
}

PluginMisuse::PluginMisuse(const DD::Image::Op& op, const std::string& what)
    : std::logic_error(printable(std::string(op.node_name()) + " (" + op.Class() + "): " + what)) {}

} // namespace velmora::host

namespace DD::Image {

bool Row::has_guards() {
    return velmora::host::checks_plugins();
}

// engine, between a check before and one after.
void Iop::checked_engine(int y, int x, int r, ChannelMask channels, Row& row) {
    if (!velmora::host::checks_plugins()) {
        engine(y, x, r, channels, row);
        return;
    }
    // The cycle, the call itself, then the guards around the span.
    if (!opened())
        throw velmora::host::PluginMisuse(*this, "engine was called while the op was not open");
    engine(y, x, r, channels, row);
    if (const Channel channel = row.written_beside()) {
        const char* const name = getName(channel);
        throw velmora::host::PluginMisuse(
            *this, "engine, for row " + std::to_string(y) + " from " + std::to_string(x) + " to " +
                       std::to_string(r) + ", wrote outside the span in " +
                       (name ? name : "channel " + std::to_string(channel)));
    }
}

} // namespace DD::Image
