#include "host/checks.h"

#include "text/quoted.h"

#include <DDImage/Op.h>

namespace velmora {

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

} // namespace velmora
