// Turns an image into pixels.
#pragma once

#include "platform/imaging/Bitmap.h"
#include "platform/imaging/Image.h"

#include <memory>
#include <stop_token>

namespace imaging {

// A rectangle of whole pixels.
struct PixelRect {
    int x = 0, y = 0, width = 0, height = 0;
};

struct RenderOptions {
    std::stop_token stop; // rendering ends early, with no result, when a stop is requested
    bool threaded = true; // false: everything on the calling thread
};

// The pixels of the rectangle, transparent where the image does not reach, its top row first. The
// byte and 16-bit formats are unpremultiplied, limited to 0…1 and rounded to nearest; a
// not-a-number becomes 0. Null when the rectangle is empty or too large, memory is short, or a stop
// was requested by the token of the options. Inside a WorkScope it reports its progress, and throws
// foundation::Stopped when the scope's work is to stop.
std::shared_ptr<Bitmap> render(const Image& image, const PixelRect& rect, PixelFormat format,
                               const RenderOptions& options = {});

} // namespace imaging
