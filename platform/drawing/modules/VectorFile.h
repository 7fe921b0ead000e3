// Recordings as PDF, SVG and EPS files.
#pragma once

#include "platform/drawing/Canvas.h"

#include <string>

namespace drawing {

// As encodeVector(), with the result in `bytes` or the reason in `error`.
bool encodeVectorFile(const Recording& recording, VectorFormat format, const std::string& metadata,
                      std::string& bytes, std::string& error);

} // namespace drawing
