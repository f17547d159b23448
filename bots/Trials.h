#pragma once

#include "bots/Roadmap.h"

namespace drench::bots {

// The time of a road, and whether it can be relied on, are found by walking it: a player of the
// game is placed at its start, and a Walker gets the player's positions and steers it, as in a
// match.

/// The ticks that a Walker takes from one place to the next, from the middle and with its view
/// turned already; -1 if it does not get there. The roadmap must hold the road.
int pacedTicks(const Roadmap& roadmap, int from, int to);

/// Whether a Walker gets from one place to the next in every one of `trials` trials. They differ in
/// the start beside the middle, the view, whether it turns, and the delay of its steps.
bool isSure(const Roadmap& roadmap, int from, int to, int trials);

} // namespace drench::bots
