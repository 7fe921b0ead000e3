// The effect thread: what it delivers, in which order, and what it leaves undone.
#include "editor/EffectRunner.h"
#include "platform/drawing/Picture.h"
#include "platform/drawing/Scaling.h"
#include "plugin/CIFMain.h"
#include "plugin/StartingValues.h"
#include "tests/support/Support.h"

#include <QTest>

#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <memory>
#include <sstream>

namespace {

using drawing::Picture;
using editor::Effect;
using editor::EffectRunner;
using foundation::Dictionary;
using foundation::PictureRef;
using foundation::Rect;
using imaging::BitmapRef;
using support::compare;

PictureRef samplePicture(int width, int height)
{
    return Picture::fromBitmap(
        support::converted(*support::bitmapFrom(width, height,
                                                [](int x, int y) {
                                                    const float u = float(x % 97) / 96;
                                                    const float v = float(y % 61) / 60;
                                                    return support::Rgba{u, v, u * v, 1};
                                                }),
                           imaging::PixelFormat::Rgba8));
}

Effect effect(const char* identifier, Dictionary attributes, PictureRef picture,
              std::uint32_t seed = 0)
{
    return {identifier, std::move(attributes), std::move(picture), seed};
}

Effect sobel(const PictureRef& picture, double intensity)
{
    return effect("CIFSobel", {{"inputIntensity", intensity}}, picture);
}

// What a control page starts with.
Effect startingEffect(const char* identifier, const PictureRef& picture, std::uint32_t seed = 0)
{
    CIFMain main;
    const auto entry = plugin::describeEntry(main, identifier);
    return {identifier, *plugin::startingValues(main, *entry, picture->size()), picture, seed};
}

// Slow enough to be overtaken.
Effect slow(const PictureRef& picture, double contrast)
{
    return effect("CILineOverlay", {{"inputContrast", contrast}}, picture);
}

// A runner, and what it told in which order.
class Runner : public testing::Test {
protected:
    Runner()
    {
        QObject::connect(&runner, &EffectRunner::resultDidArrive, &runner,
                         [this](const Effect& e, const PictureRef& picture) {
                             results.emplace_back(e, picture);
                             order += 'r';
                         });
        QObject::connect(&runner, &EffectRunner::partDidArrive, &runner,
                         [this](const BitmapRef& pixels, const Rect& rect) {
                             parts.emplace_back(pixels, rect);
                             order += 'p';
                         });
        QObject::connect(&runner, &EffectRunner::busyDidChange, &runner,
                         [this](bool now) { busy.push_back(now); });
    }
    void see(const Rect& rect, double density) { runner.setSight({rect, density}); }
    void runToTheEnd(const Effect& e)
    {
        runner.run(e);
        ASSERT_TRUE(runner.waitForResult());
    }
    void forget()
    {
        results.clear();
        parts.clear();
        order.clear();
    }

    const PictureRef large = samplePicture(1400, 1000);
    EffectRunner runner;
    std::vector<std::pair<Effect, PictureRef>> results;
    std::vector<std::pair<BitmapRef, Rect>> parts;
    std::vector<bool> busy;
    std::string order; // "p" a part, "r" a result
};

PictureRef direct(CIFMain& main, const Effect& e)
{
    if (!plugin::isGeneratorName(e.identifier))
        return main.CIFApplyFilterAttributesForImage(e.identifier, e.attributes, e.picture);
    std::srand(e.seed);
    return main.CIFGenerateLayerAttributesForImage(e.identifier, e.attributes, e.picture);
}

void expectSame(const PictureRef& a, const PictureRef& b, const std::string& what)
{
    ASSERT_TRUE(a && b) << what;
    EXPECT_EQ(a->size(), b->size()) << what;
    EXPECT_EQ(a->isVector(), b->isVector()) << what;
    EXPECT_EQ(compare(*a->bitmap(), *b->bitmap()).largest, 0) << what;
}

} // namespace

