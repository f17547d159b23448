#pragma once

#include "bots/Bot.h"
#include "tests/support/Room.h"

#include <cstdint>
#include <deque>
#include <memory>
#include <string>
#include <vector>

using namespace drench;

/// Bots that play each other in a Room: what they are given are the states that it sends, what they
/// do arrives as records in its queue. The same seed plays the same match.
class BotMatch {
  public:
    struct Setup {
        /// The arena's text, and what was charted of it.
        std::string arena;
        const bots::Roadmap& roadmap;

        /// One for each player.
        std::vector<double> skills;
        unsigned seed = 1;

        /// Ticks from a state to the records that answer it, beyond the one that is always there.
        int delay = 0;
    };

    explicit BotMatch(const Setup& setup);

    void play(int ticks);

    /// What became of one player.
    struct Score {
        int soaks = 0;
        int deaths = 0;

        /// Times that the fire key was held without a break, and how many of them soaked somebody.
        int bursts = 0;
        int burstsThatSoaked = 0;

        /// World units walked.
        double distance = 0.0;

        /// Ticks of the longest time alive within a square of 128 world units. Nobody stayed within
        /// 64 of any point for longer.
        int longestStay = 0;

        /// Lives that ended, and how many of them within four seconds of the return.
        int lives = 0;
        int shortLives = 0;
    };
    const std::vector<Score>& scores() const { return scores_; }
    int soaks() const;
    int longestStay() const;

    /// Where the bots are who live.
    std::vector<vec3> positions() const;

    /// The room, where others may join and be put where they are wanted.
    Room& room() { return room_; }

    /// A number for all that the bots decided so far.
    std::uint64_t decisions() const { return decisions_; }

  private:
    struct Seat {
        bots::Bot bot;
        std::unique_ptr<UdpPeer> peer;
        char id;

        /// Decisions on their way to the server.
        std::deque<Controls> sent;

        /// As last told, and ticks since everything was.
        Controls told;
        int sinceTold = 0;

        PlayerUpdate last;
        bool wasAlive = false;
        int lived = 0;
        bool burstSoaked = false;
        std::deque<vec3> stay;
    };

    UpdateMessage receive();
    void note(Seat& seat, Score& score, const PlayerUpdate& now);
    void hash(const Controls& controls);
    void send(Seat& seat, const Controls& controls);

    Room room_;
    std::vector<Seat> seats_;
    std::vector<Score> scores_;
    std::uint64_t decisions_ = 14695981039346656037u;
};
