#pragma once

#include "game/ArenaMesh.h"
#include "game/Watching.h"
#include "game/Window.h"

#include <functional>
#include <optional>
#include <string>

namespace drench::game {

/// What a video of a recorded match is to be.
struct VideoPlan {
    /// An MP4 file.
    std::string file;

    /// Even numbers of pixels.
    PixelSize size;

    /// Frames a second.
    int rate = 30;

    /// Seconds of the recording; nothing for its end.
    double from = 0.0;
    std::optional<double> to;

    /// With textures and smooth edges.
    bool full = true;
};

/// Draws a recorded match frame by frame, without a display, with its sound. Equal plans make equal
/// frames and sounds. Throws InputError if that cannot be, and leaves the file as it was.
/// @param watching  from where it is seen
/// @param progress  called with the share that is done, 0 to 1; false ends it
/// @return whether the video is whole
bool makeVideo(const VideoPlan& plan, Watching& watching, const MapManager& map,
               const ArenaMesh& mesh, const std::function<bool(double)>& progress);

} // namespace drench::game
