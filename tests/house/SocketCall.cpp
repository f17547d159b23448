#include "src/NetworkInfo.h"

// As ServerCall.cpp, for the server's socket.
int main() {
    SocketInfo socket = {};
    socket.init(0);
}
