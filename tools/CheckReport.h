#pragma once

#include "arena/Check.h"

#include <iosfwd>
#include <string>

namespace drench {

/// Writes the findings of a check for people: figures by subject, then each finding as
/// "file:line:column: error: words (cell column, row, depth)", then the verdict.
void writeReport(std::ostream& out, const std::string& file, const MapManager& map,
                 const arena::CheckResult& result);

/// Writes the same as one JSON object for programs.
void writeJson(std::ostream& out, const std::string& file, const MapManager& map,
               const arena::CheckResult& result);

} // namespace drench
