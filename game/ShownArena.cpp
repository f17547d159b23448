#include "game/ShownArena.h"

#include <sys/resource.h>
#include <unistd.h>
#include <utility>

namespace drench::game {

namespace {

/// Of the threads that make light: other work comes first.
constexpr int backgroundNice = 10;

bool isReady(const std::future<ArenaMesh>& mesh) {
    return mesh.wait_for(std::chrono::seconds(0)) == std::future_status::ready;
}

} // namespace

ShownArena::ShownArena(std::vector<KnownArena>& known, client::Time::duration patience)
    : known_(known), patience_(patience) {
    make(shown_);
}

ArenaMesh ShownArena::firstSurface() {
    if (making_.lit.wait_until(making_.roughDue) == std::future_status::ready)
        return making_.lit.get();
    return making_.rough.get();
}

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

void ShownArena::showAgain() {
    isShown_ = false;
}

std::optional<ArenaMesh> ShownArena::change() {
    const std::size_t best = fitting();
    if (!making_.lit.valid()) {
        if (best != shown_ || !isShown_)
            make(best);
        return std::nullopt;
    }
    const bool isWanted = making_.arena == best;
    if (!isWanted && making_.arena != shown_)
        stop_.request_stop();
    if (isReady(making_.lit)) {
        ArenaMesh mesh = making_.lit.get();
        if (stop_.stop_requested())
            return std::nullopt;
        shown_ = making_.arena;
        isShown_ = true;
        return mesh;
    }
    if (isWanted && making_.rough.valid() && client::Clock::now() >= making_.roughDue &&
        isReady(making_.rough)) {
        shown_ = making_.arena;
        isShown_ = true;
        return making_.rough.get();
    }
    return std::nullopt;
}

std::size_t ShownArena::fitting() const {
    return finder_ ? judged_[finder_->best()] : shown_;
}

void ShownArena::make(std::size_t arena) {
    stop_ = {};
    std::promise<ArenaMesh> rough;
    making_.arena = arena;
    making_.roughDue = client::Clock::now() + patience_;
    making_.rough = rough.get_future();
    making_.lit =
        std::async(std::launch::async, [&map = known_[arena].map, stop = stop_.get_token(),
                                        rough = std::move(rough)]() mutable {
            rough.set_value(roughMeshOf(map));
            // From now on frames may be drawn, with all cores.
            setpriority(PRIO_PROCESS, static_cast<id_t>(gettid()), backgroundNice);
            return meshOf(map, stop);
        });
}

} // namespace drench::game
