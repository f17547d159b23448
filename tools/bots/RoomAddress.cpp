#include "RoomAddress.h"

#include "Files.h"
#include "Session.h"

#include <arpa/inet.h>
#include <optional>

namespace bots {

RoomAddress roomAt(const std::string& hostAndPort) {
    std::string problem;
    const std::optional<sockaddr_in> address = client::resolve(hostAndPort, problem);
    if (!address)
        throw arena::InputError(hostAndPort + ": " + problem);
    const std::string host = hostAndPort.substr(0, hostAndPort.find(':'));
    return {(host.empty() ? "localhost" : host) + ':' + std::to_string(ntohs(address->sin_port)),
            *address};
}

} // namespace bots
