#include "game/Frame.h"

#include "arena/MapText.h"
#include "common/Files.h"

#include <algorithm>
#include <iostream>
#include <utility>

namespace drench::game {

namespace {

using Place = Screens::Place;

double secondsBetween(client::Time from, client::Time to) {
    return std::chrono::duration<double>(to - from).count();
}

/// Frames a second. A driver that draws with the processor draws none that the screen cannot show.
double frameRate(const Settings& settings, const Window& window) {
    const double limit = settings.frameLimit > 0 ? settings.frameLimit : window.screenRate();
    return window.drawsInSoftware() ? std::min(limit, window.screenRate()) : limit;
}

/// Seconds: after a pause a stick does not turn for all of it.
constexpr double longestStickTime = 0.1;

/// From the last change of a setting until all are kept, so that a slider writes one file.
constexpr std::chrono::milliseconds keepPause{700};

/// Systems choose ports from here on; such a room is not there another time.
constexpr int firstPassingPort = 32768;

/// Whether the room may be there another time.
bool isLasting(const std::string& room) {
    const std::size_t colon = room.rfind(':');
    const bool isHere = room.starts_with("localhost:") || room.starts_with("127.");
    return !isHere || colon == std::string::npos ||
           std::atoi(room.c_str() + colon + 1) < firstPassingPort;
}

} // namespace

Frame::Frame(Window& window, ShownArena& arena, Settings settings, KeepSettings keep)
    : window_(window), arena_(arena), settings_(std::move(settings)), keep_(std::move(keep)),
      renderer_(arena_.firstSurface()), overlay_(window), pacing_(frameRate(settings_, window)),
      recorder_(recordingsFolder()), senses_(arena_.map()), opened_(client::Clock::now()),
      begin_(opened_) {
    scene_.camera = overviewOf(arena_.map());
    visit_.recordInto(
        [this](const std::string& room, client::Time now) { return recorder_.enter(room, now); });
    applySettings();
}

void Frame::watch(OpenedRecording opened) {
    const ArenaMesh mesh = std::move(opened.mesh);
    screening_.emplace(std::move(opened));
    renderer_.setArena(mesh);
    visit_.screens().watch(screening_->title());
    scene_.camera = overviewOf(screening_->map());
    // The match begins now, however long this took.
    begin_ = client::Clock::now();
    sinceLast_ = 0.0;
}

void Frame::run() {
    waitUntilDue();
    const client::Time begin = client::Clock::now();
    const client::Time before = std::exchange(begin_, begin);
    sinceLast_ = secondsBetween(before, begin);
    pacing_.begin(begin);
    const std::chrono::nanoseconds processor = threadProcessorTime();
    takeInputs();
    serviceRoom(begin);
    changeArena();
    changeScreening();
    compose(begin);
    sound(begin);
    const PixelSize size = window_.size();
    const int calls = renderer_.draw(scene_, size.width, size.height, look());
    drawOverlay(begin);
    costs_.processor.add(threadProcessorTime() - processor);
    costs_.mostDrawCalls = std::max(costs_.mostDrawCalls, calls + overlay_.drawCalls());
    window_.show();
    const client::Time end = client::Clock::now();
    costs_.times.add(end - begin);
    if (!costs_.first)
        costs_.first = end;
    latestTimes_.add({static_cast<float>(1000.0 * secondsBetween(before, begin)),
                      static_cast<float>(1000.0 * secondsBetween(begin, end))});
    visit_.setFrameTime(latestTimes_.longestWork());
    if (changed_ && (begin - *changed_ > keepPause || !goesOn()))
        keepSettings();
}

void Frame::drawAgain() {
    const PixelSize size = window_.size();
    renderer_.draw(scene_, size.width, size.height, look());
    overlay_.drawAgain();
}

Look Frame::look() const {
    const bool inSoftware = window_.drawsInSoftware();
    return {isFull(settings_.picture, inSoftware), inSoftware, settings_.renderScale};
}

void Frame::waitUntilDue() {
    // The room is heard whenever something comes, so that its arrivals are known to the
    // microsecond however long frames are.
    std::vector<int> descriptors;
    client::Time now = client::Clock::now();
    overlay_.service(visit_, settings_, now);
    const client::Time end = pacing_.waitEnd(now);
    while (now < end) {
        descriptors.clear();
        visit_.addDescriptors(descriptors);
        overlay_.addDescriptors(descriptors);
        sleepOnSockets(descriptors, now, std::min(end, visit_.wakeAt(now)));
        now = client::Clock::now();
        serviceRoom(now);
        overlay_.service(visit_, settings_, now);
    }
}

void Frame::takeInputs() {
    const WindowEvents events = window_.takeEvents();
    isClosed_ = isClosed_ || events.closed;
    if (events.visible)
        pacing_.rest(!*events.visible);
    for (const WindowEvents::Press& each : overlay_.take(events, visit_, settings_))
        press(each);
    if (events.focus)
        takeFocus(*events.focus);
    const bool gameHasInput = visit_.screens().gameHasInput();
    if (gameHadInput_ && !gameHasInput)
        releaseAll();
    gameHadInput_ = gameHasInput;
    pacing_.calm(visit_.screens().isCalm() || !isFocused_);
    // Whoever watches needs the pointer for the bar.
    const bool gameHasMouse =
        isFocused_ && visit_.screens().gameHasMouse() && (!screening_ || screening_->isDragging());
    if (gameHasMouse)
        turning_.moveMouse(events.mouseX, events.mouseY, settings_.sensitivity,
                           {settings_.invertX, settings_.invertY});
    if (gameHasInput && isFocused_)
        turning_.holdStick(events.stickX, events.stickY, std::min(sinceLast_, longestStickTime),
                           settings_.stickSensitivity, {settings_.invertX, settings_.invertY});
    window_.captureMouse(gameHasMouse);
    const ViewCounts counts = turning_.take();
    if (screening_)
        screening_->turn(counts);
    else if (counts != ViewCounts{} && visit_.session())
        visit_.session()->turn(counts.dx, counts.dy);
}

void Frame::takeFocus(bool focused) {
    isFocused_ = focused;
    if (focused) {
        held_.gainFocus();
    } else {
        if (screening_)
            screening_->releaseAll();
        for (const ActionChange& ended : held_.loseFocus())
            act(ended);
    }
}

void Frame::releaseAll() {
    if (screening_)
        screening_->releaseAll();
    for (const ActionChange& ended : held_.releaseAll())
        act(ended);
    turning_.forget();
}

void Frame::press(const WindowEvents::Press& press) {
    if (screening_ && screening_->press(press.input, press.down))
        return;
    if (const auto change = held_.press(settings_.bindings, press.input, press.down))
        act(*change);
}

void Frame::act(const ActionChange& change) {
    const std::optional<int> key = roomKey(change.action);
    if (key && visit_.session())
        visit_.session()->setKey(*key, change.held);
    if (change.action == Action::fullScreen && change.held) {
        settings_.fullScreen = !settings_.fullScreen;
        window_.fillScreen(settings_.fullScreen);
        changed_ = begin_;
    }
    if (change.held)
        record(change.action, begin_);
    overlay_.act(change, visit_);
}

void Frame::record(Action action, client::Time now) {
    if (action != Action::record && action != Action::keepRecent)
        return;
    const bool needsArena = action == Action::keepRecent || !recorder_.isRecording();
    const std::string arena =
        needsArena && arena_.isCertain() ? arena::writeMapText(arena_.map()) : "";
    if (action == Action::record)
        recorder_.toggle(arena, now);
    else
        recorder_.keepRecent(arena);
}

void Frame::serviceRoom(client::Time now) {
    visit_.service(now, {[&](client::Session& session) { senses_.serviced(session, now); },
                         [&](const client::Event& event, client::Session& session) {
                             take(event, session, now);
                         }});
}

void Frame::take(const client::Event& event, client::Session& session, client::Time now) {
    senses_.take(event, session, now);
    if (std::holds_alternative<client::Joined>(event)) {
        arena_.enterRoom();
        autopilot_.enterArena(arena_.map());
        noteRoom(now);
    } else if (const auto* snapshot = std::get_if<client::Snapshot>(&event)) {
        arena_.see(*snapshot);
        autopilot_.act(*snapshot, session, [&](const PlayerUpdate& self) {
            return senses_.shown(self, now, settings_.showWhereShotsMeet);
        });
    }
}

/// The room let us in: it will be in the list of rooms.
void Frame::noteRoom(client::Time now) {
    if (visit_.isHosting() || !isLasting(visit_.screens().room()))
        return;
    rememberRoom(settings_, visit_.screens().room());
    changed_ = now;
}

void Frame::changeArena() {
    if (screening_)
        return;
    const MapManager* const before = &arena_.map();
    const std::optional<ArenaMesh> mesh = arena_.change();
    if (!mesh)
        return;
    renderer_.setArena(*mesh);
    if (&arena_.map() == before)
        return;
    senses_.changeArena(arena_.map());
    autopilot_.enterArena(arena_.map());
}

/// Opens what was chosen to be watched, and brings back the arena of the start when that is over.
void Frame::changeScreening() {
    openChosenRecording();
    if (opening_.valid() && opening_.wait_for(std::chrono::seconds(0)) == std::future_status::ready)
        takeOpenedRecording();
    if (screening_ && visit_.screens().place() != Place::watching) {
        screening_.reset();
        arena_.showAgain();
    }
}

void Frame::openChosenRecording() {
    if (std::string chosen = overlay_.takeChosenRecording(); !chosen.empty()) {
        // The latest choice counts.
        stopOpening_.request_stop();
        chosenRecording_ = std::move(chosen);
        overlay_.remarkRecordings("Opening the recording.");
    }
    if (chosenRecording_.empty() || opening_.valid())
        return;
    stopOpening_ = {};
    opening_ =
        std::async(std::launch::async, [&known = arena_.known(), stop = stopOpening_.get_token(),
                                        file = std::exchange(chosenRecording_, {})] {
            return openRecording(file, known, false, stop);
        });
}

void Frame::takeOpenedRecording() {
    std::string remark;
    try {
        OpenedRecording opened = opening_.get();
        if (!stopOpening_.stop_requested() && visit_.screens().place() == Place::start)
            watch(std::move(opened));
    } catch (const InputError& error) {
        remark = error.what();
    }
    if (!stopOpening_.stop_requested())
        overlay_.remarkRecordings(remark);
}

void Frame::compose(client::Time now) {
    const double time = secondsBetween(opened_, now);
    const auto seconds = static_cast<float>(time - scene_.time);
    scene_.time = time;
    if (visit_.screens().place() == Place::start) {
        senses_.forget();
        recorder_.leave(now);
        scene_.camera = overviewOf(arena_.map());
    }
    scene_.camera.fieldOfView = fieldOfViewFrom(static_cast<float>(settings_.fieldOfView));
    if (screening_)
        screening_->pass(sinceLast_, settings_, scene_);
    else
        senses_.show(scene_, settings_, visit_.screens().place() == Place::match, now, seconds);
}

void Frame::sound(client::Time now) {
    Heard heard;
    heard.volume = settings_.masterVolume * settings_.effectsVolume;
    Ears* const ears = senses_.ears();
    if (screening_) {
        heard.listener = {inGame(scene_.camera.eye), inGame(scene_.camera.direction)};
        heard.cues = screening_->watching().cues();
        heard.jets = screening_->watching().jets();
        captions_.hear(heard.cues, heard.listener, now);
    } else if (ears && visit_.screens().place() == Place::match) {
        heard.listener = {inGame(scene_.camera.eye), inGame(scene_.camera.direction)};
        heard.cues = ears->cues();
        heard.jets = ears->jets();
        captions_.hear(heard.cues, heard.listener, now);
    }
    soundDevice_.play(heard, now);
    if (!soundDevice_.problem().empty() && !std::exchange(saidSilence_, true))
        std::cerr << "Nothing can be heard: " << soundDevice_.problem() << '\n';
    if (ears)
        ears->forget();
}

void Frame::drawOverlay(client::Time now) {
    for (const std::string& words : recorder_.takeNews())
        overlay_.tell(words, now);
    Overlay::View view;
    view.now = now;
    view.scene = &scene_;
    view.match = screening_ ? &screening_->watching().match() : &senses_.match();
    view.matchNow = screening_ ? screening_->watching().playback().now() : now;
    view.screening = screening();
    view.recorder = &recorder_;
    view.bodies = senses_.bodies();
    view.arenaTrouble = &arena_.trouble();
    view.frames = &latestTimes_;
    if (settings_.captions)
        view.captions = &captions_.linesAt(now);
    view.frameBudget = 1000.0 / pacing_.rate();
    view.screenRate = window_.screenRate();
    if (!overlay_.draw(view, visit_, settings_))
        return;
    applySettings();
    changed_ = now;
}

void Frame::applySettings() {
    pacing_.setRate(frameRate(settings_, window_));
    window_.fillScreen(settings_.fullScreen);
    window_.waitForScreen(settings_.vsync);
    if (const auto ended = held_.setToggledFire(settings_.toggleFire))
        act(*ended);
}

void Frame::keepSettings() {
    changed_.reset();
    try {
        keep_(settings_);
    } catch (const InputError& error) {
        overlay_.warn(error.what());
    }
}

} // namespace drench::game
