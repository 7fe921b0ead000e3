// Pictures of another size, as the editor's size sheet makes them, and parts of pictures.
#pragma once

#include "platform/foundation/Geometry.h"
#include "platform/foundation/Result.h"
#include "platform/foundation/Value.h"

namespace plugin {

// Whether a bitmap of that size can be had on this machine; the error says why not.
foundation::Status fitsMemory(double width, double height, int bytesPerPixel = 4);

// The whole picture drawn into width × height pixels: stretched over them or, as a thumbnail, in
// its own proportions in the middle of a white one, where it replaces the white together with its
// transparency. 16-bit pictures stay 16-bit, metadata is kept. The error says why there can be no
// such bitmap.
foundation::Result<foundation::PictureRef> resized(const foundation::PictureRef& picture, int width,
                                                   int height, bool asThumbnail);

// The part of the picture in a rectangle (points, y up), to the nearest whole pixels, at least one.
// What lies outside the picture is left away; nothing left is an error. A picture that was drawn
// stays a drawing too.
foundation::Result<foundation::PictureRef> cropped(const foundation::PictureRef& picture,
                                                   const foundation::Rect& rect);

} // namespace plugin
