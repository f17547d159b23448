#include "game/ui/PlayerTable.h"

#include "game/Standings.h"
#include "game/ui/Marks.h"

#include <algorithm>
#include <cmath>

namespace drench::game {

namespace {

/// Units.
constexpr float tableWidth = 460.0f;
constexpr float rowHeight = 42.0f;
constexpr float headHeight = 62.0f;
constexpr float padding = 22.0f;
constexpr float markRadius = 9.0f;

constexpr std::size_t places = 4;

} // namespace

void drawPlayerTable(const Theme& theme, const Match& match, Palette palette,
                     const std::string& room) {
    ImDrawList& list = *ImGui::GetForegroundDrawList();
    const ImVec2 size = ImGui::GetIO().DisplaySize;
    const float width = theme.px(tableWidth);
    const float height = theme.px(headHeight + rowHeight * places + 14.0f);
    const ImVec2 corner = {std::round(0.5f * (size.x - width)),
                           std::round(0.5f * (size.y - height))};
    const ImVec2 end = {corner.x + width, corner.y + height};
    list.AddRectFilled(corner, end, shade::glass, theme.px(16.0f));
    list.AddRect(corner, end, shade::rim, theme.px(16.0f));

    const float left = corner.x + theme.px(padding);
    const float right = end.x - theme.px(padding);
    const auto writeRight = [&](const ImFont* font, float y, ImU32 colour, std::string_view text) {
        drawText(list, font, {right - sizeOf(font, text).x, y}, colour, text);
    };
    drawText(list, theme.fonts.strong, {left, corner.y + theme.px(22.0f)}, shade::white, room);
    writeRight(theme.fonts.small, corner.y + theme.px(24.0f), shade::pale, "points");

    float top = corner.y + theme.px(headHeight);
    const std::vector<MatchPlayer> players = standings(match);
    const auto middle = [&](const ImFont* font, std::string_view text) {
        return top + 0.5f * (theme.px(rowHeight) - sizeOf(font, text).y);
    };
    const float nameLeft = left + theme.px(2.0f * markRadius + 14.0f);
    for (const MatchPlayer& player : players) {
        const bool isSelf = player.id == match.ownId();
        if (isSelf)
            list.AddRectFilled({corner.x + theme.px(10.0f), top + theme.px(2.0f)},
                               {end.x - theme.px(10.0f), top + theme.px(rowHeight - 2.0f)},
                               IM_COL32(92, 172, 236, 54), theme.px(9.0f));
        drawMark(list, {left + theme.px(markRadius), top + theme.px(0.5f * rowHeight)},
                 theme.px(markRadius), markOf(player.id, palette));
        const ImFont* const font = isSelf ? theme.fonts.strong : theme.fonts.text;
        drawText(list, font, {nameLeft, middle(font, player.name)}, shade::white, player.name);
        if (player.soakedSince) {
            const float behind = nameLeft + sizeOf(font, player.name).x + theme.px(12.0f);
            drawText(list, theme.fonts.small, {behind, middle(theme.fonts.small, "soaked")},
                     shade::water, "soaked");
        }
        const std::string points = std::to_string(player.points);
        writeRight(theme.fonts.strong, middle(theme.fonts.strong, points), shade::white, points);
        top += theme.px(rowHeight);
    }
    for (std::size_t i = players.size(); i < places; ++i) {
        drawText(list, theme.fonts.text, {nameLeft, middle(theme.fonts.text, "free")},
                 faded(shade::pale, 0.55f), "free");
        top += theme.px(rowHeight);
    }
}

} // namespace drench::game
