#pragma once

#include "client/Prediction.h"
#include "common/Chance.h"
#include "lag/Impairment.h"
#include "src/MapManager.h"
#include "src/Player.h"

#include <chrono>
#include <cstdint>
#include <deque>
#include <map>
#include <optional>
#include <string>
#include <vector>

/// A player in a room of its own, a bad line between the two, and a Prediction at the player's end.
/// Time is passed by hand; the room's player is moved as the server moves it.
class PredictedLine {
    /// Before `prediction`, which keeps it.
    MapManager map_;

  public:
    struct Settings {
        drench::lag::Settings line;
        std::uint64_t seed = 1;

        /// Whether what the prediction finds lost is sent again.
        bool sendsAgain = true;

        /// Milliseconds, as the prediction is told it at first; that of the line if absent.
        std::optional<double> roundTrip;
    };

    PredictedLine(const std::string& mapText, const Settings& settings);

    /// Sends a record at this moment.
    void sendKey(int key, bool isDown);
    void sendView(int dx, int dy);

    /// Lets time pass in the room and on the line.
    void pass(double milliseconds);

    /// Plays random keys, twice a second, and views, 125 times a second.
    void playAtRandom(double seconds);

    /// Holds the room up: its next tick comes later by this.
    void stall(double milliseconds);

    /// The way of records to the room becomes longer by this; the prediction is told of the round
    /// trip that results.
    void delayRecords(double milliseconds);

    /// Holds the records under way, and those that follow them, up for as long.
    void holdRecords(double milliseconds);

    /// Soaks the player after the next tick; it returns four seconds later.
    void soak() { isSoaking_ = true; }

    /// The room's player.
    Player truth;

    drench::client::Prediction prediction;
    drench::client::Time now;

    /// The room's ticks so far.
    std::int64_t tick = 0;

    /// Snapshots and records that are thrown away instead of being sent.
    int snapshotsToLose = 0;
    int recordsToLose = 0;

    /// Others in the room, who do nothing.
    int others = 0;

    /// Whether a tick moves the player; a player sits one out when another is removed.
    bool movesNext = true;

    /// How each snapshot taken was explained.
    std::vector<drench::client::Prediction::Match> matches;

    /// The records that the prediction told of as lost.
    std::vector<drench::client::InputRecord> told;

    /// The eye as drawn, 240 times a second.
    std::vector<std::optional<vec3>> eyes;

    /// The distances from where the body was predicted to be when a record acts to where it was in
    /// the tick that took it, ascending; for all records that acted.
    std::vector<float> errors() const;

    /// The share, 0 to 1, of the records that acted in another tick than was predicted when they
    /// were sent.
    double wrongTickShare() const;

  private:
    struct Up {
        drench::client::Time at;
        drench::client::InputRecord record;
        std::uint64_t number;
    };
    struct Down {
        drench::client::Time at;
        UpdateMessage state;
        std::int64_t tick;
    };

    void send(const drench::client::InputRecord& record);
    double roundTrip() const;
    void playTick();
    void take(const UpdateMessage& state);

    Settings settings_;
    drench::lag::Impairment up_;
    drench::lag::Impairment down_;
    drench::Chance chance_;
    std::deque<Up> ups_;
    std::deque<Down> downs_;
    drench::client::Time nextTick_;
    drench::client::Time nextFrame_;
    drench::client::Time respawn_;
    drench::client::Clock::duration longerWay_{0};
    drench::client::Time heldUntil_;
    bool isSoaking_ = false;
    bool hasJoined_ = false;
    bool keys_[keyIndex::count] = {};
    int lostRight_ = 0;
    int lostDown_ = 0;
    std::uint64_t sent_ = 0;
    std::map<std::int64_t, vec3> places_;
    std::map<std::uint64_t, std::int64_t> acted_;
    std::map<std::uint64_t, vec3> predicted_;
    std::map<std::uint64_t, std::int64_t> predictedTicks_;

    /// The tick of the newest snapshot that came.
    std::int64_t taken_ = 0;
};
