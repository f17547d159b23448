// A room under any stream of datagrams and any passing of time. An input is an arena, a moment to
// start at, a seed, and then what happens, one byte each and what it needs: three bits say what,
// five bits how much or who. Nothing leaves the process: this file stands in for the server's clock
// and for its socket.

#include "src/FileLoader.h"
#include "src/Server.h"
#include "src/Timing.h"
#include "tests/fuzz/Bytes.h"
#include "tests/fuzz/Require.h"
#include "tests/support/Arenas.h"
#include "tests/support/Datagrams.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace {

/// Milliseconds.
constexpr int tickLength = 16;

/// Of one input, so that no input takes long.
constexpr int mostTicks = 4096;

constexpr float timeOut = 5000.0f;
constexpr float respawnDelay = 4000.0f;

/// An undone step may leave a body some last bits further on, and those add up in a body that goes
/// on pushing. Coordinates in a room are below 2048, with a last bit of 2^-13 = 0.00012.
constexpr float lastBits = 0.01f;

/// A view is scaled to length one on its way through every turn, and then rounded some ten times.
constexpr float viewTolerance = 1e-6f;

/// Nothing scales the rotation. The spawns' own lengths are off by up to 2.1e-5; a turn, which is a
/// product of two rounded quaternions, adds up to 5e-8 in 20 000 random walks of 6000 turns each.
constexpr float spawnRotationTolerance = 2.2e-5f;
constexpr float rotationDriftPerTurn = 0x1p-23f;

/// Where the soaked wait.
constexpr vec3 soakedPlace(-1375.2f, 797.701f, -1280.61f);

/// By one key in a tick, with the last bits of coordinates far outside the arena.
constexpr float longestStep = 6.01f;

long now = 0;

/// No record is longer than a state.
struct SentRecord {
    in_port_t port = 0;
    std::size_t length = 0;
    std::array<char, sizeof(UpdateMessage)> data = {};

    SentRecord(in_port_t to, std::string_view record) : port(to), length(record.size()) {
        require(length >= 1 && length <= data.size(), "a record has 1 to 244 bytes");
        record.copy(data.data(), length);
    }

    std::string_view bytes() const { return {data.data(), length}; }
};

std::vector<SentRecord> sentRecords;

/// Heights and walls to climb, and spawns inside cubes.
std::string pillaredCourt() {
    std::vector<std::array<int, 3>> spawnCells;
    for (const int pose : {0, 5}) {
        const Player player('1', "", 0.0f, pose);
        spawnCells.push_back({static_cast<int>(player.position.x) / 64,
                              static_cast<int>(player.position.y) / 64,
                              static_cast<int>(player.position.z) / 64});
    }
    return arenaText(32, 16, 32, [&](int i, int j, int k) {
        const bool isBorder = j == 0 || i == 0 || i == 31 || k == 0 || k == 31;
        const bool isPillar = i % 5 == 1 && k % 5 == 1 && j < 1 + (i + k) % 4;
        const bool isSpawn = std::find(spawnCells.begin(), spawnCells.end(),
                                       std::array<int, 3>{i, j, k}) != spawnCells.end();
        return isBorder || isPillar || isSpawn;
    });
}

/// Far too small for the spawns: everybody falls past it for ever.
std::string tinyCourt() {
    return arenaText(3, 2, 4, [](int i, int j, int k) { return j == 0 || (i + k) % 3 == 0; });
}

/// Whether the body is in a solid cube by more than the last bits of its coordinates.
bool isInsideCube(const MapManager& map, const Box& body) {
    for (int i = map.getColumn(body.min.x); i <= map.getColumn(body.max.x); ++i) {
        for (int j = map.getRow(body.min.y); j <= map.getRow(body.max.y); ++j) {
            for (int k = map.getDepth(body.min.z); k <= map.getDepth(body.max.z); ++k) {
                if (map.cubeIsNull(i, j, k))
                    continue;
                const vec3 low(64.0f * static_cast<float>(i), 64.0f * static_cast<float>(j),
                               64.0f * static_cast<float>(k));
                const auto depth = [](float min, float max, float face) {
                    return std::min(max, face + 64.0f) - std::max(min, face);
                };
                if (depth(body.min.x, body.max.x, low.x) > lastBits &&
                    depth(body.min.y, body.max.y, low.y) > lastBits &&
                    depth(body.min.z, body.max.z, low.z) > lastBits)
                    return true;
            }
        }
    }
    return false;
}

struct Arena {
    Server server;

    /// The spawns that lie in cubes, whose players may stay there.
    std::vector<vec3> closedSpawns;

