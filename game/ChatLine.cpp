#include "game/ChatLine.h"

#include "game/Text.h"
#include "src/Messages.h"

#include <utility>

namespace drench::game {

static_assert(ChatLine::longestLine == sizeof(TalkMessage::text));

void ChatLine::insert(std::string_view typed) {
    std::string visible;
    for (std::size_t at = 0; at < typed.size();) {
        const std::size_t length = characterLength(typed, at);
        const std::string_view character = typed.substr(at, length);
        if (length > 0 && drawable(character) == character)
            visible += character;
        at += length > 0 ? length : 1;
    }
    const std::string_view fitting = wholeCharacters(visible, longestLine - text_.size());
    text_.insert(cursor_, fitting);
    cursor_ += fitting.size();
}

void ChatLine::eraseBefore() {
    const std::size_t start = characterBefore();
    text_.erase(start, cursor_ - start);
    cursor_ = start;
}

void ChatLine::eraseBehind() {
    text_.erase(cursor_, characterLength(text_, cursor_));
}

void ChatLine::moveLeft() {
    cursor_ = characterBefore();
}

void ChatLine::moveRight() {
    cursor_ += characterLength(text_, cursor_);
}

void ChatLine::showEarlier() {
    if (shown_ > 0)
        show(shown_ - 1);
}

void ChatLine::showLater() {
    if (shown_ < earlier_.size())
        show(shown_ + 1);
}

std::string ChatLine::finish() {
    std::string said(withoutOuterBlanks(text_));
    cancel();
    if (said.empty() || (!earlier_.empty() && earlier_.back() == said))
        return said;
    earlier_.push_back(said);
    if (earlier_.size() > mostEarlier)
        earlier_.erase(earlier_.begin());
    shown_ = earlier_.size();
    return said;
}

void ChatLine::cancel() {
    text_.clear();
    begun_.clear();
    cursor_ = 0;
    shown_ = earlier_.size();
}

void ChatLine::show(std::size_t line) {
    if (shown_ == earlier_.size())
        begun_ = text_;
    shown_ = line;
    text_ = line == earlier_.size() ? begun_ : earlier_[line];
    moveEnd();
}

std::size_t ChatLine::characterBefore() const {
    std::size_t before = 0;
    for (std::size_t at = 0; at < cursor_; at += characterLength(text_, at))
        before = at;
    return before;
}

} // namespace drench::game
