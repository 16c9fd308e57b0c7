// SPDX-License-Identifier: BSD-3-Clause
#include "osapi/osapi.h"

#include "tests/core/captured.h"
#include "tests/message_of.h"
#include "tests/osapi/alarms.h"
#include "tests/osapi/child.h"
#include "tests/osapi/files.h"
#include "tests/osapi/local_client.h"
#include "tests/osapi/place.h"
#include "tests/scratch_folder.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/utsname.h>
#include <unistd.h>

#include <cerrno>
#include <stdexcept>
#include <string>
#include <type_traits>

using OSAPI::fd_t;
using OSAPI::FileDescriptor;
using OSAPI::TCPServerSocket;
using OSAPI::UNIXServerSocket;

namespace {

const std::string in_unix_open = in("void OSAPI::UNIXServerSocket::open(const char*)");
const std::string in_tcp_open = in("void OSAPI::TCPServerSocket::open(int)");
const std::string in_connect = in("OSAPI::fd_t OSAPI::connect_tcp(const char*, int)");

bool closes_on_exec(fd_t fd) {
    return fcntl(fd, F_GETFD) & FD_CLOEXEC;
}

bool is_socket(const std::string& path) {
    struct stat status;
    return stat(path.c_str(), &status) == 0 && S_ISSOCK(status.st_mode);
}

// Sends a word from one end to the other.
bool connected(fd_t from, fd_t to) {
    char word[5] = "";
    return ::write(from, "word", 4) == 4 && OSAPI::read(to, word, 4) == 4 &&
           std::string(word) == "word";
}

// A port that was free just now.
int free_port() {
    const FileDescriptor fd(::socket(AF_INET, SOCK_STREAM, 0));
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    socklen_t size = sizeof address;
    EXPECT_EQ(::bind(fd.fd, reinterpret_cast<const sockaddr*>(&address), size), 0);
    EXPECT_EQ(::getsockname(fd.fd, reinterpret_cast<sockaddr*>(&address), &size), 0);
    return ntohs(address.sin_port);
}

// Listens at some port, which it gives; others may have been faster at the first one.
int open_somewhere(TCPServerSocket& server) {
    for (;;) {
        const int port = free_port();
        if (message_without_place_of([&] { server.open(port); }) != "bind: Address already in use")
            return port;
        server.close();
    }
}

// ---- gethostname -----------------------------------------------------------------------------

TEST(Gethostname, IsTheMachines) {
    utsname machine;
    ASSERT_EQ(uname(&machine), 0);
    EXPECT_STREQ(OSAPI::gethostname().str, machine.nodename);
    EXPECT_STREQ(OSAPI::gethostname().str, machine.nodename);
}

// ---- connect_tcp, TCPServerSocket ------------------------------------------------------------

TEST(TCPServerSocket, IsADescriptor) {
    EXPECT_EQ(sizeof(TCPServerSocket), sizeof(fd_t));
    EXPECT_FALSE(std::is_polymorphic<TCPServerSocket>::value);
    EXPECT_FALSE(std::is_copy_constructible<TCPServerSocket>::value);
    EXPECT_FALSE(std::is_nothrow_destructible<TCPServerSocket>::value);
    TCPServerSocket server;
    EXPECT_EQ(server.fd, -1);
    EXPECT_NO_THROW(server.close());
}

TEST(TCPServerSocket, TakesConnectionsFromConnectTcp) {
    const int before = open_descriptors();
    {
        TCPServerSocket server;
        const int port = open_somewhere(server);
        EXPECT_TRUE(closes_on_exec(server.fd));
        int reused = 0;
        socklen_t size = sizeof reused;
        ASSERT_EQ(getsockopt(server.fd, SOL_SOCKET, SO_REUSEADDR, &reused, &size), 0);
        EXPECT_EQ(reused, 1);
        for (const bool interruptible : {false, true}) {
            const FileDescriptor client(OSAPI::connect_tcp("127.0.0.1", port));
            const FileDescriptor accepted(server.accept(interruptible));
            EXPECT_FALSE(closes_on_exec(client.fd));
            EXPECT_TRUE(closes_on_exec(accepted.fd));
            EXPECT_TRUE(connected(client.fd, accepted.fd));
            EXPECT_TRUE(connected(accepted.fd, client.fd));
        }
    }
    EXPECT_EQ(open_descriptors(), before);
}

TEST(TCPServerSocket, ListensOnEveryAddressOfTheMachine) {
    TCPServerSocket server;
    const int port = open_somewhere(server);
    sockaddr_in address = {};
    socklen_t size = sizeof address;
    ASSERT_EQ(::getsockname(server.fd, reinterpret_cast<sockaddr*>(&address), &size), 0);
    EXPECT_EQ(address.sin_addr.s_addr, htonl(INADDR_ANY));
    EXPECT_EQ(ntohs(address.sin_port), port);
    const FileDescriptor client(OSAPI::connect_tcp("127.9.8.7", port));
    const FileDescriptor accepted(server.accept(false));
    EXPECT_TRUE(connected(client.fd, accepted.fd));
}

TEST(TCPServerSocket, ClosesAndOpensAgain) {
    TCPServerSocket first;
    const int port = open_somewhere(first);
    const int before = open_descriptors();
    first.close();
    EXPECT_EQ(first.fd, -1);
    EXPECT_EQ(open_descriptors(), before - 1);
    TCPServerSocket second(port);
    EXPECT_NE(second.fd, -1);
    open_somewhere(second); // what was open is closed first
    EXPECT_EQ(open_descriptors(), before);
}

TEST(TCPServerSocket, ThrowsForAPortThatIsTaken) {
    TCPServerSocket server;
    const int port = open_somewhere(server);
    const int before = open_descriptors();
    EXPECT_EQ(message_without_line_of([&] { TCPServerSocket other(port); }),
              "bind: Address already in use" + in_tcp_open);
    EXPECT_EQ(open_descriptors(), before);
    TCPServerSocket other;
    EXPECT_EQ(message_without_line_of([&] { other.open(port); }),
              "bind: Address already in use" + in_tcp_open);
    EXPECT_NE(other.fd, -1) << "for close() to clean up";
    EXPECT_EQ(message_without_line_of([&] { other.open(port); }),
              "bind: Address already in use" + in_tcp_open);
    EXPECT_EQ(open_descriptors(), before + 1);
}

TEST(TCPServerSocket, AsksForAPort) {
    for (const int port : {0, -1, 65536, 1000000}) {
        TCPServerSocket server;
        EXPECT_EQ(assertion_of([&] { server.open(port); }),
                  "'port > 0 && port <= 65535' in <void OSAPI::TCPServerSocket::open(int)> "
                  "(osapi-unix:LINE)");
        EXPECT_EQ(server.fd, -1);
        EXPECT_EQ(assertion_of([&] { OSAPI::connect_tcp("no.such.host.invalid", port); }),
                  "'port > 0 && port <= 65535' in <OSAPI::fd_t OSAPI::connect_tcp(const char*, "
                  "int)> (osapi-unix:LINE)");
    }
}

// The socket of a connection that is refused stays open.
TEST(ConnectTcp, LeaksItsSocketWhenItIsRefused) {
    const int before = open_descriptors();
    const int port = free_port();
    const fd_t next = next_descriptor();
    EXPECT_EQ(message_without_line_of([&] { OSAPI::connect_tcp("127.0.0.1", port); }),
              "connect(\"127.0.0.1:" + std::to_string(port) + "\"): Connection refused" +
                  in_connect);
    EXPECT_EQ(open_descriptors(), before + 1);
    EXPECT_EQ(::close(next), 0);
    EXPECT_EQ(open_descriptors(), before);
}

// ---- accept and signals ----------------------------------------------------------------------

sockaddr_in address_to_connect = {};
fd_t connected_by_signal = -1;

// What a signal's handler may do: no more than system calls, and errno stays.
void connect_now() {
    const int error = errno;
    connected_by_signal = ::socket(AF_INET, SOCK_STREAM, 0);
    ::connect(connected_by_signal, reinterpret_cast<const sockaddr*>(&address_to_connect),
              sizeof address_to_connect);
    errno = error;
}

TEST(Accept, ReturnsOnASignalWhenItIsInterruptible) {
    const ScratchFolder folder;
    TCPServerSocket tcp;
    open_somewhere(tcp);
    UNIXServerSocket local(folder.file("socket").c_str());
    const Alarms alarms;
    EXPECT_EQ(tcp.accept(true), -1);
    EXPECT_EQ(local.accept(true), -1);
}

TEST(Accept, WaitsOnAfterASignalOtherwise) {
    TCPServerSocket server;
    address_to_connect.sin_family = AF_INET;
    address_to_connect.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address_to_connect.sin_port = htons(static_cast<in_port_t>(open_somewhere(server)));
    const Alarms alarms(connect_now);
    const FileDescriptor accepted(server.accept(false));
    const FileDescriptor client(connected_by_signal);
    EXPECT_GE(Alarms::count, 3);
    EXPECT_TRUE(connected(client.fd, accepted.fd));
}

TEST(Accept, AtALocalSocketWaitsOnAfterASignalOtherwise) {
    const ScratchFolder folder;
    const std::string path = folder.file("socket");
    UNIXServerSocket server(path.c_str());
    const Alarms alarms;
    const Child client([&] {
        usleep(20000);
        const fd_t fd = connect_unix(path);
        return ::write(fd, "word", 4) == 4 ? 0 : 1;
    });
    const FileDescriptor accepted(server.accept(false));
    char word[5] = "";
    OSAPI::read(accepted.fd, word, 4);
    EXPECT_STREQ(word, "word");
    EXPECT_GE(Alarms::count, 1);
}

TEST(Accept, ThrowsTheSystemsReason) {
    TCPServerSocket tcp;
    UNIXServerSocket local;
    EXPECT_EQ(message_without_line_of([&] { tcp.accept(true); }),
              "accept: Bad file descriptor" +
                  in("OSAPI::fd_t OSAPI::TCPServerSocket::accept(bool)"));
    EXPECT_EQ(message_without_line_of([&] { local.accept(true); }),
              "accept: Bad file descriptor" +
                  in("OSAPI::fd_t OSAPI::UNIXServerSocket::accept(bool)"));
}

// ---- UNIXServerSocket ------------------------------------------------------------------------

TEST(UNIXServerSocket, HoldsItsDescriptorThenItsPath) {
    const UNIXServerSocket server;
    const char* base = reinterpret_cast<const char*>(&server);
    EXPECT_EQ(reinterpret_cast<const char*>(&server.fd) - base, 0);
    EXPECT_EQ(reinterpret_cast<const char*>(&server.path) - base, 8);
    EXPECT_EQ(server.fd, -1);
    EXPECT_EQ(server.path.str, nullptr);
    EXPECT_FALSE(std::is_polymorphic<UNIXServerSocket>::value);
    EXPECT_FALSE(std::is_copy_constructible<UNIXServerSocket>::value);
    EXPECT_FALSE(std::is_nothrow_destructible<UNIXServerSocket>::value);
}

TEST(UNIXServerSocket, TakesConnectionsAtItsPath) {
    const ScratchFolder folder;
    const std::string path = folder.file("socket");
    const int before = open_descriptors();
    {
        UNIXServerSocket server(path.c_str());
        EXPECT_STREQ(server.path.str, path.c_str());
        EXPECT_TRUE(is_socket(path));
        EXPECT_TRUE(closes_on_exec(server.fd));
        for (const bool interruptible : {false, true}) {
            const FileDescriptor client(connect_unix(path));
            const FileDescriptor accepted(server.accept(interruptible));
            EXPECT_TRUE(closes_on_exec(accepted.fd));
            EXPECT_TRUE(connected(client.fd, accepted.fd));
            EXPECT_TRUE(connected(accepted.fd, client.fd));
        }
    }
    EXPECT_TRUE(folder.names().empty()) << "the socket's file is removed";
    EXPECT_EQ(open_descriptors(), before);
}

TEST(UNIXServerSocket, ClosesAndOpensAgain) {
    const ScratchFolder folder;
    const std::string one = folder.file("one"), two = folder.file("two");
    UNIXServerSocket server(one.c_str());
    const int before = open_descriptors();
    server.close();
    EXPECT_EQ(server.fd, -1);
    EXPECT_EQ(server.path.str, nullptr);
    EXPECT_TRUE(folder.names().empty());
    EXPECT_NO_THROW(server.close());
    server.open(one.c_str());
    server.open(two.c_str()); // what was open is closed first
    EXPECT_EQ(folder.names(), std::vector<std::string>({"two"}));
    EXPECT_EQ(open_descriptors(), before);
}

TEST(UNIXServerSocket, IsSilentWhenItsFileIsGone) {
    const ScratchFolder folder;
    const std::string path = folder.file("socket");
    UNIXServerSocket server(path.c_str());
    ASSERT_EQ(unlink(path.c_str()), 0);
    EXPECT_NO_THROW(server.close());
}

TEST(UNIXServerSocket, ThrowsWhenItsFileCannotBeRemoved) {
    const ScratchFolder folder;
    const std::string path = folder.file("socket");
    const std::string message =
        "unlink(" + path + "): Is a directory" + in("void OSAPI::rm_ifexist(const char*)");
    const int before = open_descriptors();
    const auto put_a_folder_there = [&] {
        return unlink(path.c_str()) == 0 && mkdir(path.c_str(), 0777) == 0;
    };
    EXPECT_EQ(message_without_line_of([&] {
                  UNIXServerSocket server(path.c_str());
                  EXPECT_TRUE(put_a_folder_there());
              }),
              message);
    ASSERT_EQ(rmdir(path.c_str()), 0);
    EXPECT_THROW(
        {
            UNIXServerSocket server(path.c_str());
            EXPECT_TRUE(put_a_folder_there());
            throw std::runtime_error("the first");
        },
        std::runtime_error);
    EXPECT_EQ(open_descriptors(), before);
}

TEST(UNIXServerSocket, NeedsAPathWhereNothingIs) {
    const ScratchFolder folder;
    const std::string file = folder.write("file", "bytes"), missing = folder.file("missing/socket");
    const int before = open_descriptors();
    EXPECT_EQ(message_without_line_of([&] { UNIXServerSocket server(file.c_str()); }),
              "bind: Address already in use" + in_unix_open);
    EXPECT_EQ(message_without_line_of([&] { UNIXServerSocket server(missing.c_str()); }),
              "bind: No such file or directory" + in_unix_open);
    EXPECT_EQ(folder.read("file"), "bytes") << "what was there stays";
    EXPECT_EQ(open_descriptors(), before);
}

TEST(UNIXServerSocket, CleansUpAfterAFailedOpenWhenItCloses) {
    const ScratchFolder folder;
    const std::string file = folder.write("file", "bytes");
    const int before = open_descriptors();
    UNIXServerSocket server;
    EXPECT_THROW(server.open(file.c_str()), StrXception);
    EXPECT_EQ(open_descriptors(), before + 1);
    EXPECT_EQ(server.path.str, nullptr);
    server.close();
    EXPECT_EQ(open_descriptors(), before);
    EXPECT_EQ(folder.read("file"), "bytes");
}

// The test's folder is in the way of a path of a given length: so by a short name from there.
TEST(UNIXServerSocket, TakesPathsOf106Characters) {
    const ScratchFolder folder;
    EXPECT_EQ(status_of_child([&] {
                  OSAPI::chdir(folder.path().c_str());
                  const std::string longest(106, 'p'), longer(107, 'p');
                  const std::string refused =
                      "'strlen(mypath) < sizeof(addr.sun_path)-1' in <void "
                      "OSAPI::UNIXServerSocket::open(const char*)> (osapi-unix:LINE)";
                  const int before = open_descriptors();
                  {
                      UNIXServerSocket server(longest.c_str());
                      const FileDescriptor client(connect_unix(longest));
                      if (!is_socket(longest) || !client.is_open())
                          return false;
                  }
                  return assertion_of([&] { UNIXServerSocket server(longer.c_str()); }) ==
                             refused &&
                         folder.names().empty() && open_descriptors() == before;
              }),
              0);
}

TEST(UNIXServerSocket, AsksForAPath) {
    const int before = open_descriptors();
    UNIXServerSocket server;
    EXPECT_EQ(assertion_of([&] { server.open(""); }),
              "'mypath[0] != 0' in <void OSAPI::UNIXServerSocket::open(const char*)> "
              "(osapi-unix:LINE)");
    EXPECT_EQ(server.fd, -1);
    EXPECT_EQ(open_descriptors(), before);
}

} // namespace
