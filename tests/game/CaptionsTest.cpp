#include "game/Captions.h"

#include <chrono>
#include <gtest/gtest.h>

using namespace drench;
using namespace drench::game;

namespace {

using std::chrono::milliseconds;

/// Looks along z from the origin, with the right at -x.
const Listener listener;

constexpr vec3 left{300.0f, 0.0f, 10.0f};
constexpr vec3 right{-300.0f, 0.0f, 10.0f};
constexpr vec3 ahead{10.0f, 0.0f, 300.0f};
constexpr vec3 behind{10.0f, 0.0f, -300.0f};

std::vector<std::string> wordsOf(Captions& captions, client::Time now) {
    std::vector<std::string> words;
    for (const Captions::Line& line : captions.linesAt(now))
        words.push_back(line.words);
    return words;
}

using Words = std::vector<std::string>;

} // namespace

TEST(Captions, NameTheSoundAndItsSide) {
    EXPECT_EQ(captionOf({Sound::splash, left}, listener), "splash, left");
    EXPECT_EQ(captionOf({Sound::jet, right}, listener), "water jet, right");
    EXPECT_EQ(captionOf({Sound::step, behind, 1.0f, 3}, listener), "steps on wood, behind");
    EXPECT_EQ(captionOf({Sound::landing, ahead}, listener), "thud, ahead");
    EXPECT_EQ(captionOf({Sound::jump, vec3(20.0f, 0.0f, 20.0f)}, listener), "jump")
        << "too near for a side";
    EXPECT_EQ(captionOf({Sound::spawn, ahead}, listener), "chime, ahead");
}

TEST(Captions, OwnMovementNeedsNone) {
    const auto ownCaption = [](Sound sound, std::optional<vec3> place) {
        return captionOf({sound, place, 1.0f, 0, true}, listener);
    };
    for (const Sound sound : {Sound::jet, Sound::step, Sound::jump, Sound::landing})
        EXPECT_EQ(ownCaption(sound, {}), "");
    EXPECT_EQ(ownCaption(Sound::splash, ahead), "") << "where one's own jet lands";
    EXPECT_EQ(ownCaption(Sound::soaking, {}), "cheer");
    EXPECT_EQ(ownCaption(Sound::soaked, {}), "gurgle");
    EXPECT_EQ(ownCaption(Sound::spawn, {}), "chime");
    EXPECT_EQ(captionOf({Sound::chat, {}}, listener), "tick");
}

TEST(Captions, StayForAMomentAndLongerWhenHeardAgain) {
    Captions captions;
    const client::Time start{};
    const std::vector<Cue> splash{{Sound::splash, left}};
    captions.hear(splash, listener, start);
    EXPECT_EQ(wordsOf(captions, start + milliseconds(1500)), Words{"splash, left"});
    captions.hear(splash, listener, start + milliseconds(1500));
    EXPECT_EQ(wordsOf(captions, start + milliseconds(3000)), Words{"splash, left"});
    EXPECT_EQ(wordsOf(captions, start + milliseconds(3001)), Words());
}

TEST(Captions, OldestLineGoesIfThereAreTooMany) {
    Captions captions;
    client::Time now{};
    for (const vec3 place : {left, right, ahead, behind}) {
        captions.hear(std::vector<Cue>{{Sound::splash, place}}, listener, now);
        now += milliseconds(10);
    }
    captions.hear(std::vector<Cue>{{Sound::splash, left}}, listener, now);
    captions.hear(std::vector<Cue>{{Sound::chat, {}}}, listener, now);
    EXPECT_EQ(wordsOf(captions, now),
              (Words{"splash, left", "splash, ahead", "splash, behind", "tick"}));
}

TEST(Captions, WhatIsTooFarAwayIsLeftOut) {
    Captions captions;
    captions.hear(std::vector<Cue>{{Sound::step, vec3(0.0f, 0.0f, 700.0f), 0.6f, 3},
                                   {Sound::splash, vec3(0.0f, 0.0f, 700.0f), 1.0f}},
                  listener, {});
    EXPECT_EQ(wordsOf(captions, {}), Words{"splash, ahead"});
}
