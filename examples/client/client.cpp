// A whole client: it joins, walks forward, and tells who got wet.
#include <drench/client/RoomAddress.h>
#include <drench/client/Session.h>
#include <iostream>

namespace client = drench::client;

int main(int argc, char** argv) {
    std::string problem;
    const auto room = client::resolve(argc > 1 ? argv[1] : "localhost", problem);
    auto session = room ? client::Session::join(room->address, "Ann", client::Clock::now(), problem)
                        : std::nullopt;
    while (session && session->isOpen()) {
        client::wait(*session, client::Clock::now());
        session->service(client::Clock::now());
        while (const auto event = session->nextEvent()) {
            if (std::get_if<client::Joined>(&*event))
                session->setKey(keyIndex::forward, true);
            if (const auto* soaking = std::get_if<client::Soaking>(&*event))
                std::cout << soaking->shooter << " got " << soaking->victim << std::endl;
        }
    }
    std::cerr << (session ? "The room has no place for us, or is gone." : problem) << std::endl;
    return 1;
}
