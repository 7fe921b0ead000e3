// Pictures shown in part: single pixels equal those of the whole.
#include "tests/generators/Generate.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace support;
using generators::Sampling;

namespace {

Sampling everyThird(int width, int height)
{
    Sampling sampling{{width, height}, {}, {}};
    for (int x = 1; x < width; x += 3)
        sampling.columns.push_back(x);
    // A part, and neighbours in it.
    for (int y = height / 3; y < height; y += y % 4 ? 1 : 5)
        sampling.rows.push_back(y);
    return sampling;
}

PictureRef sampled(GLIFCoreObject& generator, const Sampling& sampling,
                   const Dictionary& attributes)
{
    std::srand(7);
    return generator.sampledPicture(sampling, attributes);
}

// The share of pixels that differ in a channel by more than that.
double shareOff(const PictureRef& sample, const PictureRef& whole, const Sampling& sampling,
                int tolerance)
{
    const imaging::BitmapRef part = sample->bitmap(), all = whole->bitmap();
    EXPECT_EQ(part->width(), std::ssize(sampling.columns));
    EXPECT_EQ(part->height(), std::ssize(sampling.rows));
    int off = 0;
    for (int y = 0; y < part->height(); ++y)
        for (int x = 0; x < part->width(); ++x) {
            bool isOff = false;
            for (int channel = 0; channel < 4; ++channel) {
                const int there =
                    all->rowAs<std::uint8_t>(sampling.rows[y])[4 * sampling.columns[x] + channel];
                isOff |=
                    std::abs(part->rowAs<std::uint8_t>(y)[4 * x + channel] - there) > tolerance;
            }
            off += isOff;
        }
    return double(off) / (part->width() * part->height());
}

struct Case {
    const char* name;
    Dictionary attributes;
};

const Case kExact[] = {
    {"GLIF_Biomorph", {{"GLIFResolution", 1}}},
    {"GLIF_Biomorph", {{"GLIFResolution", 5}, {"GLIFCReal", 0.3}}},
    {"GLIF_CircleRipples", {{"GLIFShapesType", 0}}},
    {"GLIF_CircleRipples", {{"GLIFShapesType", 1}, {"GLIFResolution", 7}}},
    {"GLIF_CircleRipples", {{"GLIFShapesType", 2}, {"GLIFResolution", 1000}}},
    {"GLIF_CircleRipples", {{"GLIFShapesType", 3}, {"GLIFUseBackgroundColor", true}}},
    {"GLIF_Plasma", {{"GLIFShapesType", 2}, {"GLIFResolution", 1}}},
    {"GLIF_Plasma", {{"GLIFShapesType", 3}, {"GLIFResolution", 20}}},
    {"GLIF_SandGlass", {{"GLIFShapesType", 0}}},
    {"GLIF_SandGlass", {{"GLIFShapesType", 1}}},
    {"GLIF_SandGlass", {{"GLIFShapesType", 2}}},
    {"GLIF_SandGlass", {{"GLIFShapesType", 3}}},
};

} // namespace

TEST(Sampling, HasThePixelsOfTheWhole)
{
    for (const auto& [name, attributes] : kExact)
        // Of odd sides, the last column and row are in no half.
        for (const auto& [width, height] : {std::pair(157, 91), std::pair(1900, 60)}) {
            SCOPED_TRACE(std::string(name) + ' ' + std::to_string(width));
            const auto generator = makeGenerator(name);
            const Sampling sampling = everyThird(width, height);
            const PictureRef part = sampled(*generator, sampling, attributes);
            ASSERT_TRUE(part);
            const PictureRef whole = generate(*generator, width, height, attributes, 7);
            EXPECT_EQ(shareOff(part, whole, sampling, 0), 0);
        }
}

TEST(Sampling, ShowsTheSpiralButForPixelsBetweenItsPoints)
{
    for (const Dictionary& attributes :
         {Dictionary(), Dictionary{{"GLIFFactor", -3.0f}, {"GLIFCurvature", 4}}}) {
        const auto generator = makeGenerator("GLIF_Spiral");
        const Sampling sampling = everyThird(400, 301);
        const PictureRef part = sampled(*generator, sampling, attributes);
        ASSERT_TRUE(part);
        EXPECT_LT(shareOff(part, generate(*generator, 400, 301, attributes, 7), sampling, 12),
                  0.02);
    }
}

// What a picture that is coloured again shows, and what it is coloured from, is not disturbed.
TEST(Sampling, LeavesTheWholePicturesFieldAlone)
{
    for (const char* name :
         {"GLIF_Biomorph", "GLIF_CircleRipples", "GLIF_SandGlass", "GLIF_Spiral"}) {
        SCOPED_TRACE(name);
        const auto generator = makeGenerator(name), other = makeGenerator(name);
        const Dictionary colored{{"GLIFColorRangeMax", 0.6f}, {"GLIFUseBackgroundColor", false}};
        for (const auto& one : {generator, other})
            generate(*one, 1900, 40, {}, 7);
        const Sampling sampling = everyThird(1900, 40);
        sampled(*generator, sampling,
                {{"GLIFFactor", 3.0f}, {"GLIFCReal", 1.0}, {"GLIFSize", 3.0f}});
        const PictureRef part = sampled(*generator, sampling, colored);
        const PictureRef whole = generate(*generator, 1900, 40, colored, 7);
        EXPECT_EQ(generator->fieldsComputed(), 1);
        EXPECT_EQ(bytesOf(whole), bytesOf(generate(*other, 1900, 40, colored, 7)));
        EXPECT_LT(shareOff(part, whole, sampling, 12), 0.02);
    }
}

TEST(Sampling, HasNothingWherePixelsDependOnOthers)
{
    const Sampling sampling = everyThird(60, 40);
    for (const auto& [name, attributes] :
         {Case{"GLIF_Plasma", {{"GLIFShapesType", 0}}}, Case{"GLIF_Texture", {}},
          Case{"GLIF_SandGlass", {{"GLIFShapesType", 4}}}, Case{"GLIF_Shapes", {}}})
        EXPECT_FALSE(sampled(*makeGenerator(name), sampling, attributes)) << name;
    EXPECT_FALSE(sampled(*makeGenerator("GLIF_Biomorph"), {{0, 5}, {}, {1}}, {}));
}
