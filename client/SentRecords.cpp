#include "client/SentRecords.h"

#include <variant>

namespace drench::client {

std::optional<SentRecord> SentRecord::of(const InputRecord& input, Milliseconds sentAt) {
    SentRecord record;
    record.sentAt = sentAt;
    if (const auto* view = std::get_if<ViewMessage>(&input)) {
        record.isView = true;
        record.dx = view->dx;
        record.dy = view->dy;
        return record;
    }
    const auto* const key = std::get_if<KeyMessage>(&input);
    if (!key || key->key < 0 || key->key >= keyIndex::count)
        return std::nullopt;
    record.key = int{key->key};
    record.isDown = key->down != 0;
    return record;
}

InputRecord SentRecord::input() const {
    if (isView) {
        ViewMessage view;
        view.dx = dx;
        view.dy = dy;
        return view;
    }
    KeyMessage message;
    message.key = static_cast<signed char>(key);
    message.down = static_cast<char>(isDown);
    return message;
}

bool SentRecord::changesNothing(const Player& player) const {
    return !isView && key != keyIndex::jump && player.keys[key] == isDown;
}

void SentRecord::actOn(Player& player) const {
    if (isView)
        player.rotateView(dx, dy);
    else
        player.setKey(key, isDown);
}

void SentRecords::forgetBefore(std::uint64_t number) {
    while (first_ < number && !records_.empty()) {
        records_.pop_front();
        ++first_;
    }
}

const SentRecord& SentRecords::operator[](std::uint64_t number) const {
    return records_[static_cast<std::size_t>(number - first_)];
}

} // namespace drench::client