    explicit Arena(const std::string& text) {
        server.mapMan.init(text);
        for (int pose = 0; pose < Player::spawnPoseCount; ++pose) {
            const Player player('1', "", 0.0f, pose);
            if (isInsideCube(server.mapMan, player.box))
                closedSpawns.push_back(player.position);
        }
    }
};

Server& cleared(Server& server) {
    server.players.clear();
    server.inMessages = {};
    return server;
}

Arena& arenaOf(int number) {
    static Arena arenas[] = {Arena(fileStringContents(DRENCH_MAPDATA)), Arena(pillaredCourt()),
                             Arena(tinyCourt())};
    return arenas[number];
}

bool isFinite(vec3 v) {
    return std::isfinite(v.x) && std::isfinite(v.y) && std::isfinite(v.z);
}

bool areEqual(vec3 a, vec3 b) {
    return a.x == b.x && a.y == b.y && a.z == b.z;
}

bool areNear(vec3 a, vec3 b) {
    return (a - b).length() <= lastBits;
}

/// Who is in the room and where, as the protocol's rules have it.
struct Guest {
    char id;
    std::string name;
    in_port_t port;
    float heard;

    /// View records that have turned it, at most.
    int turns = 0;

    /// After the last tick; nothing for who joined since, or was dead.
    std::optional<vec3> position = std::nullopt;
};

class Watch {
  public:
    explicit Watch(Arena& arena) : arena_(arena), server_(cleared(arena.server)) {
        sentRecords.clear();
    }

    void queue(const std::string& datagram, in_port_t port) {
        GenericMessage record;
        std::copy_n(datagram.data(), std::min(datagram.size(), sizeof record.data), record.data);
        record.client.addr.sin_family = AF_INET;
        record.client.addr.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        record.client.addr.sin_port = port;
        server_.inMessages.push(record);
    }

    void keepEverybodyAlive() {
        for (const Guest& guest : guests_)
            queue(keepAliveDatagram(guest.id), guest.port);
    }

    void tick(int milliseconds) {
        now += milliseconds;
        expectAnswers();
        server_.update();
        checkAnswers();
        checkDepartures();
        checkStates();
        for (std::size_t i = 0; i < guests_.size(); ++i)
            checkPlayer(server_.players[i], guests_[i]);
        sentRecords.clear();
        expected_.clear();
    }

  private:
    Guest* guestWith(char id) {
        const auto found = std::find_if(guests_.begin(), guests_.end(),
                                        [id](const Guest& guest) { return guest.id == id; });
        return found == guests_.end() ? nullptr : &*found;
    }

    /// Goes through the queue before the server does, and notes whom it must answer what.
    void expectAnswers() {
        for (std::queue<GenericMessage> queue = server_.inMessages; !queue.empty(); queue.pop())
            expectAnswer(queue.front());
    }

    void expectAnswer(const GenericMessage& record) {
        const in_port_t port = record.client.addr.sin_port;
        const char code = record.data[0];
        if (code == messageCode::join && guests_.size() == maxPlayers) {
            expected_.emplace_back(port, bytesOf(RefusalMessage()));
            return;
        }
        if (code == messageCode::join) {
            char id = '1';
            while (guestWith(id))
                ++id;
            const std::string name(record.data + 1, strnlen(record.data + 1, 11));
            guests_.push_back({id, name, port, static_cast<float>(now)});
            expected_.emplace_back(port, bytesOf(AcceptanceMessage{.id = id}));
            expectTalk("s" + name + " joined");
            return;
        }
        Guest* const guest = guestWith(record.data[1]);
        if (!guest)
            return;
        if (code == messageCode::leave) {
            const std::string notice = "s" + guest->name + " disconnected";
            guests_.erase(guests_.begin() + (guest - guests_.data()));
            expectTalk(notice);
        } else if (code == messageCode::key || code == messageCode::view ||
                   code == messageCode::chat || code == messageCode::keepAlive) {
            guest->heard = static_cast<float>(now);
            guest->turns += code == messageCode::view;
        }
        if (code == messageCode::chat)
            expectTalk(std::string(record.data + 1, 31));
    }

    void expectTalk(std::string speakerAndText) {
        speakerAndText.resize(31);
        for (const Guest& guest : guests_)
            expected_.emplace_back(guest.port, messageCode::chat + speakerAndText);
    }

    bool isSent(const SentRecord& record) {
        if (sent_ == sentRecords.size())
            return false;
        const SentRecord& next = sentRecords[sent_++];
        return next.port == record.port && next.bytes() == record.bytes();
    }

