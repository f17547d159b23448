#pragma once

#include "client/Interpolation.h"
#include "client/Prediction.h"
#include "client/Session.h"
#include "src/MapManager.h"

#include <optional>
#include <vector>

namespace drench::client {

/// Where everybody is at a moment of drawing: oneself predicted, the others between snapshots.
class Bodies {
  public:
    /// @param map  the room's arena; must outlive this
    explicit Bodies(MapManager& map) : prediction_(map), others_(map) {}

    /// To be called after each Session::service(now): hears what was sent, and has the session send
    /// again what was found lost before.
    void serviced(Session& session, Time now);

    /// The session handed out a snapshot.
    void take(const Snapshot& snapshot, const Session& session);

    /// One's own body as drawn at `now`; nothing while soaked and before the first snapshot.
    std::optional<Prediction::Body> own(Time now) const;

    /// The others as drawn at `now`: a little behind the newest snapshot, or, `ahead`, where they
    /// will be when a shot fired now acts in the room.
    std::vector<PlayerUpdate> others(Time now, bool ahead);

    /// The same as a state of the room, whose player `self` is oneself: for whoever decides by
    /// states, as bots do.
    /// @param own  as own(now) gives it
    UpdateMessage shown(const PlayerUpdate& self, const std::optional<Prediction::Body>& own,
                        Time now, bool ahead);

    const Prediction& prediction() const { return prediction_; }

  private:
    Prediction prediction_;
    Interpolation others_;
    DrawnTick drawnTick_;
    bool wasAhead_ = false;
    char id_ = 0;
};

} // namespace drench::client
