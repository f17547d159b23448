#pragma once

#include <bit>
#include <cstddef>
#include <epoxy/gl.h>
#include <utility>

namespace drench::game {

/// One of OpenGL's vertex arrays, deleted with its scope.
class VertexArray {
  public:
    VertexArray() { glGenVertexArrays(1, &name_); }
    ~VertexArray() { glDeleteVertexArrays(1, &name_); }
    VertexArray(VertexArray&& other) noexcept : name_(std::exchange(other.name_, 0)) {}
    VertexArray& operator=(VertexArray&&) = delete;

    void bind() const { glBindVertexArray(name_); }

  private:
    GLuint name_ = 0;
};

/// One of OpenGL's buffers, deleted with its scope.
class Buffer {
  public:
    Buffer() { glGenBuffers(1, &name_); }
    ~Buffer() { glDeleteBuffers(1, &name_); }
    Buffer(Buffer&& other) noexcept : name_(std::exchange(other.name_, 0)) {}
    Buffer& operator=(Buffer&&) = delete;

    void bind(GLenum target) const { glBindBuffer(target, name_); }

    /// Binds the buffer and fills it.
    /// @param values  a vector of plain values
    template<class Values>
    void fill(GLenum target, const Values& values, GLenum usage) const {
        bind(target);
        glBufferData(target,
                     static_cast<GLsizeiptr>(values.size() * sizeof(typename Values::value_type)),
                     values.data(), usage);
    }

  private:
    GLuint name_ = 0;
};

/// A place in a buffer, in bytes from its start. OpenGL takes it for a pointer.
inline const void* inBuffer(std::size_t offset) {
    return std::bit_cast<const void*>(offset);
}

/// Where the bound vertex array finds an attribute in the bound buffer of vertices.
/// @param isShare  whether whole numbers stand for shares of the largest one
template<class Vertex>
void setAttribute(GLuint place, GLint parts, GLenum type, GLboolean isShare, std::size_t offset) {
    glVertexAttribPointer(place, parts, type, isShare, sizeof(Vertex), inBuffer(offset));
    glEnableVertexAttribArray(place);
}

} // namespace drench::game
