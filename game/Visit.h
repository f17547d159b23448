#pragma once

#include "client/Session.h"
#include "game/HostedRoom.h"
#include "game/LineQuality.h"
#include "game/Resolving.h"
#include "game/Screens.h"

#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace drench::game {

/// The way into a room, through it and out of it: does what Screens shows.
class Visit {
  public:
    using Time = client::Time;

    /// Who records is asked for a tap whenever a session begins, with the room's name.
    using Taps = std::function<client::Tap(const std::string& room, Time now)>;
    void recordInto(Taps taps) { taps_ = std::move(taps); }

    /// Chooses a room, by what the player typed, or one that has been looked up.
    void join(const std::string& room, const std::string& name, Time now);
    void join(const client::RoomAddress& room, const std::string& name, Time now);

    /// Starts a room with bots on this machine and joins it.
    /// @param folder  see HostedRoom
    void host(const std::string& folder, int bots, const std::string& name, Time now);

    /// Tries the room of a trouble at once.
    void joinAgain(Time now);

    /// Leaves the room and ends one's own.
    void leave(Time now);

    /// Who is told what the session did.
    struct Listener {
        /// After each Session::service().
        std::function<void(client::Session&)> serviced;

        /// Each event, which the screens follow already.
        std::function<void(const client::Event&, client::Session&)> take;
    };

    /// How long frames take, in milliseconds: see LineQuality::Counts.
    void setFrameTime(double frame) { frame_ = frame; }

    /// Hears and sends, and does what is due.
    void service(Time now, const Listener& listener);

    /// The latest moment for the next call of service().
    Time wakeAt(Time now) const;

    /// For poll(), those that are open.
    void addDescriptors(std::vector<int>& descriptors) const;

    /// The session of a match or of a joining; null else.
    client::Session* session() { return session_ ? &*session_ : nullptr; }

    Screens& screens() { return screens_; }
    const Screens& screens() const { return screens_; }
    const LineQuality& line() const { return line_; }

    /// In milliseconds; nothing where it is unknown.
    std::optional<double> roundTrip() const;

    /// Whether the room let us in, which one remembers it for.
    bool hasEntered() const { return hasEntered_; }

    /// Whether the room is one's own, on this machine.
    bool isHosting() const { return hosted_.has_value(); }

  private:
    void begin(const std::string& room, const std::string& name, Time now);
    void resolveOnce(Time now);
    void openSession(const sockaddr_in& room, Time now);
    void failToJoin(const std::string& problem);
    void hostOnce(Time now);
    void note(const client::Event& event, Time now);

    Taps taps_;
    Screens screens_;
    LineQuality line_;
    std::string name_;

    /// One of these leads to a session: the room on this machine, then the look-up of its address.
    std::optional<HostedRoom> hosted_;
    std::string hostFolder_;
    int hostBots_ = 0;
    std::optional<Resolving> resolving_;
    std::optional<client::Session> session_;
    Time lastSnapshot_{};
    double frame_ = 0.0;
    bool hasEntered_ = false;
};

} // namespace drench::game
