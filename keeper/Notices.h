#pragma once

#include <string>
#include <string_view>

namespace drench::keeper {

/// The meaning of something the server wrote on its console.
enum class Notice { joined, left, soaked, refused, other };

/// The meaning of one write of the server, which flushes each line and writes it as a whole. Names
/// stand at the front or in the middle, so that the end of the write is the server's own: a name
/// with ends of lines in it makes a write of several lines, and still one notice.
Notice noticeIn(std::string_view written);

/// The text as one line that a terminal can show: without an end of line at its end, all other
/// control characters and backslashes as \xHH.
std::string printable(std::string_view written);

} // namespace drench::keeper
