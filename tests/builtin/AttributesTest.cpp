// What the built-in filters tell about their inputs: order, and what is left out.
#include "tests/support/Support.h"

#include "platform/builtin/Register.h"
#include "platform/imaging/Filter.h"

#include <gmock/gmock.h>

using namespace support;
using imaging::Filter;
using imaging::FilterRegistry;
using testing::ElementsAre;

namespace {

class BuiltinAttributes : public testing::Test {
protected:
    BuiltinAttributes() { registerFilters(); }

    static Dictionary of(std::string_view filter, std::string_view key)
    {
        return *Filter::filterWithName(filter)->attributes()[key].dictionary();
    }
};

} // namespace

TEST_F(BuiltinAttributes, KeysKeepTheirOrder)
{
    EXPECT_THAT(Filter::filterWithName("CIColorControls")->inputKeys(),
                ElementsAre("inputImage", "inputSaturation", "inputBrightness", "inputContrast"));
    EXPECT_THAT(Filter::filterWithName("CIStarShineGenerator")->inputKeys(),
                ElementsAre("inputCenter", "inputColor", "inputRadius", "inputCrossScale",
                            "inputCrossAngle", "inputCrossOpacity", "inputCrossWidth",
                            "inputEpsilon"));
    EXPECT_TRUE(Filter::filterWithName("CIRandomGenerator")->inputKeys().empty());
}

TEST_F(BuiltinAttributes, WhatIsNotDescribedIsAbsent)
{
    const Dictionary exposure = of("CIExposureAdjust", "inputEV");
    EXPECT_FALSE(exposure.contains("CIAttributeMin"));
    EXPECT_FALSE(exposure.contains("CIAttributeMax"));
    EXPECT_TRUE(exposure.contains("CIAttributeSliderMin"));
    EXPECT_FALSE(of("CICheckerboardGenerator", "inputWidth").contains("CIAttributeIdentity"));
    EXPECT_FALSE(of("CIColorMatrix", "inputRVector").contains("CIAttributeType"));
    EXPECT_FALSE(of("CIColorMatrix", "inputImage").contains("CIAttributeDefault"));
    EXPECT_FALSE(of("CIFalseColor", "inputColor0").contains("CIAttributeIdentity"));
}

TEST_F(BuiltinAttributes, TypesAndClassesOfInputsThatAreNoNumbers)
{
    EXPECT_EQ(of("CIColorMonochrome", "inputColor")["CIAttributeType"],
              Value("CIAttributeTypeOpaqueColor"));
    EXPECT_EQ(of("CIAffineTile", "inputTransform")["CIAttributeClass"], Value("NSAffineTransform"));
    const Dictionary rectangle = of("CICrop", "inputRectangle");
    EXPECT_EQ(rectangle["CIAttributeClass"], Value("CIVector"));
    const auto* all = rectangle["CIAttributeDefault"].get<foundation::Vector>();
    ASSERT_NE(all, nullptr);
    EXPECT_TRUE((Rect{all->x, all->y, all->z, all->w}.isInfinite()));
}

TEST_F(BuiltinAttributes, CategoriesKeepTheirOrder)
{
    const auto categories = Filter::filterWithName("CIColorInvert")
                                ->attributes()["CIAttributeFilterCategories"]
                                .array();
    EXPECT_THAT(*categories,
                ElementsAre(Value("CICategoryColorEffect"), Value("CICategoryVideo"),
                            Value("CICategoryInterlaced"), Value("CICategoryNonSquarePixels"),
                            Value("CICategoryStillImage"), Value("CICategoryBuiltIn")));
}

TEST_F(BuiltinAttributes, RegisteringAgainChangesNothing)
{
    FilterRegistry& registry = FilterRegistry::shared();
    const auto names = registry.names();
    builtin::registerBuiltinFilters(registry);
    EXPECT_EQ(registry.names(), names);
}
