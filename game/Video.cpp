#include "game/Video.h"

#include "common/Decimals.h"
#include "common/Files.h"
#include "game/Dressing.h"
#include "game/Labels.h"
#include "game/VideoFile.h"
#include "game/render/Renderer.h"
#include "game/render/Screenshot.h"
#include "game/sound/Mixer.h"
#include "game/ui/ChatBox.h"
#include "game/ui/Hud.h"
#include "game/ui/Interface.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace drench::game {

namespace {

/// Seconds before the video's first frame that are played unseen: water falls, walls are wet.
constexpr double leadIn = 2.0;

/// What is heard and seen as players first have it.
const Settings usual;

constexpr std::uint64_t soundSeed = 1;

/// The frames of a video, in their order, each at its moment.
class Frames {
  public:
    Frames(const VideoPlan& plan, Watching& watching)
        : plan_(plan), watching_(watching),
          from_(std::max(plan.from, watching.playback().begin())) {
        const double end = watching.playback().end();
        count_ = std::llround((std::min(plan.to.value_or(end), end) - from_) * plan.rate);
        if (count_ < 1)
            throw InputError("there is nothing to be shown: the match lasts from " +
                             decimals(watching.playback().begin(), 1) + " s to " +
                             decimals(end, 1) + " s");
    }

    long long count() const { return count_; }

    /// Plays them through.
    /// @param take  false ends it
    /// @return whether all were taken
    template<class Take>
    bool each(const MapManager& map, const Take& take) const {
        Scene scene;
        scene.camera = overviewOf(map);
        scene.camera.fieldOfView = fieldOfViewFrom(static_cast<float>(usual.fieldOfView));
        const double step = 1.0 / plan_.rate;
        const auto unseen =
            static_cast<long long>(std::min(leadIn, from_ - watching_.playback().begin()) *
                                   static_cast<double>(plan_.rate));
        Playback& playback = watching_.playback();
        playback.setPaused(false);
        playback.seek(from_ - static_cast<double>(unseen) * step);
        for (long long frame = -unseen; frame < count_; ++frame) {
            watching_.pass(frame == -unseen ? 0.0 : step, usual, scene);
            scene.time = playback.moment();
            if (frame >= 0 && !take(frame, scene))
                return false;
        }
        return true;
    }

  private:
    const VideoPlan& plan_;
    Watching& watching_;
    double from_ = 0.0;
    long long count_ = 0;
};

/// All that is heard.
SoundTrack mix(const VideoPlan& plan, const MapManager& map, const Frames& frames,
               const Watching& watching) {
    SoundTrack track;
    const SoundBank bank(soundSeed);
    Mixer mixer(bank);
    mixer.setVolume(factorOf(usual.masterVolume * usual.effectsVolume));
    std::vector<float> samples;
    frames.each(map, [&](long long frame, const Scene& scene) {
        mixer.listenFrom({inGame(scene.camera.eye), inGame(scene.camera.direction)});
        mixer.setJets(watching.jets());
        for (const Cue& cue : watching.cues())
            mixer.play(cue);
        const long long begin = frame * sampleRate / plan.rate;
        const long long end = (frame + 1) * sampleRate / plan.rate;
        samples.resize(static_cast<std::size_t>(2 * (end - begin)));
        mixer.pull(samples);
        track.add(samples);
        return true;
    });
    return track;
}

/// Draws what is said over the picture.
void drawWords(Interface& interface, const ChatBox& chat, const Scene& scene,
               const Watching& watching, float aspect) {
    interface.begin(usual.interfaceScale);
    const Match& match = watching.match();
    HudView hud;
    hud.now = watching.playback().now();
    hud.palette = paletteOf(usual);
    hud.labels = labelsOf(scene, aspect);
    hud.hasCrosshair = match.self() && !match.self()->soakedSince;
    drawHud(interface.theme(), match, hud);
    chat.draw(interface.theme(), match, hud.palette, hud.now, false);
    interface.draw();
}

} // namespace

bool makeVideo(const VideoPlan& plan, Watching& watching, const MapManager& map,
               const ArenaMesh& mesh, const std::function<bool(double)>& progress) {
    const Frames frames(plan, watching);
    SoundTrack sound = mix(plan, map, frames, watching);
    VideoFile file(plan.file, plan.size.width, plan.size.height, plan.rate, sound.finish());
    Window window("Drench", plan.size, Window::Place::nowhere);
    Renderer renderer(mesh);
    Interface interface(window.handle(), window.context());
    const ChatBox chat;
    const float aspect = static_cast<float>(plan.size.width) / static_cast<float>(plan.size.height);
    const Look look{plan.full, window.drawsInSoftware(), 1.0};
    const bool isWhole = frames.each(map, [&](long long frame, const Scene& scene) {
        renderer.draw(scene, plan.size.width, plan.size.height, look);
        drawWords(interface, chat, scene, watching, aspect);
        file.add(screenshot(plan.size.width, plan.size.height));
        return progress(static_cast<double>(frame + 1) / static_cast<double>(frames.count()));
    });
    if (isWhole)
        file.finish();
    return isWhole;
}

} // namespace drench::game
