#include "Server.h"

#include "Collisions.h"
#include "FileLoader.h"
#include "FilePath.h"
#include "Timing.h"

#include <algorithm>
#include <iostream>
#include <unistd.h>

namespace {

/// Moves the whole `queue` into the empty `records` by exchanging the two: no record is copied, and
/// the receive thread waits once a tick rather than once a record. False when there is nothing.
bool takeAll(std::queue<GenericMessage>& queue, pthread_mutex_t* mutex,
             std::queue<GenericMessage>& records) {
    const ScopedLock lock(mutex);
    if (queue.empty())
        return false;
    records.swap(queue);
    return true;
}

} // namespace

void Server::init(int port) {
    std::cout << "sizeof(UpdateMessage) " << sizeof(UpdateMessage) << std::endl;
    std::cout << "sizeof(PlayerUpdate)  " << sizeof(PlayerUpdate) << std::endl;
    sockInfo.init(port);
    mapMan.init(fileStringContents(getResourcePath("mapdata")));
}

void Server::cleanup() {
    close(sockInfo.sockfd);
}

Player* Server::playerByID(char id) {
    for (Player& player : players) {
        if (player.getPlayerID() == id)
            return &player;
    }
    return nullptr;
}

bool Server::playerIDExists(char id) {
    return playerByID(id) != nullptr;
}

char Server::playerJoin(const GenericMessage* msg) {
    char id = '1';
    while (playerIDExists(id))
        ++id;

    Player player(id, recordIn<JoinMessage>(*msg).name);
    player.client = msg->client;
    player.setMapMan(&mapMan);
    players.push_back(player);

    const std::string notice = std::string(player.getName()) + " joined";
    std::cout << notice << std::endl;
    AcceptanceMessage answer;
    answer.id = id;
    sockInfo.sendBytesTo(&msg->client, &answer, sizeof answer);
    broadcastNotice(notice);
    return id;
}

void Server::broadcast(const void* data, int length) {
    for (const Player& player : players)
        sockInfo.sendBytesTo(&player.client, data, length);
}

void Server::broadcastNotice(const std::string& text) {
    TalkMessage notice;
    notice.id = serverSpeaker;
    std::copy_n(text.data(), std::min(text.size(), sizeof notice.text), notice.text);
    broadcast(&notice, sizeof notice);
}

void Server::playerDisconnect(char id) {
    Player* player = playerByID(id);
    if (!player)
        return;
    const std::string notice = std::string(player->getName()) + " disconnected";
    std::cout << notice << std::endl;
    players.erase(players.begin() + (player - players.data()));
    broadcastNotice(notice);
}

void Server::readMessages() {
    // Until the queue is empty: a record that arrives meanwhile belongs to this tick too.
    while (takeAll(inMessages, inMessagesMutex, records_)) {
        for (; !records_.empty(); records_.pop())
            dispatch(records_.front());
    }
}

void Server::dispatch(const GenericMessage& record) {
    switch (record.data[0]) {
    case messageCode::join:
        if (players.size() >= maxPlayers) {
            std::cout << "Player denied --- Game is full." << std::endl;
            const RefusalMessage answer;
            sockInfo.sendBytesTo(&record.client, &answer, sizeof answer);
        } else {
            playerJoin(&record);
        }
        break;
    case messageCode::leave:
        playerDisconnect(recordIn<LeaveMessage>(record).id);
        break;
    case messageCode::key: {
        const auto key = recordIn<KeyMessage>(record);
        if (Player* player = playerByID(key.id)) {
            if (player->alive())
                player->setKey(key.key, key.down != 0);
            player->connectedMessageReceived();
        }
        break;
    }
    case messageCode::view: {
        const auto view = recordIn<ViewMessage>(record);
        if (Player* player = playerByID(view.id)) {
            if (player->alive())
                player->rotateView(view.dx, view.dy);
            player->connectedMessageReceived();
        }
        break;
    }
    case messageCode::chat: {
        const auto talk = recordIn<TalkMessage>(record);
        if (Player* player = playerByID(talk.id)) {
            player->connectedMessageReceived();
            broadcast(&talk, sizeof talk);
        }
        break;
    }
    case messageCode::keepAlive:
        if (Player* player = playerByID(recordIn<KeepAliveMessage>(record).id))
            player->connectedMessageReceived();
        break;
    default:
        break;
    }
}

void Server::update() {
    const float now = static_cast<float>(getCurrentMillisecond());
    readMessages();
    advancePlayers(now);
    broadcastState();
    // After the broadcast: clients see a soaking's points and poses in the next tick's state.
    resolveShots(now);
}

void Server::advancePlayers(float now) {
    // A removal moves the next player into place i, which then sits this tick out.
    for (size_t i = 0; i < players.size(); ++i) {
        players[i].update(now);
        if (players[i].lostConnection(now))
            playerDisconnect(players[i].getPlayerID());
    }
}

void Server::broadcastState() {
    UpdateMessage message;
    for (Player& player : players)
        message.add(player.getPlayerUpdate());
    broadcast(&message, sizeof message);
}

void Server::resolveShots(float now) {
    for (Player& shooter : players) {
        if (!shooter.isShooting() || !shooter.alive())
            continue;
        const vec3 hit = shooter.shoot(&mapMan);
        // A shot into the open sky soaks nobody, not even a player right before the shooter.
        if (isMiss(hit))
            continue;
        soakPlayersOnSegment(shooter, hit, now);
    }
}

void Server::soakPlayersOnSegment(Player& shooter, vec3 end, float now) {
    for (Player& victim : players) {
        if (victim.getPlayerID() == shooter.getPlayerID())
            continue;
        const Box body = victim.getBox();
        vec3 ignored;
        if (!Line_AABB(shooter.getPosition(), end, body.min, body.max, ignored))
            continue;
        shooter.incPoints();
        victim.decPoints();
        const std::string notice =
            std::string(shooter.getName()) + " soaked " + victim.getName() + "!";
        std::cout << notice << std::endl;
        broadcastNotice(notice);
        victim.die(now);
    }
}
