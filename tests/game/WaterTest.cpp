#include "game/Water.h"

#include "game/WaterShapes.h"
#include "src/Player.h"
#include "tests/support/Arenas.h"
#include "tests/support/PlayerIn.h"

#include <cmath>
#include <glm/geometric.hpp>
#include <gtest/gtest.h>

using namespace drench;
using namespace drench::game;

namespace {

constexpr float frame = 1.0f / 60.0f;

/// A shooter in the middle of the court that looks along z.
Shooter shooterAt(glm::vec3 position, glm::vec3 direction = {0.0f, 0.0f, 1.0f}) {
    return {{'1', position}, direction, position + 30.0f * direction};
}

struct Court : testing::Test {
    MapManager map = loaded(emptyCourt());
    Water water{map, 1};
    glm::vec3 middle{1024.0f, standing, 1024.0f};

    void fire(const Shooter& shooter, int frames, std::span<const WetBody> bodies = {}) {
        for (int i = 0; i < frames; ++i)
            water.advance(frame, std::span(&shooter, 1), bodies);
    }
    void rest(int frames) {
        for (int i = 0; i < frames; ++i)
            water.advance(frame, {}, {});
    }
};

using WaterInCourt = Court;

} // namespace

TEST_F(WaterInCourt, JetsEndWhereTheRoomsMarchEnds) {
    for (const glm::vec3 direction :
         {glm::vec3(0, 0, 1), glm::vec3(0.6f, -0.1f, 0.79f), glm::vec3(-0.9f, 0.2f, -0.4f)}) {
        Water own(map, 1);
        const Shooter shooter = shooterAt(middle, glm::normalize(direction));
        for (int i = 0; i < 60; ++i)
            own.advance(frame, std::span(&shooter, 1), {});
        const vec3 from(middle.x, middle.y, middle.z);
        const vec3 towards(shooter.direction.x, shooter.direction.y, shooter.direction.z);
        const vec3 hit = playerIn(map, from, towards).shoot(&map);
        ASSERT_EQ(own.jets().size(), 1u);
        EXPECT_LT(glm::distance(own.jets()[0].to, glm::vec3(hit.x, hit.y, hit.z)), 0.5f);
        EXPECT_EQ(own.jets()[0].from, shooter.nozzle);
        EXPECT_FLOAT_EQ(own.jets()[0].front, 1.0f);
    }
}

TEST_F(WaterInCourt, BodiesStopJetsAtTheirNearestFace) {
    const WetBody bodies[] = {{'1', middle},
                              {'2', middle + glm::vec3(0, 0, 500)},
                              {'3', middle + glm::vec3(10, 20, 300)},
                              {'4', middle + glm::vec3(60, 0, 200)}};
    const auto landing = landingOf(map, bodies[0], {0, 0, 1}, bodies);
    ASSERT_TRUE(landing);
    EXPECT_TRUE(landing->onBody);
    EXPECT_NEAR(landing->place.z, middle.z + 300.0f - 25.0f, 0.01f);
    EXPECT_EQ(landing->axis, 2);
    EXPECT_EQ(landing->side, -1);
}

TEST_F(WaterInCourt, BodiesBehindWallsStopNoJet) {
    const WetBody bodies[] = {{'1', middle}, {'2', middle + glm::vec3(0, 0, 1200)}};
    const auto landing = landingOf(map, bodies[0], {0, 0, 1}, bodies);
    ASSERT_TRUE(landing);
    EXPECT_FALSE(landing->onBody);
    EXPECT_EQ(landing->axis, 2);
    EXPECT_EQ(landing->side, -1);
}

TEST_F(WaterInCourt, JetsIntoTheOpenSkyFallInAnArcAndPassBodies) {
    const glm::vec3 direction = glm::normalize(glm::vec3(0, 1, 1));
    const WetBody above[] = {{'2', middle + 200.0f * direction}};
    EXPECT_FALSE(landingOf(map, {'1', middle}, direction, above));
    fire(shooterAt(middle, direction), 120, above);
    ASSERT_EQ(water.jets().size(), 1u);
    const Jet& jet = water.jets()[0];
    EXPECT_GT(directionOn(jet, 0.0f).y, 0.0f);
    EXPECT_LT(directionOn(jet, 1.0f).y, 0.0f);
    EXPECT_GT(glm::distance(jet.from, jet.to), 400.0f);
}

