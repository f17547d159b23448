#pragma once

#include "src/Player.h"

#include <algorithm>
#include <initializer_list>
#include <string>

/// A player in a snapshot that looks along z.
inline PlayerUpdate playerAt(char id, vec3 position, const std::string& name = "") {
    PlayerUpdate update;
    update.id = id;
    update.position = position;
    update.direction = {0.0f, 0.0f, 1.0f};
    std::copy_n(name.data(), std::min(name.size(), sizeof update.name - 1), update.name);
    return update;
}

inline PlayerUpdate soaked(PlayerUpdate update) {
    update.position = Player::soakedPlace;
    return update;
}

inline UpdateMessage snapshotOf(std::initializer_list<PlayerUpdate> players) {
    UpdateMessage snapshot;
    std::copy(players.begin(), players.end(), snapshot.updates);
    return snapshot;
}
