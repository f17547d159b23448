#include "src/NetworkInfo.h"
#include "src/Messages.h"
#include "tests/support/CapturedOutput.h"
#include "tests/support/UdpPeer.h"

#include <arpa/inet.h>
#include <cstring>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

using testing::ExitedWithCode;

namespace {

/// A SocketInfo on a port of the system's choice.
struct OpenSocket {
    SocketInfo info;

    OpenSocket() {
        const CapturedOutput quiet;
        info.init(0);
    }
    ~OpenSocket() { close(info.sockfd); }
    OpenSocket(const OpenSocket&) = delete;
    OpenSocket& operator=(const OpenSocket&) = delete;

    sockaddr_in boundTo() const {
        sockaddr_in address = {};
        socklen_t length = sizeof address;
        getsockname(info.sockfd, reinterpret_cast<sockaddr*>(&address), &length);
        return address;
    }

    int port() const { return ntohs(boundTo().sin_port); }

    int option(int name) const {
        int value = -1;
        socklen_t length = sizeof value;
        getsockopt(info.sockfd, SOL_SOCKET, name, &value, &length);
        return value;
    }
};

int portOf(const UdpPeer& peer) {
    return ntohs(peer.address().addr.sin_port);
}

void initOn(int port) {
    showOutputOnStandardError();
    SocketInfo info;
    info.init(port);
}

void initWithoutDescriptors() {
    showOutputOnStandardError();
    static rlimit limit;
    getrlimit(RLIMIT_NOFILE, &limit);
    const rlimit none = {0, limit.rlim_max};
    setrlimit(RLIMIT_NOFILE, &none);
    // A leak checker needs files at the end of the process.
    atexit([] { setrlimit(RLIMIT_NOFILE, &limit); });
    SocketInfo info;
    info.init(0);
}

std::string portLine(int port) {
    return "htons\\(port\\) = " + std::to_string(htons(static_cast<unsigned short>(port))) + "\n";
}

} // namespace

TEST(ByteSwap, ExchangesTheTwoBytes) {
    EXPECT_EQ(_OSSwapInt16(0), 0);
    EXPECT_EQ(_OSSwapInt16(0x1234), 0x3412);
    EXPECT_EQ(_OSSwapInt16(0xff00), 0x00ff);
    EXPECT_EQ(_OSSwapInt16(5000), 34835);
}

TEST(Client, StartsWithItsAddressLengthAndNoStaleMemory) {
    const Client client;
    std::string bytes(sizeof client, '?');
    std::memcpy(bytes.data(), &client, sizeof client);
    EXPECT_EQ(bytes, std::string(16, '\0') + std::string("\x10\0\0\0", 4));
}

TEST(Socket, PortZeroBindsToAPortOfTheSystemsChoiceAndPrintsZero) {
    SocketInfo info;
    const CapturedOutput output;
    info.init(0);
    EXPECT_EQ(output.text(), "htons(port) = 0\n");
    EXPECT_EQ(info.serverAddr.sin_port, 0) << "what was asked for";
    close(info.sockfd);
    EXPECT_GT(OpenSocket().port(), 0);
}

TEST(Socket, IsBoundOnAllInterfacesBlockingAndWithoutOptions) {
    const OpenSocket socket;
    EXPECT_EQ(socket.boundTo().sin_family, AF_INET);
    EXPECT_EQ(socket.boundTo().sin_addr.s_addr, INADDR_ANY);
    EXPECT_EQ(socket.option(SO_TYPE), SOCK_DGRAM);
    EXPECT_EQ(socket.option(SO_REUSEADDR), 0);
    EXPECT_EQ(socket.option(SO_REUSEPORT), 0);
    EXPECT_EQ(socket.option(SO_BROADCAST), 0);
    EXPECT_EQ(fcntl(socket.info.sockfd, F_GETFL) & O_NONBLOCK, 0);
}

TEST(Socket, InitFillsTheWholeAddress) {
    SocketInfo info;
    std::memset(&info, 0xff, sizeof info);
    const CapturedOutput quiet;
    info.init(0);
    close(info.sockfd);
    EXPECT_EQ(info.addrLen, 16);
    std::string address(16, '?');
    std::memcpy(address.data(), &info.serverAddr, 16);
    EXPECT_EQ(address, std::string("\x02\0", 2) + std::string(14, '\0'));
}

