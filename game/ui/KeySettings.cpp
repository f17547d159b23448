#include "game/ui/KeySettings.h"

#include "game/ui/InputWords.h"
#include "game/ui/Widgets.h"

namespace drench::game {

namespace {

constexpr Input backspace = {Input::Device::keyboard, 42};

/// The order in which people look for them.
constexpr Action shownActions[] = {
    Action::forward, Action::backward,   Action::left,      Action::right, Action::jump,
    Action::fire,    Action::table,      Action::chat,      Action::menu,  Action::diagnostics,
    Action::record,  Action::keepRecent, Action::fullScreen};
static_assert(std::size(shownActions) == actionCount);

} // namespace

bool KeySettings::take(Bindings& bindings, const Input& input) {
    const Waiting wanted = *waiting_;
    waiting_.reset();
    if (input == escape)
        return false;
    if (input == backspace)
        return wanted.replaced && bindings.unbind(*wanted.replaced);
    const bool isBound = bindings.bind(wanted.action, input);
    if (isBound && wanted.replaced)
        bindings.unbind(*wanted.replaced);
    return isBound;
}

bool KeySettings::draw(const Theme& theme, Bindings& bindings) {
    for (const Action action : shownActions) {
        ImGui::PushID(static_cast<int>(action));
        const Row row = beginRow(theme, actionWords(action).c_str());
        drawKeys(theme, bindings, action, row.width);
        endRow(row);
        ImGui::PopID();
    }
    ImGui::Spacing();
    if (wideButton(theme, "Set all keys back", false, 200.0f)) {
        stopWaiting();
        const bool isChanged = !(bindings == Bindings());
        bindings = Bindings();
        return isChanged;
    }
    return false;
}

void KeySettings::drawKeys(const Theme& theme, const Bindings& bindings, Action action,
                           float width) {
    const float begin = ImGui::GetCursorPosX();
    const float gap = theme.px(6.0f);
    float x = begin;
    const auto place = [&](const std::string& words) {
        const float wide =
            ImGui::CalcTextSize(words.c_str()).x + 2.0f * ImGui::GetStyle().FramePadding.x;
        if (x > begin && x + wide > begin + width)
            x = begin;
        else if (x > begin)
            ImGui::SameLine();
        ImGui::SetCursorPosX(x);
        x += wide + gap;
    };
    const auto put = [&](const Waiting& press, const std::string& words) {
        const std::string shown = waiting_ == press ? "press a key" : words;
        place(shown);
        drawKey(press, shown);
    };
    for (const Input& input : bindings.inputsOf(action)) {
        if (input == escape) {
            place("Escape");
            ImGui::BeginDisabled();
            ImGui::Button("Escape");
            ImGui::EndDisabled();
        } else {
            put({action, input}, inputWords(input));
        }
    }
    if (bindings.inputsOf(action).size() < Bindings::mostInputs)
        put({action, std::nullopt}, "+");
}

void KeySettings::drawKey(const Waiting& press, const std::string& words) {
    const bool isWaitedFor = waiting_ == press;
    if (isWaitedFor) {
        ImGui::PushStyleColor(ImGuiCol_Button, shade::warm);
        ImGui::PushStyleColor(ImGuiCol_ButtonHovered, shade::warm);
        ImGui::PushStyleColor(ImGuiCol_Text, IM_COL32(30, 20, 4, 255));
    }
    const int id = press.replaced ? static_cast<int>(press.replaced->device) * (lastKey + 1) +
                                        press.replaced->number
                                  : -1;
    ImGui::PushID(id);
    const bool isPressed = ImGui::Button(words.c_str());
    ImGui::PopID();
    if (isWaitedFor)
        ImGui::PopStyleColor(3);
    if (isPressed)
        waiting_ = press;
}

} // namespace drench::game