TEST_F(Runner, GivesWhatThePlugInGivesByteForByte)
{
    const PictureRef picture = samplePicture(180, 130);
    see({0, 0, 180, 130}, 0.5);
    CIFMain main;
    for (const char* name : {"CIFSobel", "CIGaussianBlur", "CIKaleidoscope", "CIStarShineGenerator",
                             "CIPageCurlTransition", "CIGlassDistortion", "GLIF_Plasma",
                             "GLIF_FlashLines", "GLIF_Shapes", "GLIF_Foam"})
        for (const std::uint32_t seed : {1u, 77u}) {
            const Effect e = startingEffect(name, picture, seed);
            runToTheEnd(e);
            ASSERT_FALSE(results.empty());
            EXPECT_TRUE(results.back().first == e) << name;
            expectSame(results.back().second, direct(main, e), name);
            EXPECT_TRUE(results.back().second->bitmapIfMade()) << name;
        }
    // A filter's seed is one more value, so every run counted.
    EXPECT_EQ(runner.counters().results, 20);
}

// A picture with a resolution of its own: light added onto it is as large as its pixels at first,
// and as its points when the call repeats.
TEST_F(Runner, KeepsWhatARepeatedCallAnswers)
{
    const PictureRef picture =
        Picture::fromBitmap(samplePicture(120, 80)->bitmap(), foundation::Size{60, 40});
    CIFMain main;
    Effect e = startingEffect("CIStarShineGenerator", picture);
    for (const double radius : {10.0, 20.0, 30.0}) {
        e.attributes.set("inputRadius", radius);
        runner.run(e); // the first two may be passed over
    }
    ASSERT_TRUE(runner.waitForResult());
    PictureRef expected;
    for (const double radius : {10.0, 20.0, 30.0}) {
        e.attributes.set("inputRadius", radius);
        expected = direct(main, e);
    }
    expectSame(results.back().second, expected, "repeated");
    EXPECT_EQ(results.back().second->size(), (foundation::Size{60, 40}));
    EXPECT_TRUE(parts.empty()) << "the result has another size than what is shown";
}

TEST_F(Runner, TheNewestEffectWins)
{
    see({0, 0, 1400, 1000}, 0.25);
    for (int i = 1; i <= 40; ++i)
        runner.run(slow(large, i));
    EXPECT_TRUE(runner.isBusy());
    ASSERT_TRUE(runner.waitForResult());
    ASSERT_EQ(results.size(), 1u);
    EXPECT_TRUE(results[0].first == slow(large, 40));
    CIFMain main;
    expectSame(results[0].second, direct(main, slow(large, 40)), "the newest");
    EXPECT_EQ(order.back(), 'r');
    EXPECT_EQ(busy, (std::vector<bool>{true, false}));
    EXPECT_FALSE(runner.isBusy());
}

TEST_F(Runner, ShowsThePartInSightBeforeTheResult)
{
    const Rect visible{300, 200, 200, 100};
    for (const double density : {0.25, 1.0}) {
        see(visible, density);
        runToTheEnd(slow(large, 10 + density));
        EXPECT_EQ(order, "pr");
        ASSERT_EQ(parts.size(), 1u);
        const auto& [pixels, rect] = parts[0];
        EXPECT_LE(rect.x, visible.x);
        EXPECT_LE(rect.y, visible.y);
        EXPECT_GE(rect.right(), visible.right());
        EXPECT_GE(rect.top(), visible.top());
        EXPECT_LT(rect.width, 600) << "far more than is in sight";
        EXPECT_NEAR(pixels->width() / rect.width, density, 0.01);
        if (density == 1) {
            const BitmapRef result = results[0].second->bitmap();
            const BitmapRef same =
                support::render(support::image(result), rect, imaging::PixelFormat::Rgba8);
            EXPECT_EQ(compare(*pixels, *same).largest, 0);
        }
        forget();
    }
}

