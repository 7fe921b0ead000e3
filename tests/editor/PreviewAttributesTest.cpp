// Parameters for a copy half as wide and a quarter as high.
#include "editor/PreviewAttributes.h"
#include "plugin/CIFMain.h"

#include <gtest/gtest.h>

namespace {

using editor::previewAttributes;
using foundation::AffineTransform;
using foundation::Dictionary;
using foundation::Point;
using foundation::Value;
using foundation::Vector;

constexpr editor::CopyScale kScale{0.5, 0.25};

Dictionary forCopy(const char* filter, const Dictionary& attributes,
                   editor::CopyScale scale = kScale)
{
    CIFMain main;
    return previewAttributes(filter, attributes, main.CIFQueryAttributesForFilter(filter), scale);
}

} // namespace

TEST(PreviewAttributes, LengthsAndPlacesShrinkWithThePicture)
{
    const Dictionary out = forCopy("CITwirlDistortion", {{"CIFinputCenter", Point{100, 80}},
                                                         {"inputRadius", 30.0f},
                                                         {"inputAngle", 2.0f},
                                                         {"GLIFRandomSeed", 7}});
    EXPECT_EQ(out["CIFinputCenter"], Value(Point{50, 20}));
    // By the mean of both sides.
    EXPECT_NEAR(out.doubleValue("inputRadius", 0), 30 * std::sqrt(0.125), 1e-5);
    EXPECT_EQ(out.doubleValue("inputAngle", 0), 2) << "angles stay";
    EXPECT_EQ(out.intValue("GLIFRandomSeed", 0), 7) << "so does what is no input";

    const Dictionary own = forCopy("CIFSlideFrameFilter", {{"CIFinputCenter", Vector(100, 80)}});
    EXPECT_EQ(own["CIFinputCenter"], Value(Vector(50, 20))) << "without a described type";
}

TEST(PreviewAttributes, WhatIsLeftOutIsHandedOverWithItsScaledDefault)
{
    const Dictionary out = forCopy("CITwirlDistortion", {}, {0.1, 0.1});
    EXPECT_NEAR(out.doubleValue("inputRadius", 0), 30, 1e-9);
    EXPECT_EQ(out["inputCenter"], Value(Vector(15, 15)));
    EXPECT_FALSE(out.contains("inputAngle")) << "the filter's own default serves";
}

TEST(PreviewAttributes, TransformsActOnTheCopyAsOnThePicture)
{
    const AffineTransform t{0.8, 0.6, -0.6, 0.8, 40, 20};
    const Dictionary out = forCopy("CIAffineTransform", {{"inputTransform", t}});
    const auto* small = out["inputTransform"].get<AffineTransform>();
    ASSERT_TRUE(small);
    for (const Point p : {Point{0, 0}, Point{100, 0}, Point{30, 70}}) {
        const Point whole = t.apply(p);
        const Point copy = small->apply({p.x * kScale.x, p.y * kScale.y});
        EXPECT_NEAR(copy.x, whole.x * kScale.x, 1e-9);
        EXPECT_NEAR(copy.y, whole.y * kScale.y, 1e-9);
    }
}

TEST(PreviewAttributes, InputsWhoseKindDoesNotTell)
{
    constexpr editor::CopyScale tenth{0.1, 0.1};
    EXPECT_NEAR(
        forCopy("CIGaussianBlur", {{"inputRadius", 10}}, tenth).doubleValue("inputRadius", 0), 1,
        1e-9);
    EXPECT_EQ(forCopy("CIZoomBlur", {{"inputAmount", 10}}, tenth).doubleValue("inputAmount", 0),
              10);
    // Ten times steeper slopes of a texture, and a tenth of the distance.
    EXPECT_NEAR(
        forCopy("CIGlassDistortion", {{"inputScale", 100}}, tenth).doubleValue("inputScale", 0), 1,
        1e-9);
}

TEST(PreviewAttributes, NothingChangesWithoutADescription)
{
    const Dictionary given{{"inputRadius", 3}, {"inputCenter", Vector(1, 2)}};
    EXPECT_EQ(previewAttributes("CINone", given, nullptr, kScale), given);
}
