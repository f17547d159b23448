#include "bots/Ending.h"

namespace drench::bots {

std::string endingBy(const client::Event& event) {
    if (std::get_if<client::Refused>(&event))
        return "is full";
    if (const auto* unanswered = std::get_if<client::Unanswered>(&event))
        return unanswered->nobodyListens ? "nobody listens there" : "does not answer";
    if (const auto* dropped = std::get_if<client::Dropped>(&event))
        return dropped->reason == client::Dropped::Reason::silence ? "has fallen silent"
                                                                   : "has dropped us";
    return "";
}

} // namespace drench::bots
