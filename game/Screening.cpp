#include "game/Screening.h"

#include "src/Player.h"

#include <algorithm>
#include <utility>

namespace drench::game {

namespace {

/// Seconds of one leap by key.
constexpr double leap = 5.0;

/// Seconds: nobody watched while a machine or a program stood still.
constexpr double longestPass = 0.5;

constexpr int leftButton = 1;
constexpr int rightButton = 3;

Spectator::View viewAfter(Spectator::View view) {
    switch (view) {
    case Spectator::View::eye:
        return Spectator::View::following;
    case Spectator::View::following:
        return Spectator::View::flying;
    case Spectator::View::flying:
        break;
    }
    return Spectator::View::eye;
}

} // namespace

Screening::Screening(OpenedRecording opened)
    : title_(std::move(opened.title)), problems_(std::move(opened.problems)),
      map_(std::move(opened.map)), watching_(std::move(opened.playback), *map_) {}

bool Screening::press(Input input, bool down) {
    if (input.device == Input::Device::mouse &&
        (input.number == leftButton || input.number == rightButton)) {
        isDragging_ = down;
        return true;
    }
    flight_.press(input, down);
    const std::optional<WatchCommand> command = watchCommandOf(input);
    if (command && down)
        act(*command);
    return command.has_value();
}

void Screening::releaseAll() {
    flight_.releaseAll();
    isDragging_ = false;
}

void Screening::act(WatchCommand command) {
    Playback& playback = watching_.playback();
    Spectator& spectator = watching_.spectator();
    switch (command) {
    case WatchCommand::pause:
        playback.setPaused(!playback.isPaused());
        break;
    case WatchCommand::back:
        playback.seek(playback.moment() - leap);
        break;
    case WatchCommand::ahead:
        playback.seek(playback.moment() + leap);
        break;
    case WatchCommand::toBegin:
        playback.seek(playback.begin());
        break;
    case WatchCommand::toEnd:
        playback.seek(playback.end());
        break;
    case WatchCommand::lastSoaking:
        playback.seekLastSoaking();
        break;
    case WatchCommand::nextSoaking:
        playback.seekNextSoaking();
        break;
    case WatchCommand::slower:
        playback.slower();
        break;
    case WatchCommand::faster:
        playback.faster();
        break;
    case WatchCommand::nextView:
        spectator.setView(viewAfter(spectator.view()));
        break;
    case WatchCommand::firstPlayer:
    case WatchCommand::secondPlayer:
    case WatchCommand::thirdPlayer:
    case WatchCommand::fourthPlayer:
        spectator.watch(static_cast<char>('1' + static_cast<int>(command) -
                                          static_cast<int>(WatchCommand::firstPlayer)));
        break;
    }
}

void Screening::turn(ViewCounts counts) {
    watching_.spectator().turn(static_cast<float>(counts.dx / Player::countsPerRadian),
                               static_cast<float>(-counts.dy / Player::countsPerRadian));
}

void Screening::pass(double seconds, const Settings& settings, Scene& scene) {
    const double passed = std::min(seconds, longestPass);
    watching_.spectator().fly(flight_.way(), static_cast<float>(passed));
    watching_.pass(passed, settings, scene);
}

} // namespace drench::game
