// Two pictures into one. The result covers both; without a background it is the picture alone.
#pragma once

#include "platform/imaging/Filter.h"

namespace builtin {

using imaging::Image;

class SourceOverCompositing : public imaging::Filter {
public:
    static void initialize(imaging::FilterRegistry& registry);

    Image inputImage;
    Image inputBackgroundImage;

    Image outputImage() const override;
};

// Colours and alphas add up; only the alpha is limited.
class AdditionCompositing : public imaging::Filter {
public:
    static void initialize(imaging::FilterRegistry& registry);

    Image inputImage;
    Image inputBackgroundImage;

    Image outputImage() const override;
};

} // namespace builtin
