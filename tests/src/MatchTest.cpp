#include "tests/support/Arenas.h"
#include "tests/support/CapturedOutput.h"
#include "tests/support/Datagrams.h"
#include "tests/support/ManualClock.h"
#include "tests/support/Room.h"
#include "tests/support/Spawns.h"

#include <array>
#include <cstdint>
#include <gtest/gtest.h>
#include <random>

namespace {

/// FNV-1a, 64 bits (Fowler, Noll, Vo).
struct Hash {
    std::uint64_t value = 14695981039346656037u;

    template<typename Record>
    void add(const Record& record) {
        std::array<unsigned char, sizeof record> bytes;
        std::memcpy(bytes.data(), &record, sizeof record);
        for (const unsigned char byte : bytes)
            value = (value ^ byte) * 1099511628211u;
    }
};

void addPlayer(Hash& hash, Player& player) {
    hash.add(player.getPlayerUpdate());
    hash.add(player.look);
    hash.add(player.strafeVector);
    hash.add(player.velocity);
    hash.add(player.verticalSpeed);
    hash.add(player.box.min);
    hash.add(player.box.max);
    hash.add(player.keys);
    hash.add(player.inAir);
    hash.add(player.dead);
    hash.add(player.deathTime);
    hash.add(player.lastMessageTime);
}

/// A court with low blocks to climb and a wall with gaps across its middle.
std::string court() {
    return arenaText(32, 16, 32, [](int i, int j, int k) {
        const bool border = i == 0 || i == 31 || k == 0 || k == 31;
        const bool block = j <= 2 && (7 * i + 13 * k) % 29 < j * 2 + 1 && i > 5 && k > 5;
        const bool wall = j <= 6 && k == 16 && i % 5 != 2;
        return j == 0 || border || (block && j > 0) || wall;
    });
}

int count(const std::string& text, const std::string& part) {
    int found = 0;
    for (size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1))
        ++found;
    return found;
}

/// A random draw that every standard library makes alike.
int below(int limit, std::mt19937& random) {
    return static_cast<int>(random() % static_cast<unsigned>(limit));
}

/// What a random client does next. Most turn on the spot, walk and fire; a few fall silent.
std::string randomInput(std::mt19937& random) {
    const char id = static_cast<char>('1' + below(4, random));
    // Drawn one by one: the order in which a call's arguments are evaluated is the compiler's.
    const int action = below(12, random);
    const int first = below(61, random);
    const int second = below(5, random);
    switch (action) {
    case 0:
        return first < 58 ? keepAliveDatagram(id) : leaveDatagram(id);
    case 1:
        return joinDatagram(std::string("Runner") + id);
    case 2:
    case 3:
        return keyDatagram(id, first % 6, second != 0);
    case 4:
        return keyDatagram(id, keyIndex::shoot, true);
    case 5:
        return keyDatagram(id, keyIndex::jump, true);
    default:
        return viewDatagram(id, first - 30, second - 2);
    }
}

} // namespace

TEST(Match, OfThousandsOfTicksEndsInOneKnownState) {
    ManualClock::now = 0;
    std::mt19937 random(20240601);
    Room room(court());
    UdpPeer peer;
    Hash hash;
    std::string printed;
    {
        const CapturedOutput output;
        for (int tick = 0; tick < 20000; ++tick) {
            seedForSpawn(below(spawnRows, random));
            const bool quietSpell = tick % 2000 > 1600;
            for (int i = quietSpell ? 0 : below(3, random); i > 0; --i)
                room.queue(randomInput(random), peer);
            room.tick(16 + below(2, random));
            peer.received();
            for (Player& player : room.server.players)
                addPlayer(hash, player);
        }
        printed = output.text();
    }
    EXPECT_GT(count(printed, " joined\n"), 20);
    EXPECT_GT(count(printed, " disconnected\n"), 20);
    EXPECT_GT(count(printed, " soaked "), 20);
    EXPECT_GT(count(printed, "Player denied"), 20);
    EXPECT_EQ(hash.value, 17829779457408200u);
}
