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

/// One of OpenGL's textures, deleted with its scope.
class Texture {
  public:
    Texture() { glGenTextures(1, &name_); }
    ~Texture() { glDeleteTextures(1, &name_); }
    Texture(Texture&& other) noexcept : name_(std::exchange(other.name_, 0)) {}
    Texture& operator=(Texture&&) = delete;

    void bind(GLenum target) const { glBindTexture(target, name_); }
    GLuint name() const { return name_; }

  private:
    GLuint name_ = 0;
};

/// What is drawn into but never read by a shader, deleted with its scope.
class Renderbuffer {
  public:
    Renderbuffer() { glGenRenderbuffers(1, &name_); }
    ~Renderbuffer() { glDeleteRenderbuffers(1, &name_); }
    Renderbuffer(const Renderbuffer&) = delete;
    Renderbuffer& operator=(const Renderbuffer&) = delete;

    void bind() const { glBindRenderbuffer(GL_RENDERBUFFER, name_); }
    GLuint name() const { return name_; }

  private:
    GLuint name_ = 0;
};

/// One of OpenGL's framebuffers, deleted with its scope.
class Framebuffer {
  public:
    Framebuffer() { glGenFramebuffers(1, &name_); }
    ~Framebuffer() { glDeleteFramebuffers(1, &name_); }
    Framebuffer(const Framebuffer&) = delete;
    Framebuffer& operator=(const Framebuffer&) = delete;

    /// @param target  GL_FRAMEBUFFER, or one of its halves for drawing and reading
    void bind(GLenum target) const { glBindFramebuffer(target, name_); }

  private:
    GLuint name_ = 0;
};

} // namespace drench::game
