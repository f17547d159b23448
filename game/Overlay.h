#pragma once

#include "client/Bodies.h"
#include "game/Captions.h"
#include "game/FrameTimes.h"
#include "game/HeldActions.h"
#include "game/OwnRecordings.h"
#include "game/Recorder.h"
#include "game/RoomList.h"
#include "game/Scene.h"
#include "game/Screening.h"
#include "game/Settings.h"
#include "game/Visit.h"
#include "game/Window.h"
#include "game/ui/ChatBox.h"
#include "game/ui/Diagnostics.h"
#include "game/ui/Hud.h"
#include "game/ui/Interface.h"
#include "game/ui/Menu.h"
#include "game/ui/SettingsPage.h"
#include "game/ui/StartPage.h"

#include <future>
#include <string>
#include <utility>
#include <vector>

namespace drench::game {

/// All that is said over the picture, and the input that belongs to it. It draws last and is asked
/// first whose an input is.
class Overlay {
  public:
    /// The window must outlive this.
    explicit Overlay(Window& window) : interface_(window.handle(), window.context()) {}

    /// Takes the inputs that are for it and returns those for the game.
    std::vector<WindowEvents::Press> take(const WindowEvents& events, Visit& visit,
                                          Settings& settings);

    /// An action of the overlay's own begins or ends.
    void act(const ActionChange& change, Visit& visit);

    /// Asks the rooms of the list while they are shown.
    void service(const Visit& visit, const Settings& settings, client::Time now);
    void addDescriptors(std::vector<int>& descriptors) const { rooms_.addDescriptors(descriptors); }

    /// What a frame shows apart from the visit.
    struct View {
        client::Time now;
        const Scene* scene = nullptr;
        const Match* match = nullptr;

        /// The moment on the match's clock.
        client::Time matchNow;

        /// What is watched; null for none.
        Screening* screening = nullptr;
        const Recorder* recorder = nullptr;

        /// Null as long as no room has let one in.
        const client::Bodies* bodies = nullptr;
        const FrameTimes* frames = nullptr;

        /// See ShownArena::trouble().
        const std::string* arenaTrouble = nullptr;

        /// The sounds of the moment in words; null for none.
        const std::vector<Captions::Line>* captions = nullptr;
        double frameBudget = 0.0;
        double screenRate = 0.0;
    };

    /// Draws all of it and does what the player asks for there. True if the settings changed.
    bool draw(const View& view, Visit& visit, Settings& settings);

    /// Draws the last frame once more.
    void drawAgain() const { interface_.drawAgain(); }

    /// The draw calls of the last frame.
    int drawCalls() const { return interface_.drawCalls(); }

    /// Shows a line at the top of the picture from now on, beside what is said of the line.
    void warn(const std::string& words) { warnings_.push_back(words); }

    /// Shows a line there for some seconds.
    void tell(const std::string& words, client::Time now) { news_.push_back({words, now}); }

    /// Says a line below the recordings of the start from now on; empty for the usual one.
    void remarkRecordings(const std::string& words) { recordingsRemark_ = words; }

    /// The recording that was chosen to be watched since the last call; empty for none.
    std::string takeChosenRecording() { return std::exchange(chosenRecording_, {}); }

    bool hasQuit() const { return hasQuit_; }

  private:
    void takePress(const WindowEvents::Press& press, Visit& visit, Settings& settings);
    void drawMatch(const View& view, const Visit& visit, const Settings& settings);
    void addLines(HudView& hud, const View& view, const Visit& visit);
    DiagnosticsView diagnosticsOf(const View& view, const Visit& visit) const;
    bool drawPanel(const View& view, Visit& visit, Settings& settings);
    bool drawStart(const View& view, Visit& visit, Settings& settings);
    void choose(RoomChoice choice, client::Time now, Visit& visit);

    Interface interface_;
    ChatBox chat_;
    SettingsPage settingsPage_;
    StartPage startPage_;
    RoomList rooms_;
    std::vector<std::string> shownRooms_;
    std::vector<std::string> warnings_;

    struct News {
        std::string words;
        client::Time moment;
    };
    std::vector<News> news_;

    /// The user's own recordings, looked for whenever the start is shown.
    std::future<std::vector<OwnRecording>> lookingForRecordings_;
    std::vector<OwnRecording> recordings_;
    std::string recordingsRemark_;
    bool wasAtStart_ = false;
    std::string chosenRecording_;
    bool showsTable_ = false;
    bool showsDiagnostics_ = false;
    bool settingsChanged_ = false;
    bool hasQuit_ = false;
};

} // namespace drench::game
