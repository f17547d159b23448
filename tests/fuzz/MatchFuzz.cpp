// What a window makes of a room that says anything: the players, notices and chat that it draws,
// the arena that it finds, the sounds and captions. An input is a run of datagrams as the room
// sends them: a byte says of which kind, the bytes of that record follow.

#include "client/Notices.h"
#include "client/Records.h"
#include "game/ArenaFinder.h"
#include "game/Captions.h"
#include "game/Ears.h"
#include "game/Match.h"
#include "game/Text.h"
#include "game/sound/Mixer.h"
#include "tests/fuzz/Bytes.h"
#include "tests/fuzz/Require.h"
#include "tests/support/Arenas.h"

#include <chrono>
#include <cmath>
#include <string>
#include <string_view>
#include <variant>

using namespace drench;
using namespace drench::game;

namespace {

constexpr char ownId = '1';

/// Characters of a name once bytes that cannot be drawn have become three each.
constexpr std::size_t longestDrawn = 3 * sizeof PlayerUpdate::name;

void requireDrawable(const std::string& text, std::size_t longest) {
    require(drawable(text) == text, "texts can be drawn as they are");
    require(text.size() <= longest, "texts are not longer than what came");
}

class Watch {
  public:
    void take(std::string_view datagram, int ticks) {
        const client::RoomRecord record = client::readRecord(datagram);
        now_ += std::chrono::milliseconds(16);
        if (const auto* state = std::get_if<UpdateMessage>(&record)) {
            tick_ += ticks;
            take(client::Snapshot{*state, tick_, now_});
        } else if (const auto* talk = std::get_if<TalkMessage>(&record)) {
            const std::string text(client::untilZero({talk->text, sizeof talk->text}));
            if (talk->id == serverSpeaker)
                take(client::parseNotice(text));
            else
                take(client::Chat{talk->id, text});
        } else if (const auto* accepted = std::get_if<AcceptanceMessage>(&record)) {
            take(client::Joined{accepted->id});
        }
        check();
    }

    void listen() {
        const Listener listener{{1000.0f, 139.0f, 1000.0f}, {0.0f, 0.0f, 1.0f}};
        captions_.hear(ears_.cues(), listener, now_);
        mixer_.listenFrom(listener);
        mixer_.setJets(ears_.jets());
        for (const Cue& cue : ears_.cues())
            mixer_.play(cue);
        ears_.forget();
        require(captions_.linesAt(now_).size() <= Captions::mostLines, "captions are few");
        float samples[128];
        mixer_.pull(samples);
        for (const float sample : samples)
            require(std::fabs(sample) <= 1.0f, "no sample clips or is no number");
    }

  private:
    void take(const client::Event& event) {
        match_.take(event, now_);
        ears_.take(event, ownId, {});
        if (const auto* snapshot = std::get_if<client::Snapshot>(&event))
            finder_.see(*snapshot);
    }

    void check() const {
        require(match_.players().size() <= maxPlayers, "there are four players at most");
        require(match_.notices().size() <= Match::mostNotices, "notices are bounded");
        require(match_.said().size() <= Match::mostSaid, "chat is bounded");
        char last = 0;
        for (const MatchPlayer& player : match_.players()) {
            require(player.id > last, "players are ordered, and no two alike");
            last = player.id;
            requireDrawable(player.name, longestDrawn);
            requireDrawable(player.soakedBy, longestDrawn);
            const double left = secondsUntilReturn(player, now_);
            require(left >= 0.0 && left <= 4.0, "a return is due within four seconds");
        }
        for (const MatchNotice& notice : match_.notices())
            requireDrawable(notice.words, 3 * longestDrawn);
        for (const SaidLine& line : match_.said())
            requireDrawable(line.words, 3 * longestDrawn);
        require(ears_.jets().size() <= maxPlayers, "each player has one jet");
        require(finder_.best() == 0, "the only arena is the best");
    }

    static const MapManager& arena() {
        static const MapManager map = loaded(emptyCourt());
        return map;
    }

    static const SoundBank& bank() {
        static const SoundBank made(1);
        return made;
    }

    client::Time now_{};
    std::int64_t tick_ = 0;
    Match match_;
    Ears ears_{arena()};
    Captions captions_;
    ArenaFinder finder_{{&arena()}};
    Mixer mixer_{bank()};
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    constexpr std::size_t lengths[] = {sizeof(UpdateMessage), sizeof(TalkMessage),
                                       sizeof(AcceptanceMessage), sizeof(UpdateMessage)};
    constexpr char codes[] = {messageCode::worldState, messageCode::chat, messageCode::accepted,
                              messageCode::worldState};
    Bytes bytes(data, size);
    Watch watch;
    while (!bytes.isEmpty()) {
        const auto what = bytes.next<std::uint8_t>();
        const std::size_t kind = what % 4u;
        std::string record = bytes.text(lengths[kind] - 1);
        record.resize(lengths[kind] - 1);
        watch.take(codes[kind] + record, what / 4 % 8);
        if (what >= 128)
            watch.listen();
    }
    return 0;
}
