// SPDX-License-Identifier: BSD-3-Clause
#define XSOURCE "osapi-unix"

#include "core/unwinding.h"
#include "core/xception.h"
#include "osapi/failure.h"
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

static const int backlog = 5; // connections that may wait to be accepted

// ---- Names -----------------------------------------------------------------------------------

String gethostname() {
    static char cached[256];
    if (!cached[0] && ::gethostname(cached, sizeof cached) == -1) {
        cached[0] = 0;
        XTHROW_ERRNO("gethostname");
    }
    return cached;
}

// ---- What both server sockets do -------------------------------------------------------------

// These fail in the name of their caller, whose full signature is `function`.

static fd_t new_socket(int domain, int protocol, const char* function) {
    const fd_t fd = socket(domain, SOCK_STREAM, protocol);
    if (fd == -1)
        throw_errno(function, __LINE__, "socket");
    return fd;
}

template <class Address>
static const sockaddr* general(const Address& address) {
    return reinterpret_cast<const sockaddr*>(&address);
}

// Gives the socket its address, lets it listen and marks it close-on-exec.
template <class Address>
static void listen_at(fd_t fd, const Address& address, const char* function) {
    if (bind(fd, general(address), sizeof address) == -1)
        throw_errno(function, __LINE__, "bind");
    if (listen(fd, backlog) == -1)
        throw_errno(function, __LINE__, "listen");
    close_on_exec(fd);
}

// Marks a new connection close-on-exec; closes it if that fails.
static fd_t marked(fd_t connection) {
    FileDescriptor owner(connection);
    close_on_exec(owner.fd);
    owner.fd = -1;
    return connection;
}

// Waits for a connection; after a signal again, unless `interruptible`.
template <class Address>
static fd_t accept_from(fd_t fd, bool interruptible, const char* function) {
    for (;;) {
        Address peer;
        socklen_t size = sizeof peer;
        const fd_t connection = ::accept(fd, reinterpret_cast<sockaddr*>(&peer), &size);
        if (connection != -1)
            return marked(connection);
        if (errno != EINTR)
            throw_errno(function, __LINE__, "accept");
        if (interruptible)
            return -1;
    }
}

// ---- Connections -----------------------------------------------------------------------------

static sockaddr_in ipv4_address(in_addr host, int port) {
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr = host;
    address.sin_port = htons(static_cast<in_port_t>(port));
    return address;
}

fd_t connect_tcp(const char* host, int port) {
    // Resolve the name.
    XASSERT(port > 0 && port <= 65535);
    const hostent* const h = gethostbyname(host);
    if (!h)
        XTHROW("gethostbyname(\"%s\"): %s", host, hstrerror(h_errno));
    XASSERT(h->h_addrtype == AF_INET);

    // Connect to the first address. When that fails, `fd` stays open: callers expect that.
    const fd_t fd = new_socket(AF_INET, IPPROTO_TCP, __PRETTY_FUNCTION__);
    in_addr first;
    memcpy(&first, h->h_addr_list[0], sizeof first);
    const sockaddr_in address = ipv4_address(first, port);
    if (connect(fd, general(address), sizeof address) == -1)
        XTHROW_ERRNO("connect(\"%s:%d\")", host, port);
    return fd;
}

// ---- UNIXServerSocket ------------------------------------------------------------------------

// As the delegated constructor has finished, the destructor runs if open() throws.
UNIXServerSocket::UNIXServerSocket(const char* path) : UNIXServerSocket() {
    open(path);
}

UNIXServerSocket::~UNIXServerSocket() noexcept(false) {
    velmora::release_in_destructor([this] { close(); });
}

void UNIXServerSocket::open(const char* mypath) {
    sockaddr_un addr = {};
    XASSERT(mypath[0] != 0);

    // From here on the socket is this object's, and close() cleans up after a failure.
    close();
    fd = new_socket(AF_UNIX, 0, __PRETTY_FUNCTION__);
    XASSERT_AT(strlen(mypath) < sizeof(addr.sun_path) - 1,
               "strlen(mypath) < sizeof(addr.sun_path)-1", __PRETTY_FUNCTION__, __LINE__);

    addr.sun_family = AF_UNIX;
    strcpy(addr.sun_path, mypath);
    listen_at(fd, addr, __PRETTY_FUNCTION__);
    path = mypath;
}

fd_t UNIXServerSocket::accept(bool interruptible) {
    return accept_from<sockaddr_un>(fd, interruptible, __PRETTY_FUNCTION__);
}

// The path is empty until open() has succeeded: when it failed, the file may be that of another
// process, and must not be removed.
void UNIXServerSocket::close() {
    if (fd == -1)
        return;
    const fd_t closing = fd;
    String removed;
    std::swap(removed.str, path.str);
    const char* const file = velmora::text_of(removed);
    fd = -1;
    try {
        OSAPI::close(closing);
    } catch (...) {
        unlink(file); // without a check: the failed close is the failure to report
        throw;
    }
    rm_ifexist(file);
}

// ---- TCPServerSocket -------------------------------------------------------------------------

TCPServerSocket::TCPServerSocket(int port) : TCPServerSocket() {
    open(port);
}

TCPServerSocket::~TCPServerSocket() noexcept(false) {
    velmora::release_in_destructor([this] { close(); });
}

void TCPServerSocket::open(int port) {
    XASSERT(port > 0 && port <= 65535);
    close();
    fd = new_socket(AF_INET, IPPROTO_TCP, __PRETTY_FUNCTION__);
    const int on = 1;
    if (setsockopt(fd, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on) == -1)
        XTHROW_ERRNO("setsockopt(SO_REUSEADDR)");

    listen_at(fd, ipv4_address({htonl(INADDR_ANY)}, port), __PRETTY_FUNCTION__);
}

fd_t TCPServerSocket::accept(bool interruptible) {
    return accept_from<sockaddr_in>(fd, interruptible, __PRETTY_FUNCTION__);
}

void TCPServerSocket::close() {
    if (fd == -1)
        return;
    const fd_t closing = fd;
    fd = -1;
    OSAPI::close(closing);
}

} // namespace OSAPI
