#include "game/Overlay.h"

#include "game/Dressing.h"
#include "game/ui/PlaybackBar.h"
#include "game/ui/PlayerTable.h"
#include "src/FilePath.h"

#include <algorithm>
#include <chrono>
#include <utility>

namespace drench::game {

namespace {

using Panel = Screens::Panel;
using Place = Screens::Place;

/// In a room with bots on this machine; with the player it is full.
constexpr int hostedBots = 3;

/// For which news are shown.
constexpr std::chrono::seconds newsTime{6};

bool clicksOnBar(const Theme& theme, std::span<const SDL_Event> events) {
    return std::ranges::any_of(events, [&](const SDL_Event& event) {
        return event.type == SDL_MOUSEBUTTONDOWN &&
               isOnPlaybackBar(theme, static_cast<float>(event.button.x),
                               static_cast<float>(event.button.y));
    });
}

} // namespace

std::vector<WindowEvents::Press> Overlay::take(const WindowEvents& events, Visit& visit,
                                               Settings& settings) {
    // What opens a panel is not for it, so who had the input at first gets all of these.
    Screens& screens = visit.screens();
    const bool gameHadInput = screens.gameHasInput();
    const bool chatHadInput = screens.panel() == Panel::chat;
    const bool keysWaited = settingsPage_.keys().isWaiting();
    if (chatHadInput) {
        std::string words;
        const ChatBox::Outcome outcome = chat_.take(events.all, words);
        if (outcome == ChatBox::Outcome::said && visit.session())
            visit.session()->say(words);
        if (outcome != ChatBox::Outcome::writing)
            screens.closePanel();
    } else if (!gameHadInput && !keysWaited) {
        interface_.take(events.all);
    } else if (screens.place() == Place::watching) {
        interface_.takeMouse(events.all);
    }
    const bool isPointing =
        screens.place() == Place::watching && clicksOnBar(interface_.theme(), events.all);
    std::vector<WindowEvents::Press> left;
    for (const WindowEvents::Press& press : events.presses) {
        if (press.down && isPointing && press.input.device == Input::Device::mouse)
            continue;
        // The game hears of all that goes up, since it may have gone down there.
        if (!press.down || (gameHadInput && screens.gameHasInput()))
            left.push_back(press);
        else if (!gameHadInput && !chatHadInput)
            takePress(press, visit, settings);
    }
    return left;
}

void Overlay::takePress(const WindowEvents::Press& press, Visit& visit, Settings& settings) {
    if (settingsPage_.keys().isWaiting())
        settingsChanged_ |= settingsPage_.keys().take(settings.bindings, press.input);
    else if (settings.bindings.actionOf(press.input) == Action::menu && !interface_.writesText())
        visit.screens().escape();
}

void Overlay::act(const ActionChange& change, Visit& visit) {
    switch (change.action) {
    case Action::table:
        showsTable_ = change.held;
        break;
    case Action::chat:
        if (change.held)
            visit.screens().openChat();
        break;
    case Action::menu:
        if (change.held)
            visit.screens().escape();
        break;
    case Action::diagnostics:
        if (change.held)
            showsDiagnostics_ = !showsDiagnostics_;
        break;
    default:
        break;
    }
}

void Overlay::service(const Visit& visit, const Settings& settings, client::Time now) {
    const bool areShown = visit.screens().place() == Place::start;
    const std::vector<std::string> wanted = areShown ? settings.rooms : std::vector<std::string>();
    if (wanted != shownRooms_) {
        shownRooms_ = wanted;
        rooms_.show(wanted);
    }
    rooms_.service(now);
    if (areShown && !std::exchange(wasAtStart_, areShown) && !lookingForRecordings_.valid())
        lookingForRecordings_ =
            std::async(std::launch::async, [] { return recordingsIn(recordingsFolder()); });
    wasAtStart_ = areShown;
    if (lookingForRecordings_.valid() &&
        lookingForRecordings_.wait_for(std::chrono::seconds(0)) == std::future_status::ready)
        recordings_ = lookingForRecordings_.get();
}

bool Overlay::draw(const View& view, Visit& visit, Settings& settings) {
    interface_.begin(settings.interfaceScale);
    if (visit.screens().place() == Place::match || visit.screens().place() == Place::watching)
        drawMatch(view, visit, settings);
    bool changed = drawPanel(view, visit, settings);
    interface_.draw();
    changed |= std::exchange(settingsChanged_, false);
    return changed;
}

void Overlay::drawMatch(const View& view, const Visit& visit, const Settings& settings) {
    const Theme& theme = interface_.theme();
    const Palette palette = paletteOf(settings);
    const Match& match = *view.match;
    const ImVec2 size = ImGui::GetIO().DisplaySize;
    const bool isOpen = visit.screens().gameHasMouse();
    HudView hud;
    hud.now = view.matchNow;
    hud.palette = palette;
    hud.hasCrosshair = isOpen && !showsTable_ && match.self() && !match.self()->soakedSince;
    if (size.y > 0.0f)
        hud.labels = labelsOf(*view.scene, size.x / size.y);
    hud.captions = view.captions;
    const bool hasBar = view.screening && visit.screens().panel() == Panel::none;
    hud.foot = hasBar ? playbackBarHeight : 0.0f;
    addLines(hud, view, visit);
    drawHud(theme, match, hud);
    chat_.draw(theme, match, palette, view.matchNow, visit.screens().panel() == Panel::chat,
               hud.foot);
    if (hasBar)
        drawPlaybackBar(theme, view.screening->watching(), palette);
    if (showsDiagnostics_)
        drawDiagnostics(theme, diagnosticsOf(view, visit));
    if (showsTable_ && isOpen)
        drawPlayerTable(theme, match, palette, visit.screens().room());
}

void Overlay::addLines(HudView& hud, const View& view, const Visit& visit) {
    hud.warnings = warnings_;
    if (view.screening) {
        hud.warnings.insert(hud.warnings.end(), view.screening->problems().begin(),
                            view.screening->problems().end());
    } else {
        if (!view.arenaTrouble->empty())
            hud.warnings.push_back(*view.arenaTrouble);
        if (std::string words = visit.line().words(); !words.empty())
            hud.warnings.push_back(std::move(words));
    }
    std::erase_if(news_, [&](const News& each) { return view.now - each.moment > newsTime; });
    for (const News& each : news_)
        hud.news.push_back(each.words);
    if (view.recorder->isRecording())
        hud.recordingSeconds = view.recorder->seconds(view.now);
}

DiagnosticsView Overlay::diagnosticsOf(const View& view, const Visit& visit) const {
    DiagnosticsView shown;
    shown.frames = view.frames;
    shown.frameBudget = view.frameBudget;
    if (view.bodies) {
        const client::Prediction& prediction = view.bodies->prediction();
        shown.tick = prediction.tick();
        shown.period = prediction.line().period();
        shown.jitter = prediction.line().latenessSpread();
        shown.explainedShare = prediction.statistics().explainedShare();
        shown.breaks = prediction.statistics().breaks;
        shown.hypotheses = prediction.hypotheses();
    }
    shown.roundTrip = visit.roundTrip();
    shown.lossShare = visit.line().lossShare();
    shown.missedShare = visit.line().missedShare();
    return shown;
}

bool Overlay::drawPanel(const View& view, Visit& visit, Settings& settings) {
    const Theme& theme = interface_.theme();
    Screens& screens = visit.screens();
    if (screens.panel() == Panel::settings) {
        const SettingsPage::Outcome outcome = settingsPage_.draw(theme, settings, view.screenRate);
        if (outcome.closed)
            screens.closePanel();
        return outcome.changed;
    }
    // A list of keys that was closed waits for none.
    settingsPage_.keys().stopWaiting();
    std::optional<RoomChoice> choice;
    switch (screens.place()) {
    case Place::start:
        return drawStart(view, visit, settings);
    case Place::joining:
    case Place::trouble:
        choice = drawWay(theme, screens, view.now);
        break;
    case Place::match:
    case Place::watching:
        if (screens.panel() == Panel::menu)
            choice = drawMenu(theme, screens);
        break;
    }
    if (choice)
        choose(*choice, view.now, visit);
    return false;
}

bool Overlay::drawStart(const View& view, Visit& visit, Settings& settings) {
    const StartPage::Outcome outcome =
        startPage_.draw(interface_.theme(), settings, rooms_, recordings_, recordingsRemark_);
    if (outcome.hosts)
        visit.host(getAppPath(), hostedBots, settings.name, view.now);
    else if (!outcome.room.empty())
        visit.join(outcome.room, settings.name, view.now);
    if (!outcome.recording.empty())
        chosenRecording_ = outcome.recording;
    if (outcome.opensSettings)
        visit.screens().openSettings();
    hasQuit_ = hasQuit_ || outcome.quits;
    return outcome.changed;
}

void Overlay::choose(RoomChoice choice, client::Time now, Visit& visit) {
    switch (choice) {
    case RoomChoice::resume:
        visit.screens().closePanel();
        break;
    case RoomChoice::settings:
        visit.screens().openSettings();
        break;
    case RoomChoice::tryNow:
        visit.joinAgain(now);
        break;
    case RoomChoice::stopTrying:
        visit.screens().stopTrying();
        break;
    case RoomChoice::leave:
        visit.leave(now);
        break;
    case RoomChoice::quit:
        hasQuit_ = true;
        break;
    }
}

} // namespace drench::game
