#pragma once

#include "bots/Chart.h"
#include "bots/Roadmap.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

namespace drench::bots {

/// The folder for charts: drench in $XDG_CACHE_HOME, or in .cache of $HOME; empty where neither
/// names an absolute path.
std::string chartFolder();

/// Checksum of the executable of this process; 0 where it cannot be read.
std::uint64_t programChecksum();

/// The chart of the map: from the folder where an earlier start of the same program has kept it;
/// else made by chart() and kept there. Of processes that want the same chart at once, one makes it
/// and the others wait. Where the folder cannot be used, the chart is made all the same.
/// @param folder  empty keeps nothing
/// @param goesOn  asked now and then; nothing is returned once it says no
/// @param tell  called now and then with what is being done, in a few words
std::optional<Roadmap> keptChart(MapManager& map, const std::string& folder, std::uint64_t program,
                                 const std::function<bool()>& goesOn,
                                 const std::function<void(const std::string&)>& tell);

} // namespace drench::bots