    void checkAnswers() {
        sent_ = 0;
        for (const SentRecord& record : expected_)
            require(isSent(record), "each datagram is answered as the protocol says, in order");
    }

    /// Follows the server in dropping the silent. Who comes behind one that is dropped sits that
    /// tick out, and may be dropped one tick late.
    void checkDepartures() {
        expected_.clear();
        someoneDropped_ = false;
        for (std::size_t i = 0; i < guests_.size();) {
            const bool isSilent = static_cast<float>(now) - guests_[i].heard > timeOut;
            const bool isThere =
                i < server_.players.size() && server_.players[i].getPlayerID() == guests_[i].id;
            if (isThere) {
                require(!isSilent || someoneDropped_, "the silent are dropped");
                ++i;
                continue;
            }
            require(isSilent, "nobody is dropped but the silent");
            someoneDropped_ = true;
            const std::string notice = "s" + guests_[i].name + " disconnected";
            guests_.erase(guests_.begin() + static_cast<std::ptrdiff_t>(i));
            expectTalk(notice);
        }
        require(server_.players.size() == guests_.size(), "only who joined is a player");
        require(guests_.size() <= 4, "a room holds four players");
        for (const SentRecord& record : expected_)
            require(isSent(record), "a departure is told to everybody else");
    }

    void checkStates() {
        const std::size_t first = sent_;
        sent_ += guests_.size();
        require(sent_ <= sentRecords.size(), "everybody gets a state");
        const bool someoneSoaked = sent_ < sentRecords.size();
        for (std::size_t i = 0; i < guests_.size(); ++i) {
            const SentRecord& sent = sentRecords[first + i];
            require(sent.port == guests_[i].port, "a state goes where its player joined from");
            require(sent.bytes() == sentRecords[first].bytes(), "everybody gets the same state");
        }
        for (; sent_ < sentRecords.size(); ++sent_) {
            require(sentRecords[sent_].bytes().size() == 32 &&
                        sentRecords[sent_].bytes().starts_with("ts"),
                    "notices alone follow a state");
        }
        if (!guests_.empty())
            checkState(sentRecords[first].bytes(), someoneSoaked);
    }

    void checkState(std::string_view bytes, bool someoneSoaked) {
        UpdateMessage state;
        require(bytes.size() == 244 && bytes[0] == messageCode::worldState,
                "a state has 244 bytes");
        std::memcpy(static_cast<void*>(&state), bytes.data(), sizeof state);
        UpdateMessage wanted;
        for (std::size_t i = 0; i < guests_.size(); ++i) {
            const Player& player = server_.players[i];
            const PlayerUpdate& told = state.updates[i];
            PlayerUpdate& slot = wanted.updates[i];
            slot.rotation = player.rotation;
            slot.position = player.position;
            slot.direction = player.direction;
            guests_[i].name.copy(slot.name, sizeof slot.name);
            // Soakings come after the state and change points, and poses of who was soaked.
            slot.points = someoneSoaked ? told.points : player.playerUpdate.points;
            slot.shooting = player.keys[keyIndex::shoot];
            slot.id = guests_[i].id;
            if (someoneSoaked && player.dead) {
                slot.rotation = told.rotation;
                slot.position = told.position;
                slot.direction = told.direction;
                slot.shooting = told.shooting;
            }
        }
        require(std::memcmp(&state, &wanted, sizeof state) == 0,
                "a state tells what its players are, in the order of joining, and zeros");
    }

    void checkPlayer(const Player& player, Guest& guest) {
        require(player.playerID >= '1' && player.playerID <= '4', "identifiers are '1' to '4'");
        require(isFinite(player.position) && isFinite(player.look) && isFinite(player.direction) &&
                    isFinite(player.strafeVector) && isFinite(player.box.min) &&
                    isFinite(player.box.max) && std::isfinite(player.verticalSpeed),
                "where a player is and looks is finite");
        require(std::fabs(player.direction.length() - 1.0f) <= viewTolerance,
                "a view's length is one");
        const quat& q = player.rotation;
        const float length = std::sqrt(q.x * q.x + q.y * q.y + q.z * q.z + q.w * q.w);
        const float tolerance =
            spawnRotationTolerance + rotationDriftPerTurn * 2.0f * static_cast<float>(guest.turns);
        require(std::fabs(length - 1.0f) <= tolerance, "a rotation's length is one");

        if (!player.alive()) {
            checkDead(player);
            guest.position.reset();
            return;
        }
        const vec3 position = player.position;
        const auto isHere = [&](vec3 spawn) { return areNear(spawn, position); };
        require(!isInsideCube(server_.mapMan, player.box) ||
                    std::any_of(arena_.closedSpawns.begin(), arena_.closedSpawns.end(), isHere),
                "nobody is in a cube but who spawned there");
        const float keys = std::fabs(player.moveInput) + std::fabs(player.strafeInput);
        require(!guest.position || std::hypot(position.x - guest.position->x,
                                              position.z - guest.position->z) <= longestStep * keys,
                "a key moves its player by 6");
        guest.position = position;
    }