TEST_F(WaterInCourt, JetsIntoTheSkyWetTheCubesThatTheyComeDownOn) {
    // The straight line passes over the wall, and the falling water does not.
    const glm::vec3 direction = glm::normalize(glm::vec3(0.0f, 0.99f, 0.08f));
    const glm::vec3 nearWall(1024.0f, standing, 1900.0f);
    ASSERT_FALSE(landingOf(map, {'1', nearWall}, direction, {}));
    fire(shooterAt(nearWall, direction), 120);
    ASSERT_EQ(water.jets().size(), 1u);
    EXPECT_FALSE(water.jets()[0].intoSky);
    EXPECT_FALSE(water.splashes().empty());
}

TEST_F(WaterInCourt, FiringAgainBeginsAJetOfItsOwnBehindTheLastWater) {
    fire(shooterAt(middle), 60);
    rest(1);
    fire(shooterAt(middle), 1);
    ASSERT_EQ(water.jets().size(), 2u);
    EXPECT_GT(water.jets()[0].tail, 0.0f);
    EXPECT_FLOAT_EQ(water.jets()[1].tail, 0.0f);
    EXPECT_LT(water.jets()[1].front, 0.5f);
}

TEST_F(WaterInCourt, JetsGrowFromTheNozzleAndLeaveItWhenTheyEnd) {
    const Shooter shooter = shooterAt(middle);
    fire(shooter, 2);
    ASSERT_EQ(water.jets().size(), 1u);
    EXPECT_LT(water.jets()[0].front, 0.5f);
    fire(shooter, 60);
    EXPECT_FLOAT_EQ(water.jets()[0].tail, 0.0f);
    rest(2);
    ASSERT_EQ(water.jets().size(), 1u);
    EXPECT_GT(water.jets()[0].tail, 0.0f);
    rest(60);
    EXPECT_TRUE(water.jets().empty());
}

TEST_F(WaterInCourt, AJetThatIsFedBendsButEndsWhereItsShooterLooks) {
    Shooter shooter = shooterAt(middle);
    fire(shooter, 60);
    shooter = shooterAt(middle, glm::normalize(glm::vec3(0.5f, 0.0f, 1.0f)));
    fire(shooter, 1);
    ASSERT_EQ(water.jets().size(), 1u);
    const Jet bent = water.jets()[0];
    EXPECT_LT(glm::distance(bent.to, landingOf(map, shooter.body, shooter.direction, {})->place),
              0.1f);
    const glm::vec3 straight = 0.5f * (bent.from + bent.to);
    EXPECT_LT(bent.over.x, straight.x - 20.0f) << "the middle is still on its way";
    fire(shooter, 60);
    EXPECT_NEAR(water.jets()[0].over.x, straight.x, 1.0f);
}

TEST_F(WaterInCourt, WetsTheFaceThatItHitsUntilThatIsDry) {
    fire(shooterAt(middle), 60);
    ASSERT_FALSE(water.splashes().empty());
    EXPECT_NEAR(water.splashes()[0].place.z, 31.0f * 64.0f, 0.01f);
    EXPECT_EQ(water.splashes()[0].axis, 2);
    EXPECT_GT(water.splashes()[0].strength, 0.9f);
    rest(240);
    ASSERT_FALSE(water.splashes().empty());
    EXPECT_LT(water.splashes()[0].strength, 0.6f);
    rest(300);
    EXPECT_TRUE(water.splashes().empty());
}

