#include "src/Server.h"

// Linked with each library of another room, which must fail, and with the server's, which must not.
int main() {
    Server server;
    server.update();
}
