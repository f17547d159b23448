#pragma once

#include "client/recording/RecordingReader.h"

#include <string>
#include <vector>

namespace drench::replay {

/// The part of a recording from `from` until `to`, as a recording that begins at `from`. Throws
/// InputError if there is no datagram.
std::string cut(client::RecordingReader& reader, client::RecordedTime from,
                client::RecordedTime to);

/// Several recordings as one, at the times at which they were made. One that overlaps others gets
/// lines of its own. Throws InputError if their arenas differ, if they lie farther apart than a
/// recording is long at most, or if they have more bytes or lines than one recording may have.
std::string join(std::vector<client::RecordingReader>& readers);

} // namespace drench::replay
