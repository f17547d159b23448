#include "keeper/Sockets.h"

#include <fcntl.h>
#include <sys/socket.h>

namespace drench::keeper {

void prepareSocket(int socket) {
    fcntl(socket, F_SETFD, FD_CLOEXEC);
    // A keeper that is started again need not wait for its old connections.
    const int on = 1;
    setsockopt(socket, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
}

} // namespace drench::keeper
