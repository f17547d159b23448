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

    /// It can, but not everybody will like it.
    warning
};

/// What a finding is about.
enum class Subject {
    /// No arena can be read from the file.
    file,

    /// The numbers of a map text, and their order.
    text,

    /// Where players appear and land.
    spawns,

    /// Where players get to.
    reach,

    /// Whom players see, and who is covered.
    sight
};

/// One thing that the maker should know.
struct Finding {
    Severity severity;
    Subject subject;
    std::string words;

    /// Where it is: the cell, and the place of its `solid` in the file; absent when it is nowhere
    /// in particular.
    std::optional<CellIndex> cell;
    std::optional<TextPlace> place;
};

/// What is known of an arena after a check. What errors have made pointless to look at is left
/// empty.
struct CheckResult {
    std::vector<Finding> findings;
    std::vector<Arrival> arrivals;
    std::optional<Reach> reach;

    /// Cells with room to stand, how many of them players get to, and the largest area of others.
    std::vector<CellIndex> walkable;
    std::size_t walkableReached = 0;
    std::optional<Area> unreached;
    std::optional<Sight> sight;

    /// Whether a room can be played here: no finding is an error.
    bool playable() const;
};

/// Told now and then what is being looked at, such as "reach", and at how many places so far.
using CheckProgress = std::function<void(const std::string& subject, std::size_t places)>;

/// Where a cell stands in the file that the maker edits.
using PlaceOfCell = std::function<TextPlace(const CellIndex&)>;

/// Checks an arena: where players spawn, where they get to, whom they see. The arrivals keep a
/// pointer to `map`. Without `placeOf` findings have no place.
CheckResult check(MapManager& map, const PlaceOfCell& placeOf, const CheckProgress& progress = {});

/// Checks a map text: first its numbers, and the arena only when they give every cell. Where the
/// arena is not enclosed, but would be in another order of its numbers, that is the only finding.
CheckResult check(MapText& text, const CheckProgress& progress = {});

} // namespace drench::arena
