// From light to pixels: a camera, plants drawn over what it sees, and the finished bytes.
#pragma once

#include <cstdint>
#include <vector>

namespace samples {

// Unpremultiplied bytes, four to a pixel, the top row first.
struct Picture {
    int width = 0, height = 0;
    std::vector<std::uint8_t> rgba;
};

// Linear light to a byte: highlights roll off, then the usual curve.
std::uint8_t byteOf(float light);

// The landscape, opaque.
Picture landscapePicture(int width, int height);
// Balls with their soft shadows, a pane of coloured glass and a hard-edged ring, on nothing.
Picture transparentPicture(int width, int height);

} // namespace samples
