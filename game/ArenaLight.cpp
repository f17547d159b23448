#include "game/ArenaLight.h"

#include "arena/Materials.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <numbers>
#include <thread>
#include <unordered_map>

namespace drench::game {

namespace {

using arena::Light;
using arena::Triple;

/// Rays from each quarter of a face. All quarters with the same normal send the same rays, so that
/// neighbours differ only by what stands around them.
constexpr int mostRays = 48;
constexpr int fewestRays = 8;

/// All rays of an arena; larger ones get fewer for each quarter.
constexpr long rayBudget = 2'000'000;

constexpr int bounces = 3;

/// The share of its light that a face sends on; less than the whole, or yards would glow in one
/// colour.
constexpr double bounceShare = 0.55;

/// How far from the middle of a face the rays of its quarters start, in cells.
constexpr double quarterOffset = 0.4;

/// The distance from a face at which rays start, so that rounding does not put them into the cube.
constexpr double lift = 1e-4;

/// Light between the walls, which no sky and no bounce would bring into deep yards: a ray that
/// meets a face far away brings more of it. It makes corners dark and yet all shade fit to play in.
constexpr Light fillLight = {0.32, 0.37, 0.47};

/// Cells after which a ray brings all of it.
constexpr double fillReach = 7.0;

/// The share of it on faces that look along x, up, along z, and down, so that the sides of a cube
/// in the shade can be told apart.
double fillShare(const CubeFace& face) {
    constexpr double shares[] = {0.95, 1.0, 0.74};
    constexpr double below = 0.62;
    return face.axis == 1 && face.side < 0 ? below : shares[face.axis];
}

/// A ray that meets no face ends in the sky.
constexpr std::uint32_t sky = UINT32_MAX;

/// Directions over the half-space of a normal, denser towards it by the cosine, as flat as
/// sunflower seeds (Vogel, "A better way to construct the sunflower head", 1979).
std::vector<Triple> directionsAround(int axis, int side, int count) {
    std::vector<Triple> directions;
    const double goldenAngle = std::numbers::pi * (3.0 - std::sqrt(5.0));
    for (int i = 0; i < count; ++i) {
        const double radius = std::sqrt((i + 0.5) / count);
        const double angle = goldenAngle * i + 0.4;
        Triple direction{};
        direction[static_cast<std::size_t>(axis)] = side * std::sqrt(1.0 - radius * radius);
        direction[static_cast<std::size_t>(firstAlong(axis))] = radius * std::cos(angle);
        direction[static_cast<std::size_t>(secondAlong(axis))] = radius * std::sin(angle);
        directions.push_back(direction);
    }
    return directions;
}

/// The corner of a face, 0 to 3, as steps along its first and second axis.
constexpr int cornerSteps[4][2] = {{0, 0}, {1, 0}, {1, 1}, {0, 1}};

std::uint64_t faceKey(const arena::Grid& grid, const CubeFace& face) {
    return grid.indexOf(face.cube) * 6 + facingOf(face);
}

/// What the rays of all quarters of faces meet.
class Gather {
  public:
    Gather(const MapManager& map, const std::vector<CubeFace>& faces, const std::stop_token& stop)
        : grid_(arena::gridOf(map)), faces_(faces) {
        rays_ = static_cast<int>(
            std::clamp<long>(rayBudget / std::max<long>(4 * static_cast<long>(faces.size()), 1),
                             fewestRays, mostRays));
        for (std::uint32_t i = 0; i < faces.size(); ++i)
            numbers_.emplace(faceKey(grid_, faces[i]), i);
        for (int facing = 0; facing < 6; ++facing)
            directions_[static_cast<std::size_t>(facing)] =
                directionsAround(facing / 2, facing % 2 == 0 ? -1 : 1, rays_);
        met_.resize(faces.size() * 4 * static_cast<std::size_t>(rays_));
        openness_.resize(faces.size() * 4);
        const unsigned threads = std::clamp(std::thread::hardware_concurrency(), 1u, 8u);
        std::vector<std::jthread> workers;
        for (unsigned worker = 0; worker < threads; ++worker) {
            workers.emplace_back([this, worker, threads, &stop] {
                for (std::size_t i = worker; i < faces_.size() && !stop.stop_requested();
                     i += threads)
                    shoot(i);
            });
        }
    }

    int rays() const { return rays_; }

    /// The face that a ray of a quarter meets, or `sky`.
    std::uint32_t met(std::size_t face, int quarter, int ray) const {
        return met_[(face * 4 + static_cast<std::size_t>(quarter)) *
                        static_cast<std::size_t>(rays_) +
                    static_cast<std::size_t>(ray)];
    }

    /// The mean way, as a share of fillReach, that the rays of a quarter go before they meet a
    /// face.
    double openness(std::size_t face, int quarter) const {
        return openness_[face * 4 + static_cast<std::size_t>(quarter)];
    }

