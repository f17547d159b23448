#pragma once

#include "arena/MapText.h"
#include "arena/Reach.h"
#include "arena/Sight.h"
#include "arena/UnreachedArea.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace drench::arena {

enum class Severity {
    /// The arena cannot be played as it is.
    error,

    /// The arena can be played, but not everybody will like it.
    warning
};

/// The subject of a finding.
enum class Subject {
    /// The file: no arena can be read from it.
    file,

    /// The numbers of a map text, and their order.
    text,

    /// Spawn places and landings.
    spawns,

    /// The parts of the arena that players get to.
    reach,

    /// Lines of sight between players, and cover.
    sight
};

/// One thing that the maker should know.
struct Finding {
    Severity severity;
    Subject subject;
    std::string words;

    /// The cell, and the place of its `solid` in the file; absent if the finding has no particular
    /// place.
    std::optional<CellIndex> cell;
    std::optional<TextPlace> place;
};

/// All results of a check. Parts that errors make pointless to examine are left empty.
struct CheckResult {
    std::vector<Finding> findings;
    std::vector<Arrival> arrivals;
    std::optional<Reach> reach;

    /// Cells with room to stand, the number of them that players get to, and the largest unreached
    /// area.
    std::vector<CellIndex> walkable;
    std::size_t walkableReached = 0;
    std::optional<Area> unreached;
    std::optional<Sight> sight;

    /// Whether a room can be played here: no finding is an error.
    bool playable() const;
};

/// Called now and then with the subject under examination, such as "reach", and the number of
/// standing places so far.
using CheckProgress = std::function<void(const std::string& subject, std::size_t places)>;

/// Gives the place of a cell in the file that the maker edits.
using PlaceOfCell = std::function<TextPlace(const CellIndex&)>;

/// Checks an arena's spawns, reach and sight. The arrivals keep a pointer to `map`. Without
/// `placeOf` findings have no place.
CheckResult check(MapManager& map, const PlaceOfCell& placeOf, const CheckProgress& progress = {});

/// Checks a map text: first its numbers, and the arena only if they give every cell. If the arena
/// is not enclosed but would be in another order of its numbers, that is the only finding.
CheckResult check(MapText& text, const CheckProgress& progress = {});

} // namespace drench::arena
