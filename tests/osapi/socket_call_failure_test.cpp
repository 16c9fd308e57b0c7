// SPDX-License-Identifier: BSD-3-Clause

// The system calls of sockets made to fail, and the arguments they get.
#include "osapi/osapi.h"

#include "tests/core/captured.h"
#include "tests/osapi/failing_call.h"
#include "tests/osapi/place.h"
#include "tests/scratch_folder.h"

#include <fcntl.h>
#include <netdb.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <functional>
#include <string>
#include <type_traits>
#include <vector>

using OSAPI::FileDescriptor;
using OSAPI::TCPServerSocket;
using OSAPI::UNIXServerSocket;

namespace {

typedef std::vector<std::string> Calls;

const std::string in_close_on_exec = in("void OSAPI::close_on_exec(fd_t)");
const std::string in_connect = in("OSAPI::fd_t OSAPI::connect_tcp(const char*, int)");
const std::string in_tcp_open = in("void OSAPI::TCPServerSocket::open(int)");
const std::string in_unix_open = in("void OSAPI::UNIXServerSocket::open(const char*)");

// No socket of this program is ever bound to it: binding is answered for the system.
const int port = 54321;

// A call and what it is answered by.
struct Answer {
    const char* call;
    long result;
    int error;
};

struct Row {
    std::vector<Answer> answers;
    std::function<void()> action;
    std::string message;
    int leaked; // descriptors
};

TEST(SocketCallFailure, IsReportedInFullAndLeavesNothingButForAConnection) {
    const Answer bound = {"bind", 0, 0}, listens = {"listen", 0, 0};
    const auto connect = [] { OSAPI::connect_tcp("127.0.0.1", port); };
    const auto tcp = [] { TCPServerSocket server(port); };
    const auto local = [] { UNIXServerSocket server("no folder/socket"); };
    const std::string in_close = in("void OSAPI::close(fd_t)");
    const std::vector<Row> rows = {
        {{{"gethostbyname", -1, HOST_NOT_FOUND}},
         connect,
         "gethostbyname(\"127.0.0.1\"): Unknown host" + in_connect,
         0},
        {{{"gethostbyname", -1, TRY_AGAIN}},
         connect,
         "gethostbyname(\"127.0.0.1\"): Host name lookup failure" + in_connect,
         0},
        {{{"socket", -1, EMFILE}}, connect, "socket: Too many open files" + in_connect, 0},
        {{{"connect", -1, ETIMEDOUT}},
         connect,
         "connect(\"127.0.0.1:54321\"): Connection timed out" + in_connect,
         1},
        {{{"connect", -1, EINTR}},
         connect,
         "connect(\"127.0.0.1:54321\"): Interrupted system call" + in_connect,
         1},

        {{{"socket", -1, ENFILE}}, tcp, "socket: Too many open files in system" + in_tcp_open, 0},
        {{{"setsockopt", -1, ENOPROTOOPT}},
         tcp,
         "setsockopt(SO_REUSEADDR): Protocol not available" + in_tcp_open,
         0},
        {{{"bind", -1, EACCES}}, tcp, "bind: Permission denied" + in_tcp_open, 0},
        {{bound, {"listen", -1, EADDRINUSE}},
         tcp,
         "listen: Address already in use" + in_tcp_open,
         0},
        {{bound, listens, {"fcntl", -1, EIO}},
         tcp,
         "fcntl: Input/output error" + in_close_on_exec,
         0},
        {{bound, listens, {"close", -1, EIO}}, tcp, "close: Input/output error" + in_close, 0},

        {{{"socket", -1, EAFNOSUPPORT}},
         local,
         "socket: Address family not supported by protocol" + in_unix_open,
         0},
        {{{"bind", -1, EROFS}}, local, "bind: Read-only file system" + in_unix_open, 0},
        {{bound, {"listen", -1, EADDRINUSE}},
         local,
         "listen: Address already in use" + in_unix_open,
         0},
        {{bound, listens, {"fcntl", -1, EIO}},
         local,
         "fcntl: Input/output error" + in_close_on_exec,
         0},
        {{bound, listens, {"close", -1, EIO}}, local, "close: Input/output error" + in_close, 0},
        {{bound, listens, {"unlink", -1, EBUSY}},
         local,
         "unlink(no folder/socket): Device or resource busy" +
             in("void OSAPI::rm_ifexist(const char*)"),
         0},

        // The first failure, when closing fails too.
        {{{"bind", -1, EACCES}, {"close", -1, EIO}},
         tcp,
         "bind: Permission denied" + in_tcp_open,
         0},
        {{{"bind", -1, EACCES}, {"close", -1, EIO}},
         local,
         "bind: Permission denied" + in_unix_open,
         0},
    };
    for (const Row& row : rows) {
        const int before = open_descriptors();
        const int next = next_descriptor();
        {
            SystemCalls calls;
            for (const Answer& answer : row.answers)
                calls.answer(answer.call, 1, answer.result, answer.error);
            EXPECT_EQ(message_without_line_of(row.action), row.message);
        }
        EXPECT_EQ(open_descriptors(), before + row.leaked) << row.message;
        if (row.leaked)
            ::close(next);
    }
}

// The file that bind made stays when the socket cannot listen: its path was not taken over yet.
TEST(UNIXServerSocket, LeavesItsFileWhenItCannotListen) {
    const ScratchFolder folder;
    const std::string path = folder.file("socket");
    UNIXServerSocket server;
    {
        SystemCalls calls;
        calls.fail("listen", EOPNOTSUPP);
        EXPECT_THROW(server.open(path.c_str()), StrXception);
    }
    server.close();
    EXPECT_EQ(folder.names(), Calls({"socket"}));
}

TEST(UNIXServerSocket, IsClosedEvenWhenClosingThrows) {
    const ScratchFolder folder;
    const std::string path = folder.file("socket");
    const int before = open_descriptors();
    UNIXServerSocket server(path.c_str());
    {
        SystemCalls calls;
        calls.fail("close", EIO);
        EXPECT_EQ(message_without_place_of([&] { server.close(); }), "close: Input/output error");
        EXPECT_EQ(calls.names(), "close unlink ");
    }
    EXPECT_EQ(server.fd, -1);
    EXPECT_EQ(server.path.str, nullptr);
    EXPECT_EQ(open_descriptors(), before);
    EXPECT_EQ(folder.names(), Calls());
}

TEST(UNIXServerSocket, ReportsTheFirstFailureWhenItsFileStaysToo) {
    const ScratchFolder folder;
    const std::string path = folder.file("socket");
    UNIXServerSocket server(path.c_str());
    SystemCalls calls;
    calls.fail("close", EIO);
    calls.fail("unlink", EBUSY);
    EXPECT_EQ(message_without_place_of([&] { server.close(); }), "close: Input/output error");
    EXPECT_EQ(calls.names(), "close unlink ");
    EXPECT_EQ(folder.names(), Calls({"socket"}));
}

// ---- What the calls get ----------------------------------------------------------------------

TEST(SocketCalls, OpenTheseSockets) {
    const Calls tcp = {"socket(2, 1, 6)", "setsockopt(1, 2, 1)", "bind(16)", "listen(5)"};
    const Calls local = {"socket(1, 1, 0)", "bind(110)", "listen(5)"};
    SystemCalls calls;
    for (const char* call : {"bind", "listen"})
        for (const int nth : {1, 2})
            calls.answer(call, nth, 0, 0);
    {
        TCPServerSocket server;
        server.open(port);
        EXPECT_EQ(Calls(calls.made.begin(), calls.made.begin() + 4), tcp);
        EXPECT_EQ(calls.names(), "socket setsockopt bind listen fcntl fcntl ");
    }
    calls.made.clear();
    UNIXServerSocket server;
    server.open("no folder/socket");
    EXPECT_EQ(Calls(calls.made.begin(), calls.made.begin() + 3), local);
    EXPECT_EQ(calls.names(), "socket bind listen fcntl fcntl ");
    server.close();
    EXPECT_EQ(calls.names(), "socket bind listen fcntl fcntl close unlink ");
}

TEST(SocketCalls, ConnectTheseSockets) {
    SystemCalls calls;
    calls.answer("connect", 1, 0, 0);
    const FileDescriptor fd(OSAPI::connect_tcp("127.0.0.1", port));
    EXPECT_EQ(calls.made, Calls({"gethostbyname(127.0.0.1)", "socket(2, 1, 6)", "connect(16)"}));
}

TEST(ConnectTcp, AsksForAnAddressThatItKnows) {
    const int before = open_descriptors();
    SystemCalls calls;
    calls.answer("gethostbyname", 1, AF_INET6, 0);
    EXPECT_EQ(assertion_of([] { OSAPI::connect_tcp("host", port); }),
              "'h->h_addrtype == AF_INET' in <OSAPI::fd_t OSAPI::connect_tcp(const char*, int)> "
              "(osapi-unix:LINE)");
    EXPECT_EQ(calls.names(), "gethostbyname ");
    EXPECT_EQ(open_descriptors(), before);
}

// The host has two addresses, and a server listens at each.
TEST(ConnectTcp, TakesTheFirstAddress) {
    sockaddr_in address = {}, peer = {};
    address.sin_family = AF_INET;
    socklen_t size = sizeof address;
    const FileDescriptor first(socket(AF_INET, SOCK_STREAM, 0));
    const FileDescriptor second(socket(AF_INET, SOCK_STREAM, 0));
    address.sin_addr.s_addr = htonl(0x7f000001);
    ASSERT_EQ(bind(first.fd, reinterpret_cast<sockaddr*>(&address), size), 0);
    ASSERT_EQ(getsockname(first.fd, reinterpret_cast<sockaddr*>(&address), &size), 0);
    address.sin_addr.s_addr = htonl(0x7f000002);
    ASSERT_EQ(bind(second.fd, reinterpret_cast<sockaddr*>(&address), size), 0);
    ASSERT_EQ(listen(first.fd, 1), 0);
    ASSERT_EQ(listen(second.fd, 1), 0);

    SystemCalls calls;
    calls.answer("gethostbyname", 1, AF_INET, 0);
    const FileDescriptor fd(OSAPI::connect_tcp("host", ntohs(address.sin_port)));
    ASSERT_EQ(getpeername(fd.fd, reinterpret_cast<sockaddr*>(&peer), &size), 0);
    EXPECT_EQ(ntohl(peer.sin_addr.s_addr), 0x7f000001u);
}

TEST(ConnectTcp, DoesNotLookForAHostWithAnImpossiblePort) {
    SystemCalls calls;
    for (const int impossible : {0, 65536, -1})
        EXPECT_THROW(OSAPI::connect_tcp("host", impossible), AssertXception);
    EXPECT_EQ(calls.made, Calls());
}

TEST(ConnectTcp, TakesTheFirstAndTheLastPort) {
    SystemCalls calls;
    for (const int possible : {1, 65535}) {
        calls.answer("connect", 1, 0, 0);
        EXPECT_NO_THROW(OSAPI::close(OSAPI::connect_tcp("127.0.0.1", possible)));
    }
}

// ---- accept ----------------------------------------------------------------------------------

template <class Server>
class AcceptCalls : public testing::Test {};

typedef testing::Types<TCPServerSocket, UNIXServerSocket> Servers;

class ServerNames {
public:
    template <class Server>
    static std::string GetName(int) {
        return std::is_same<Server, TCPServerSocket>::value ? "TCP" : "UNIX";
    }
};

TYPED_TEST_SUITE(AcceptCalls, Servers, ServerNames);

TYPED_TEST(AcceptCalls, TakeInterruptionsAsRequested) {
    const bool tcp = std::is_same<TypeParam, TCPServerSocket>::value;
    const std::string call = tcp ? "accept(16)" : "accept(110)";
    for (const bool interruptible : {false, true}) {
        TypeParam server;
        const int connection = some_descriptor();
        FileDescriptor owner(connection);
        SystemCalls calls;
        calls.fail("accept", EINTR, 1);
        calls.fail("accept", EINTR, 2);
        calls.answer("accept", 3, connection, 0);
        EXPECT_EQ(server.accept(interruptible), interruptible ? -1 : connection);
        EXPECT_EQ(calls.names(), interruptible ? "accept " : "accept accept accept fcntl fcntl ");
        EXPECT_EQ(calls.made[0], call);
    }
}

TYPED_TEST(AcceptCalls, ThrowEveryOtherFailure) {
    for (const int error : {ECONNABORTED, EMFILE, EAGAIN}) {
        TypeParam server;
        SystemCalls calls;
        calls.fail("accept", error);
        EXPECT_EQ(message_without_place_of([&] { server.accept(true); }),
                  std::string("accept: ") + std::strerror(error));
        EXPECT_EQ(calls.count("accept"), 1);
    }
}

TYPED_TEST(AcceptCalls, CloseAConnectionThatCannotBeMarked) {
    const int before = open_descriptors();
    for (const int nth : {1, 2}) {
        TypeParam server;
        const int connection = some_descriptor();
        SystemCalls calls;
        calls.answer("accept", 1, connection, 0);
        calls.fail("fcntl", EIO, nth);
        EXPECT_EQ(message_without_line_of([&] { server.accept(false); }),
                  "fcntl: Input/output error" + in_close_on_exec);
        EXPECT_EQ(open_descriptors(), before);
    }
}

// ---- gethostname -----------------------------------------------------------------------------

// In a child: the name is kept for the rest of the process.
TEST(Gethostname, IsAskedForUntilItIsKnown) {
    EXPECT_EQ(status_of_child([] {
                  SystemCalls calls;
                  calls.answer("gethostname", 1, -1, ENAMETOOLONG, "half a na");
                  calls.answer("gethostname", 2, 0, 0, std::string(1, '\0'));
                  calls.answer("gethostname", 3, 0, 0, std::string("name", 5));
                  return message_without_line_of([] { OSAPI::gethostname(); }) ==
                             "gethostname: File name too long" +
                                 in("String OSAPI::gethostname()") &&
                         OSAPI::gethostname().len() == 0 && OSAPI::gethostname() == "name" &&
                         OSAPI::gethostname() == "name" &&
                         calls.made == Calls(3, "gethostname(256)");
              }),
              0);
}

} // namespace
