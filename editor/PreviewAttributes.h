// Parameters of a filter for a smaller copy of the picture, so that the copy's result looks like
// the whole result made smaller.
#pragma once

#include "platform/foundation/Value.h"

#include <string_view>

namespace editor {

// How large the copy is: its width and height over the picture's.
struct CopyScale {
    double x = 1, y = 1;

    friend bool operator==(const CopyScale&, const CopyScale&) = default;
};

// What the plug-in object is handed for the copy, from what it is handed for the picture and from
// what the filter tells of its inputs (CIFQueryAttributesForFilter; null answers the attributes as
// they are). Distances, positions, offsets and rectangles shrink with the picture, transforms move
// by less, and what is not handed over is handed over with its scaled default. Pictures stay: see
// isScaledPicture.
foundation::Dictionary previewAttributes(std::string_view identifier,
                                         const foundation::Dictionary& attributes,
                                         const foundation::DictionaryRef& description,
                                         CopyScale scale);

// What is closest to the whole result made smaller, for a picture shown smaller than it is.
enum class PreviewWay {
    Copy,     // the filter applied to a copy as small as it is shown
    FineCopy, // to one twice as large, whose result is made smaller: for fine patterns
    SomeRows, // some rows of the whole result: for what a filter does to single pixels
};
PreviewWay previewWay(std::string_view identifier);

// What the alpha of the copy's result is multiplied by: lines that stay as thin on a smaller copy
// cover less of the picture.
double previewOpacity(std::string_view identifier, CopyScale scale);

// Whether the picture under the key lies on the picture pixel by pixel, and is to shrink with it.
bool isScaledPicture(std::string_view key);

} // namespace editor