TEST_F(Runner, NothingIsRunTwiceAndPanningOverAResultRendersNothing)
{
    see({0, 0, 100, 100}, 0.5);
    runner.run(sobel(large, 3));
    runToTheEnd(sobel(large, 3));
    const auto before = runner.counters();
    EXPECT_EQ(before.results, 1);
    runner.run(sobel(large, 3));
    EXPECT_FALSE(runner.isBusy());
    for (int i = 0; i < 20; ++i)
        see({i * 10.0, 0, 100, 100}, 0.5 + i * 0.1);
    EXPECT_TRUE(runner.waitForResult());
    QTest::qWait(50);
    EXPECT_EQ(runner.counters().results, before.results);
    EXPECT_EQ(runner.counters().parts, before.parts);
    // Going back to the result shows it again.
    results.clear();
    runner.run(slow(large, 20));
    ASSERT_TRUE(QTest::qWaitFor([&] { return runner.counters().parts > before.parts; }));
    runner.run(sobel(large, 3));
    EXPECT_FALSE(runner.isBusy());
    EXPECT_EQ(results.size(), 1u);
    EXPECT_EQ(runner.counters().results, 1);

    runner.reset();
    runToTheEnd(sobel(large, 3));
    EXPECT_EQ(runner.counters().results, 2);
}

TEST_F(Runner, AStoppedEffectDeliversNothingMore)
{
    see({0, 0, 1400, 1000}, 0.5);
    runToTheEnd(sobel(large, 3));
    const std::string before = order;
    for (const bool begun : {false, true}) {
        runner.run(slow(large, 20));
        if (begun) {
            ASSERT_TRUE(QTest::qWaitFor([&] { return order != before; }));
        }
        runner.stop();
        EXPECT_FALSE(runner.isBusy());
        const std::string atStop = order;
        EXPECT_TRUE(runner.waitForResult());
        QTest::qWait(100);
        EXPECT_EQ(order, atStop);
    }
    EXPECT_EQ(runner.counters().results, 1);
    // It was not made, so it can be run again.
    runToTheEnd(slow(large, 20));
    EXPECT_EQ(runner.counters().results, 2);
}

TEST_F(Runner, WhatComesIntoSightWhileTheResultIsMadeComesFirst)
{
    const PictureRef picture = samplePicture(2400, 1800);
    see({0, 0, 200, 200}, 1);
    runner.run(slow(picture, 30));
    ASSERT_TRUE(QTest::qWaitFor([&] { return parts.size() == 1; }));
    see({2000, 1500, 200, 200}, 1);
    ASSERT_TRUE(runner.waitForResult());
    EXPECT_EQ(order, "ppr");
    EXPECT_GE(parts[1].second.x, 1900);
}

TEST_F(Runner, AnEffectWithoutAnImageAnswersNull)
{
    runToTheEnd(effect("NoSuchFilter", {}, samplePicture(8, 8)));
    runToTheEnd(effect("CIFSobel", {}, nullptr));
    runToTheEnd(effect("GLIF_NoSuchGenerator", {}, samplePicture(8, 8)));
    ASSERT_EQ(results.size(), 3u);
    for (const auto& [e, picture] : results)
        EXPECT_FALSE(picture) << e.identifier;
}

TEST_F(Runner, CanGoWhileItIsBusy)
{
    for (int i = 0; i < 20; ++i) {
        auto going = std::make_unique<EffectRunner>();
        going->setSight({{0, 0, 1400, 1000}, 0.5});
        going->run(slow(large, i));
        if (i % 2 == 1)
            QTest::qWait(i);
        if (i % 4 == 3)
            QObject::connect(going.get(), &EffectRunner::partDidArrive, going.get(),
                             [&] { going.reset(); });
    }
    SUCCEED();
}

// Filters whose parameters are lengths or places, each in a way of its own.
constexpr const char* kPreviewed =
    "CIFAffineTransform2Filter CIGaussianBlur CIBoxBlur CIDiscBlur CIMotionBlur "
    "CIZoomBlur CIUnsharpMask CISharpenLuminance CIBumpDistortion CITwirlDistortion "
    "CIVortexDistortion CIGlassDistortion CIFNetDistortion CITorusLensDistortion "
    "CIPageCurlTransition CIBloom CICrystallize CIPixellate CIEdgeWork CIFSobel CIEdges "
    "CIFShadingFilter CIHatchedScreen CICMYKHalftone CIKaleidoscope CIFOffset "
    "CITriangleTile CISixfoldRotatedTile CIStarShineGenerator CIModTransition "
    "CIStripesGenerator GLIF_Biomorph GLIF_CircleRipples GLIF_SandGlass GLIF_Spiral";

