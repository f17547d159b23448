#pragma once

/// Rows of the spawn poses; see Player::spawn().
constexpr int spawnRows = 8;

/// Seeds rand() so that its next result, modulo spawnRows, is `row`: the next spawn takes that
/// pose.
void seedForSpawn(int row);
