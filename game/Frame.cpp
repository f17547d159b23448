#include "game/Frame.h"

#include "bots/Ending.h"
#include "game/OwnView.h"

#include <algorithm>
#include <utility>

namespace drench::game {

namespace {

/// Counts of the view for each count of the mouse.
constexpr double sensitivity = 0.5;

/// Degrees from left to right in a wide picture.
constexpr float fieldOfView = 90.0f;

} // namespace

Frame::Frame(Window& window, client::Session session, const MapManager& map, double frameLimit)
    : window_(window), session_(std::move(session)), renderer_(meshOf(map)),
      pacing_(frameLimit > 0.0 ? frameLimit : window.screenRate()) {
    scene_.camera.eye =
        glm::vec3(map.width, 1.5f * map.height, map.length) * glm::vec3(0.5f, 1.0f, 1.2f);
    scene_.camera.direction = {0.0f, -0.7f, -1.0f};
    scene_.camera.fieldOfView = fieldOfViewFrom(fieldOfView);
}

void Frame::run() {
    waitUntilDue();
    const client::Time begin = client::Clock::now();
    pacing_.begin(begin);
    takeInputs();
    serviceRoom(begin);
    const PixelSize size = window_.size();
    renderer_.draw(scene_, size.width, size.height);
    window_.show();
    times_.add(client::Clock::now() - begin);
}

void Frame::drawAgain() const {
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
        turning_.moveMouse(events.mouseX, events.mouseY, sensitivity, {});
    if (events.focus) {
        capture_.setFocus(*events.focus);
        if (*events.focus)
            held_.gainFocus();
        else
            for (const ActionChange& ended : held_.loseFocus())
                session_.setKey(*roomKey(ended.action), false);
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
    const std::optional<ActionChange> change = held_.press(bindings_, press.input, press.down);
    if (!change)
        return;
    if (const std::optional<int> key = roomKey(change->action))
        session_.setKey(*key, change->held);
}

void Frame::serviceRoom(client::Time now) {
    session_.service(now);
    while (const std::optional<client::Event> event = session_.nextEvent())
        take(*event);
}

void Frame::take(const client::Event& event) {
    if (trouble_.empty())
        trouble_ = bots::endingBy(event);
    if (std::holds_alternative<client::Joined>(event))
        hasJoined_ = true;
    const auto* snapshot = std::get_if<client::Snapshot>(&event);
    if (!snapshot)
        return;
    if (const PlayerUpdate* self = session_.self(snapshot->state))
        look(scene_.camera, *self);
    for (; acted_ < script_.size() && script_[acted_].tick <= snapshot->tick; ++acted_)
        act(script_[acted_]);
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
