#pragma once

#include "client/RoomAddress.h"
#include "common/Files.h"

namespace drench {

/// The room that an argument names, as client::resolve() finds it. Throws InputError with the
/// argument and the reason where there is none.
inline client::RoomAddress roomAt(const std::string& argument) {
    std::string problem;
    std::optional<client::RoomAddress> room = client::resolve(argument, problem);
    if (!room)
        throw InputError(argument + ": " + problem);
    return *room;
}

} // namespace drench
