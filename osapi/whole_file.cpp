#include "osapi/whole_file.h"

#include "core/xception.h"

namespace velmora {

// Releases both, whatever else fails on the way: the failure to report is the one that led here.
static void give_up(OSAPI::AtomicFileWrite& file, OSAPI::FileDescriptor& descriptor) {
    try {
        descriptor.close();
    } catch (const Xception&) {
    }
    try {
        file.abort();
    } catch (const Xception&) {
        file.done = true; // or its destructor would try again
    }
}

void write_whole_file(const char* path, const std::function<void(OSAPI::fd_t)>& write_bytes) {
    OSAPI::AtomicFileWrite file(path, OSAPI::OPEN_WRITE);
    OSAPI::FileDescriptor descriptor(file.fd);
    try {
        write_bytes(descriptor.fd);
        OSAPI::sync(descriptor.fd);
        descriptor.close(); // may be the first to tell of a failed write: before the rename
        file.complete_nosync();
    } catch (...) {
        give_up(file, descriptor);
        throw;
    }
}

} // namespace velmora
