// The picture as a printed comic: few tones and dots, drawn over with lines.
#pragma once

#include "platform/imaging/Filter.h"

namespace builtin {

class ComicEffect : public imaging::Filter {
public:
    static void initialize(imaging::FilterRegistry& registry);

    imaging::Image inputImage;

    imaging::Image outputImage() const override;
};

} // namespace builtin