TEST(Socket, SendsTheBytesToTheClientFromItsOwnPort) {
    const OpenSocket socket;
    UdpPeer peer;
    const Client client = peer.address();
    char bytes[] = "soaked";
    socket.info.sendBytesTo(&client, bytes, 4);
    EXPECT_EQ(peer.receive(1000), "soak");
    socket.info.sendBytesTo(&client, bytes, 0);
    EXPECT_EQ(peer.receive(1000), "");
}

TEST(Socket, ReceivesADatagramWithItsSendersAddress) {
    const OpenSocket socket;
    UdpPeer peer;
    peer.send("hello", socket.port());
    Client client;
    char buffer[512] = {};
    socket.info.receiveBytesFrom(&client, buffer, sizeof buffer);
    EXPECT_STREQ(buffer, "hello");
    EXPECT_EQ(client.addrLen, 16u);
    EXPECT_EQ(client.addr.sin_family, AF_INET);
    EXPECT_EQ(client.addr.sin_addr.s_addr, htonl(INADDR_LOOPBACK));
    EXPECT_EQ(ntohs(client.addr.sin_port), portOf(peer));
}

TEST(Socket, SixHundredBytesIntoFiveHundredTwelveAreCutAndTheRestIsGone) {
    const OpenSocket socket;
    UdpPeer peer;
    const std::string whole = std::string(511, 'a') + 'b' + std::string(88, 'c');
    peer.send(whole, socket.port());
    peer.send("next", socket.port());
    GenericMessage first;
    GenericMessage second;
    socket.info.receiveBytesFrom(&first.client, first.data, sizeof first.data);
    socket.info.receiveBytesFrom(&second.client, second.data, sizeof second.data);
    EXPECT_EQ(std::string(first.data, sizeof first.data), whole.substr(0, 512));
    EXPECT_EQ(ntohs(first.client.addr.sin_port), portOf(peer));
    EXPECT_STREQ(second.data, "next");
}

TEST(Socket, BytesBehindAShortDatagramStayAsTheyWere) {
    const OpenSocket socket;
    UdpPeer peer;
    peer.send(std::string("k1\5", 3), socket.port());
    GenericMessage message;
    message.data[4] = '!';
    socket.info.receiveBytesFrom(&message.client, message.data, sizeof message.data);
    EXPECT_EQ(std::string(message.data, 6), std::string("k1\5\0!\0", 6));
}

TEST(SocketDeathTest, PortIsPrintedInNetworkByteOrder) {
    UdpPeer taken;
    EXPECT_EXIT(initOn(portOf(taken)), ExitedWithCode(0), "^" + portLine(portOf(taken)));
    EXPECT_EXIT((initOn(5000), exit(0)), ExitedWithCode(0), "^htons\\(port\\) = 34835\n");
}

TEST(SocketDeathTest, TakenPortEndsTheProcessWithStatusZero) {
    UdpPeer taken;
    const int port = portOf(taken);
    EXPECT_EXIT(initOn(port), ExitedWithCode(0), "^" + portLine(port) + "Error binding socket\n$");
}

TEST(SocketDeathTest, PortIsCutToItsLowSixteenBits) {
    UdpPeer taken;
    const int port = portOf(taken);
    for (int same : {port + 0x10000, port - 0x10000, port + 0x7fff0000}) {
        EXPECT_EXIT(initOn(same), ExitedWithCode(0),
                    "^" + portLine(port) + "Error binding socket\n$")
            << same;
    }
}

TEST(SocketDeathTest, WithoutADescriptorLeftTheProcessEndsBeforeThePortIsPrinted) {
    EXPECT_EXIT(initWithoutDescriptors(), ExitedWithCode(0), "^Error opening socket\n$");
}

TEST(SocketDeathTest, FailedSendToASingleClientEndsTheProcess) {
    const OpenSocket socket;
    Client everybody;
    everybody.addr.sin_family = AF_INET;
    everybody.addr.sin_port = htons(9);
    everybody.addr.sin_addr.s_addr = INADDR_BROADCAST;
    char byte = 'f';
    EXPECT_EXIT((showOutputOnStandardError(), socket.info.sendBytesTo(&everybody, &byte, 1)),
                ExitedWithCode(0), "^Error sending bytes to client\n$");
}

TEST(SocketDeathTest, FailedReceiveEndsTheProcess) {
    const SocketInfo closed = {-1, 16, {}};
    Client client;
    char buffer[512];
    EXPECT_EXIT(
        (showOutputOnStandardError(), closed.receiveBytesFrom(&client, buffer, sizeof buffer)),
        ExitedWithCode(0), "^Error receiving bytes from client\n$");
}
