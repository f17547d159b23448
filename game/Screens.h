#pragma once

#include "client/Clock.h"
#include "client/Events.h"

#include <optional>
#include <string>

namespace drench::game {

/// What the player is told about a room that cannot be played in.
struct Trouble {
    /// What happened: "localhost:5000 is full."
    std::string what;

    /// What can be done about it.
    std::string advice;
};

/// Which screen is shown, from choosing a room to leaving it, and when a lost room is joined again.
/// It joins nothing itself: whoever does tells it what came of it.
class Screens {
  public:
    using Time = client::Time;

    enum class Place {
        /// A room is to be chosen.
        start,

        /// A room was asked and has not answered yet.
        joining,

        match,

        /// A recorded match is watched.
        watching,

        /// The room let nobody in, or was lost.
        trouble
    };

    /// Why one is not in the room.
    enum class Loss { full, unanswered, nobodyListens, silent, replaced };

    /// What lies over the place.
    enum class Panel { none, menu, settings, chat };

    Place place() const { return place_; }
    Panel panel() const { return panel_; }

    /// The room as the player named it, or what is watched; empty at the start.
    const std::string& room() const { return room_; }

    /// A room is chosen, by its address or a link to it, or the one of the trouble is tried once
    /// more.
    void join(const std::string& room);
    void joinAgain();

    /// The room let us in.
    void enter();

    /// The room did not, or was lost. A room that had let us in is joined again by itself, and so
    /// is a full one.
    void lose(Loss why, Time now);

    /// The room cannot even be asked.
    void fail(const Trouble& trouble);

    /// A recorded match is watched from now on.
    void watch(const std::string& title);

    /// Back to the choice of a room.
    void leave();

    /// Whether the moment has come to join the room of the trouble again.
    bool isJoinDue(Time now) const;

    /// Until then; negative if it is not joined again by itself.
    double secondsUntilJoin(Time now) const;

    /// The room is not joined by itself any more.
    void stopTrying() { tries_ = false; }

    /// What was last wrong with the room, as long as it has not let us in.
    const Trouble& trouble() const { return trouble_; }

    /// Why one does not play in the room that was chosen, as a line; empty while one does, and
    /// where none was chosen.
    std::string whyNotPlaying() const;

    /// Opens the menu or, where another panel lies, closes that. In the menu's place there is none
    /// outside of a match.
    void escape();

    /// Only in a match that nothing lies over.
    void openChat();
    void openSettings();
    void closePanel();

    /// Whether keys and mouse are for the game and not for what is drawn over it.
    bool gameHasInput() const { return hasPicture() && panel_ == Panel::none; }

    /// Whether the mouse turns the view: whoever writes a line of chat still looks around.
    bool gameHasMouse() const {
        return hasPicture() && (panel_ == Panel::none || panel_ == Panel::chat);
    }

    /// Whether nothing in the picture asks for many frames a second.
    bool isCalm() const { return !gameHasMouse(); }

  private:
    /// Whether there is something to be seen that a menu can lie over.
    bool hasPicture() const { return place_ == Place::match || place_ == Place::watching; }

    Place place_ = Place::start;
    Panel panel_ = Panel::none;
    std::string room_;
    Trouble trouble_;

    /// Whether the room ever let us in, and joins since it was lost.
    bool wasIn_ = false;
    int attempts_ = 0;

    /// Whether and when the next join is due.
    bool tries_ = false;
    Time next_{};
};

/// Nothing if the room is not lost by the event.
std::optional<Screens::Loss> lossIn(const client::Event& event);

/// Seconds before the room is joined for the `attempt`-th time, the first being 0: they double, up
/// to half a minute.
double secondsBefore(int attempt);

} // namespace drench::game
