#include "game/RoomList.h"

namespace drench::game {

void RoomList::show(const std::vector<std::string>& addresses) {
    entries_.clear();
    for (const std::string& address : addresses)
        entries_.push_back({address, RoomProbe(address)});
}

void RoomList::service(client::Time now) {
    for (Entry& entry : entries_)
        entry.probe.service(now);
}

void RoomList::addDescriptors(std::vector<int>& descriptors) const {
    for (const Entry& entry : entries_) {
        if (entry.probe.descriptor() >= 0)
            descriptors.push_back(entry.probe.descriptor());
    }
}

} // namespace drench::game
