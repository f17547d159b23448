#pragma once

#include "client/Session.h"

#include <string>

namespace drench::bots {

/// Why a session is over after this event, as it reads behind the name of its room: "is full".
/// Empty when it is not over.
std::string endingBy(const client::Event& event);

} // namespace drench::bots
