#include "game/Resolving.h"

#include <mutex>
#include <thread>
#include <utility>

namespace drench::game {

struct Resolving::Shared {
    std::mutex mutex;
    std::optional<Answer> answer;
};

Resolving::Resolving(std::string hostAndPort) : shared_(std::make_shared<Shared>()) {
    // Detached, since nobody can stop the resolver: it must not hold up the end of the program.
    std::thread([shared = shared_, text = std::move(hostAndPort)] {
        Answer answer;
        answer.room = client::resolve(text, answer.problem);
        const std::lock_guard lock(shared->mutex);
        shared->answer = std::move(answer);
    }).detach();
}

std::optional<Resolving::Answer> Resolving::answer() const {
    const std::lock_guard lock(shared_->mutex);
    return shared_->answer;
}

} // namespace drench::game
