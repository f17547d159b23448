#pragma once

#include "client/Clock.h"

#include <chrono>
#include <optional>
#include <string>

namespace drench::keeper {

using client::Time;
using std::chrono::milliseconds;

/// Players, and for how many there are places, them included.
struct PlayerPlaces {
    int players = 0;
    int capacity = 0;

    bool operator==(const PlayerPlaces&) const = default;
};

/// A request to the SDK server of Agones.
struct AgonesCall {
    enum class Kind { health, ready, allocate, players, shutdown, state };

    Kind kind;
    std::string method;
    std::string path;

    /// JSON; empty for GET.
    std::string body;

    /// What the body tells.
    PlayerPlaces places = {};
};

/// The kind's word, for metrics.
const char* nameOf(AgonesCall::Kind kind);

/// Which call to the SDK server is due, from what the keeper knows of its room and how former calls
/// went. Health and state are due every two seconds. What else failed is tried again after half a
/// second, then after twice as long each time, up to eight seconds.
class AgonesCalls {
  public:
    static constexpr milliseconds period{2000};

    /// The moment until which the room's last receipt lets it count as answering; nothing while it
    /// does not answer. Before that moment alone it is called healthy, so that nobody who stops
    /// telling keeps it so. The first time, it is called ready.
    void setAnswering(std::optional<Time> until);

    /// Told as a counter, list or label, and allocates the room while somebody plays in it.
    void setPlayers(const PlayerPlaces& places) { places_ = places; }

    /// The end: nothing else is due any more.
    void shutDown() { shutdown_.isWished = true; }

    /// The call to make now, or nothing.
    std::optional<AgonesCall> due(Time now) const;

    /// The moment of the next call, unless the room changes before.
    Time nextAt(Time now) const;

    /// How a call went.
    /// @param status  of the answer; 0 for none
    void answered(const AgonesCall& call, int status, const std::string& body, Time now);

    /// The game server's state as last heard: "Ready", "Allocated", "Shutdown" and so on; empty
    /// before.
    const std::string& state() const { return state_; }

    bool isShutDown() const { return shutdown_.isDone; }

  private:
    /// The moments of a call that is made until it succeeds.
    struct Trial {
        Time at;
        milliseconds pause = shortestPause;

        void failed(Time now);
        void succeeded(Time next);
    };

    struct Wish : Trial {
        bool isWished = false;
        bool isDone = false;

        Time dueAt() const { return isWished && !isDone ? at : Time::max(); }
    };

    /// How the players are told: the newest way that the SDK server and its fleet know.
    enum class Way { counter, list, label };

    Time healthAt(Time now) const;
    Time allocateAt() const;
    Time playersAt() const;
    AgonesCall playersCall() const;
    void takePlayersAnswer(const AgonesCall& call, int status, const std::string& body, Time now);
    void takeState(const std::string& body);

    static constexpr milliseconds shortestPause{500};
    static constexpr milliseconds longestPause{8000};

    std::optional<Time> answersUntil_;
    PlayerPlaces places_;
    std::string state_;

    Wish ready_;
    Wish shutdown_;
    Trial allocate_;
    Trial tellPlayers_;
    Time nextHealthAt_;
    Time stateAt_;
    Way way_ = Way::counter;
    std::optional<PlayerPlaces> toldPlaces_;
};

} // namespace drench::keeper
