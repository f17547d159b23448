#pragma once

#include "arena/picture/Scene.h"
#include "game/ArenaFaces.h"

#include <array>
#include <stop_token>
#include <vector>

namespace drench::game {

/// Towards the sun over every arena.
constexpr arena::Triple towardsSun = {0.30, 0.90, 0.40};

/// Warm light that the sun sends to a face straight towards it.
constexpr arena::Light sunLight = {1.46, 1.22, 0.84};

/// Light of the sky, bluish and so the shadows, on a face that sees nothing else.
constexpr arena::Light skyLight = {0.42, 0.51, 0.70};

/// Light that reaches the corners of a face from everywhere but the sun: from the sky, and from
/// other faces. The corners lie at (0, 0), (1, 0), (1, 1) and (0, 1) along the face's first and
/// second axis.
using CornerLight = std::array<arena::Light, 4>;

/// What is shown of light: all of a little, and less of more, so that nothing is too bright. It is
/// mostShown · (1 - exp(-exposure · light)).
constexpr double exposure = 1.3;
constexpr double mostShown = 1.02;
arena::Light exposed(const arena::Light& light);

/// The light from sky and faces at the corners of visible faces, by rays and three bounces.
/// Corners that faces of one plane share are lit alike.
/// @param sunShares  the share of each face that the sun shines on, times the cosine to it
/// @param stop  asks to give up; the light is then any
std::vector<CornerLight> ambientLight(const MapManager& map, const std::vector<CubeFace>& faces,
                                      const std::vector<double>& sunShares,
                                      const std::stop_token& stop = {});

/// About what a face in an arena gets of that light, without looking around.
CornerLight unshadowedLight(const CubeFace& face);

} // namespace drench::game
