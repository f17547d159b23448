#pragma once

#include "Figures.h"

#include <iosfwd>
#include <string>

namespace bench {

/// Tables of medians, ratios and their spread.
void printReport(std::ostream& out, const Figures& figures);

/// Everything, the single rounds included.
std::string jsonReport(const Figures& figures);

/// What bench/plot.sh draws, three blocks of columns with a line of names each: processor time by
/// load; gaps by number of rooms for the floor; the same for the server.
std::string plotColumns(const Figures& figures);

} // namespace bench
