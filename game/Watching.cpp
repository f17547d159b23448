#include "game/Watching.h"

#include "client/Records.h"
#include "game/Dressing.h"

#include <algorithm>
#include <utility>

namespace drench::game {

namespace {

/// Where the drops of water fly follows from it.
constexpr std::uint64_t dropSeed = 1;

const PlayerUpdate* playerIn(std::span<const PlayerUpdate> players, char id) {
    const auto found = std::find_if(players.begin(), players.end(),
                                    [&](const PlayerUpdate& each) { return each.id == id; });
    return found == players.end() ? nullptr : &*found;
}

} // namespace

Watching::Watching(Playback playback, MapManager& map)
    : playback_(std::move(playback)), spectator_(playback_.recorder()), map_(&map) {
    beginAnew();
}

void Watching::beginAnew() {
    leaps_ = playback_.leaps();
    staging_.emplace(*map_, dropSeed);
    ears_.emplace(*map_);
    spectator_.leap();
}

void Watching::pass(double seconds, const Settings& settings, Scene& scene) {
    if (playback_.leaps() != leaps_)
        beginAnew();
    const double before = playback_.moment();
    playback_.pass(seconds);
    const auto passed = static_cast<float>(playback_.moment() - before);

    std::vector<PlayerUpdate> players = playback_.players(*map_);
    const char watched = spectator_.watched(players);
    const bool isEye = spectator_.view() == Spectator::View::eye;
    watched_ = spectator_.view() == Spectator::View::flying ? '\0' : watched;
    playback_.watchAs(isEye ? watched : '\0');

    ears_->forget();
    for (const PlayedEvent& each : playback_.passed())
        ears_->take(each.event, isEye ? watched : '\0', std::nullopt);

    const PlayerUpdate* player = playerIn(players, watched);
    // Numbers of a hostile room lead nowhere.
    if (player && !isDrawable(*player))
        player = nullptr;
    // After a leap nobody else knows where a soaked player's eye stayed.
    const std::optional<PlayerUpdate> stayed =
        player && client::isSoaked(*player) ? playback_.lastAlive(watched) : std::nullopt;
    spectator_.place(scene.camera, stayed ? &*stayed : player, *map_, static_cast<float>(seconds));

    std::optional<OwnBody> own;
    if (isEye && player) {
        if (!client::isSoaked(*player))
            own = {watched, scene.camera.eye, scene.camera.direction, player->shooting};
        std::erase_if(players, [&](const PlayerUpdate& each) { return each.id == watched; });
    }
    staging_->show(scene, own, players, passed, settings.lessMotion);
    std::erase_if(scene.figures, [&](const FigurePose& figure) {
        return spectator_.isInTheWay(figure.position, scene.camera);
    });
    dress(scene, match(), staging_->grid(), paletteOf(settings));
    scene.soaked = soakedIn(match(), playback_.now());
}

std::span<const HeardJet> Watching::jets() const {
    // Time stands still in a pause.
    return playback_.isPaused() ? std::span<const HeardJet>() : ears_->jets();
}

} // namespace drench::game
