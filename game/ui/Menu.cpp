#include "game/ui/Menu.h"

#include "common/Decimals.h"
#include "game/ui/Widgets.h"

#include <cmath>

namespace drench::game {

namespace {

constexpr float menuWidth = 320.0f;
constexpr float wayWidth = 460.0f;

std::optional<RoomChoice> drawJoining(const Theme& theme, const Screens& screens) {
    const bool isAgain = !screens.trouble().what.empty();
    heading(theme, isAgain ? screens.trouble().what.c_str() : "Joining");
    ImGui::Spacing();
    paleText(isAgain ? "Trying again now ..." : screens.room() + " is being asked ...");
    ImGui::Dummy(theme.px(0.0f, 6.0f));
    if (wideButton(theme, "Cancel"))
        return RoomChoice::leave;
    return std::nullopt;
}

std::optional<RoomChoice> drawTrouble(const Theme& theme, const Screens& screens,
                                      client::Time now) {
    std::optional<RoomChoice> chosen;
    {
        const InFont large(theme.fonts.large);
        ImGui::PushTextWrapPos(0.0f);
        ImGui::TextUnformatted(screens.trouble().what.c_str());
        ImGui::PopTextWrapPos();
    }
    ImGui::Spacing();
    paleText(screens.trouble().advice);
    const double left = screens.secondsUntilJoin(now);
    ImGui::Dummy(theme.px(0.0f, 4.0f));
    if (left >= 0.0) {
        ImGui::PushStyleColor(ImGuiCol_Text, shade::water);
        ImGui::Text("Tried again in %s s.", decimals(std::ceil(left), 0).c_str());
        ImGui::PopStyleColor();
        ImGui::Dummy(theme.px(0.0f, 4.0f));
    }
    if (wideButton(theme, "Try now", true))
        chosen = RoomChoice::tryNow;
    if (left >= 0.0 && wideButton(theme, "Stop trying"))
        chosen = RoomChoice::stopTrying;
    if (wideButton(theme, "Choose another room"))
        chosen = RoomChoice::leave;
    return chosen;
}

} // namespace

std::optional<RoomChoice> drawMenu(const Theme& theme, const Screens& screens) {
    dimBehind(0.35f);
    const Page page(theme, "menu", menuWidth);
    heading(theme, "Drench");
    paleText(screens.room());
    ImGui::Dummy(theme.px(0.0f, 8.0f));
    std::optional<RoomChoice> chosen;
    const bool isWatching = screens.place() == Screens::Place::watching;
    if (wideButton(theme, isWatching ? "Watch on" : "Play on", true))
        chosen = RoomChoice::resume;
    if (wideButton(theme, "Settings"))
        chosen = RoomChoice::settings;
    if (wideButton(theme, isWatching ? "Stop watching" : "Leave the room"))
        chosen = RoomChoice::leave;
    if (wideButton(theme, "Quit"))
        chosen = RoomChoice::quit;
    if (!isWatching) {
        ImGui::Spacing();
        paleText("The match goes on meanwhile.");
    }
    return chosen;
}

std::optional<RoomChoice> drawWay(const Theme& theme, const Screens& screens, client::Time now) {
    dimBehind(0.35f);
    const Page page(theme, "way", wayWidth);
    return screens.place() == Screens::Place::joining ? drawJoining(theme, screens)
                                                      : drawTrouble(theme, screens, now);
}

} // namespace drench::game
