#include "game/Senses.h"

#include "game/Dressing.h"

namespace drench::game {

void Senses::changeArena(MapManager& map) {
    map_ = &map;
    staging_ = Staging(map, dropSeed);
    if (bodies_) {
        bodies_.emplace(map);
        ears_.emplace(map);
    }
}

void Senses::forget() {
    match_ = Match();
    bodies_.reset();
    ears_.reset();
}

void Senses::serviced(client::Session& session, client::Time now) {
    if (bodies_)
        bodies_->serviced(session, now);
}

void Senses::take(const client::Event& event, const client::Session& session, client::Time now) {
    match_.take(event, now);
    if (std::holds_alternative<client::Joined>(event)) {
        bodies_.emplace(*map_);
        ears_.emplace(*map_);
    }
    if (!bodies_)
        return;
    if (const auto* snapshot = std::get_if<client::Snapshot>(&event)) {
        bodies_->take(*snapshot, session);
        own_ = bodies_->own(now);
    }
    ears_->take(event, session.id(), own_);
}

void Senses::show(Scene& scene, const Settings& settings, bool isInRoom, client::Time now,
                  float seconds) {
    std::optional<OwnBody> own;
    std::vector<PlayerUpdate> others;
    scene.soaked.reset();
    if (isInRoom && bodies_) {
        if (const std::optional<client::Prediction::Body> body = bodies_->own(now)) {
            scene.camera.eye = onScreen(body->eye);
            turnTo(scene.camera, onScreen(body->player.direction));
            own = {match_.ownId(), scene.camera.eye, scene.camera.direction,
                   body->player.isShooting()};
        }
        others = bodies_->others(now, settings.showWhereShotsMeet);
        scene.soaked = soakedIn(match_, now);
    }
    staging_.show(scene, own, others, seconds, settings.lessMotion);
    dress(scene, match_, staging_.grid(), paletteOf(settings));
}

} // namespace drench::game
