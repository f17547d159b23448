#include "game/Staging.h"

#include "game/FigureSight.h"
#include "game/Figures.h"
#include "game/GunInHands.h"

namespace drench::game {

void Staging::show(Scene& scene, const std::optional<OwnBody>& own,
                   std::span<const PlayerUpdate> others, float seconds, bool isCalm) {
    figures_.show(*map_, grid(), others, seconds);
    scene.figures = figures_.figures();
    scene.shadows.clear();
    scene.gun.reset();
    if (own)
        showOwn(scene, *own, seconds, isCalm);

    std::vector<WetBody> bodies;
    std::vector<Shooter> shooters;
    for (const FigurePose& figure : scene.figures) {
        if (figure.soaked)
            continue;
        bodies.push_back({figure.id, figure.position});
        scene.shadows.push_back(shadowOf(grid(), figure.position));
        if (figure.shooting)
            shooters.push_back({bodies.back(), figure.direction, nozzleOf(figure)});
    }
    if (own) {
        bodies.push_back({own->id, own->position});
        if (own->shooting)
            shooters.push_back(
                {bodies.back(), own->direction, ownNozzle(*scene.gun, scene.camera)});
    }
    for (const glm::vec3& soaking : figures_.soakings())
        water_.burst(soaking);
    water_.advance(seconds, shooters, bodies);
    scene.jets = water_.jets();
    scene.drops = water_.drops();
    scene.splashes = water_.splashes();
}

void Staging::showOwn(Scene& scene, const OwnBody& own, float seconds, bool isCalm) {
    walking_.move(own.position, seconds);
    OwnGun gun = gunMotion_.advance(seconds, own.direction, walking_, own.shooting, isCalm);
    gun.colour = own.id - '1';
    gun.sun = sunOn(grid(), own.position);
    scene.gun = gun;
    scene.shadows.push_back(shadowOf(grid(), own.position));
}

} // namespace drench::game
