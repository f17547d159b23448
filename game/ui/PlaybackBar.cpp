#include "game/ui/PlaybackBar.h"

#include "game/OwnRecordings.h"
#include "game/ui/Marks.h"
#include "game/ui/Widgets.h"

#include <algorithm>
#include <cmath>
#include <sstream>

namespace drench::game {

namespace {

/// Units.
constexpr float margin = 18.0f;
constexpr float paneHeight = 52.0f;
constexpr float padding = 14.0f;
constexpr float buttonWidth = 30.0f;
constexpr float timeWidth = 116.0f;
constexpr float sideWidth = 210.0f;
constexpr float trackHeight = 6.0f;
constexpr float markRadius = 5.0f;

constexpr char help[] =
    "Space pauses, left and right leap, up and down change the speed, B and N go to soakings, 1 to "
    "4 choose a player, V the view. Drag to look around, fly with W A S D E Q.";

std::string timeWords(const Playback& playback) {
    using Seconds = std::chrono::duration<double>;
    return lengthWords(Seconds(playback.moment())) + " / " + lengthWords(Seconds(playback.end()));
}

/// "0.25 x".
std::string speedWords(double speed) {
    std::ostringstream words;
    words << speed << " x";
    return words.str();
}

/// "Ann, from behind".
std::string viewWords(const Watching& watching) {
    const MatchPlayer* const player = watching.match().player(watching.watched());
    std::string name = player ? player->name : "";
    switch (watching.spectator().view()) {
    case Spectator::View::eye:
        return name;
    case Spectator::View::following:
        return name + ", from behind";
    case Spectator::View::flying:
        break;
    }
    return "in flight";
}

/// A triangle to play on, or two bars to pause.
void drawPlaySign(ImDrawList& list, const Theme& theme, ImVec2 centre, bool isPaused) {
    const float r = theme.px(8.0f);
    if (isPaused) {
        list.AddTriangleFilled({centre.x - 0.7f * r, centre.y - r}, {centre.x + r, centre.y},
                               {centre.x - 0.7f * r, centre.y + r}, shade::white);
        return;
    }
    for (const float side : {-0.55f, 0.55f})
        list.AddRectFilled({centre.x + (side - 0.28f) * r, centre.y - r},
                           {centre.x + (side + 0.28f) * r, centre.y + r}, shade::white,
                           theme.px(1.5f));
}

/// The bar itself between two corners.
void drawTrack(ImDrawList& list, const Theme& theme, const Playback& playback, Palette palette,
               ImVec2 from, ImVec2 to) {
    const double length = std::max(playback.end() - playback.begin(), 1e-9);
    const auto xOf = [&](double moment) {
        return from.x + static_cast<float>((moment - playback.begin()) / length) * (to.x - from.x);
    };
    const float middle = 0.5f * (from.y + to.y);
    const float half = theme.px(0.5f * trackHeight);
    const float x = xOf(playback.moment());
    list.AddRectFilled({from.x, middle - half}, {to.x, middle + half}, IM_COL32(120, 190, 245, 60),
                       half);
    list.AddRectFilled({from.x, middle - half}, {x, middle + half}, shade::water, half);
    for (const Playback::Soaking& soaking : playback.soakings()) {
        const ImVec2 place = {xOf(soaking.moment), middle};
        if (soaking.who)
            drawMark(list, place, theme.px(markRadius), markOf(soaking.who, palette));
        else
            list.AddCircleFilled(place, theme.px(0.7f * markRadius), shade::white);
    }
    list.AddCircleFilled({x, middle}, theme.px(8.0f), shade::shadow, 24);
    list.AddCircleFilled({x, middle}, theme.px(6.5f), shade::white, 24);
}

struct Pane {
    ImVec2 from;
    ImVec2 to;
};

Pane paneOf(const Theme& theme) {
    const ImVec2 size = ImGui::GetIO().DisplaySize;
    return {{theme.px(margin), size.y - theme.px(margin + paneHeight)},
            {size.x - theme.px(margin), size.y - theme.px(margin)}};
}

} // namespace

bool isOnPlaybackBar(const Theme& theme, float x, float y) {
    const Pane pane = paneOf(theme);
    return x >= pane.from.x && x < pane.to.x && y >= pane.from.y && y < pane.to.y;
}

void drawPlaybackBar(const Theme& theme, Watching& watching, Palette palette) {
    Playback& playback = watching.playback();
    const auto [from, to] = paneOf(theme);
    ImGui::SetNextWindowPos(from);
    ImGui::SetNextWindowSize({to.x - from.x, to.y - from.y});
    ImGui::PushStyleVar(ImGuiStyleVar_WindowPadding, {0.0f, 0.0f});
    ImGui::Begin("playback", nullptr,
                 ImGuiWindowFlags_NoDecoration | ImGuiWindowFlags_NoMove |
                     ImGuiWindowFlags_NoSavedSettings | ImGuiWindowFlags_NoBackground |
                     ImGuiWindowFlags_NoNav | ImGuiWindowFlags_NoFocusOnAppearing |
                     ImGuiWindowFlags_NoBringToFrontOnFocus);
    ImDrawList& list = *ImGui::GetWindowDrawList();
    drawGlass(list, theme, from, to);
    const float middle = 0.5f * (from.y + to.y);
    const float height = to.y - from.y;

    const float buttonLeft = from.x + theme.px(padding);
    ImGui::SetCursorScreenPos({buttonLeft, from.y});
    if (ImGui::InvisibleButton("pause", {theme.px(buttonWidth), height}))
        playback.setPaused(!playback.isPaused());
    drawPlaySign(list, theme, {buttonLeft + theme.px(0.5f * buttonWidth), middle},
                 playback.isPaused());

    const auto write = [&](float x, ImU32 colour, const std::string& words) {
        drawText(list, theme.fonts.text, {x, middle - 0.5f * sizeOf(theme.fonts.text, words).y},
                 colour, words);
    };
    const float timeLeft = buttonLeft + theme.px(buttonWidth + 10.0f);
    write(timeLeft, shade::white, timeWords(playback));
    const float sideLeft = to.x - theme.px(sideWidth);
    write(sideLeft, shade::pale, viewWords(watching));
    const std::string times = speedWords(playback.speed());
    write(to.x - theme.px(padding) - sizeOf(theme.fonts.text, times).x, shade::warm, times);

    const float trackLeft = timeLeft + theme.px(timeWidth);
    const float trackRight = std::max(sideLeft - theme.px(24.0f), trackLeft + theme.px(40.0f));
    ImGui::SetCursorScreenPos({trackLeft, from.y});
    ImGui::InvisibleButton("track", {trackRight - trackLeft, height});
    if (ImGui::IsItemActive())
        playback.seek(std::lerp(playback.begin(), playback.end(),
                                static_cast<double>((ImGui::GetIO().MousePos.x - trackLeft) /
                                                    (trackRight - trackLeft))));
    drawTrack(list, theme, playback, palette, {trackLeft, from.y}, {trackRight, to.y});
    ImGui::End();
    ImGui::PopStyleVar();

    const float helpTop = from.y - sizeOf(theme.fonts.small, help).y - theme.px(6.0f);
    drawText(*ImGui::GetBackgroundDrawList(), theme.fonts.small, {from.x + theme.px(2.0f), helpTop},
             shade::white, help, true);
}

} // namespace drench::game
