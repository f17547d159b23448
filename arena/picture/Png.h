#pragma once

#include "arena/picture/Image.h"

#include <string>

namespace drench::arena {

/// The image as a PNG file of 8 bits per component, without alpha.
std::string encodePng(const Image& image);

/// The image in a PNG file of any kind; transparent parts are laid on white. Throws InputError if
/// the bytes are not a PNG file, are too damaged to give every pixel, or the sides are longer than
/// Image::largestSide.
Image decodePng(const std::string& bytes);

} // namespace drench::arena
