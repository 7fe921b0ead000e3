// How the plug-in's own filters describe their inputs.
//
// Defaults stand in the tables only: a filter whose defaults were not set reads its numbers as 0,
// and no formula guards against what that does.
#pragma once

#include "platform/imaging/Filter.h"

namespace filters {

constexpr imaging::Categories kCategories = {"StillImage", "Interlaced", "NonSquarePixels"};

// A number whose slider covers its whole range.
constexpr imaging::InputDetails scalar(double min, double max, double defaultValue)
{
    return {.type = imaging::InputType::Scalar,
            .value = defaultValue,
            .min = min,
            .max = max,
            .sliderMin = min,
            .sliderMax = max,
            .identity = 0};
}

} // namespace filters
