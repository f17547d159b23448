#include "game/ui/Widgets.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace drench::game {

namespace {

/// Units that a page keeps from the edges of the picture.
constexpr float pageMargin = 12.0f;

/// The share of a row that its words take.
constexpr float wordsShare = 0.5f;

constexpr ImGuiWindowFlags pageFlags = ImGuiWindowFlags_NoTitleBar | ImGuiWindowFlags_NoResize |
                                       ImGuiWindowFlags_NoMove | ImGuiWindowFlags_NoCollapse |
                                       ImGuiWindowFlags_NoSavedSettings;

/// The largest number of the library's sliders that is whole in a float is far above ours.
float asFloat(double value) {
    return static_cast<float>(value);
}

/// A slider of this size with its knob at a share of the way.
void drawTrack(const Theme& theme, ImVec2 from, ImVec2 size, float share, ImU32 knob) {
    ImDrawList& list = *ImGui::GetWindowDrawList();
    const float radius = theme.px(8.0f);
    const float half = theme.px(2.5f);
    const float y = from.y + 0.5f * size.y;
    const float begin = from.x + radius;
    const float end = from.x + size.x - radius;
    const float x = begin + share * (end - begin);
    list.AddRectFilled({begin, y - half}, {end, y + half}, IM_COL32(120, 190, 245, 60), half);
    list.AddRectFilled({begin, y - half}, {x, y + half}, shade::water, half);
    list.AddCircleFilled({x, y}, radius, knob, 24);
}

} // namespace

Page::Page(const Theme& theme, const char* name, float width, float height) {
    const ImVec2 size = ImGui::GetIO().DisplaySize;
    const float most = size.y - 2.0f * theme.px(pageMargin);
    const float wide = std::min(theme.px(width), size.x - 2.0f * theme.px(pageMargin));
    ImGui::SetNextWindowPos({std::round(0.5f * size.x), std::round(0.5f * size.y)},
                            ImGuiCond_Always, {0.5f, 0.5f});
    if (height > 0.0f)
        ImGui::SetNextWindowSize({wide, std::min(theme.px(height), most)});
    else
        ImGui::SetNextWindowSizeConstraints({wide, 0.0f}, {wide, most});
    ImGui::Begin(name, nullptr,
                 height > 0.0f ? pageFlags | ImGuiWindowFlags_NoScrollbar
                               : pageFlags | ImGuiWindowFlags_AlwaysAutoResize);
    ImGui::PushFont(theme.fonts.text);
}

Page::~Page() {
    ImGui::PopFont();
    ImGui::End();
}

void dimBehind(float opacity) {
    ImGui::GetBackgroundDrawList()->AddRectFilled({0.0f, 0.0f}, ImGui::GetIO().DisplaySize,
                                                  faded(IM_COL32(2, 14, 30, 255), opacity));
}

void heading(const Theme& theme, const char* words) {
    const InFont large(theme.fonts.large);
    ImGui::TextUnformatted(words);
}

void paleText(const std::string& words) {
    ImGui::PushStyleColor(ImGuiCol_Text, shade::pale);
    ImGui::PushTextWrapPos(0.0f);
    ImGui::TextUnformatted(words.data(), words.data() + words.size());
    ImGui::PopTextWrapPos();
    ImGui::PopStyleColor();
}

bool wideButton(const Theme& theme, const char* words, bool isWarm, float width) {
    if (isWarm) {
        ImGui::PushStyleColor(ImGuiCol_Button, shade::warm);
        ImGui::PushStyleColor(ImGuiCol_ButtonHovered, IM_COL32(255, 196, 110, 255));
        ImGui::PushStyleColor(ImGuiCol_ButtonActive, IM_COL32(255, 212, 146, 255));
        ImGui::PushStyleColor(ImGuiCol_Text, IM_COL32(30, 20, 4, 255));
    }
    const InFont strong(theme.fonts.strong);
    const bool isPressed =
        ImGui::Button(words, {width > 0.0f ? theme.px(width) : -FLT_MIN, theme.px(40.0f)});
    if (isWarm)
        ImGui::PopStyleColor(4);
    return isPressed;
}

Row beginRow(const Theme& theme, const char* words, const char* hint) {
    const float left = ImGui::GetCursorPosX();
    const float width = ImGui::GetContentRegionAvail().x;
    const float right = left + width;
    const float top = ImGui::GetCursorPosY();
    const float control = left + wordsShare * width;
    ImGui::PushTextWrapPos(control - theme.px(12.0f));
    ImGui::AlignTextToFramePadding();
    ImGui::TextUnformatted(words);
    if (hint) {
        const InFont small(theme.fonts.small);
        ImGui::SetCursorPosY(ImGui::GetCursorPosY() - theme.px(6.0f));
        ImGui::TextDisabled("%s", hint);
    }
    ImGui::PopTextWrapPos();
    const float bottom = ImGui::GetCursorPosY();
    // A control stands in the row's middle, so below the top where the hint made it higher.
    const float spare = bottom - top - ImGui::GetFrameHeightWithSpacing();
    ImGui::SetCursorPos({control, top + std::max(0.5f * spare, 0.0f)});
    return {right - control, top, hint != nullptr};
}

