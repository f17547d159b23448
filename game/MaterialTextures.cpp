#include "game/MaterialTextures.h"

#include "arena/Materials.h"

#include <algorithm>
#include <cmath>
#include <glm/common.hpp>
#include <glm/geometric.hpp>
#include <glm/vec2.hpp>
#include <glm/vec3.hpp>
#include <numbers>
#include <string_view>

namespace drench::game {

namespace {

constexpr float turn = 2.0f * std::numbers::pi_v<float>;
constexpr float halfTurn = std::numbers::pi_v<float>;

/// A number from 0 to 1 for a place of a lattice that repeats after `period`.
float chance(glm::ivec2 cell, int period, unsigned seed) {
    const auto wrapped = [&](int value) {
        return static_cast<unsigned>(((value % period) + period) % period);
    };
    // Numbers that look like chance (Wang's integer hash, 2007).
    unsigned mixed = wrapped(cell.x) * 73856093u ^ wrapped(cell.y) * 19349663u ^ seed * 83492791u;
    mixed = (mixed ^ 61u) ^ (mixed >> 16);
    mixed *= 9u;
    mixed ^= mixed >> 4;
    mixed *= 0x27d4eb2du;
    mixed ^= mixed >> 15;
    return static_cast<float>(mixed & 0xFFFFu) / 65535.0f;
}

/// Smooth noise from -1 to 1 over a square of side 1 that tiles.
/// @param cells  bumps along each side
float noise(glm::vec2 place, int cells, unsigned seed) {
    const glm::vec2 scaled = place * static_cast<float>(cells);
    const glm::vec2 low = glm::floor(scaled);
    glm::vec2 share = scaled - low;
    share = share * share * (3.0f - 2.0f * share);
    const glm::ivec2 cell(low);
    const auto at = [&](int x, int y) { return chance(cell + glm::ivec2(x, y), cells, seed); };
    const float bottom = glm::mix(at(0, 0), at(1, 0), share.x);
    const float top = glm::mix(at(0, 1), at(1, 1), share.x);
    return 2.0f * glm::mix(bottom, top, share.y) - 1.0f;
}

/// Noise of several sizes, each half as strong as the one before.
float roughness(glm::vec2 place, int cells, int octaves, unsigned seed) {
    float sum = 0.0f;
    float strength = 0.5f;
    for (int octave = 0; octave < octaves; ++octave) {
        sum += strength * noise(place, cells << octave, seed + static_cast<unsigned>(octave));
        strength *= 0.5f;
    }
    return sum;
}

/// The nearest of points strewn over a square of side 1 that tiles, one in each cell.
struct Grain {
    /// Cells from the place to the nearest point, and to the one after.
    float nearest = 9.0f;
    float second = 9.0f;

    /// The point's own number from 0 to 1.
    float own = 0.0f;
    glm::vec2 offset{0.0f};
};

Grain grainAt(glm::vec2 place, int cells, unsigned seed) {
    const glm::vec2 scaled = place * static_cast<float>(cells);
    const glm::ivec2 middle(glm::floor(scaled));
    Grain grain;
    for (int x = -1; x <= 1; ++x) {
        for (int y = -1; y <= 1; ++y) {
            const glm::ivec2 cell = middle + glm::ivec2(x, y);
            const glm::vec2 point = glm::vec2(cell) + glm::vec2(chance(cell, cells, seed),
                                                                chance(cell, cells, seed + 1));
            const float distance = glm::distance(scaled, point);
            grain.second = std::min(grain.second, std::max(distance, grain.nearest));
            if (distance < grain.nearest) {
                grain.nearest = distance;
                grain.own = chance(cell, cells, seed + 2);
                grain.offset = scaled - point;
            }
        }
    }
    return grain;
}

/// Stones of a wall in courses, each shifted against the one below.
struct Course {
    /// From the stone's nearest edge, as a share of its height.
    float inwards;

    /// The stone's own number from 0 to 1.
    float own;

