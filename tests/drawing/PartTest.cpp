// Parts of drawings, and drawings that are given up.
#include "tests/drawing/Support.h"

#include "platform/drawing/Picture.h"
#include "platform/foundation/Log.h"
#include "platform/foundation/Work.h"

#include <cmath>
#include <random>

namespace drawing {
namespace {

using foundation::Stopped;
using foundation::WorkScope;

// Fills, strokes with mitres and with the thinnest pen, turned pictures, all over and past the
// edges.
RecordingRef scene(int shapes = 150)
{
    std::mt19937 random(3);
    std::uniform_real_distribution<double> at(-40, 340), turn(0, 6.3), share(0, 1);
    const auto tile = bitmapFrom(8, 8, [](int x, int y) { return Rgba{x * 30, y * 30, 90, 255}; });
    Canvas canvas({300, 300});
    for (int i = 0; i < shapes; ++i) {
        const float red = static_cast<float>(share(random));
        const float alpha = static_cast<float>(share(random));
        canvas.setColor(Color::rgb(red, 0.5f, 1 - red).withAlpha(i % 3 == 0 ? 1 : alpha));
        canvas.save();
        const double x = at(random), y = at(random);
        canvas.concat(
            AffineTransform::rotation(turn(random)).followedBy(AffineTransform::translation(x, y)));
        Path path;
        path.moveTo({-30, -10});
        path.lineTo({25, 0});
        path.curveTo({40, 20}, {-10, 30}, {-28, -4});
        path.lineWidth = i % 4;
        if (i % 5 == 0)
            canvas.drawBitmap(tile, {-9, -9, 18, 18});
        else if (i % 2 == 0)
            canvas.fill(path);
        else
            canvas.stroke(path);
        canvas.restore();
    }
    return canvas.finish();
}

int largestDifference(const imaging::Bitmap& a, const imaging::Bitmap& b, int left = 0, int top = 0)
{
    int largest = 0;
    for (int y = 0; y < b.height(); ++y)
        for (int x = 0; x < b.width(); ++x) {
            const Rgba p = pixel(a, left + x, top + y), q = pixel(b, x, y);
            // Colours weigh as much as their alpha.
            for (const auto& [c, d] : {std::pair{p.red * p.alpha / 255, q.red * q.alpha / 255},
                                       {p.blue * p.alpha / 255, q.blue * q.alpha / 255},
                                       {p.alpha, q.alpha}})
                largest = std::max(largest, std::abs(c - d));
        }
    return largest;
}

TEST(DrawnPart, IsTheCropOfTheWhole)
{
    const RecordingRef recording = scene();
    const auto whole = drawn(recording, 300, 300);
    keepForTheEye(*whole, "part-whole");
    const auto all = rasterizePart(*recording, {0, 0, 300, 300}, 300, 300);
    ASSERT_TRUE(all);
    EXPECT_LE(largestDifference(*whole, **all), 1);
    for (const Rect part : {Rect{0, 0, 100, 300}, Rect{37, 64, 120, 99}, Rect{250, 200, 50, 100}}) {
        const int width = static_cast<int>(part.width), height = static_cast<int>(part.height);
        const auto cut = rasterizePart(*recording, part, width, height);
        ASSERT_TRUE(cut);
        keepForTheEye(**cut, "part-at-" + std::to_string(int(part.x)));
        // A cut edge is rounded anew, to some hundredths of a pixel.
        EXPECT_LE(largestDifference(*whole, **cut, static_cast<int>(part.x),
                                    300 - static_cast<int>(part.top())),
                  8);
    }
}

TEST(DrawnPart, IsTheCropOfTheWholeAtOtherScales)
{
    const RecordingRef recording = scene();
    for (const double scale : {0.5, 3.0}) {
        const int side = static_cast<int>(300 * scale);
        const auto whole = drawn(recording, side, side);
        const auto cut =
            rasterizePart(*recording, {60, 90, 120, 150}, static_cast<int>(120 * scale),
                          static_cast<int>(150 * scale));
        ASSERT_TRUE(cut);
        EXPECT_LE(largestDifference(*whole, **cut, static_cast<int>(60 * scale),
                                    static_cast<int>(60 * scale)),
                  8);
    }
    // Not as wide as high, and beyond the drawing.
    const auto stretched = rasterizePart(*recording, {-300, 0, 600, 300}, 100, 150);
    ASSERT_TRUE(stretched);
    EXPECT_EQ(pixel(**stretched, 20, 75), (Rgba{0, 0, 0, 0}));
    EXPECT_GT(meanDifference(**stretched,
                             *imaging::Bitmap::makeClear(100, 150, imaging::PixelFormat::Rgba8)),
              1);
}

TEST(DrawnPart, IsOneThreadsWorkWhenAskedFor)
{
    const RecordingRef recording = scene();
    const Rect part{20, 10, 200, 280};
    const auto one = rasterizePart(*recording, part, 500, 700, {.stop = {}, .threaded = false});
    const auto all = rasterizePart(*recording, part, 500, 700);
    ASSERT_TRUE(one && all);
    EXPECT_EQ(largestDifference(**one, **all), 0);
}

TEST(DrawnPart, NeedsASize)
{
    const RecordingRef recording = scene(1);
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    for (const Rect part : {Rect{0, 0, 0, 10}, Rect{0, 0, 10, -1}, Rect{NAN, 0, 10, 10},
                            Rect{0, 0, NAN, 10}, Rect{0, kInfinity, 10, 10}})
        EXPECT_FALSE(rasterizePart(*recording, part, 10, 10));
    EXPECT_FALSE(rasterizePart(*recording, {0, 0, 10, 10}, 0, 10));
    EXPECT_FALSE(rasterizePart(*recording, {0, 0, 10, 10}, 40'000, 10));
}

TEST(DrawnPart, IsAskedOfPicturesThatAreDrawn)
{
    const PictureRef picture = Picture::fromRecording(scene());
    const auto part = picture->part({50, 50, 100, 80}, 100, 80);
    ASSERT_TRUE(part);
    EXPECT_LE(largestDifference(*picture->bitmap(), *part, 50, 170), 8);
    // Nothing of it was kept.
    EXPECT_EQ(picture->bitmap()->width(), 300);
    const auto pixels = bitmapFrom(4, 4, [](int, int) { return Rgba{1, 2, 3, 255}; });
    EXPECT_FALSE(Picture::fromBitmap(pixels)->part({0, 0, 4, 4}, 4, 4));
    EXPECT_FALSE(Picture::fromBitmapAndRecording(pixels, scene(1))->part({0, 0, 4, 4}, 4, 4));
}

// Stops at the report of that number. Whether it was given up.
bool isStoppedAt(int number, const std::function<void()>& work)
{
    std::stop_source source;
    int reports = 0;
    try {
        const WorkScope scope(source.get_token(), [&](double) {
            if (++reports == number)
                source.request_stop();
        });
        work();
    } catch (const Stopped&) {
        return true;
    }
    return false;
}

TEST(StoppedDrawing, GivesNoPixelsAndKeepsNone)
{
    const RecordingRef recording = scene();
    const PictureRef picture = Picture::fromRecording(recording);
    for (const int at : {1, 40, 149}) {
        EXPECT_TRUE(isStoppedAt(at, [&] { picture->bitmap(); })) << at;
        EXPECT_FALSE(picture->bitmapIfMade());
    }
    // Several threads draw, and only this one's reports are heard.
    for (const int at : {1, 10})
        EXPECT_TRUE(isStoppedAt(at, [&] { picture->part({0, 0, 300, 300}, 900, 900); })) << at;
    EXPECT_EQ(largestDifference(*drawn(recording, 300, 300), *picture->bitmap()), 0);
    // What is there is handed out.
    EXPECT_FALSE(isStoppedAt(1, [&] { picture->bitmap(); }));
}

TEST(StoppedDrawing, IsAnErrorForATokenOfItsOwn)
{
    std::stop_source source;
    source.request_stop();
    EXPECT_FALSE(rasterizePart(*scene(), {0, 0, 300, 300}, 300, 300,
                               {.stop = source.get_token(), .threaded = true}));
    int lines = 0;
    const auto former = foundation::setLogSink([&](std::string_view) { ++lines; });
    const PictureRef picture = Picture::fromRecording(scene());
    EXPECT_FALSE(picture->part({0, 0, 9, 9}, 9, 9, {.stop = source.get_token(), .threaded = true}));
    foundation::setLogSink(former);
    EXPECT_EQ(lines, 0);
}

TEST(StoppedDrawing, IsNotRecordedAnyFurther)
{
    std::stop_source source;
    const WorkScope scope(source.get_token());
    Canvas canvas({10, 10});
    canvas.fillRect({0, 0, 1, 1});
    source.request_stop();
    EXPECT_THROW(canvas.fillRect({0, 0, 1, 1}), Stopped);
    EXPECT_THROW(canvas.stroke(Path::ovalInRect({0, 0, 5, 5})), Stopped);
}

} // namespace
} // namespace drawing