void endRow(const Row& row) {
    const float least = row.top + ImGui::GetFrameHeightWithSpacing() +
                        (row.hasHint ? ImGui::GetTextLineHeight() : 0.0f);
    ImGui::SetCursorPosY(std::max(ImGui::GetCursorPosY(), least));
}

bool switchRow(const Theme& theme, const char* words, bool& value, const char* hint) {
    const Row row = beginRow(theme, words, hint);
    const float width = row.width;
    const float height = ImGui::GetFrameHeight();
    const float wide = 1.75f * height;
    ImGui::SetCursorPosX(ImGui::GetCursorPosX() + width - wide);
    const ImVec2 from = ImGui::GetCursorScreenPos();
    ImGui::PushID(words);
    const bool isPressed = ImGui::InvisibleButton("switch", {wide, height});
    ImGui::PopID();
    if (isPressed)
        value = !value;
    ImDrawList& list = *ImGui::GetWindowDrawList();
    const float inset = 0.14f * height;
    const ImVec2 begin = {from.x, from.y + inset};
    const ImVec2 end = {from.x + wide, from.y + height - inset};
    const float radius = 0.5f * (end.y - begin.y);
    const bool isHovered = ImGui::IsItemHovered() || ImGui::IsItemFocused();
    list.AddRectFilled(begin, end,
                       value ? (isHovered ? IM_COL32(96, 206, 255, 255) : shade::water)
                             : IM_COL32(120, 190, 245, isHovered ? 90 : 50),
                       radius);
    const float knob = value ? end.x - radius : begin.x + radius;
    list.AddCircleFilled({knob, begin.y + radius}, radius - theme.px(3.0f), shade::white, 24);
    endRow(row);
    return isPressed;
}

bool sliderRow(const Theme& theme, const char* words, double& value, Limits<double> limits,
               const char* format, double factor, bool isLogarithmic, const char* hint) {
    const Row row = beginRow(theme, words, hint);
    const float width = row.width;
    const float numberWidth = theme.px(58.0f);
    const float left = ImGui::GetCursorPosX();
    const ImVec2 from = ImGui::GetCursorScreenPos();
    const float height = ImGui::GetFrameHeight();
    float shown = asFloat(value * factor);
    // The library's slider moves the value, and is drawn as a thin track.
    ImGui::PushStyleVar(ImGuiStyleVar_Alpha, 0.0f);
    ImGui::PushID(words);
    ImGui::SetNextItemWidth(width - numberWidth);
    const float least = asFloat(limits.least * factor);
    const float most = asFloat(limits.most * factor);
    const bool isChanged = ImGui::SliderFloat(
        "##value", &shown, least, most, format,
        ImGuiSliderFlags_AlwaysClamp | (isLogarithmic ? ImGuiSliderFlags_Logarithmic : 0));
    ImGui::PopID();
    ImGui::PopStyleVar();
    const bool isActive = ImGui::IsItemActive();
    const bool isHovered = ImGui::IsItemHovered() || ImGui::IsItemFocused();
    const float share = isLogarithmic ? std::log(shown / least) / std::log(most / least)
                                      : (shown - least) / (most - least);
    drawTrack(theme, from, {width - numberWidth, height}, std::clamp(share, 0.0f, 1.0f),
              isActive ? shade::warm : (isHovered ? shade::white : shade::water));
    char number[32];
    std::snprintf(number, sizeof number, format, static_cast<double>(shown));
    ImGui::SameLine(left + width - ImGui::CalcTextSize(number).x);
    ImGui::TextUnformatted(number);
    endRow(row);
    if (isChanged)
        value = static_cast<double>(shown) / factor;
    return isChanged;
}

bool choice(const Theme& theme, const char* id, const char* const* words, int count, int& chosen,
            float width) {
    const float gap = theme.px(6.0f);
    const float each = (width - gap * static_cast<float>(count - 1)) / static_cast<float>(count);
    bool isChanged = false;
    ImGui::PushID(id);
    for (int i = 0; i < count; ++i) {
        if (i > 0)
            ImGui::SameLine(0.0f, gap);
        const bool isChosen = i == chosen;
        if (isChosen) {
            ImGui::PushStyleColor(ImGuiCol_Button, shade::water);
            ImGui::PushStyleColor(ImGuiCol_ButtonHovered, shade::water);
            ImGui::PushStyleColor(ImGuiCol_Text, IM_COL32(4, 22, 40, 255));
        }
        if (ImGui::Button(words[i], {each, 0.0f}) && !isChosen) {
            chosen = i;
            isChanged = true;
        }
        if (isChosen)
            ImGui::PopStyleColor(3);
    }
    ImGui::PopID();
    return isChanged;
}

} // namespace drench::game
