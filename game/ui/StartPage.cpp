#include "game/ui/StartPage.h"

#include "client/Records.h"
#include "game/Text.h"
#include "game/ui/InputWords.h"
#include "game/ui/Marks.h"
#include "game/ui/Widgets.h"

#include <algorithm>
#include <cmath>
#include <imgui_stdlib.h>

namespace drench::game {

namespace {

constexpr float pageWidth = 860.0f;
constexpr float pageHeight = 440.0f;

constexpr char timesRemark[] =
    "The times are round trips. Whether a room is full, it tells only those who join.";

/// The left column's share: name and what needs no room.
constexpr float leftShare = 0.42f;

ImU32 colourOf(const RoomProbe& probe) {
    using Finding = RoomProbe::Finding;
    switch (probe.finding()) {
    case Finding::answers:
        return IM_COL32(110, 230, 160, 255);
    case Finding::asking:
        return shade::pale;
    default:
        return shade::warm;
    }
}

/// Of words in the small font that wrap at the column's end.
float heightOfSmall(const Theme& theme, const std::string& words) {
    return theme.fonts.small
        ->CalcTextSizeA(sizeOf(theme.fonts.small, "A").y, FLT_MAX, ImGui::GetContentRegionAvail().x,
                        words.c_str())
        .y;
}

/// The name of the game with a drop in front.
void drawTitle(const Theme& theme) {
    ImDrawList& list = *ImGui::GetWindowDrawList();
    const ImVec2 from = ImGui::GetCursorScreenPos();
    const ImVec2 size = sizeOf(theme.fonts.title, "Drench");
    const float radius = theme.px(15.0f);
    const ImVec2 centre = {from.x + radius, from.y + 0.6f * size.y};
    // A circle below a tip.
    constexpr float shoulder = 0.62f;
    const float x = radius * std::cos(shoulder);
    const float y = radius * std::sin(shoulder);
    list.AddTriangleFilled({centre.x, centre.y - 2.15f * radius}, {centre.x + x, centre.y - y},
                           {centre.x - x, centre.y - y}, shade::water);
    list.AddCircleFilled(centre, radius, shade::water, 32);
    list.AddCircleFilled({centre.x - 0.35f * radius, centre.y + 0.2f * radius}, 0.24f * radius,
                         IM_COL32(255, 255, 255, 190), 16);
    drawText(list, theme.fonts.title, {from.x + 2.0f * radius + theme.px(12.0f), from.y},
             shade::white, "Drench");
    ImGui::Dummy({0.0f, size.y});
}

} // namespace

StartPage::Outcome StartPage::draw(const Theme& theme, Settings& settings, const RoomList& rooms,
                                   const std::vector<OwnRecording>& recordings,
                                   const std::string& remark) {
    Outcome outcome;
    dimBehind(0.25f);
    const Page page(theme, "start", pageWidth, pageHeight);
    const float width = ImGui::GetContentRegionAvail().x;
    ImGui::BeginChild("left", {leftShare * width, 0.0f});
    drawTitle(theme);
    paleText("A water fight for four.");
    ImGui::Dummy(theme.px(0.0f, 6.0f));
    drawName(theme, settings, outcome);
    ImGui::Dummy(theme.px(0.0f, 6.0f));
    outcome.hosts = wideButton(theme, "Play with bots on this machine", true);
    if (wideButton(theme, showsRecordings_ ? "Rooms" : "Watch a match"))
        showsRecordings_ = !showsRecordings_;
    outcome.opensSettings = wideButton(theme, "Settings");
    outcome.quits = wideButton(theme, "Quit");
    ImGui::EndChild();
    ImGui::SameLine(0.0f, theme.px(28.0f));
    ImGui::BeginChild("right", {0.0f, 0.0f});
    if (showsRecordings_) {
        drawRecordings(theme, settings.bindings, recordings, remark, outcome);
    } else {
        drawRooms(theme, settings, rooms, outcome);
        drawAddress(theme, outcome);
    }
    ImGui::EndChild();
    return outcome;
}

void StartPage::drawName(const Theme& theme, Settings& settings, Outcome& outcome) {
    {
        const InFont small(theme.fonts.small);
        ImGui::TextDisabled("Your name");
    }
    ImGui::SetNextItemWidth(-FLT_MIN);
    std::string name = settings.name;
    if (ImGui::InputText("##name", &name)) {
        settings.name = wholeCharacters(drawable(name), client::longestName);
        outcome.changed = true;
    }
}

void StartPage::drawRooms(const Theme& theme, Settings& settings, const RoomList& rooms,
                          Outcome& outcome) {
    heading(theme, "Rooms");
    // The field for another address, a small line above it, and the remark below.
    const float remark = heightOfSmall(theme, timesRemark);
    const float foot = ImGui::GetFrameHeight() + sizeOf(theme.fonts.small, "A").y + remark +
                       3.0f * ImGui::GetStyle().ItemSpacing.y;
    ImGui::BeginChild("rooms", {0.0f, -foot});
    if (rooms.entries().empty())
        paleText("None yet. Rooms that you played in are listed here.");
    std::string forgotten;
    for (const RoomList::Entry& room : rooms.entries()) {
        ImGui::PushID(room.address.c_str());
        const float buttons = theme.px(104.0f);
        const float wide = ImGui::GetContentRegionAvail().x - buttons;
        const float left = ImGui::GetCursorPosX();
        ImGui::AlignTextToFramePadding();
        const float words = sizeOf(theme.fonts.text, findingWords(room.probe)).x;
        const ImVec2 corner = ImGui::GetCursorScreenPos();
        ImGui::PushClipRect(corner, {corner.x + wide - words - theme.px(16.0f), corner.y + 1000.0f},
                            true);
        ImGui::TextUnformatted(room.address.c_str());
        ImGui::PopClipRect();
        ImGui::SameLine(left + wide - words - theme.px(8.0f));
        ImGui::TextColored(ImGui::ColorConvertU32ToFloat4(colourOf(room.probe)), "%s",
                           findingWords(room.probe).c_str());
        ImGui::SameLine(left + wide);
        if (ImGui::Button("Join", {theme.px(64.0f), 0.0f}))
            outcome.room = room.address;
        ImGui::SameLine(0.0f, theme.px(6.0f));
        if (ImGui::Button("\xC3\x97", {theme.px(30.0f), 0.0f}))
            forgotten = room.address;
        if (ImGui::IsItemHovered())
            ImGui::SetTooltip("Forget this room");
        ImGui::PopID();
    }
    if (!forgotten.empty()) {
        std::erase(settings.rooms, forgotten);
        outcome.changed = true;
    }
    ImGui::EndChild();
}

void StartPage::drawAddress(const Theme& theme, Outcome& outcome) {
    {
        const InFont small(theme.fonts.small);
        ImGui::TextDisabled("Another room");
    }
    const float button = theme.px(84.0f);
    ImGui::SetNextItemWidth(ImGui::GetContentRegionAvail().x - button - theme.px(8.0f));
    bool joins = ImGui::InputTextWithHint("##address", "HOST or HOST:PORT", &address_,
                                          ImGuiInputTextFlags_EnterReturnsTrue |
                                              ImGuiInputTextFlags_CharsNoBlank);
    if (address_.size() > longestAddress)
        address_.resize(longestAddress);
    ImGui::SameLine(0.0f, theme.px(8.0f));
    joins |= ImGui::Button("Join", {button, 0.0f});
    if (joins && !address_.empty())
        outcome.room = address_;
    const InFont small(theme.fonts.small);
    paleText(timesRemark);
}

void StartPage::drawRecordings(const Theme& theme, const Bindings& bindings,
                               const std::vector<OwnRecording>& recordings,
                               const std::string& remark, Outcome& outcome) {
    heading(theme, "Recorded matches");
    const std::string words = remark.empty()
                                  ? "In a match, " + firstInputWords(bindings, Action::record) +
                                        " begins and ends a recording, and " +
                                        firstInputWords(bindings, Action::keepRecent) +
                                        " keeps the last two minutes."
                                  : remark;
    const float foot = heightOfSmall(theme, words) + 2.0f * ImGui::GetStyle().ItemSpacing.y;
    ImGui::BeginChild("recordings", {0.0f, -foot});
    if (recordings.empty())
        paleText("None yet.");
    for (const OwnRecording& each : recordings) {
        ImGui::PushID(each.file.c_str());
        const float left = ImGui::GetCursorPosX();
        const float wide = ImGui::GetContentRegionAvail().x - theme.px(84.0f);
        const float top = ImGui::GetCursorPosY();
        const ImVec2 corner = ImGui::GetCursorScreenPos();
        ImGui::PushClipRect(corner, {corner.x + wide - theme.px(10.0f), corner.y + 1000.0f}, true);
        ImGui::TextUnformatted(each.date.c_str());
        {
            const InFont small(theme.fonts.small);
            ImGui::SetCursorPosY(ImGui::GetCursorPosY() - ImGui::GetStyle().ItemSpacing.y);
            const std::string room = each.room.empty() ? "an unknown room" : each.room;
            ImGui::TextDisabled("%s in %s", lengthWords(each.length).c_str(), room.c_str());
        }
        ImGui::PopClipRect();
        const float bottom = ImGui::GetCursorPosY();
        ImGui::SetCursorPos({left + wide, top});
        if (ImGui::Button("Watch", {theme.px(78.0f), 0.0f}))
            outcome.recording = each.file;
        ImGui::SetCursorPosY(std::max(bottom, ImGui::GetCursorPosY()));
        ImGui::PopID();
    }
    ImGui::EndChild();
    const InFont small(theme.fonts.small);
    paleText(words);
}

} // namespace drench::game
