#include "client/EventQueue.h"

#include <utility>

namespace drench::client {

namespace {

/// Sixteen seconds of snapshots.
constexpr std::size_t mostWaiting = 1024;

} // namespace

void EventQueue::push(Event event) {
    if (events_.size() - first_ < mostWaiting)
        pushAlways(std::move(event));
}

void EventQueue::pushAlways(Event event) {
    // Otherwise taken events would pile up if the caller always leaves one behind.
    if (first_ > 0 && events_.size() == events_.capacity()) {
        events_.erase(events_.begin(), events_.begin() + static_cast<std::ptrdiff_t>(first_));
        first_ = 0;
    }
    events_.push_back(std::move(event));
}

std::optional<Event> EventQueue::take() {
    if (first_ == events_.size())
        return std::nullopt;
    std::optional<Event> event = std::move(events_[first_]);
    if (++first_ == events_.size()) {
        events_.clear();
        first_ = 0;
    }
    return event;
}

} // namespace drench::client