TEST_F(WaterInCourt, IsTheSameForTheSameSeedAndCalls) {
    Water other(map, 1);
    const Shooter shooter = shooterAt(middle);
    for (Water* each : {&water, &other}) {
        each->burst(middle + glm::vec3(100.0f));
        for (int i = 0; i < 90; ++i)
            each->advance(frame, std::span(&shooter, 1), {});
    }
    ASSERT_EQ(water.drops().size(), other.drops().size());
    ASSERT_FALSE(water.drops().empty());
    for (std::size_t i = 0; i < water.drops().size(); ++i)
        EXPECT_EQ(water.drops()[i].place, other.drops()[i].place);
}

TEST_F(WaterInCourt, IsBoundedWhateverTheRoomSays) {
    for (int i = 0; i < 300; ++i) {
        std::vector<Shooter> shooters;
        for (int s = 0; s < 40; ++s) {
            const float angle = 0.37f * static_cast<float>(i * 40 + s);
            shooters.push_back(shooterAt(middle, {std::cos(angle), -0.1f, std::sin(angle)}));
            shooters.back().body.id = static_cast<char>(s + i);
        }
        water.burst(middle);
        water.advance(frame, shooters, {});
        ASSERT_LE(water.jets().size(), Water::mostJets);
        ASSERT_LE(water.drops().size(), Drops::most);
        ASSERT_LE(water.splashes().size(), WetPatches::most);
    }
    EXPECT_GE(water.jets().size(), Water::mostJets / 2);
    EXPECT_GT(water.drops().size(), Drops::most / 2);
}

TEST_F(WaterInCourt, BurstsAndIsGoneAfterAWhile) {
    water.burst(middle);
    water.advance(frame, {}, {});
    EXPECT_GT(water.drops().size(), 60u);
    rest(120);
    EXPECT_TRUE(water.drops().empty());
}

TEST_F(WaterInCourt, DropsFallAndStayOutOfCubes) {
    fire(shooterAt(middle), 30);
    float lowest = INFINITY;
    for (int i = 0; i < 60; ++i) {
        water.burst(middle);
        fire(shooterAt(middle), 1);
        for (const Drop& drop : water.drops()) {
            ASSERT_GE(drop.place.y, 64.0f);
            ASSERT_LE(drop.place.z, 31.0f * 64.0f);
            lowest = std::min(lowest, drop.place.y);
        }
    }
    EXPECT_LT(lowest, 80.0f);
}

TEST_F(WaterInCourt, BurstsOutsideOfAllNumbersAreNone) {
    water.burst({NAN, 0.0f, 0.0f});
    water.burst({0.0f, 1e30f, 0.0f});
    EXPECT_TRUE(water.drops().empty());
}

TEST_F(WaterInCourt, IsDrawnInFiniteTriangles) {
    Scene scene;
    scene.camera.eye = middle;
    water.burst(middle + glm::vec3(0, 50, 100));
    for (int i = 0; i < 40; ++i) {
        fire(shooterAt(middle), 1);
        scene.time += static_cast<double>(frame);
        scene.jets = water.jets();
        scene.drops = water.drops();
        scene.splashes = water.splashes();
        WaterShapes shapes;
        addWater(shapes, scene);
        ASSERT_EQ(shapes.size() % 3, 0u);
        ASSERT_FALSE(shapes.empty());
        for (const WaterVertex& vertex : shapes) {
            ASSERT_TRUE(std::isfinite(glm::dot(vertex.place, vertex.place)));
            ASSERT_GE(vertex.strength, 0.0f);
            ASSERT_LE(vertex.strength, 1.0f);
        }
    }
}

TEST(Soaking, RunsDownTheScreenAndIsGoneAtTheReturn) {
    const auto strongest = [](float since, float left) {
        WaterShapes shapes;
        addSoaking(shapes, {since, left, "Ann"}, 16.0f / 9.0f);
        float strength = 0.0f;
        for (const WaterVertex& vertex : shapes)
            strength = std::max(strength, vertex.strength);
        return strength;
    };
    EXPECT_GT(strongest(0.05f, 3.95f), 0.5f);
    EXPECT_GT(strongest(2.0f, 2.0f), 0.5f);
    EXPECT_FLOAT_EQ(strongest(4.0f, 0.0f), 0.0f);
}
