#include "game/ui/Interface.h"

#include <algorithm>
#include <backends/imgui_impl_opengl3.h>
#include <backends/imgui_impl_sdl.h>

namespace drench::game {

namespace {

constexpr char shaderVersion[] = "#version 330 core";

} // namespace

Interface::Interface(SDL_Window* window, SDL_GLContext context) : window_(window) {
    ImGui::CreateContext();
    ImGuiIO& io = ImGui::GetIO();
    io.IniFilename = nullptr;
    io.LogFilename = nullptr;
    // The pointer has one owner, and that is the window.
    io.ConfigFlags |= ImGuiConfigFlags_NoMouseCursorChange | ImGuiConfigFlags_NavEnableKeyboard;
    ImGui_ImplSDL2_InitForOpenGL(window, context);
    ImGui_ImplOpenGL3_Init(shaderVersion);
}

Interface::~Interface() {
    ImGui_ImplOpenGL3_Shutdown();
    ImGui_ImplSDL2_Shutdown();
    ImGui::DestroyContext();
}

void Interface::take(std::span<const SDL_Event> events) {
    for (const SDL_Event& event : events)
        ImGui_ImplSDL2_ProcessEvent(&event);
}

void Interface::takeMouse(std::span<const SDL_Event> events) {
    for (const SDL_Event& event : events) {
        if (event.type >= SDL_MOUSEMOTION && event.type <= SDL_MOUSEWHEEL)
            ImGui_ImplSDL2_ProcessEvent(&event);
    }
}

void Interface::releaseInput() {
    ImGui::GetIO().ClearInputCharacters();
    std::ranges::fill(ImGui::GetIO().KeysDown, false);
    ImGui::SetWindowFocus(nullptr);
}

void Interface::begin(double interfaceScale) {
    int width = 0;
    int height = 0;
    int drawnWidth = 0;
    int drawnHeight = 0;
    SDL_GetWindowSize(window_, &width, &height);
    SDL_GL_GetDrawableSize(window_, &drawnWidth, &drawnHeight);
    density_ = width > 0 ? static_cast<float>(drawnWidth) / static_cast<float>(width) : 1.0f;
    // A slider that sets the scale must not move under the hand.
    if (!ImGui::IsAnyItemActive())
        wantedScale_ = interfaceScale;
    const float scale = interfaceScaleFor(drawnWidth, drawnHeight, wantedScale_) / density_;
    if (scale != theme_.scale || !theme_.fonts.text)
        rescale(scale);
    ImGui_ImplOpenGL3_NewFrame();
    ImGui_ImplSDL2_NewFrame();
    ImGui::NewFrame();
}

void Interface::rescale(float scale) {
    theme_.scale = scale;
    theme_.fonts = buildFonts(scale * density_);
    ImGui::GetIO().FontGlobalScale = 1.0f / density_;
    ImGui_ImplOpenGL3_DestroyFontsTexture();
    ImGui_ImplOpenGL3_CreateFontsTexture();
    applyStyle(theme_);
}

void Interface::draw() {
    ImGui::Render();
    drawAgain();
}

void Interface::drawAgain() const {
    if (ImDrawData* const data = ImGui::GetDrawData())
        ImGui_ImplOpenGL3_RenderDrawData(data);
}

int Interface::drawCalls() const {
    const ImDrawData* const data = ImGui::GetDrawData();
    int calls = 0;
    for (int i = 0; data && i < data->CmdListsCount; ++i)
        calls += data->CmdLists[i]->CmdBuffer.Size;
    return calls;
}

bool Interface::writesText() const {
    return ImGui::GetIO().WantTextInput;
}

} // namespace drench::game
