#pragma once

#include "src/MapManager.h"
#include "src/Messages.h"

#include <optional>
#include <string>
#include <vector>

namespace drench::game {

enum class Sound { jet, splash, step, jump, landing, soaking, soaked, spawn, chat };

/// The cause of one sound.
struct Cue {
    Sound sound = Sound::chat;

    /// World units; nothing for what is heard from everywhere: one's own body, and chat.
    std::optional<vec3> place;

    /// 0 to 1.
    float loudness = 1.0f;

    /// The cellValue of the cube that is trodden on or hit; 0 if none is.
    int material = 0;

    /// Whether it is one's own doing.
    bool isOwn = false;
};

/// A jet that goes on, from nozzle to wall.
struct HeardJet {
    char whose = 0;

    /// As in Cue.
    std::optional<vec3> place;
};

/// Finds what is to be heard in the change from one state to the next; each cause once, whatever
/// states were missed between. Numbers of a hostile room are heard as silence.
class Cues {
  public:
    /// The map must outlive this; a map without cells has no steps and no splashes on walls.
    explicit Cues(const MapManager& map) : map_(&map) {}

    /// @param state  of all players after a tick; one's own slot may hold what is predicted instead
    /// @param ownId  our identifier, 0 for a looker-on
    /// @param ticks  since the state before, 1 if none was missed; with less nothing is heard
    /// @param ownTicks  those of one's own slot, if it is predicted: they may come in pairs, or
    /// none
    std::vector<Cue> hear(const UpdateMessage& state, char ownId, int ticks,
                          std::optional<int> ownTicks = {});

    /// The jets that go on after the latest state.
    const std::vector<HeardJet>& jets() const { return jets_; }

  private:
    struct Body {
        char id = 0;
        std::string name;
        vec3 position;
        bool shooting = false;
        bool soaked = false;
        int points = 0;

        /// World units a tick, upward.
        float rise = 0.0f;

        /// World units since the last step.
        float walked = 0.0f;

        /// Until the next splash of a jet that goes on.
        int ticksToSplash = 0;
    };

    Body follow(const Body& before, const PlayerUpdate& now, int ticks);
    void hearBody(Body& body, const Body& before, int ticks);
    void hearWalk(Body& body, vec3 way, int ticks);
    void hearJet(Body& body, const PlayerUpdate& update, bool begins, int ticks);
    void add(Sound sound, const Body& body, float loudness, int material = 0);
    bool isOwn(const Body& body) const { return body.id == ownId_; }

    const MapManager* map_;
    char ownId_ = 0;
    std::vector<Body> bodies_;
    std::vector<HeardJet> jets_;
    std::vector<Cue> cues_;

    /// Whether there was a state before.
    bool begun_ = false;
};

/// The cellValue of the cube that carries a body centred here: below its middle, or else below a
/// corner. Nothing in mid-air.
std::optional<int> materialBelow(const MapManager& map, vec3 centre);

} // namespace drench::game
