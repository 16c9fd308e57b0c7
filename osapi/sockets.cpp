#define XSOURCE "osapi-unix"

#include "core/unwinding.h"
#include "core/xception.h"
#include "osapi/osapi.h"

#include <arpa/inet.h>
#include <cerrno>
#include <cstring>
#include <netdb.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>
#include <utility>

namespace OSAPI {

static const int backlog = 5;

// ---- Names -----------------------------------------------------------------------------------

String gethostname() {
    static char cached[256];
    if (!cached[0] && ::gethostname(cached, sizeof cached) == -1) {
        cached[0] = 0;
        XTHROW("gethostname: %s", strerror(errno));
    }
    return cached;
}

// ---- Connections -----------------------------------------------------------------------------

static sockaddr_in ipv4_address(in_addr host, int port) {
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr = host;
    address.sin_port = htons(static_cast<in_port_t>(port));
    return address;
}

static const sockaddr* general(const sockaddr_in& address) {
    return reinterpret_cast<const sockaddr*>(&address);
}

fd_t connect_tcp(const char* host, int port) {
    XASSERT(port > 0 && port <= 65535);
    const hostent* const h = gethostbyname(host);
    if (!h)
        XTHROW("gethostbyname(\"%s\"): %s", host, hstrerror(h_errno));
    XASSERT(h->h_addrtype == AF_INET);

    const fd_t fd = socket(AF_INET, SOCK_STREAM, IPPROTO_TCP);
    if (fd == -1)
        XTHROW("socket: %s", strerror(errno));
    in_addr first;
    memcpy(&first, h->h_addr_list[0], sizeof first);
    const sockaddr_in address = ipv4_address(first, port);
    if (connect(fd, general(address), sizeof address) == -1)
        XTHROW("connect(\"%s:%d\"): %s", host, port, strerror(errno)); // and `fd` stays open
    return fd;
}

// A new connection, marked close-on-exec or closed again.
static fd_t marked(fd_t connection) {
    FileDescriptor owner(connection);
    close_on_exec(owner.fd);
    owner.fd = -1;
    return connection;
}

// ---- UNIXServerSocket ------------------------------------------------------------------------

// Once the default constructor is through, the destructor cleans up behind a failed open.
UNIXServerSocket::UNIXServerSocket(const char* path) : UNIXServerSocket() {
    open(path);
}

UNIXServerSocket::~UNIXServerSocket() noexcept(false) {
    try {
        close();
    } catch (...) {
        if (!velmora::unwinding())
            throw;
    }
}

void UNIXServerSocket::open(const char* mypath) {
    sockaddr_un addr = {};
    XASSERT(mypath[0] != 0);
    close();
    fd = socket(AF_UNIX, SOCK_STREAM, 0);
    if (fd == -1)
        XTHROW("socket: %s", strerror(errno));
    XASSERT_AT(strlen(mypath) < sizeof(addr.sun_path) - 1,
               "strlen(mypath) < sizeof(addr.sun_path)-1", __PRETTY_FUNCTION__, __LINE__);

    addr.sun_family = AF_UNIX;
    strcpy(addr.sun_path, mypath);
    if (bind(fd, reinterpret_cast<const sockaddr*>(&addr), sizeof addr) == -1)
        XTHROW("bind: %s", strerror(errno));
    if (listen(fd, backlog) == -1)
        XTHROW("listen: %s", strerror(errno));
    close_on_exec(fd);
    path = mypath;
}

fd_t UNIXServerSocket::accept(bool interruptible) {
    for (;;) {
        sockaddr_un peer;
        socklen_t size = sizeof peer;
        const fd_t connection = ::accept(fd, reinterpret_cast<sockaddr*>(&peer), &size);
        if (connection != -1)
            return marked(connection);
        if (errno != EINTR)
            XTHROW("accept: %s", strerror(errno));
        if (interruptible)
            return -1;
    }
}

// Without a path, which open stores last, there is nothing to remove: another process may be
// listening where this one could not.
void UNIXServerSocket::close() {
    if (fd == -1)
        return;
    const fd_t closing = fd;
    String removed;
    std::swap(removed.str, path.str);
    const char* const file = removed.str ? removed.str : "";
    fd = -1;
    try {
        OSAPI::close(closing);
    } catch (...) {
        unlink(file); // the failed close is what to report, whatever comes of this
        throw;
    }
    rm_ifexist(file);
}

// ---- TCPServerSocket -------------------------------------------------------------------------

TCPServerSocket::TCPServerSocket(int port) : TCPServerSocket() {
    open(port);
}

TCPServerSocket::~TCPServerSocket() noexcept(false) {
    try {
        close();
    } catch (...) {
        if (!velmora::unwinding())
            throw;
    }
}

void TCPServerSocket::open(int port) {
    XASSERT(port > 0 && port <= 65535);
    close();
    fd = socket(AF_INET, SOCK_STREAM, IPPROTO_TCP);
    if (fd == -1)
        XTHROW("socket: %s", strerror(errno));
    const int on = 1;
    if (setsockopt(fd, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on) == -1)
        XTHROW("setsockopt(SO_REUSEADDR): %s", strerror(errno));

    const sockaddr_in address = ipv4_address({htonl(INADDR_ANY)}, port);
    if (bind(fd, general(address), sizeof address) == -1)
        XTHROW("bind: %s", strerror(errno));
    if (listen(fd, backlog) == -1)
        XTHROW("listen: %s", strerror(errno));
    close_on_exec(fd);
}

fd_t TCPServerSocket::accept(bool interruptible) {
    for (;;) {
        sockaddr_in peer;
        socklen_t size = sizeof peer;
        const fd_t connection = ::accept(fd, reinterpret_cast<sockaddr*>(&peer), &size);
        if (connection != -1)
            return marked(connection);
        if (errno != EINTR)
            XTHROW("accept: %s", strerror(errno));
        if (interruptible)
            return -1;
    }
}

void TCPServerSocket::close() {
    if (fd == -1)
        return;
    const fd_t closing = fd;
    fd = -1;
    OSAPI::close(closing);
}

} // namespace OSAPI
