#include "game/ShownArena.h"

#include <chrono>

namespace drench::game {

void ShownArena::enterRoom() {
    judged_ = {shown_};
    for (std::size_t arena = 0; arena < known_.size(); ++arena) {
        if (arena != shown_)
            judged_.push_back(arena);
    }
    std::vector<const MapManager*> maps;
    maps.reserve(judged_.size());
    for (const std::size_t arena : judged_)
        maps.push_back(&known_[arena].map);
    finder_.emplace(std::move(maps));
    trouble_.clear();
}

void ShownArena::see(const client::Snapshot& snapshot) {
    finder_->see(snapshot);
    if (finder_->verdict() == ArenaFinder::Verdict::none && trouble_.empty())
        trouble_ = "This room plays an arena that is not known here. Put its file into " +
                   arenaFolders().front() + ", or name it with --arena.";
}

bool ShownArena::isCertain() const {
    return finder_ && finder_->verdict() == ArenaFinder::Verdict::one &&
           judged_[finder_->best()] == shown_;
}

std::optional<ArenaMesh> ShownArena::change() {
    if (!finder_)
        return std::nullopt;
    const std::size_t best = judged_[finder_->best()];
    // A surface that is under way is waited for even if it is not wanted any more.
    if (!mesh_.valid()) {
        if (best != shown_)
            make(best);
        return std::nullopt;
    }
    if (mesh_.wait_for(std::chrono::seconds(0)) != std::future_status::ready)
        return std::nullopt;
    ArenaMesh mesh = mesh_.get();
    if (making_ != best || making_ == shown_)
        return std::nullopt;
    shown_ = making_;
    return mesh;
}

void ShownArena::make(std::size_t arena) {
    making_ = arena;
    mesh_ = std::async(std::launch::async, [&map = known_[arena].map] { return meshOf(map); });
}

} // namespace drench::game
