#include "game/Dressing.h"

#include "game/FigureSight.h"

#include <chrono>

namespace drench::game {

Palette paletteOf(const Settings& settings) {
    return settings.colourBlind ? Palette::colourBlind : Palette::usual;
}

void dress(Scene& scene, const Match& match, const arena::Grid& grid, Palette palette) {
    for (FigurePose& figure : scene.figures) {
        figure.palette = palette;
        if (const MatchPlayer* known = match.player(figure.id))
            figure.name = known->name;
    }
    if (scene.gun)
        scene.gun->palette = palette;
    scene.names = namesInSight(grid, scene.camera.eye, scene.figures);
}

std::optional<SoakedOverlay> soakedIn(const Match& match, client::Time now) {
    const MatchPlayer* const self = match.self();
    if (!self || !self->soakedSince)
        return std::nullopt;
    return SoakedOverlay{std::chrono::duration<float>(now - *self->soakedSince).count(),
                         static_cast<float>(secondsUntilReturn(*self, now)), self->soakedBy};
}

} // namespace drench::game
