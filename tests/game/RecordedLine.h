#pragma once

#include "game/PlayedEvents.h"
#include "tests/game/Snapshots.h"
#include "tests/support/Datagrams.h"

#include <chrono>
#include <string>
#include <vector>

/// What a room said on a line, written down as a recording would.
class RecordedLine {
  public:
    /// Milliseconds from tick to tick.
    static constexpr double period = 16.0;

    /// Milliseconds since the recording began, which it does with the first tick.
    double now = -period;

    void hear(const std::string& datagram, double lateness = 0.0) {
        using Time = drench::client::Time;
        const std::chrono::duration<double, std::milli> arrival(now + lateness);
        decoder_.take(Time(std::chrono::round<Time::duration>(arrival)), datagram);
    }

    /// One tick passes, and its snapshot comes.
    void tick(std::initializer_list<PlayerUpdate> players, double lateness = 0.0) {
        now += period;
        hear(bytesOf(snapshotOf(players)), lateness);
    }

    void ticks(int count, std::initializer_list<PlayerUpdate> players) {
        for (int i = 0; i < count; ++i)
            tick(players);
    }

    std::vector<drench::game::PlayedEvent> events() { return decoder_.finish(); }

  private:
    drench::game::LineDecoder decoder_;
};
