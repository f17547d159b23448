#include "game/GunMotion.h"

#include "game/GunInHands.h"

#include <cmath>
#include <glm/geometric.hpp>
#include <gtest/gtest.h>

using namespace drench::game;

namespace {

constexpr float frame = 1.0f / 60.0f;

Walking walked(float speed, int frames) {
    Walking walking;
    for (int i = 0; i < frames; ++i)
        walking.move({speed * frame * static_cast<float>(i), 0.0f, 0.0f}, frame);
    return walking;
}

glm::vec3 lookingAt(float yaw) {
    return {std::sin(yaw), 0.0f, std::cos(yaw)};
}

} // namespace

TEST(Walking, TakesStepsByTheWayAndNotByTheTime) {
    EXPECT_NEAR(walked(370.0f, 121).phase(), 10.0f, 0.1f);
    EXPECT_NEAR(walked(185.0f, 121).phase(), 5.0f, 0.1f);
    EXPECT_FLOAT_EQ(walked(0.0f, 121).phase(), 0.0f);
    EXPECT_NEAR(walked(370.0f, 121).stride(), 1.0f, 0.01f);
    EXPECT_FLOAT_EQ(walked(0.0f, 121).stride(), 0.0f);
}

TEST(Walking, TakesNoStepWhenItSpawnsElsewhereOrFalls) {
    Walking walking;
    walking.move({0, 0, 0}, frame);
    walking.move({900, 0, 900}, frame);
    walking.move({900, -50, 900}, frame);
    EXPECT_FLOAT_EQ(walking.phase(), 0.0f);
}

TEST(Walking, SlowsDownGently) {
    Walking walking = walked(370.0f, 121);
    const glm::vec3 end(370.0f * 2.0f, 0.0f, 0.0f);
    walking.move(end, frame);
    EXPECT_GT(walking.stride(), 0.5f);
    for (int i = 0; i < 60; ++i)
        walking.move(end, frame);
    EXPECT_LT(walking.stride(), 0.01f);
}

TEST(GunMotion, LagsBehindTurnsAndComesBack) {
    GunMotion motion;
    const Walking still;
    OwnGun gun;
    // Turning to the right takes the view from +z to -x.
    for (int i = 0; i < 20; ++i)
        gun = motion.advance(frame, lookingAt(-0.05f * static_cast<float>(i)), still, false, false);
    EXPECT_LT(gun.sway.x, -0.01f);
    EXPECT_NEAR(gun.sway.y, 0.0f, 1e-4f);
    for (int i = 0; i < 60; ++i)
        gun = motion.advance(frame, lookingAt(-0.95f), still, false, false);
    EXPECT_NEAR(gun.sway.x, 0.0f, 1e-3f);
}

TEST(GunMotion, KicksWhileItFires) {
    GunMotion motion;
    const Walking still;
    OwnGun gun;
    for (int i = 0; i < 30; ++i) {
        gun = motion.advance(frame, {0, 0, 1}, still, true, false);
        EXPECT_LE(gun.kick, 1.0f);
    }
    EXPECT_GT(gun.kick, 0.3f);
    for (int i = 0; i < 30; ++i)
        gun = motion.advance(frame, {0, 0, 1}, still, false, false);
    EXPECT_NEAR(gun.kick, 0.0f, 0.01f);
}

TEST(GunMotion, IsTheSameAtAllFrameRates) {
    const Walking still;
    const auto after = [&](int rate) {
        GunMotion motion;
        OwnGun gun;
        for (int i = 0; i <= rate; ++i) {
            const float time = static_cast<float>(i) / static_cast<float>(rate);
            gun = motion.advance(1.0f / static_cast<float>(rate), lookingAt(time), still, false,
                                 false);
        }
        return gun.sway.x;
    };
    EXPECT_NEAR(after(30), after(240), 1e-3f);
}

TEST(GunMotion, IsCalmWithLessMotion) {
    GunMotion motion;
    const Walking walking = walked(370.0f, 100);
    OwnGun gun;
    for (int i = 0; i < 20; ++i)
        gun = motion.advance(frame, lookingAt(0.1f * static_cast<float>(i)), walking, true, true);
    EXPECT_EQ(gun.sway, glm::vec2(0.0f));
    EXPECT_LT(gun.kick, 0.4f);
}

TEST(GunInHands, SpraysFromTheLowerRightAheadWhateverTheFieldOfView) {
    for (const float degrees : {60.0f, 90.0f, 120.0f}) {
        Camera camera;
        camera.eye = {100, 200, 300};
        camera.direction = {0.4f, 0.1f, -1.0f};
        camera.fieldOfView = fieldOfViewFrom(degrees);
        const glm::vec4 clip = projectionMatrix(camera, 16.0f / 9.0f) * viewMatrix(camera) *
                               glm::vec4(ownNozzle({}, camera), 1.0f);
        // Where it is drawn by the gun's own field of view.
        Camera own = camera;
        own.fieldOfView = gunFieldOfView;
        Solids solids;
        addGunInHands(solids, {}, camera);
        float nearest = INFINITY;
        for (const SolidVertex& vertex : solids.vertices) {
            const glm::vec4 seen = projectionMatrix(own, 16.0f / 9.0f) * viewMatrix(own) *
                                   glm::vec4(vertex.position, 1.0f);
            nearest = std::min(nearest,
                               glm::distance(glm::vec2(seen) / seen.w, glm::vec2(clip) / clip.w));
        }
        EXPECT_LT(nearest, 0.06f) << "the tip is where the gun is drawn";
        EXPECT_GT(clip.x / clip.w, 0.02f);
        EXPECT_LT(clip.x / clip.w, 0.6f);
        EXPECT_LT(clip.y / clip.w, -0.1f);
        EXPECT_GT(clip.y / clip.w, -0.8f);
    }
}
