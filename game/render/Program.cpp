#include "game/render/Program.h"

#include <stdexcept>
#include <string>

namespace drench::game {

namespace {

constexpr GLsizei longestLog = 1000;

[[noreturn]] void fail(const char* name, const char* part, const char* log) {
    throw std::runtime_error(std::string("the graphics driver refuses ") + part + " of " + name +
                             ": " + log);
}

GLuint compile(const char* name, GLenum kind, const char* source) {
    const char* const texts[] = {"#version 330 core\n", source};
    const GLuint shader = glCreateShader(kind);
    glShaderSource(shader, 2, texts, nullptr);
    glCompileShader(shader);
    GLint compiled = 0;
    glGetShaderiv(shader, GL_COMPILE_STATUS, &compiled);
    if (compiled == GL_FALSE) {
        char log[longestLog] = {};
        glGetShaderInfoLog(shader, longestLog, nullptr, log);
        glDeleteShader(shader);
        fail(name, kind == GL_VERTEX_SHADER ? "the vertex shader" : "the fragment shader", log);
    }
    return shader;
}

} // namespace

Program::Program(const char* name, const char* vertexSource, const char* fragmentSource) {
    const GLuint vertex = compile(name, GL_VERTEX_SHADER, vertexSource);
    const GLuint fragment = compile(name, GL_FRAGMENT_SHADER, fragmentSource);
    program_ = glCreateProgram();
    for (const GLuint shader : {vertex, fragment}) {
        glAttachShader(program_, shader);
        glDeleteShader(shader);
    }
    glLinkProgram(program_);
    GLint linked = 0;
    glGetProgramiv(program_, GL_LINK_STATUS, &linked);
    if (linked == GL_FALSE) {
        char log[longestLog] = {};
        glGetProgramInfoLog(program_, longestLog, nullptr, log);
        fail(name, "to link the shaders", log);
    }
}

Program::~Program() {
    glDeleteProgram(program_);
}

} // namespace drench::game
