#pragma once

namespace drench::game {

/// How much of a scene is drawn, whatever it shows.
struct Look {
    /// With textures and smooth edges.
    bool full = false;

    /// The driver draws with the processor: of what looks alike, it takes what is cheapest there.
    bool inSoftware = false;

    /// Of the framebuffer's width and height, what is drawn and then scaled up; above 0, at most 1.
    double scale = 1.0;
};

} // namespace drench::game
