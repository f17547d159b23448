#pragma once

#include <algorithm>
#include <deque>

namespace drench::game {

/// How long the latest frames took, for a graph.
class FrameTimes {
  public:
    static constexpr std::size_t most = 240;

    struct Times {
        /// Milliseconds from the beginning of the frame before, and of work in it.
        float interval = 0.0f;
        float work = 0.0f;
    };

    void add(Times times) {
        if (latest_.size() == most)
            latest_.pop_front();
        latest_.push_back(times);
    }

    /// The longest work of all of them, in milliseconds.
    double longestWork() const {
        float longest = 0.0f;
        for (const Times& each : latest_)
            longest = std::max(longest, each.work);
        return longest;
    }

    /// The oldest first.
    const std::deque<Times>& latest() const { return latest_; }

  private:
    std::deque<Times> latest_;
};

} // namespace drench::game
