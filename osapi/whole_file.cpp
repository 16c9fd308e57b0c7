#include "osapi/whole_file.h"

#include "osapi/failure.h"
#include "osapi/temporary_file.h"

#include <cerrno>
#include <fcntl.h>
#include <optional>
#include <unistd.h>

namespace velmora {

static const mode_t new_mode = 0664;
static const mode_t permissions = 0777; // without the bits that change who runs a program

// The permissions of the file at `path`, for the one that replaces it.
static std::optional<mode_t> mode_to_keep(const char* path) {
    struct stat status;
    if (lstat(path, &status) == 0)
        return S_ISREG(status.st_mode) ? std::make_optional(status.st_mode & permissions)
                                       : std::nullopt;
    if (errno != ENOENT && errno != ENOTDIR)
        XTHROW_ERRNO("lstat(%s)", path);
    return std::nullopt;
}

namespace {

// The folder of a file, opened beforehand: to wait until a new name in it is on the medium.
class Folder {
public:
    // Opens nothing where the user may use the folder but not read it.
    explicit Folder(const std::string& path) {
        const std::size_t slash = path.rfind('/');
        const std::string name = slash == std::string::npos ? "." : path.substr(0, slash + 1);
        fd = open(name.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        if (fd == -1 && errno != EACCES)
            XTHROW_ERRNO("opening folder \"%s\"", name.c_str());
    }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;
    ~Folder() {
        if (fd != -1)
            ::close(fd);
    }

    // Not every file system can do that for a folder; EINVAL is how it says so.
    void sync() const {
        if (fd != -1 && fsync(fd) == -1 && errno != EINVAL)
            XTHROW_ERRNO("fsync");
    }

private:
    OSAPI::fd_t fd;
};

} // namespace

void write_whole_file(const char* path, const std::function<void(OSAPI::fd_t)>& write_bytes) {
    // Until the file is complete, others may do no more with it than with the one before.
    const std::optional<mode_t> kept = mode_to_keep(path);
    TemporaryFile file(path, kept ? S_IRUSR | S_IWUSR : new_mode);
    const Folder folder(path);
    write_bytes(file.fd());
    if (kept && fchmod(file.fd(), *kept) == -1)
        XTHROW_ERRNO("fchmod");
    OSAPI::sync(file.fd());
    file.close();
    file.rename();
    folder.sync();
}

} // namespace velmora
