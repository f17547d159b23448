#include "game/Figures.h"

#include "src/Player.h"
#include "tests/support/Arenas.h"

#include <cmath>
#include <glm/geometric.hpp>
#include <gtest/gtest.h>

using namespace drench;
using namespace drench::game;

namespace {

constexpr float halfHeight = 0.5f * Player::bodySize.y;

/// World units by which soles may miss the ground.
constexpr float rounding = 0.01f;

struct Extent {
    glm::vec3 low{INFINITY};
    glm::vec3 high{-INFINITY};
};

Extent extentOf(const Solids& solids) {
    Extent extent;
    for (const SolidVertex& vertex : solids.vertices) {
        extent.low = glm::min(extent.low, vertex.position);
        extent.high = glm::max(extent.high, vertex.position);
    }
    return extent;
}

Extent extentOf(const FigurePose& pose) {
    Solids solids;
    addFigure(solids, pose);
    return extentOf(solids);
}

/// A figure of a player who stands at (100, 200, 300) and looks along x.
FigurePose standingPose() {
    FigurePose pose;
    pose.id = '2';
    pose.colour = 1;
    pose.position = {100.0f, 200.0f, 300.0f};
    pose.direction = {1.0f, 0.0f, 0.0f};
    return pose;
}

/// Its way at full speed where it looks.
constexpr glm::vec2 ahead{1.0f, 0.0f};

glm::vec3 lookingUp(float pitch) {
    return {std::cos(pitch), std::sin(pitch), 0.0f};
}

} // namespace

TEST(Figures, StandOnTheirFeetWithEveryStep) {
    FigurePose pose = standingPose();
    for (int quarters = 0; quarters <= 4; ++quarters) {
        for (int step = 0; step < 40; ++step) {
            pose.way = ahead * (0.25f * static_cast<float>(quarters));
            pose.walkPhase = 0.05f * static_cast<float>(step);
            ASSERT_NEAR(extentOf(pose).low.y, pose.position.y - halfHeight, rounding)
                << quarters << " " << pose.walkPhase;
        }
    }
}

TEST(Figures, AreAsTallAsTheirBodiesInEveryHeadgear) {
    FigurePose pose = standingPose();
    for (pose.colour = 0; pose.colour < 4; ++pose.colour)
        EXPECT_NEAR(extentOf(pose).high.y, pose.position.y + halfHeight, 3.0f) << pose.colour;
}

TEST(Figures, StayWithinTheirBodiesHeightAndTheReachOfTheirGuns) {
    FigurePose pose = standingPose();
    for (const bool inAir : {false, true}) {
        for (pose.colour = 0; pose.colour < 4; ++pose.colour) {
            for (int tenths = -14; tenths <= 14; ++tenths) {
                const float pitch = 0.1f * static_cast<float>(tenths);
                pose.inAir = inAir;
                pose.direction = lookingUp(pitch);
                const Extent extent = extentOf(pose);
                ASSERT_GE(extent.low.y, pose.position.y - halfHeight - rounding) << pitch;
                ASSERT_LE(extent.high.y, pose.position.y + halfHeight + 6.0f) << pitch;
                ASSERT_LE(extent.high.x, pose.position.x + nozzleReach) << pitch;
                ASSERT_GE(extent.low.z, pose.position.z - nozzleReach) << pitch;
            }
        }
    }
}

TEST(Figures, DrawTheirLegsUpInTheAir) {
    FigurePose pose = standingPose();
    pose.inAir = true;
    EXPECT_GT(extentOf(pose).low.y, pose.position.y - halfHeight + 5.0f);
}

TEST(Figures, SwingTheirLegsInTurnAsTheyWalk) {
    FigurePose pose = standingPose();
    const float atRest = extentOf(pose).high.x - extentOf(pose).low.x;
    pose.way = ahead;
    pose.walkPhase = 0.5f;
    const Extent first = extentOf(pose);
    EXPECT_LT(first.low.x, extentOf(standingPose()).low.x - 2.0f);
    EXPECT_GT(first.high.x - first.low.x, atRest);
}

