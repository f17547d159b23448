#pragma once

#include "src/Messages.h"
#include "src/Vector.h"

#include <initializer_list>

/// A player in a snapshot.
inline PlayerUpdate playerAt(char id, vec3 position, vec3 direction = {0.0f, 0.0f, 1.0f}) {
    PlayerUpdate update;
    update.id = id;
    update.position = position;
    direction.normalize();
    update.direction = direction;
    return update;
}

inline UpdateMessage snapshotOf(std::initializer_list<PlayerUpdate> players) {
    UpdateMessage snapshot;
    for (const PlayerUpdate& player : players)
        snapshot.add(player);
    return snapshot;
}

/// Where the soaked wait.
constexpr vec3 soakedPosition{-1375.2f, 797.701f, -1280.61f};
