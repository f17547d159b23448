#include "arena/picture/Png.h"

#include "common/Files.h"

#include <algorithm>
#include <png.h>

namespace drench::arena {

namespace {

static_assert(sizeof(Colour) == 3, "libpng reads and writes pixels of three bytes");

/// A libpng image that is freed at the end of its scope.
struct PngImage {
    png_image state{};
    PngImage() { state.version = PNG_IMAGE_VERSION; }
    PngImage(const PngImage&) = delete;
    PngImage& operator=(const PngImage&) = delete;
    ~PngImage() { png_image_free(&state); }

    [[noreturn]] void fail() const {
        throw InputError(std::string("not a whole PNG picture: ") + state.message);
    }
};

} // namespace

std::string encodePng(const Image& image) {
    PngImage png;
    png.state.width = static_cast<png_uint_32>(image.width);
    png.state.height = static_cast<png_uint_32>(image.height);
    png.state.format = PNG_FORMAT_RGB;
    png_alloc_size_t size = PNG_IMAGE_PNG_SIZE_MAX(png.state);
    std::string bytes(size, '\0');
    if (!png_image_write_to_memory(&png.state, bytes.data(), &size, 0, image.pixels.data(), 0,
                                   nullptr))
        throw InputError(std::string("the picture cannot be encoded: ") + png.state.message);
    bytes.resize(size);
    return bytes;
}

Image decodePng(const std::string& bytes) {
    PngImage png;
    if (!png_image_begin_read_from_memory(&png.state, bytes.data(), bytes.size()))
        png.fail();
    constexpr png_uint_32 largestSide = Image::largestSide;
    if (std::max(png.state.width, png.state.height) > largestSide)
        throw InputError("a PNG picture of " + std::to_string(png.state.width) + " x " +
                         std::to_string(png.state.height) + " pixels is too large");
    png.state.format = PNG_FORMAT_RGB;
    Image image(static_cast<int>(png.state.width), static_cast<int>(png.state.height));
    const png_color whitePoint = {255, 255, 255};
    if (!png_image_finish_read(&png.state, &whitePoint, image.pixels.data(), 0, nullptr))
        png.fail();
    return image;
}

} // namespace drench::arena
