#include "osapi/whole_file.h"

namespace velmora {

void write_whole_file(const char* path, const std::function<void(OSAPI::fd_t)>& write_bytes) {
    OSAPI::AtomicFileWrite file(path, OSAPI::OPEN_WRITE);
    OSAPI::FileDescriptor descriptor(file.fd);
    write_bytes(descriptor.fd);
    OSAPI::sync(descriptor.fd);
    descriptor.close(); // may be the first to tell of a failed write: before the rename
    file.complete_nosync();
}

} // namespace velmora
