#include "game/Frame.h"

#include "bots/Play.h"
#include "common/Files.h"
#include "game/FigureSight.h"

#include <algorithm>
#include <iostream>
#include <utility>

namespace drench::game {

namespace {

/// Where the drops of water fly follows from it.
constexpr std::uint64_t dropSeed = 1;

/// What a bot does that plays here follows from it.
constexpr std::uint64_t botSeed = 1;

double secondsBetween(client::Time from, client::Time to) {
    return std::chrono::duration<double>(to - from).count();
}

/// Above a corner of the arena, seeing all of it: for whoever has no body yet.
Camera overview(const MapManager& map) {
    Camera camera;
    const glm::vec3 middle = glm::vec3(map.width, 0.4f * map.height, map.length) * 0.5f;
    camera.eye = middle + glm::vec3(0.55f * map.width, 1.3f * map.height, 0.7f * map.length);
    camera.direction = middle - camera.eye;
    return camera;
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

Frame::Frame(Window& window, std::vector<KnownArena>& arenas, const ArenaMesh& mesh,
             Settings settings, KeepSettings keep)
    : window_(window), arenas_(arenas), settings_(std::move(settings)), keep_(std::move(keep)),
      renderer_(mesh), overlay_(window), pacing_(frameRate(settings_, window)),
      staging_(map(), dropSeed), opened_(client::Clock::now()), begin_(opened_) {
    scene_.camera = overview(map());
    applySettings();
}

void Frame::letBotPlay(const bots::Roadmap& roadmap, double skill) {
    roadmap_ = &roadmap;
    botSkill_ = skill;
}

void Frame::run() {
    waitUntilDue();
    const client::Time begin = client::Clock::now();
    const client::Time before = std::exchange(begin_, begin);
    sinceLast_ = std::min(secondsBetween(before, begin), longestStickTime);
    pacing_.begin(begin);
    const std::chrono::nanoseconds processor = threadProcessorTime();
    takeInputs();
    serviceRoom(begin);
    changeArena();
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
    // Whoever writes a line of chat still looks around.
    capture_.setMenu(!gameHasInput && visit_.screens().panel() != Screens::Panel::chat);
    pacing_.calm(visit_.screens().isCalm() || !isFocused_);
    if (capture_.holdsMouse())
        turning_.moveMouse(events.mouseX, events.mouseY, settings_.sensitivity,
                           {settings_.invertX, settings_.invertY});
    if (gameHasInput && isFocused_)
        turning_.holdStick(events.stickX, events.stickY, sinceLast_, settings_.stickSensitivity,
                           {settings_.invertX, settings_.invertY});
    window_.captureMouse(capture_.holdsMouse());
    const ViewCounts counts = turning_.take();
    if (counts != ViewCounts{} && visit_.session())
        visit_.session()->turn(counts.dx, counts.dy);
}

void Frame::takeFocus(bool focused) {
    capture_.setFocus(focused);
    isFocused_ = focused;
    if (focused) {
        held_.gainFocus();
    } else {
        for (const ActionChange& ended : held_.loseFocus())
            act(ended);
    }
}

void Frame::releaseAll() {
    for (const ActionChange& ended : held_.releaseAll())
        act(ended);
    turning_.forget();
}

void Frame::press(const WindowEvents::Press& press) {
    if (press.down && press.input.device == Input::Device::mouse && capture_.click())
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
    overlay_.act(change, visit_);
}

void Frame::serviceRoom(client::Time now) {
    visit_.service(now, {[&](client::Session& session) {
                             if (bodies_)
                                 bodies_->serviced(session, now);
                         },
                         [&](const client::Event& event, client::Session& session) {
                             take(event, session, now);
                         }});
}

void Frame::take(const client::Event& event, client::Session& session, client::Time now) {
    if (std::holds_alternative<client::Joined>(event)) {
        bodies_.emplace(map());
        ears_.emplace(map());
        beginJudging();
        if (roadmap_)
            bot_.emplace(*roadmap_, botSkill_, botSeed);
        if (!visit_.isHosting() && isLasting(visit_.screens().room())) {
            rememberRoom(settings_, visit_.screens().room());
            changed_ = now;
        }
    }
    if (!bodies_)
        return;
    const auto* snapshot = std::get_if<client::Snapshot>(&event);
    if (snapshot)
        bodies_->take(*snapshot, session);
    ears_->take(event, session.id(), bodies_->own(now));
    if (!snapshot)
        return;
    judgeArena(*snapshot);
    for (; acted_ < script_.size() && script_[acted_].tick <= snapshot->tick; ++acted_)
        act(script_[acted_], session);
    const PlayerUpdate* const self = session.self(snapshot->state);
    if (bot_ && self)
        bots::send(session, bot_->decide(bodies_->shown(*self, now, settings_.showWhereShotsMeet),
                                         self->id));
}

void Frame::beginJudging() {
    judged_ = {arena_};
    for (std::size_t arena = 0; arena < arenas_.size(); ++arena) {
        if (arena != arena_)
            judged_.push_back(arena);
    }
    std::vector<const MapManager*> maps;
    maps.reserve(judged_.size());
    for (const std::size_t arena : judged_)
        maps.push_back(&arenas_[arena].map);
    finder_.emplace(std::move(maps));
    isArenaUnknown_ = false;
}

/// Has the surface of the arena made that fits what is seen, if it is not the one shown.
void Frame::judgeArena(const client::Snapshot& snapshot) {
    finder_->see(snapshot);
    if (finder_->verdict() == ArenaFinder::Verdict::none && !isArenaUnknown_) {
        isArenaUnknown_ = true;
        overlay_.warn("This room plays an arena that is not known here. Put its file into " +
                      arenaFolders().front() + ", or name it with --arena.");
    }
    const std::size_t best = judged_[finder_->best()];
    if (best == nextArena_)
        return;
    nextArena_ = best;
    nextMesh_ = std::async(std::launch::async, [&map = arenas_[best].map] { return meshOf(map); });
}

/// Shows the arena whose surface is ready.
void Frame::changeArena() {
    if (!nextMesh_.valid() ||
        nextMesh_.wait_for(std::chrono::seconds(0)) != std::future_status::ready)
        return;
    const ArenaMesh mesh = nextMesh_.get();
    if (nextArena_ == arena_)
        return;
    arena_ = nextArena_;
    renderer_.setArena(mesh);
    staging_ = Staging(map(), dropSeed);
    bodies_.emplace(map());
    ears_.emplace(map());
}

void Frame::compose(client::Time now) {
    const double time = secondsBetween(opened_, now);
    const auto seconds = static_cast<float>(time - scene_.time);
    scene_.time = time;
    scene_.camera.fieldOfView = fieldOfViewFrom(static_cast<float>(settings_.fieldOfView));
    if (visit_.screens().place() == Screens::Place::start) {
        bodies_.reset();
        ears_.reset();
        scene_.camera = overview(map());
    }
    const bool isPlaying = visit_.screens().place() == Screens::Place::match && bodies_;
    std::optional<OwnBody> own;
    std::vector<PlayerUpdate> others;
    if (isPlaying) {
        // While soaked, the eye stays where it was.
        if (const std::optional<client::Prediction::Body> body = bodies_->own(now)) {
            scene_.camera.eye = onScreen(body->eye);
            scene_.camera.direction = onScreen(body->player.direction);
            own = {visit_.match().ownId(), scene_.camera.eye, scene_.camera.direction,
                   body->player.isShooting()};
        }
        others = bodies_->others(now, settings_.showWhereShotsMeet);
    }
    staging_.show(scene_, own, others, seconds, settings_.lessMotion);
    nameFigures();
    scene_.soaked.reset();
    if (const MatchPlayer* self = visit_.match().self(); isPlaying && self && self->soakedSince)
        scene_.soaked =
            SoakedOverlay{static_cast<float>(secondsBetween(*self->soakedSince, now)),
                          static_cast<float>(secondsUntilReturn(*self, now)), self->soakedBy};
}

void Frame::nameFigures() {
    const Palette palette = settings_.colourBlind ? Palette::colourBlind : Palette::usual;
    for (FigurePose& figure : scene_.figures) {
        figure.palette = palette;
        if (const MatchPlayer* known = visit_.match().player(figure.id))
            figure.name = known->name;
    }
    if (scene_.gun)
        scene_.gun->palette = palette;
    scene_.names = namesInSight(staging_.grid(), scene_.camera.eye, scene_.figures);
}

void Frame::sound(client::Time now) {
    Heard heard;
    heard.volume = settings_.masterVolume * settings_.effectsVolume;
    if (ears_ && visit_.screens().place() == Screens::Place::match) {
        heard.listener = {inGame(scene_.camera.eye), inGame(scene_.camera.direction)};
        heard.cues = ears_->cues();
        heard.jets = ears_->jets();
        captions_.hear(heard.cues, heard.listener, now);
    }
    soundDevice_.play(heard, now);
    if (!soundDevice_.problem().empty() && !std::exchange(saidSilence_, true))
        std::cerr << "Nothing can be heard: " << soundDevice_.problem() << '\n';
    if (ears_)
        ears_->forget();
}

void Frame::drawOverlay(client::Time now) {
    Overlay::View view;
    view.now = now;
    view.scene = &scene_;
    view.bodies = bodies_ ? &*bodies_ : nullptr;
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

void Frame::act(const bots::Action& action, client::Session& session) {
    using Kind = bots::Action::Kind;
    switch (action.kind) {
    case Kind::hold:
    case Kind::release:
        session.setKey(action.key, action.kind == Kind::hold);
        break;
    case Kind::jump:
        session.setKey(keyIndex::jump, true);
        break;
    case Kind::turn:
        session.turn(action.dx, action.dy);
        break;
    case Kind::say:
        session.say(action.text);
        break;
    case Kind::leave:
        isClosed_ = true;
        break;
    }
}

} // namespace drench::game
