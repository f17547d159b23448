#pragma once

#include "bots/Chart.h"
#include "bots/Roadmap.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

namespace drench::bots {

/// The folder for charts: drench in $XDG_CACHE_HOME, or in .cache of $HOME; empty if neither is an
/// absolute path.
std::string chartFolder();

/// Checksum of the executable of this process; 0 if it cannot be read.
std::uint64_t programChecksum();

/// The chart of the map. Read from the folder if an earlier start of the same program kept it
/// there, otherwise made by chart() and kept. If several processes want the same chart at once, one
/// makes it and the others wait. If the folder cannot be used, the chart is made all the same.
/// @param folder  empty keeps nothing
/// @param goesOn  asked now and then; once it returns false, nothing is returned
/// @param tell  called now and then with the current stage in a few words
std::optional<Roadmap> keptChart(MapManager& map, const std::string& folder, std::uint64_t program,
                                 const std::function<bool()>& goesOn,
                                 const std::function<void(const std::string&)>& tell);

} // namespace drench::bots