  private:
    void shoot(std::size_t number) {
        const CubeFace& face = faces_[number];
        const auto axis = static_cast<std::size_t>(face.axis);
        Triple middle = {face.cube.column + 0.5, face.cube.row + 0.5, face.cube.depth + 0.5};
        middle[axis] += face.side * (0.5 + lift);
        for (int quarter = 0; quarter < 4; ++quarter) {
            Triple start = middle;
            for (int step = 0; step < 2; ++step) {
                const int along = step == 0 ? firstAlong(face.axis) : secondAlong(face.axis);
                start[static_cast<std::size_t>(along)] +=
                    cornerSteps[quarter][step] == 1 ? quarterOffset : -quarterOffset;
            }
            const auto& directions = directions_[facingOf(face)];
            const std::size_t index = number * 4 + static_cast<std::size_t>(quarter);
            auto met = met_.begin() + static_cast<std::ptrdiff_t>(index) * rays_;
            double open = 0.0;
            for (const Triple& direction : directions) {
                const std::optional<arena::Hit> hit = arena::trace(grid_, {start, direction});
                *met++ = hit ? numberOf(*hit) : sky;
                open += hit ? std::min(hit->distance / fillReach, 1.0) : 1.0;
            }
            openness_[index] = open / rays_;
        }
    }

    std::uint32_t numberOf(const arena::Hit& hit) const {
        const auto found = numbers_.find(faceKey(grid_, {hit.cell, hit.axis, hit.side}));
        return found == numbers_.end() ? sky : found->second;
    }

    arena::Grid grid_;
    const std::vector<CubeFace>& faces_;
    int rays_;
    std::unordered_map<std::uint64_t, std::uint32_t> numbers_;
    std::array<std::vector<Triple>, 6> directions_;
    std::vector<std::uint32_t> met_;
    std::vector<double> openness_;
};

Light materialLight(const MapManager& map, const CubeFace& face) {
    const Box& cube = arena::cell(map, face.cube.column, face.cube.row, face.cube.depth);
    return arena::lightOf(arena::colourOf(cube.cellValue));
}

/// Adds the light of each quarter to its corner of the face, and halves what faces of one plane
/// share.
std::vector<CornerLight> shared(const MapManager& map, const std::vector<CubeFace>& faces,
                                const std::vector<CornerLight>& quarters) {
    struct Sum {
        Light light{};
        double count = 0.0;
    };
    const auto keyOf = [&](const CubeFace& face, int corner) {
        arena::CellIndex at = face.cube;
        arena::indexAlong(at, firstAlong(face.axis)) += cornerSteps[corner][0];
        arena::indexAlong(at, secondAlong(face.axis)) += cornerSteps[corner][1];
        const std::uint64_t place =
            (static_cast<std::uint64_t>(at.column) * static_cast<std::uint64_t>(map.rows + 1) +
             static_cast<std::uint64_t>(at.row)) *
                static_cast<std::uint64_t>(map.depth + 1) +
            static_cast<std::uint64_t>(at.depth);
        return place * 6 + facingOf(face);
    };
    std::unordered_map<std::uint64_t, Sum> sums;
    for (std::size_t i = 0; i < faces.size(); ++i) {
        for (int corner = 0; corner < 4; ++corner) {
            Sum& sum = sums[keyOf(faces[i], corner)];
            sum.light = arena::sum(sum.light, quarters[i][static_cast<std::size_t>(corner)]);
            sum.count += 1.0;
        }
    }
    std::vector<CornerLight> corners(faces.size());
    for (std::size_t i = 0; i < faces.size(); ++i) {
        for (int corner = 0; corner < 4; ++corner) {
            const Sum& sum = sums[keyOf(faces[i], corner)];
            corners[i][static_cast<std::size_t>(corner)] =
                arena::scaled(sum.light, 1.0 / sum.count);
        }
    }
    return corners;
}

} // namespace

Light exposed(const Light& light) {
    Light shown{};
    for (std::size_t c = 0; c < 3; ++c)
        shown[c] = mostShown * (1.0 - std::exp(-exposure * light[c]));
    return shown;
}

std::vector<CornerLight> ambientLight(const MapManager& map, const std::vector<CubeFace>& faces,
                                      const std::vector<double>& sunShares,
                                      const std::stop_token& stop) {
    const Gather gather(map, faces, stop);
    std::vector<Light> materials(faces.size());
    std::transform(faces.begin(), faces.end(), materials.begin(),
                   [&](const CubeFace& face) { return materialLight(map, face); });
    // What each face sends back, from bounce to bounce.
    std::vector<Light> sent(faces.size());
    std::vector<CornerLight> quarters(faces.size());
    for (int bounce = 0; bounce <= bounces && !stop.stop_requested(); ++bounce) {
        for (std::size_t i = 0; i < faces.size(); ++i) {
            for (int quarter = 0; quarter < 4; ++quarter) {
                Light light = arena::scaled(fillLight, gather.rays() * fillShare(faces[i]) *
                                                           gather.openness(i, quarter));
                for (int ray = 0; ray < gather.rays(); ++ray) {
                    const std::uint32_t met = gather.met(i, quarter, ray);
                    light = arena::sum(light, met == sky ? skyLight : sent[met]);
                }
                quarters[i][static_cast<std::size_t>(quarter)] =
                    arena::scaled(light, 1.0 / gather.rays());
            }
        }
        for (std::size_t i = 0; i < faces.size(); ++i) {
            Light received = arena::scaled(sunLight, sunShares[i]);
            for (const Light& quarter : quarters[i])
                received = arena::sum(received, quarter, 0.25);
            for (std::size_t c = 0; c < 3; ++c)
                sent[i][c] = received[c] * materials[i][c] * bounceShare;
        }
    }
    return shared(map, faces, quarters);
}

CornerLight unshadowedLight(const CubeFace& face) {
    // So much of the sky makes an arena about as light on the whole as its shadows do.
    constexpr double share = 0.15;
    const Light light = arena::sum(arena::scaled(fillLight, fillShare(face)), skyLight, share);
    return {light, light, light, light};
}

} // namespace drench::game
