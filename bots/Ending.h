#pragma once

#include "client/Session.h"

#include <string>

namespace drench::bots {

/// The reason why this event ended the session, worded to follow the name of its room: "is full".
/// Empty if the event did not end it.
std::string endingBy(const client::Event& event);

} // namespace drench::bots
