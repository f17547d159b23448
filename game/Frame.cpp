#include "game/Frame.h"

#include "bots/Ending.h"
#include "game/FigureSight.h"

#include <algorithm>
#include <utility>

namespace drench::game {

namespace {

/// Where the drops of water fly follows from it.
constexpr std::uint64_t dropSeed = 1;

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

} // namespace

Frame::Frame(Window& window, client::Session session, MapManager& map, const ArenaMesh& mesh,
             Settings settings)
    : window_(window), session_(std::move(session)), settings_(std::move(settings)),
      renderer_(mesh), pacing_(frameRate(settings_, window)), bodies_(map), staging_(map, dropSeed),
      opened_(client::Clock::now()) {
    held_.setToggledFire(settings_.toggleFire);
    scene_.camera = overview(map);
}

void Frame::run() {
    waitUntilDue();
    const client::Time begin = client::Clock::now();
    pacing_.begin(begin);
    takeInputs();
    serviceRoom(begin);
    compose(begin);
    drawAgain();
    window_.show();
    times_.add(client::Clock::now() - begin);
}

void Frame::drawAgain() {
    const PixelSize size = window_.size();
    renderer_.draw(scene_, size.width, size.height);
}

void Frame::waitUntilDue() {
    // The room is heard whenever something comes, so that its arrivals are known to the
    // microsecond however long frames are.
    client::Time now = client::Clock::now();
    while (now < pacing_.due()) {
        sleepOnSocket(session_.descriptor(), now, std::min(pacing_.due(), session_.wakeAt()));
        now = client::Clock::now();
        serviceRoom(now);
        if (!session_.isOpen())
            return;
    }
}

void Frame::takeInputs() {
    const WindowEvents events = window_.takeEvents();
    isClosed_ = isClosed_ || events.closed;
    if (events.visible)
        pacing_.rest(!*events.visible);
    for (const WindowEvents::Press& each : events.presses)
        press(each);
    if (capture_.holdsMouse())
        turning_.moveMouse(events.mouseX, events.mouseY, settings_.sensitivity,
                           {settings_.invertX, settings_.invertY});
    if (events.focus) {
        capture_.setFocus(*events.focus);
        if (*events.focus)
            held_.gainFocus();
        for (const ActionChange& ended :
             *events.focus ? std::vector<ActionChange>{} : held_.loseFocus())
            act(ended);
    }
    window_.captureMouse(capture_.holdsMouse());
    const ViewCounts counts = turning_.take();
    if (counts != ViewCounts{})
        session_.turn(counts.dx, counts.dy);
}

void Frame::press(const WindowEvents::Press& press) {
    if (press.down && press.input == escape)
        capture_.release();
    if (press.down && press.input.device == Input::Device::mouse && capture_.click())
        return;
    if (const auto change = held_.press(settings_.bindings, press.input, press.down))
        act(*change);
}

void Frame::act(const ActionChange& change) {
    if (const std::optional<int> key = roomKey(change.action))
        session_.setKey(*key, change.held);
}

void Frame::serviceRoom(client::Time now) {
    session_.service(now);
    bodies_.serviced(session_, now);
    while (const std::optional<client::Event> event = session_.nextEvent())
        take(*event, now);
}

void Frame::take(const client::Event& event, client::Time now) {
    match_.take(event, now);
    if (trouble_.empty())
        trouble_ = bots::endingBy(event);
    if (std::holds_alternative<client::Joined>(event))
        hasJoined_ = true;
    const auto* snapshot = std::get_if<client::Snapshot>(&event);
    if (!snapshot)
        return;
    bodies_.take(*snapshot, session_);
    for (; acted_ < script_.size() && script_[acted_].tick <= snapshot->tick; ++acted_)
        act(script_[acted_]);
}

void Frame::compose(client::Time now) {
    const double time = secondsBetween(opened_, now);
    const auto seconds = static_cast<float>(time - scene_.time);
    scene_.time = time;
    scene_.camera.fieldOfView = fieldOfViewFrom(static_cast<float>(settings_.fieldOfView));
    std::optional<OwnBody> own;
    // While soaked, the eye stays where it was.
    if (const std::optional<client::Prediction::Body> body = bodies_.own(now)) {
        scene_.camera.eye = onScreen(body->eye);
        scene_.camera.direction = onScreen(body->player.direction);
        own = {session_.id(), scene_.camera.eye, scene_.camera.direction,
               body->player.isShooting()};
    }
    staging_.show(scene_, own, bodies_.others(now, settings_.showWhereShotsMeet), seconds,
                  settings_.lessMotion);
    for (FigurePose& figure : scene_.figures) {
        if (const MatchPlayer* known = match_.player(figure.id))
            figure.name = known->name;
    }
    scene_.names = namesInSight(staging_.grid(), scene_.camera.eye, scene_.figures);
    scene_.soaked.reset();
    if (const MatchPlayer* self = match_.self(); self && self->soakedSince)
        scene_.soaked =
            SoakedOverlay{static_cast<float>(secondsBetween(*self->soakedSince, now)),
                          static_cast<float>(secondsUntilReturn(*self, now)), self->soakedBy};
}

void Frame::act(const bots::Action& action) {
    using Kind = bots::Action::Kind;
    switch (action.kind) {
    case Kind::hold:
    case Kind::release:
        session_.setKey(action.key, action.kind == Kind::hold);
        break;
    case Kind::jump:
        session_.setKey(keyIndex::jump, true);
        break;
    case Kind::turn:
        session_.turn(action.dx, action.dy);
        break;
    case Kind::say:
        session_.say(action.text);
        break;
    case Kind::leave:
        isClosed_ = true;
        break;
    }
}

} // namespace drench::game
