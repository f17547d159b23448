#include "game/ui/ChatBox.h"

#include "game/ui/Marks.h"

#include <algorithm>
#include <cmath>
#include <memory>

namespace drench::game {

namespace {

/// Seconds for which a line is shown, and the part at the end in which it fades.
constexpr double saidSeconds = 9.0;
constexpr double saidFade = 1.5;
constexpr std::size_t mostLines = 6;
constexpr std::size_t mostLinesOpen = 10;

/// Units.
constexpr float margin = 18.0f;
constexpr float lineHeight = 25.0f;
constexpr float fieldHeight = 38.0f;
constexpr float fieldWidth = 430.0f;
constexpr float markRadius = 6.5f;

/// Seconds that the cursor is shown and hidden.
constexpr double blink = 0.53;

float opacityOf(const SaidLine& line, client::Time now, bool isOpen) {
    const double age = std::chrono::duration<double>(now - line.moment).count();
    return isOpen ? 1.0f : static_cast<float>(std::clamp((saidSeconds - age) / saidFade, 0.0, 1.0));
}

std::string clipboard() {
    const std::unique_ptr<char, void (*)(void*)> text(SDL_GetClipboardText(), SDL_free);
    return text ? text.get() : "";
}

} // namespace

ChatBox::Outcome ChatBox::take(std::span<const SDL_Event> events, std::string& words) {
    for (const SDL_Event& event : events) {
        if (event.type == SDL_TEXTINPUT)
            line_.insert(event.text.text);
        if (event.type != SDL_KEYDOWN)
            continue;
        if (const std::optional<Outcome> outcome = press(event.key, words))
            return *outcome;
    }
    return Outcome::writing;
}

std::optional<ChatBox::Outcome> ChatBox::press(const SDL_KeyboardEvent& key, std::string& words) {
    switch (key.keysym.sym) {
    case SDLK_RETURN:
    case SDLK_KP_ENTER:
        words = line_.finish();
        return words.empty() ? Outcome::given : Outcome::said;
    case SDLK_ESCAPE:
        line_.cancel();
        return Outcome::given;
    case SDLK_BACKSPACE:
        line_.eraseBefore();
        break;
    case SDLK_DELETE:
        line_.eraseBehind();
        break;
    case SDLK_LEFT:
        line_.moveLeft();
        break;
    case SDLK_RIGHT:
        line_.moveRight();
        break;
    case SDLK_HOME:
        line_.moveHome();
        break;
    case SDLK_END:
        line_.moveEnd();
        break;
    case SDLK_UP:
        line_.showEarlier();
        break;
    case SDLK_DOWN:
        line_.showLater();
        break;
    case SDLK_v:
        if (key.keysym.mod & KMOD_CTRL)
            line_.insert(clipboard());
        break;
    default:
        break;
    }
    return std::nullopt;
}

void ChatBox::draw(const Theme& theme, const Match& match, Palette palette, client::Time now,
                   bool isOpen, float foot) const {
    ImDrawList& list = *ImGui::GetBackgroundDrawList();
    const float left = theme.px(margin);
    float bottom = ImGui::GetIO().DisplaySize.y - theme.px(margin + foot);
    if (isOpen) {
        drawLine(theme, left, bottom);
        bottom -= theme.px(fieldHeight + 8.0f);
    }
    const std::size_t most = isOpen ? mostLinesOpen : mostLines;
    std::size_t shown = 0;
    for (auto said = match.said().rbegin(); said != match.said().rend() && shown < most;
         ++said, ++shown) {
        const float opacity = opacityOf(*said, now, isOpen);
        if (opacity <= 0.0f)
            return;
        bottom -= theme.px(lineHeight);
        const float height = sizeOf(theme.fonts.text, "A").y;
        drawMark(list, {left + theme.px(markRadius), bottom + 0.5f * height}, theme.px(markRadius),
                 markOf(said->speaker.id, palette), opacity);
        const float nameLeft = left + theme.px(2.0f * markRadius + 8.0f);
        const std::string name = said->speaker.name + ":";
        drawText(list, theme.fonts.strong, {nameLeft, bottom}, faded(shade::pale, opacity), name,
                 true);
        drawText(list, theme.fonts.text,
                 {nameLeft + sizeOf(theme.fonts.strong, name).x + theme.px(6.0f), bottom},
                 faded(shade::white, opacity), said->words, true);
    }
}

void ChatBox::drawLine(const Theme& theme, float left, float bottom) const {
    ImDrawList& list = *ImGui::GetBackgroundDrawList();
    const float top = bottom - theme.px(fieldHeight);
    const float right = left + theme.px(fieldWidth);
    list.AddRectFilled({left, top}, {right, bottom}, shade::glass, theme.px(10.0f));
    list.AddRect({left, top}, {right, bottom}, faded(shade::water, 0.8f), theme.px(10.0f), 0,
                 theme.px(1.5f));
    const ImFont* const font = theme.fonts.text;
    const float textTop = top + 0.5f * (theme.px(fieldHeight) - sizeOf(font, "A").y);
    const float textLeft = left + theme.px(14.0f);
    const std::string& text = line_.text();
    if (text.empty())
        drawText(list, font, {textLeft + theme.px(4.0f), textTop}, faded(shade::pale, 0.6f),
                 "Say it, Enter sends, Esc closes");
    drawText(list, font, {textLeft, textTop}, shade::white, text);
    if (std::fmod(ImGui::GetTime(), 2.0 * blink) < blink) {
        const std::string_view before = std::string_view(text).substr(0, line_.cursor());
        const float x = textLeft + sizeOf(font, before).x + theme.px(1.0f);
        list.AddRectFilled({x, textTop}, {x + theme.px(2.0f), textTop + sizeOf(font, "A").y},
                           shade::warm);
    }
    const std::string signsLeft = std::to_string(ChatLine::longestLine - text.size());
    drawText(list, theme.fonts.small,
             {right - theme.px(12.0f) - sizeOf(theme.fonts.small, signsLeft).x,
              top + 0.5f * (theme.px(fieldHeight) - sizeOf(theme.fonts.small, signsLeft).y)},
             shade::pale, signsLeft);
}

} // namespace drench::game
