#pragma once

#include "bots/Roadmap.h"

namespace drench::bots {

// What a road is worth is found by walking it: a player of the game is put at its start, and a
// Walker is given the player's positions and has its steps acted upon, as in a match.

/// How many ticks a Walker takes from one place to the next, from the middle and with its view
/// turned already; -1 when it does not get there. The roadmap must hold the road.
int pacedTicks(const Roadmap& roadmap, int from, int to);

/// Whether a Walker gets from one place to the next in each of so many trials. They differ in where
/// beside the middle it begins, where it looks, whether it turns, and how late its steps act.
bool isSure(const Roadmap& roadmap, int from, int to, int trials);

} // namespace drench::bots
