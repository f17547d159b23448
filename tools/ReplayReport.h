#pragma once

#include "client/recording/RecordingReader.h"
#include "replay/KnownInputs.h"
#include "replay/Soakings.h"
#include "replay/Verification.h"

#include <ostream>
#include <span>
#include <string>
#include <vector>

namespace drench {

// What drench-replay tells, as tables and as JSON.

/// What can be said of a recording without judging it. Reads it from its start to its end.
struct RecordingInfo {
    client::RecordingHeader header;
    client::RecordedTime duration{};
    std::size_t fileBytes = 0;
    std::uint64_t fromRoom = 0;
    std::uint64_t toRoom = 0;
    std::uint32_t lines = 0;

    /// Of one line.
    std::uint64_t states = 0;

    /// Names, in the order of their first states.
    std::vector<std::string> players;

    explicit RecordingInfo(client::RecordingReader& reader);
};

/// "1:02.345", with hours if there are any.
std::string clockTime(client::RecordedTime time);

void writeTable(std::ostream& out, const RecordingInfo& info);
void writeJson(std::ostream& out, const RecordingInfo& info);

void writeTable(std::ostream& out, std::span<const replay::Soaking> soakings);
void writeJson(std::ostream& out, std::span<const replay::Soaking> soakings);

/// The two answers to whether a match was by the rules.
struct VerifyReport {
    replay::Verification verification;
    std::vector<replay::KnownInputs> inputs;
};

void writeTable(std::ostream& out, const VerifyReport& report);
void writeJson(std::ostream& out, const VerifyReport& report);

} // namespace drench