    void checkDead(const Player& player) {
        const vec3 halfBody = Player::bodySize / 2.0f;
        require(areEqual(player.position, soakedPlace) &&
                    areEqual(player.box.min, soakedPlace - halfBody) &&
                    areEqual(player.box.max, soakedPlace + halfBody),
                "the soaked wait at one place");
        require(std::none_of(std::begin(player.keys), std::end(player.keys),
                             [](bool key) { return key; }),
                "the soaked hold no key");
        require(static_cast<float>(now) - player.deathTime < respawnDelay || someoneDropped_,
                "the soaked come back");
    }

    Arena& arena_;
    Server& server_;
    std::vector<Guest> guests_;
    std::vector<SentRecord> expected_;

    /// Of what the server sent in this tick, so much has been looked at.
    std::size_t sent_ = 0;
    bool someoneDropped_ = false;
};

/// What one byte of an input says.
enum Step { tick, tickOn, pause, join, key, view, other, any };

char idOf(int number) {
    return static_cast<char>('1' + number % 4);
}

std::string keyRecord(Bytes& input, int argument) {
    const auto what = input.next<unsigned char>();
    return keyDatagram(idOf(argument), what / 2 % 8, what % 2 != 0);
}

std::string viewRecord(Bytes& input, int argument) {
    const char id = idOf(argument);
    if (argument < 16) {
        const int dx = 8 * input.next<signed char>();
        return viewDatagram(id, dx, 8 * input.next<signed char>());
    }
    const auto dx = input.next<std::int32_t>();
    return viewDatagram(id, dx, input.next<std::int32_t>());
}

std::string otherRecord(Bytes& input, int argument) {
    const char id = idOf(argument);
    if (argument < 8)
        return leaveDatagram(id);
    if (argument < 16)
        return keepAliveDatagram(id);
    std::string chat = {messageCode::chat, id};
    return chat + input.text(static_cast<std::size_t>(argument));
}

} // namespace

long getCurrentMillisecond() {
    return now;
}

long getCurrentSecond() {
    return now / 1000;
}

void SocketInfo::init(int /*port*/) {}

void SocketInfo::sendBytesTo(const Client* client, const void* data, int length) const {
    sentRecords.emplace_back(
        client->addr.sin_port,
        std::string_view(static_cast<const char*>(data), static_cast<std::size_t>(length)));
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const bool quiet = std::cout.rdbuf(nullptr) != nullptr;
    static_cast<void>(quiet);

    // A young room, one whose clock steps by 2 ms, and one that was never restarted.
    constexpr long starts[] = {0, 1L << 24, 3L * 24 * 3600 * 1000};

    Bytes input(data, size);
    const int setting = input.next<unsigned char>();
    now = starts[setting / 3 % 3];
    Arena& arena = arenaOf(setting % 3);
    srand(input.next<unsigned char>());
    Watch watch(arena);
    for (int ticks = 0; !input.isEmpty() && ticks < mostTicks;) {
        const int step = input.next<unsigned char>();
        const int argument = step >> 3;
        const auto port = static_cast<in_port_t>(argument % 4);
        switch (static_cast<Step>(step & 7)) {
        case tick:
            for (int i = 0; i <= argument; ++i)
                watch.tick(tickLength);
            ticks += argument + 1;
            break;
        case tickOn:
            watch.keepEverybodyAlive();
            for (int i = 0; i < 8 * (argument + 1); ++i)
                watch.tick(tickLength);
            ticks += 8 * (argument + 1);
            break;
        case pause:
            watch.tick(250 * (argument + 1));
            ++ticks;
            break;
        case join:
            watch.queue(messageCode::join + input.text(static_cast<std::size_t>(argument / 2)),
                        port);
            break;
        case key:
            watch.queue(keyRecord(input, argument), port);
            break;
        case view:
            watch.queue(viewRecord(input, argument), port);
            break;
        case other:
            watch.queue(otherRecord(input, argument), port);
            break;
        case any: {
            const std::size_t length = input.next<unsigned char>();
            watch.queue(input.text(length * (1 + static_cast<std::size_t>(argument / 8))), port);
            break;
        }
        }
    }
    watch.tick(tickLength);
    return 0;
}
