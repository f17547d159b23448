#pragma once

#include <epoxy/gl.h>
#include <utility>

namespace drench::game {

/// A shader program, deleted with its scope. Needs the current context.
class Program {
  public:
    /// Compiles and links the two sources of GLSL 3.30, without their first line "#version".
    /// Throws std::runtime_error with `name` and the driver's words if it takes them not.
    Program(const char* name, const char* vertexSource, const char* fragmentSource);
    ~Program();
    Program(Program&& other) noexcept : program_(std::exchange(other.program_, 0)) {}
    Program& operator=(Program&&) = delete;

    void use() const { glUseProgram(program_); }

    /// The place of a uniform; -1 for one that the sources do not use.
    GLint uniform(const char* name) const { return glGetUniformLocation(program_, name); }

  private:
    GLuint program_ = 0;
};

} // namespace drench::game
