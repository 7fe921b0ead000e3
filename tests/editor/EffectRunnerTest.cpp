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

struct Recorded {
    std::vector<std::pair<Effect, PictureRef>> results;
    std::vector<std::pair<BitmapRef, Rect>> parts;
    std::vector<bool> busy;
    std::string order; // "p" a part, "r" a result

    void forget()
    {
        results.clear();
        parts.clear();
        order.clear();
    }

    explicit Recorded(EffectRunner& runner)
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

TEST(EffectRunner, GivesWhatThePlugInGivesByteForByte)
{
    const PictureRef picture = samplePicture(180, 130);
    EffectRunner runner;
    Recorded seen(runner);
    runner.setSight({{0, 0, 180, 130}, 0.5});
    CIFMain main;
    for (const char* name : {"CIFSobel", "CIGaussianBlur", "CIKaleidoscope", "CIStarShineGenerator",
                             "CIPageCurlTransition", "CIGlassDistortion", "GLIF_Plasma",
                             "GLIF_FlashLines", "GLIF_Shapes", "GLIF_Foam"})
        for (const std::uint32_t seed : {1u, 77u}) {
            const Effect e = startingEffect(name, picture, seed);
            runner.run(e);
            ASSERT_TRUE(runner.waitForResult());
            const PictureRef expected = direct(main, e);
            ASSERT_FALSE(seen.results.empty());
            EXPECT_TRUE(seen.results.back().first == e) << name;
            ASSERT_TRUE(seen.results.back().second) << name;
            EXPECT_TRUE(seen.results.back().second->bitmapIfMade()) << name;
            expectSame(seen.results.back().second, expected, name);
        }
    // A filter's seed is one more value, so every run counted.
    EXPECT_EQ(runner.counters().results, 20);
}

// A picture with a resolution of its own: light added onto it is as large as its pixels at first,
// and as its points when the call repeats.
TEST(EffectRunner, KeepsWhatARepeatedCallAnswers)
{
    const PictureRef picture =
        Picture::fromBitmap(samplePicture(120, 80)->bitmap(), foundation::Size{60, 40});
    CIFMain main;
    EffectRunner runner;
    Recorded seen(runner);
    Effect e = startingEffect("CIStarShineGenerator", picture);
    for (const double radius : {10.0, 20.0, 30.0}) {
        e.attributes.set("inputRadius", radius);
        runner.run(e); // the first two may be passed over
    }
    ASSERT_TRUE(runner.waitForResult());
    for (const double radius : {10.0, 20.0, 30.0}) {
        e.attributes.set("inputRadius", radius);
        const PictureRef expected = direct(main, e);
        if (radius == 30)
            expectSame(seen.results.back().second, expected, "repeated");
    }
    EXPECT_EQ(seen.results.back().second->size(), (foundation::Size{60, 40}));
    EXPECT_TRUE(seen.parts.empty()) << "the result has another size than what is shown";
}

TEST(EffectRunner, TheNewestEffectWins)
{
    const PictureRef picture = samplePicture(1400, 1000);
    EffectRunner runner;
    Recorded seen(runner);
    runner.setSight({{0, 0, 1400, 1000}, 0.25});
    for (int i = 1; i <= 40; ++i)
        runner.run(slow(picture, i));
    EXPECT_TRUE(runner.isBusy());
    ASSERT_TRUE(runner.waitForResult());
    ASSERT_EQ(seen.results.size(), 1u);
    EXPECT_TRUE(seen.results[0].first == slow(picture, 40));
    CIFMain main;
    expectSame(seen.results[0].second, direct(main, slow(picture, 40)), "the newest");
    EXPECT_EQ(seen.order.back(), 'r');
    EXPECT_EQ(seen.busy, (std::vector<bool>{true, false}));
    EXPECT_FALSE(runner.isBusy());
}

TEST(EffectRunner, ShowsThePartInSightBeforeTheResult)
{
    const PictureRef picture = samplePicture(1400, 1000);
    EffectRunner runner;
    Recorded seen(runner);
    const Rect visible{300, 200, 200, 100};
    for (const double density : {0.25, 1.0}) {
        runner.setSight({visible, density});
        runner.run(slow(picture, 10 + density));
        ASSERT_TRUE(runner.waitForResult());
        EXPECT_EQ(seen.order, "pr");
        ASSERT_EQ(seen.parts.size(), 1u);
        const auto& [pixels, rect] = seen.parts[0];
        EXPECT_LE(rect.x, visible.x);
        EXPECT_LE(rect.y, visible.y);
        EXPECT_GE(rect.right(), visible.right());
        EXPECT_GE(rect.top(), visible.top());
        EXPECT_LT(rect.width, 600) << "far more than is in sight";
        EXPECT_NEAR(pixels->width() / rect.width, density, 0.01);
        if (density == 1) {
            const BitmapRef result = seen.results[0].second->bitmap();
            const BitmapRef same =
                support::render(support::image(result), rect, imaging::PixelFormat::Rgba8);
            EXPECT_EQ(compare(*pixels, *same).largest, 0);
        }
        seen.forget();
    }
}

TEST(EffectRunner, NothingIsRunTwiceAndPanningOverAResultRendersNothing)
{
    const PictureRef picture = samplePicture(300, 200);
    EffectRunner runner;
    Recorded seen(runner);
    runner.setSight({{0, 0, 100, 100}, 0.5});
    runner.run(sobel(picture, 3));
    runner.run(sobel(picture, 3));
    ASSERT_TRUE(runner.waitForResult());
    const auto before = runner.counters();
    EXPECT_EQ(before.results, 1);
    runner.run(sobel(picture, 3));
    EXPECT_FALSE(runner.isBusy());
    for (int i = 0; i < 20; ++i)
        runner.setSight({{i * 10.0, 0, 100, 100}, 0.5 + i * 0.1});
    EXPECT_TRUE(runner.waitForResult());
    QTest::qWait(50);
    EXPECT_EQ(runner.counters().results, before.results);
    EXPECT_EQ(runner.counters().parts, before.parts);

    runner.reset();
    runner.run(sobel(picture, 3));
    EXPECT_TRUE(runner.isBusy());
    ASSERT_TRUE(runner.waitForResult());
    EXPECT_EQ(runner.counters().results, 2);
}

TEST(EffectRunner, GoingBackToTheResultShowsItAgainWithoutRendering)
{
    const PictureRef picture = samplePicture(1400, 1000);
    EffectRunner runner;
    Recorded seen(runner);
    runner.setSight({{0, 0, 1400, 1000}, 0.25});
    runner.run(sobel(picture, 3));
    ASSERT_TRUE(runner.waitForResult());
    const int parts = runner.counters().parts;
    runner.run(slow(picture, 20));
    ASSERT_TRUE(QTest::qWaitFor([&] { return runner.counters().parts > parts; }));
    runner.run(sobel(picture, 3));
    EXPECT_FALSE(runner.isBusy());
    ASSERT_EQ(seen.results.size(), 2u);
    EXPECT_EQ(seen.results[0].second, seen.results[1].second);
    EXPECT_EQ(runner.counters().results, 1);
}

TEST(EffectRunner, AStoppedEffectDeliversNothingMore)
{
    const PictureRef picture = samplePicture(1400, 1000);
    EffectRunner runner;
    Recorded seen(runner);
    runner.setSight({{0, 0, 1400, 1000}, 0.5});
    runner.run(sobel(picture, 3));
    ASSERT_TRUE(runner.waitForResult());
    const std::string before = seen.order;
    for (const bool begun : {false, true}) {
        runner.run(slow(picture, 20));
        if (begun) {
            ASSERT_TRUE(QTest::qWaitFor([&] { return seen.order != before; }));
        }
        runner.stop();
        EXPECT_FALSE(runner.isBusy());
        const std::string atStop = seen.order;
        EXPECT_TRUE(runner.waitForResult());
        QTest::qWait(100);
        EXPECT_EQ(seen.order, atStop);
    }
    EXPECT_EQ(runner.counters().results, 1);
    // It was not made, so it can be run again.
    runner.run(slow(picture, 20));
    ASSERT_TRUE(runner.waitForResult());
    EXPECT_EQ(runner.counters().results, 2);
}

TEST(EffectRunner, WhatComesIntoSightWhileTheResultIsMadeComesFirst)
{
    const PictureRef picture = samplePicture(2400, 1800);
    EffectRunner runner;
    Recorded seen(runner);
    runner.setSight({{0, 0, 200, 200}, 1});
    runner.run(slow(picture, 30));
    ASSERT_TRUE(QTest::qWaitFor([&] { return seen.parts.size() == 1; }));
    runner.setSight({{2000, 1500, 200, 200}, 1});
    ASSERT_TRUE(runner.waitForResult());
    EXPECT_EQ(seen.order, "ppr");
    EXPECT_GE(seen.parts[1].second.x, 1900);
}

TEST(EffectRunner, AnEffectWithoutAnImageAnswersNull)
{
    EffectRunner runner;
    Recorded seen(runner);
    runner.run(effect("NoSuchFilter", {}, samplePicture(8, 8)));
    ASSERT_TRUE(runner.waitForResult());
    runner.run(effect("CIFSobel", {}, nullptr));
    ASSERT_TRUE(runner.waitForResult());
    runner.run(effect("GLIF_NoSuchGenerator", {}, samplePicture(8, 8)));
    ASSERT_TRUE(runner.waitForResult());
    ASSERT_EQ(seen.results.size(), 3u);
    for (const auto& [e, picture] : seen.results)
        EXPECT_FALSE(picture) << e.identifier;
}

TEST(EffectRunner, CanGoWhileItIsBusy)
{
    const PictureRef picture = samplePicture(1400, 1000);
    for (int i = 0; i < 20; ++i) {
        auto runner = std::make_unique<EffectRunner>();
        runner->setSight({{0, 0, 1400, 1000}, 0.5});
        runner->run(slow(picture, i));
        if (i % 2 == 1)
            QTest::qWait(i);
        if (i % 4 == 3)
            QObject::connect(runner.get(), &EffectRunner::partDidArrive, runner.get(),
                             [&] { runner.reset(); });
    }
    SUCCEED();
}

// The window's thread draws no numbers; if another did, the sequences would mix.
TEST(EffectRunner, NumbersAreDrawnOnItsThreadAlone)
{
    const PictureRef picture = samplePicture(200, 150);
    std::srand(4711);
    const int first = std::rand(), second = std::rand();
    EffectRunner runner;
    std::srand(4711);
    EXPECT_EQ(std::rand(), first);
    runner.setSight({{0, 0, 200, 150}, 0.5});
    runner.run(startingEffect("CIRandomGenerator", picture));
    ASSERT_TRUE(runner.waitForResult());
    EXPECT_EQ(std::rand(), second) << "a filter drew from the generators' sequence";
}

// At the size shown, what a hand sees while it drags is what it gets when it rests.
TEST(EffectRunner, PreviewsLookLikeTheResult)
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
    EffectRunner runner;
    Recorded seen(runner);
    runner.setSight({all, 0.25});
    for (const char* name : {"CIFAffineTransform2Filter",
                             "CIGaussianBlur",
                             "CIBoxBlur",
                             "CIDiscBlur",
                             "CIMotionBlur",
                             "CIZoomBlur",
                             "CIUnsharpMask",
                             "CISharpenLuminance",
                             "CIBumpDistortion",
                             "CITwirlDistortion",
                             "CIVortexDistortion",
                             "CIGlassDistortion",
                             "CIFNetDistortion",
                             "CITorusLensDistortion",
                             "CIPageCurlTransition",
                             "CIBloom",
                             "CICrystallize",
                             "CIPixellate",
                             "CIEdgeWork",
                             "CIFSobel",
                             "CIEdges",
                             "CIFShadingFilter",
                             "CIHatchedScreen",
                             "CICMYKHalftone",
                             "CIKaleidoscope",
                             "CIFOffset",
                             "CITriangleTile",
                             "CISixfoldRotatedTile",
                             "CIStarShineGenerator",
                             "CIModTransition",
                             "CIStripesGenerator"}) {
        seen.forget();
        Effect e = startingEffect(name, picture);
        runner.run(e);
        ASSERT_TRUE(runner.waitForResult());
        if (seen.parts.empty())
            continue; // the whole was quick
        ASSERT_TRUE(seen.results[0].second) << name;
        EXPECT_EQ(seen.parts[0].second, all) << name;
        const imaging::Bitmap& part = *seen.parts[0].first;
        const BitmapRef smaller =
            drawing::scaledBitmap(*seen.results[0].second->bitmap(), part.width(), part.height());
        EXPECT_GT(likeness(part, *smaller), 26) << name;
    }
    EXPECT_GT(runner.counters().parts, 25);
}