// At the size shown, what a hand sees while it drags is what it gets when it rests.
TEST_F(Runner, PreviewsLookLikeTheResult)
{
    // Peak signal over noise, in decibels, of premultiplied colours.
    const auto likeness = [](const imaging::Bitmap& a, const imaging::Bitmap& b) {
        double sum = 0;
        for (int y = 0; y < a.height(); ++y)
            for (int x = 0; x < a.width(); ++x) {
                const support::Rgba p = support::pixel(a, x, y), q = support::pixel(b, x, y);
                for (const float d : {p.r - q.r, p.g - q.g, p.b - q.b, p.a - q.a})
                    sum += double(d) * d;
            }
        return -10 * std::log10(sum / (4.0 * a.width() * a.height()) + 1e-12);
    };
    const PictureRef picture =
        Picture::fromBitmap(drawing::scaledBitmap(*support::picture("photo-96x64"), 960, 640));
    const Rect all{0, 0, 960, 640};
    see(all, 0.25);
    std::istringstream names(kPreviewed);
    for (std::string name; names >> name;) {
        forget();
        const Effect e = startingEffect(name.c_str(), picture);
        runToTheEnd(e);
        if (parts.empty())
            continue; // the whole was quick
        ASSERT_TRUE(results[0].second) << name;
        EXPECT_EQ(parts[0].second, all) << name;
        const imaging::Bitmap& part = *parts[0].first;
        const BitmapRef smaller =
            drawing::scaledBitmap(*results[0].second->bitmap(), part.width(), part.height());
        // Of generators single pixels are seen, not averages.
        EXPECT_GT(likeness(part, *smaller), name.starts_with("GLIF_") ? 19 : 26) << name;
    }
    EXPECT_GT(runner.counters().parts, 25);
}

TEST_F(Runner, ReportsHowFarTheResultIs)
{
    std::vector<double> told;
    QObject::connect(&runner, &EffectRunner::progressDidChange, &runner,
                     [&](double fraction) { told.push_back(fraction); });
    for (const Effect& e : {slow(large, 20), startingEffect("GLIF_Texture", large)}) {
        told.clear();
        runner.run(e);
        // In small steps, as an event loop would.
        while (!runner.waitForResult(1)) {
        }
        ASSERT_GT(told.size(), 2u) << e.identifier;
        EXPECT_TRUE(std::is_sorted(told.begin(), told.end())) << e.identifier;
        EXPECT_LE(told.back(), 1) << e.identifier;
    }
}

// Both kinds of plug-in objects at once: nothing may be shared that is not guarded.
TEST_F(Runner, LeavesThePlugInOfTheWindowAlone)
{
    const PictureRef picture = samplePicture(300, 200);
    CIFMain main;
    const Effect e = startingEffect("CIGlassDistortion", picture);
    const PictureRef expected = direct(main, e);
    for (int i = 0; i < 30; ++i) {
        runner.run(startingEffect(i % 2 == 0 ? "CIPageCurlTransition" : "CIKaleidoscope", picture));
        expectSame(direct(main, e), expected, "while the runner works");
    }
    ASSERT_TRUE(runner.waitForResult());
    CIFMain fresh;
    expectSame(results.back().second, direct(fresh, startingEffect("CIKaleidoscope", picture)),
               "while the window's plug-in works");
}

TEST_F(Runner, APartThatIsARoundingShortCoversWhatIsInSight)
{
    const PictureRef picture = samplePicture(720, 480);
    // Widths of copies that lead back to a little less than 720 points.
    for (const int width : {55, 93, 99, 186, 197, 372, 374, 394, 417}) {
        see({0, 0, 720, 480}, width / 720.0);
        runner.run(sobel(picture, width / 100.0));
        EXPECT_TRUE(runner.waitForResult(20'000)) << width;
    }
}
