#pragma once

namespace drench::arena {

/// The highest horizontal speed of players in flight.
enum class Pace {
    /// Forward and sideways at once: 8.5 world units a tick.
    ordinary,

    /// 12 units a tick: after a quarter turn in one view report, the strafe vector points along the
    /// view.
    flicked
};

} // namespace drench::arena
