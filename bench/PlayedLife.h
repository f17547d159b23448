#pragma once

#include "bench/Hands.h"
#include "bench/Witness.h"
#include "client/Prediction.h"

#include <cstdint>
#include <string>
#include <vector>

namespace drench::bench {

/// The line between a player and the room.
struct LineUnderTest {
    std::string name;

    /// Of drench-lag; none for a line without it.
    std::vector<std::string> options;

    /// Milliseconds each way.
    double delay = 0.0;
};

/// All that happened in a life of a predicted player, from its join until it leaves, seen from both
/// ends of its line. Milliseconds are on one clock.
struct PlayedLife {
    /// A record at the moment at which it was sent.
    struct Sending {
        /// Where the body was then predicted to be when the record acts, and in which tick: counted
        /// from the newest snapshot taken, which has this index.
        vec3 predicted;
        bool isPredicted = false;
        std::size_t taking = 0;
        std::int64_t ticksAhead = 0;

        /// Whether a person changed something: no repetition of a key.
        bool isChange = false;
    };

    /// A snapshot that the player took.
    struct Taking {
        UpdateMessage state;
        double microseconds = 0.0;
        std::size_t hypotheses = 0;
    };

    /// A frame that the player drew.
    struct Frame {
        /// The index of the newest snapshot taken.
        std::size_t taking = 0;
        std::uint64_t recordsSent = 0;

        /// The moment drawn, in ticks, counted from that snapshot's.
        double drawnAhead = 0.0;
        vec3 eye;
    };

    /// A record that the prediction told of as lost.
    struct Loss {
        client::InputRecord record;
        double at = 0.0;

        /// Of a view: the record that carries its counts again.
        std::uint64_t carrier = 0;
    };

    client::SentRecords records;
    std::vector<Sending> sendings;
    std::vector<Taking> takings;
    std::vector<Frame> frames;
    std::vector<Loss> losses;
    client::Prediction::Statistics statistics;

    /// The state of every tick, as somebody saw it on a line without delay and loss.
    std::vector<UpdateMessage> observed;

    /// The player in these, and the index of the first one.
    std::vector<Sighting> sightings;
    std::size_t firstSighting = 0;
};

struct Programs {
    std::string server;
    std::string relay;
};

/// Starts a room and its line, and plays in it. Throws std::runtime_error on any failure.
PlayedLife playLife(const Programs& programs, MapManager& map, const LineUnderTest& line,
                    Hands::Habit habit, std::uint64_t seed, double seconds);

} // namespace drench::bench