    /// Place on the stone from 0 to 1.
    glm::vec2 on;
};

Course courseAt(glm::vec2 place, int across, int up, unsigned seed) {
    const float row = std::floor(place.y * static_cast<float>(up));
    const float x =
        place.x * static_cast<float>(across) + (static_cast<int>(row) % 2 ? 0.5f : 0.0f);
    const glm::vec2 on(x - std::floor(x), place.y * static_cast<float>(up) - row);
    const float shape = static_cast<float>(up) / static_cast<float>(across);
    const glm::vec2 edge = glm::min(on, 1.0f - on) * glm::vec2(shape, 1.0f);
    const glm::ivec2 stone(static_cast<int>(std::floor(x)) % across, static_cast<int>(row));
    return {std::min(edge.x, edge.y), chance(stone, std::max(across, up), seed), on};
}

glm::vec3 grey(float change) {
    return glm::vec3(change);
}

// By how much a place of a material differs from its colour, about 0. Places are those of a square
// of side 1; y rises on walls.

glm::vec3 ground(glm::vec2 place) {
    // Blades of grass stand close, some of them yellow.
    const float blades = noise(place, 64, 11) * 0.07f + noise(place, 32, 12) * 0.05f;
    const float clumps = roughness(place, 6, 2, 13) * 0.10f;
    return grey(blades + clumps) + glm::vec3(0.06f, 0.02f, -0.06f) * noise(place, 10, 15);
}

glm::vec3 stone(glm::vec2 place) {
    const Course block = courseAt(place, 4, 8, 21);
    const float joint = 1.0f - glm::smoothstep(0.03f, 0.11f, block.inwards);
    const float lit = glm::smoothstep(0.82f, 0.92f, block.on.y) * (1.0f - joint) * 0.04f;
    return grey((block.own - 0.5f) * 0.10f + roughness(place, 12, 3, 22) * 0.12f - 0.17f * joint +
                lit) +
           glm::vec3(0.02f, 0.0f, -0.03f) * (block.own - 0.5f);
}

glm::vec3 wood(glm::vec2 place) {
    // Boards that lie across, with grain along them.
    constexpr int boards = 8;
    const float board = std::floor(place.y * boards);
    const float on = place.y * boards - board;
    const float own = chance({3, static_cast<int>(board)}, boards, 31);
    const float gap = 1.0f - glm::smoothstep(0.03f, 0.10f, std::min(on, 1.0f - on));
    const glm::vec2 along(place.x, place.y * 8.0f);
    const float wave = noise({place.x, place.y}, 5, 32) * 2.0f;
    const float grain = std::sin(turn * (on * 2.0f + 0.4f * wave + own * 5.0f)) * 0.04f +
                        noise(glm::vec2(along.x, along.y), 8, 33) * 0.05f;
    return grey((own - 0.5f) * 0.14f + grain - 0.26f * gap) +
           glm::vec3(0.0f, 0.01f, 0.03f) * (own - 0.5f);
}

glm::vec3 brick(glm::vec2 place) {
    const Course each = courseAt(place, 6, 16, 41);
    const float mortar = 1.0f - glm::smoothstep(0.06f, 0.17f, each.inwards);
    const glm::vec3 fired = grey((each.own - 0.5f) * 0.26f + roughness(place, 24, 2, 42) * 0.14f) +
                            glm::vec3(0.03f, -0.03f, -0.04f) * (each.own - 0.5f);
    return glm::mix(fired, glm::vec3(0.0f, 0.55f, 0.62f) + roughness(place, 32, 2, 43) * 0.12f,
                    0.6f * mortar);
}

glm::vec3 leaves(glm::vec2 place) {
    const Grain leaf = grainAt(place, 16, 51);
    const float rib = 0.10f * (1.0f - leaf.nearest);
    const float shade = -0.30f * glm::smoothstep(0.45f, 0.95f, leaf.nearest);
    const float slope = glm::clamp(leaf.offset.y - 0.4f * leaf.offset.x, -0.6f, 0.6f) * 0.20f;
    return grey((leaf.own - 0.5f) * 0.24f + rib + shade + slope) +
           glm::vec3(0.10f, 0.03f, -0.08f) * (leaf.own - 0.5f);
}

glm::vec3 water(glm::vec2 place) {
    // Light that the waves gather into a net.
    const glm::vec2 bent = place + 0.03f * glm::vec2(noise(place, 5, 61), noise(place, 5, 62));
    const Grain wave = grainAt(bent, 7, 63);
    const float net = 1.0f - glm::smoothstep(0.0f, 0.22f, wave.second - wave.nearest);
    return grey(0.20f * net + 0.06f * noise(place, 6, 65)) + glm::vec3(0.12f, 0.04f, 0.0f) * net;
}

glm::vec3 marble(glm::vec2 place) {
    // Veins run aslant, bent by noise, and are stronger here and weaker there.
    const float bend = 1.1f * roughness(place, 3, 4, 71);
    const auto veins = [&](float across, float width) {
        return 1.0f - glm::smoothstep(0.0f, width, std::abs(std::sin(halfTurn * across)));
    };
    const float strength = 0.5f + 0.5f * noise(place, 4, 79);
    const float vein = strength * veins(place.x + 2.0f * place.y + bend, 0.16f);
    const float fine = (1.0f - strength) * veins(3.0f * place.x - place.y + 1.6f * bend, 0.10f);
    return grey(-0.10f * vein - 0.06f * fine + 0.03f * noise(place, 6, 81)) +
           glm::vec3(0.0f, 0.004f, 0.014f) * vein;
}

glm::vec3 sand(glm::vec2 place) {
    const float ripple = std::sin(turn * (7.0f * place.y + 0.8f * noise(place, 4, 91)));
    return grey(0.025f * ripple + 0.05f * roughness(place, 48, 1, 92) +
                0.05f * noise(place, 128, 93) + 0.04f * noise(place, 7, 94));
}

glm::vec3 clay(glm::vec2 place) {
    // Roof tiles: rounded, in rows that overlap.
    const Course tile = courseAt(place, 8, 8, 101);
    const float round = std::sin(halfTurn * tile.on.x);
    const float shadow = 1.0f - glm::smoothstep(0.0f, 0.22f, tile.on.y);
    return grey((tile.own - 0.5f) * 0.14f + 0.18f * round - 0.22f * shadow +
                0.04f * noise(place, 48, 102));
}

glm::vec3 slate(glm::vec2 place) {
    const Course plate = courseAt(place, 6, 10, 111);
    const float joint = 1.0f - glm::smoothstep(0.03f, 0.10f, plate.inwards);
    const float split = roughness({place.x, place.y}, 10, 3, 112);
    return grey((plate.own - 0.5f) * 0.18f + 0.14f * split - 0.22f * joint) +
           glm::vec3(-0.02f, 0.0f, 0.03f) * (plate.own - 0.5f);
}

glm::vec3 tile(glm::vec2 place) {
    // Glazed squares with pale joints.
    constexpr int squares = 8;
    const glm::vec2 scaled = place * static_cast<float>(squares);
    const glm::vec2 on = scaled - glm::floor(scaled);
    const glm::vec2 edges = glm::min(on, 1.0f - on);
    const float joint = 1.0f - glm::smoothstep(0.02f, 0.07f, std::min(edges.x, edges.y));
    const float own = chance(glm::ivec2(scaled), squares, 121);
    const float glaze = 0.08f * (on.y - on.x);
    return glm::mix(grey((own - 0.5f) * 0.20f + glaze + 0.03f * noise(place, 24, 122)),
                    glm::vec3(0.9f, 0.55f, 0.25f), 0.5f * joint);
}

glm::vec3 plaster(glm::vec2 place) {
    // Strokes of the trowel.
    const glm::vec2 bent = place + 0.02f * glm::vec2(noise(place, 6, 131), noise(place, 6, 132));
    return grey(0.05f * roughness(bent, 10, 3, 133) + 0.03f * noise(bent, 40, 136)) +
           glm::vec3(0.0f, -0.01f, -0.015f) * noise(place, 5, 137);
}

struct Pattern {
    std::string_view material;
    glm::vec3 (*change)(glm::vec2 place);
};

constexpr Pattern patterns[] = {
    {"ground", ground}, {"stone", stone}, {"wood", wood},     {"brick", brick},
    {"leaves", leaves}, {"water", water}, {"marble", marble}, {"sand", sand},
    {"clay", clay},     {"slate", slate}, {"tile", tile},     {"plaster", plaster},
};

} // namespace

int textureCount() {
    return static_cast<int>(arena::materials().size());
}

std::uint8_t textureOf(int cellValue) {
    return arena::materialOf(cellValue) ? static_cast<std::uint8_t>(cellValue) : 0;
}

std::vector<Texel> texelsOf(int texture) {
    const std::string_view material = arena::materials()[static_cast<std::size_t>(texture)].name;
    const auto pattern =
        std::find_if(std::begin(patterns), std::end(patterns),
                     [&](const Pattern& each) { return each.material == material; });
    std::vector<glm::vec3> changes(textureSide * textureSide, glm::vec3(0.0f));
    if (pattern != std::end(patterns)) {
        for (int y = 0; y < textureSide; ++y) {
            for (int x = 0; x < textureSide; ++x)
                changes[static_cast<std::size_t>(y) * textureSide + static_cast<std::size_t>(x)] =
                    pattern->change((glm::vec2(x, y) + 0.5f) / static_cast<float>(textureSide));
        }
    }
    glm::vec3 mean(0.0f);
    for (const glm::vec3& change : changes)
        mean += change / static_cast<float>(changes.size());
    std::vector<Texel> texels;
    for (const glm::vec3& change : changes) {
        const glm::vec3 share =
            glm::clamp(static_cast<float>(unchanged) * (1.0f + change - mean), 0.0f, 255.0f);
        texels.push_back({static_cast<std::uint8_t>(std::lround(share.x)),
                          static_cast<std::uint8_t>(std::lround(share.y)),
                          static_cast<std::uint8_t>(std::lround(share.z)), 255});
    }
    return texels;
}

} // namespace drench::game
