#include "game/Ears.h"

#include <algorithm>
#include <variant>

namespace drench::game {

namespace {

/// Cues that wait for a frame: a window that draws none hears none later.
constexpr std::size_t mostWaiting = 64;

/// More ticks than anything that is heard takes.
constexpr std::int64_t longAgo = 1000;

int ticksBetween(std::int64_t before, std::int64_t now) {
    return static_cast<int>(std::clamp<std::int64_t>(now - before, 0, longAgo));
}

} // namespace

void Ears::take(const client::Event& event, char ownId,
                const std::optional<client::Prediction::Body>& own) {
    if (const auto* snapshot = std::get_if<client::Snapshot>(&event))
        hear(*snapshot, ownId, own);
    else if (const auto* chat = std::get_if<client::Chat>(&event); chat && chat->speaker != ownId)
        begun_.push_back({Sound::chat, std::nullopt});
    if (begun_.size() > mostWaiting)
        begun_.erase(begun_.begin(), begun_.end() - mostWaiting);
}

void Ears::hear(const client::Snapshot& snapshot, char ownId,
                const std::optional<client::Prediction::Body>& own) {
    const int ticks = ticksBetween(tick_, snapshot.tick);
    tick_ = snapshot.tick;
    UpdateMessage state = snapshot.state;
    int ownTicks = ticks;
    if (own) {
        for (PlayerUpdate& slot : state.updates) {
            if (slot.id == 0 || slot.id != ownId)
                continue;
            slot.position = own->player.position;
            slot.direction = own->player.direction;
            slot.shooting = own->player.isShooting();
        }
        ownTicks = ownTick_ ? ticksBetween(*ownTick_, own->tick) : ticks;
    }
    ownTick_ = own ? std::optional(own->tick) : std::nullopt;
    const std::vector<Cue> heard = cues_.hear(state, ownId, ticks, ownTicks);
    begun_.insert(begun_.end(), heard.begin(), heard.end());
}

} // namespace drench::game
