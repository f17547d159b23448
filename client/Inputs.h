#pragma once

#include "client/Clock.h"
#include "src/Messages.h"

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace drench::client {

/// An input on the wire.
using InputRecord = std::variant<KeyMessage, ViewMessage, TalkMessage>;

/// A player's inputs on their way to the room: keys, which are sent again and again, and a jump,
/// mouse counts and words, which are sent once.
struct Inputs {
    struct Key {
        bool isDown = false;

        /// Releases still to be sent.
        int releasesLeft = 0;

        /// The moment of the next send, if the key is down or has releases left.
        Time sendAt;
    };

    /// Indexed by keyIndex; the jump's entry stays as it is.
    std::array<Key, keyIndex::count> keys;
    bool jump = false;

    /// Mouse counts.
    std::int32_t dx = 0;
    std::int32_t dy = 0;

    std::vector<std::string> words;

    /// Holds or releases a key, to be sent from `now` on; keyIndex::jump with `down` asks for one
    /// jump. Keys outside keyIndex do nothing.
    void setKey(int key, bool down, Time now);

    /// Adds mouse counts; sums stop at the ends of what a record can hold.
    void turn(int countsRight, int countsDown);

    /// Adds words: at most their first 30 bytes, up to the first 0 byte. Drops them if 16 already
    /// wait.
    void say(std::string_view text);

    /// Makes a lost record good: its key's present state is due at `now`, its jump is asked for, or
    /// its mouse counts are added. Words are dropped.
    void sendAgain(const InputRecord& lost, Time now);

    /// Whether no jump, mouse counts or words wait.
    bool isEmpty() const;

    /// Forgets jump, mouse counts and words; keys stay.
    void clear();

    /// The moment at which the first key is due; Time::max() when none is held or to be released.
    Time keysDueAt() const;

    /// Returns the due inputs as records of player `id`: keys in the order of their numbers, then
    /// the view, then words. A key stays and is due again a quarter of a second later, a release
    /// until it was sent three times; the other inputs are removed.
    std::vector<InputRecord> takeDue(char id, Time now);
};

} // namespace drench::client