TEST(EffectRunner, ReportsHowFarTheResultIs)
{
    EffectRunner runner;
    std::vector<double> told;
    QObject::connect(&runner, &EffectRunner::progressDidChange, &runner,
                     [&](double fraction) { told.push_back(fraction); });
    for (const Effect& e : {slow(samplePicture(1400, 1000), 20),
                            startingEffect("GLIF_Texture", samplePicture(1400, 1000))}) {
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
TEST(EffectRunner, LeavesThePlugInOfTheWindowAlone)
{
    const PictureRef picture = samplePicture(300, 200);
    EffectRunner runner;
    Recorded seen(runner);
    CIFMain main;
    const Effect e = startingEffect("CIGlassDistortion", picture);
    const PictureRef expected = direct(main, e);
    for (int i = 0; i < 30; ++i) {
        runner.run(startingEffect(i % 2 == 0 ? "CIPageCurlTransition" : "CIKaleidoscope", picture));
        expectSame(direct(main, e), expected, "while the runner works");
    }
    ASSERT_TRUE(runner.waitForResult());
    CIFMain fresh;
    expectSame(seen.results.back().second, direct(fresh, startingEffect("CIKaleidoscope", picture)),
               "while the window's plug-in works");
}

TEST(EffectRunner, APartThatIsARoundingShortCoversWhatIsInSight)
{
    const PictureRef picture = samplePicture(720, 480);
    EffectRunner runner;
    // Widths of copies that lead back to a little less than 720 points.
    for (const int width : {55, 93, 99, 186, 197, 372, 374, 394, 417}) {
        runner.setSight({{0, 0, 720, 480}, width / 720.0});
        runner.run(sobel(picture, width / 100.0));
        EXPECT_TRUE(runner.waitForResult(20'000)) << width;
    }
}