TEST(Figures, SwingTheirLegsAlongTheirWayAndNotTheirView) {
    FigurePose pose = standingPose();
    const Extent atRest = extentOf(pose);
    pose.walkPhase = 0.5f;
    pose.way = {0.0f, 1.0f};
    const Extent left = extentOf(pose);
    pose.way = {0.0f, -1.0f};
    const Extent right = extentOf(pose);
    for (const Extent& aside : {left, right})
        EXPECT_GT(aside.high.z - aside.low.z, atRest.high.z - atRest.low.z + 5.0f);
}

TEST(Figures, WalkBackwardsAsForwardsInTheOtherOrder) {
    FigurePose pose = standingPose();
    for (int step = 0; step < 8; ++step) {
        pose.walkPhase = 0.25f * static_cast<float>(step);
        pose.way = ahead;
        const Extent forward = extentOf(pose);
        pose.walkPhase = -pose.walkPhase;
        pose.way = -ahead;
        const Extent back = extentOf(pose);
        for (int axis = 0; axis < 3; ++axis) {
            EXPECT_NEAR(back.low[axis], forward.low[axis], rounding) << step;
            EXPECT_NEAR(back.high[axis], forward.high[axis], rounding) << step;
        }
    }
}

TEST(Figures, AimWhereTheyLook) {
    FigurePose pose = standingPose();
    for (const glm::vec3 direction : {glm::vec3(1, 0, 0), glm::vec3(0, 0, -1), glm::vec3(-3, 3, 0),
                                      glm::vec3(0.6f, -0.8f, 0.1f)}) {
        pose.direction = glm::normalize(direction);
        const glm::vec3 nozzle = nozzleOf(pose);
        EXPECT_LT(glm::distance(nozzle, pose.position), nozzleReach);
        // The line of the gun passes the eye within the width of a body.
        const glm::vec3 off = nozzle - pose.position;
        EXPECT_GT(glm::dot(off, pose.direction), 30.0f);
        EXPECT_LT(glm::length(off - pose.direction * glm::dot(off, pose.direction)), 16.0f);
    }
}

TEST(Figures, HoldTheNozzleStillWhileTheyWalk) {
    FigurePose pose = standingPose();
    const glm::vec3 nozzle = nozzleOf(pose);
    pose.way = ahead;
    pose.walkPhase = 0.4f;
    EXPECT_EQ(nozzleOf(pose), nozzle);
}

TEST(Figures, OfSoakedPlayersAreNotThere) {
    FigurePose pose = standingPose();
    pose.soaked = true;
    Solids solids;
    addFigure(solids, pose);
    EXPECT_TRUE(solids.vertices.empty());
}

TEST(Figures, DifferInShapeAndNotOnlyInColour) {
    std::vector<Solids> all(4);
    FigurePose pose = standingPose();
    for (std::size_t i = 0; i < all.size(); ++i) {
        pose.colour = static_cast<int>(i);
        addFigure(all[i], pose);
        for (std::size_t j = 0; j < i; ++j) {
            const auto positions = [&](std::size_t which) {
                std::vector<glm::vec3> found;
                for (const SolidVertex& vertex : all[which].vertices)
                    found.push_back(vertex.position);
                return found;
            };
            EXPECT_NE(positions(i), positions(j));
        }
    }
}

TEST(Figures, HaveTrianglesThatFaceOutwards) {
    Solids solids;
    addBlock(solids, glm::mat4(1.0f), {-1, -2, -3}, {1, 2, 3}, {}, 0.5f);
    addTube(solids, glm::mat4(1.0f), {0, 0, -4}, 8.0f, 3.0f, 1.0f, {});
    ASSERT_EQ(solids.vertices.size() % 3, 0u);
    for (std::size_t i = 0; i < solids.vertices.size(); i += 3) {
        const glm::vec3 a = solids.vertices[i].position;
        const glm::vec3 b = solids.vertices[i + 1].position;
        const glm::vec3 c = solids.vertices[i + 2].position;
        const glm::vec3 across = glm::cross(b - a, c - a);
        EXPECT_GT(glm::dot(across, (a + b + c) / 3.0f), 0.0f);
        EXPECT_GT(glm::dot(across, solids.vertices[i].normal), 0.0f);
    }
}
