// Drawings as pixels.
#include "tests/drawing/Support.h"

#include <cmath>
#include <limits>
#include <random>

namespace drawing {
namespace {

constexpr Rgba kNothing{0, 0, 0, 0}, kRed{255, 0, 0, 255}, kBlue{0, 0, 255, 255};

const Color red = Color::rgb(1, 0, 0), blue = Color::rgb(0, 0, 1);

TEST(Raster, CoversWholePixelsExactlyAndPartsInProportion)
{
    Canvas canvas({16, 8});
    canvas.setColor(red);
    canvas.fillRect({1, 2, 3, 4});      // whole pixels
    canvas.fillRect({6.5, 2, 2, 4.25}); // half at the sides, a quarter on top
    canvas.setColor(red.withAlpha(0.5f));
    canvas.fillRect({11, 2, 3, 4});
    const auto bitmap = drawn(canvas.finish(), 16, 8);
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 6; ++x)
            EXPECT_EQ(pixel(*bitmap, x, y), x >= 1 && x < 4 && y >= 2 && y < 6 ? kRed : kNothing);
    EXPECT_NEAR(pixel(*bitmap, 6, 3).alpha, 127.5, 1);
    EXPECT_EQ(pixel(*bitmap, 7, 3), kRed);
    EXPECT_NEAR(pixel(*bitmap, 8, 3).alpha, 127.5, 1);
    EXPECT_NEAR(pixel(*bitmap, 7, 1).alpha, 63.75, 1);
    EXPECT_NEAR(pixel(*bitmap, 6, 1).alpha, 31.875, 1);
    EXPECT_EQ(pixel(*bitmap, 6, 1).red, 255); // the colour itself is not thinned
    EXPECT_EQ(pixel(*bitmap, 12, 4), (Rgba{255, 0, 0, 128}));
}

TEST(Raster, HasItsOriginAtTheBottomLeftAndFillsTheSizeAskedFor)
{
    Canvas canvas({10, 20});
    canvas.setColor(red);
    canvas.fillRect({0, 0, 1, 1});
    canvas.drawBitmap(
        bitmapFrom(2, 2, [](int x, int y) { return y == 0 && x == 1 ? kBlue : kRed; }),
        {8, 18, 2, 2});
    const RecordingRef recording = canvas.finish();
    const auto same = drawn(recording, 10, 20);
    EXPECT_EQ(pixel(*same, 0, 19), kRed);
    EXPECT_EQ(pixel(*same, 0, 0), kNothing);
    EXPECT_EQ(pixel(*same, 9, 0), kBlue); // row 0 of a bitmap is on top
    EXPECT_EQ(pixel(*same, 8, 0), kRed);
    EXPECT_EQ(pixel(*same, 9, 1), kRed);
    const auto stretched = drawn(recording, 30, 40);
    EXPECT_EQ(pixel(*stretched, 2, 38), kRed);
    EXPECT_EQ(pixel(*stretched, 3, 38), kNothing);
    EXPECT_EQ(pixel(*stretched, 2, 37), kNothing);
}

TEST(Raster, FillsByTheRuleAsked)
{
    for (FillRule rule : {FillRule::NonZero, FillRule::EvenOdd}) {
        Canvas canvas({30, 30});
        Path rings = Path::ovalInRect({0, 0, 30, 30});
        rings.appendOvalInRect({8, 8, 14, 14});
        rings.rule = rule;
        canvas.setColor(blue);
        canvas.fill(rings);
        const auto bitmap = drawn(canvas.finish(), 30, 30);
        EXPECT_EQ(pixel(*bitmap, 15, 15), rule == FillRule::NonZero ? kBlue : kNothing);
        EXPECT_EQ(pixel(*bitmap, 3, 15), kBlue);
        EXPECT_EQ(pixel(*bitmap, 0, 0), kNothing);
    }
}

// The area of a disc tells about curves, antialiasing and their evenness at once.
TEST(Raster, CoversTheAreaOfADisc)
{
    Canvas canvas({100, 100});
    canvas.fill(Path::ovalInRect({10.3, 9.7, 80, 80}));
    const auto bitmap = drawn(canvas.finish(), 100, 100);
    double area = 0;
    for (int y = 0; y < 100; ++y)
        for (int x = 0; x < 100; ++x)
            area += pixel(*bitmap, x, y).alpha / 255.0;
    EXPECT_NEAR(area / (3.14159265 * 40 * 40), 1, 2e-3);
}

TEST(Raster, OperationsActInsideTheirShapeOnly)
{
    // Left: on red at 60 %. Right: on nothing. The source is blue at half opacity.
    struct Case {
        Operation operation;
        Rgba onRed, onNothing;
    };
    const Rgba halfBlue{0, 0, 255, 128}, below{255, 0, 0, 153};
    for (const auto& [operation, onRed, onNothing] : {
             Case{Operation::Copy, halfBlue, halfBlue},
             Case{Operation::SourceOver, {96, 0, 159, 204}, halfBlue},
             Case{Operation::Clear, kNothing, kNothing},
             Case{Operation::SourceIn, {0, 0, 255, 77}, kNothing},
             Case{Operation::SourceAtop, {128, 0, 128, 153}, kNothing},
             Case{Operation::DestinationOver, {191, 0, 64, 204}, halfBlue},
             Case{Operation::Plus, {153, 0, 128, 255}, halfBlue},
             Case{Operation::Multiply, {96, 0, 64, 204}, halfBlue},
         }) {
        for (bool image : {false, true}) {
            SCOPED_TRACE(testing::Message()
                         << "operation " << int(operation) << (image ? " image" : ""));
            Canvas canvas({8, 4});
            canvas.setColor(red.withAlpha(0.6f));
            canvas.fillRect({0, 0, 4, 4});
            canvas.setColor(blue.withAlpha(0.5f));
            if (image)
                canvas.drawBitmap(bitmapFrom(1, 1, [](int, int) { return kBlue; }), {2, 1, 4, 2},
                                  operation, 0.5);
            else
                canvas.fillRect({2, 1, 4, 2}, operation);
            const auto bitmap = drawn(canvas.finish(), 8, 4);
            const auto near = [](Rgba a, Rgba b) {
                const auto off = [](int p, int q) { return std::abs(p - q) > 3; };
                return !off(a.alpha, b.alpha) &&
                       (b.alpha == 0 ||
                        !(off(a.red, b.red) || off(a.green, b.green) || off(a.blue, b.blue)));
            };
            EXPECT_PRED2(near, pixel(*bitmap, 3, 1), onRed);
            EXPECT_PRED2(near, pixel(*bitmap, 4, 1), onNothing);
            EXPECT_PRED2(near, pixel(*bitmap, 0, 1), below);
            EXPECT_PRED2(near, pixel(*bitmap, 3, 0), below);
            EXPECT_PRED2(near, pixel(*bitmap, 7, 1), kNothing);
        }
    }
}

TEST(Raster, PaintsTheColourThroughAMask)
{
    const auto mask = bitmapFrom(2, 1, [](int x, int) {
        return Rgba{9, 9, 9, x == 0 ? 255 : 102};
    });
    Canvas canvas({4, 4});
    canvas.setColor(blue.withAlpha(0.5f));
    canvas.concat(
        {0, 1, -1, 0, 4, 0}); // a quarter turn counter-clockwise: the left becomes the bottom
    canvas.drawMask(mask, {1, 1, 2, 1});
    const auto bitmap = drawn(canvas.finish(), 4, 4);
    EXPECT_EQ(pixel(*bitmap, 2, 2), (Rgba{0, 0, 255, 128}));
    EXPECT_NEAR(pixel(*bitmap, 2, 1).alpha, 51, 1);
    EXPECT_EQ(pixel(*bitmap, 1, 2), kNothing);
    EXPECT_EQ(pixel(*bitmap, 2, 3), kNothing);
}

TEST(Raster, KeepsEnlargedPicturesSharpAtTheirEdgeAndAveragesReducedOnes)
{
    Canvas canvas({20, 10});
    canvas.drawBitmap(bitmapFrom(2, 2, [](int, int) { return kRed; }), {1, 1, 8, 8});
    canvas.drawBitmap(bitmapFrom(64, 64, [](int x, int) { return x % 2 ? kRed : kBlue; }),
                      {11, 1, 8, 8});
    const auto bitmap = drawn(canvas.finish(), 20, 10);
    EXPECT_EQ(pixel(*bitmap, 1, 1), kRed);
    EXPECT_EQ(pixel(*bitmap, 8, 8), kRed);
    EXPECT_EQ(pixel(*bitmap, 0, 1), kNothing);
    EXPECT_EQ(pixel(*bitmap, 9, 8), kNothing);
    EXPECT_NEAR(pixel(*bitmap, 15, 5).red, 127.5, 6);
    EXPECT_NEAR(pixel(*bitmap, 15, 5).blue, 127.5, 6);
}

TEST(Raster, DrawsALineOfWidthNoughtOnePixelWideAtAnyScale)
{
    for (int scale : {1, 8}) {
        Canvas canvas({10, 10});
        canvas.concat(AffineTransform::scaling(0.5, 0.5));
        Path line;
        line.moveTo({0, 10 + 1.0 / scale}); // through the middle of a row of pixels
        line.lineTo({20, 10 + 1.0 / scale});
        line.lineWidth = 0;
        canvas.stroke(line);
        const auto bitmap = drawn(canvas.finish(), 10 * scale, 10 * scale);
        int ink = 0;
        for (int y = 0; y < bitmap->height(); ++y)
            ink += pixel(*bitmap, 4 * scale, y).alpha;
        EXPECT_NEAR(ink, 255, 2) << scale;
    }
}

TEST(Raster, ShapesThePenByTheTransform)
{
    Canvas canvas({100, 100});
    canvas.concat(AffineTransform::scaling(1, 5));
    Path frame;
    frame.appendRect({20, 4, 60, 12});
    frame.lineWidth = 4;
    canvas.stroke(frame);
    const auto bitmap = drawn(canvas.finish(), 100, 100);
    // 4 wide across, 20 wide up and down, around 20…80 × 20…80.
    EXPECT_EQ(pixel(*bitmap, 17, 50).alpha, 0);
    EXPECT_EQ(pixel(*bitmap, 18, 50).alpha, 255);
    EXPECT_EQ(pixel(*bitmap, 22, 50).alpha, 0);
    EXPECT_EQ(pixel(*bitmap, 50, 9).alpha, 0);
    EXPECT_EQ(pixel(*bitmap, 50, 10).alpha, 255);
    EXPECT_EQ(pixel(*bitmap, 50, 29).alpha, 255);
    EXPECT_EQ(pixel(*bitmap, 50, 30).alpha, 0);
}

// Far coordinates are cut down before drawing; near the picture nothing may change by that.
TEST(Raster, DrawsTheSameWhereverAShapeEnds)
{
    const auto picture = [](double far) {
        Canvas canvas({60, 60});
        canvas.setColor(red);
        Path wedge; // beyond the limit the slopes stay as they are
        wedge.moveTo({10, 10}), wedge.lineTo({10 + far, 10 + far / 2}),
            wedge.lineTo({10 + far, 10 + far});
        wedge.close();
        canvas.fill(wedge);
        canvas.setColor(blue.withAlpha(0.5f));
        Path rings = Path::ovalInRect({30 - far, 20 - far, 2 * far, 2 * far});
        rings.appendRect({20, 5, 30, 10});
        rings.rule = FillRule::EvenOdd;
        canvas.fill(rings);
        canvas.setColor(Color::black());
        Path corner;
        corner.moveTo({50 + far, 20}), corner.lineTo({50, 20}), corner.lineTo({50, 50});
        corner.lineTo({50 - far, 50 + far}), corner.close();
        corner.lineWidth = 4;
        corner.join = LineJoin::Round;
        canvas.stroke(corner);
        return drawn(canvas.finish(), 120, 120);
    };
    const auto near = picture(300); // all of it well within what the rasteriser can do
    keepForTheEye(*near, "far");
    EXPECT_EQ(pixel(*near, 80, 50), (Rgba{127, 0, 128, 255})); // the wedge under the rings
    EXPECT_EQ(pixel(*near, 60, 100), kNothing);                // the hole
    EXPECT_EQ(pixel(*near, 86, 6), (Rgba{0, 0, 0, 255}));      // the line to the upper left
    for (double far : {2e4, 5e4, 1e5, 1e6, 5e6, 1e9, 1e13}) {
        const auto cut = picture(far);
        EXPECT_LT(meanDifference(*near, *cut), 0.1) << far;
    }
}

TEST(Raster, SurvivesAnyNumbers)
{
    std::mt19937 random(7);
    const double odd[] = {0,        1,      -3,   50,       1e4,      -1e6,  8388607,
                          -8388609, 1e9,    1e12, 1e18,     -1e30,    1e300, -1e308,
                          1e-9,     1e-300, NAN,  INFINITY, -INFINITY};
    const auto any = [&] { return odd[random() % std::size(odd)]; };
    const auto mild = [&] { return random() % 4 ? double(random() % 100) : any(); };
    const auto stamp = bitmapFrom(3, 2, [](int x, int y) { return Rgba{80 * x, 80 * y, 9, 200}; });
    for (int round = 0; round < 500; ++round) {
        Canvas canvas({100, 80});
        if (random() % 3 == 0)
            canvas.concat({mild(), mild(), mild(), mild(), mild(), mild()});
        canvas.setColor({float(any()), float(any()), float(mild()), float(mild())});
        Path path;
        for (int i = 0; i < 6; ++i)
            switch (random() % 6) {
            case 0:
                path.moveTo({mild(), mild()});
                break;
            case 1:
                path.close();
                break;
            case 2:
                path.curveTo({mild(), mild()}, {mild(), mild()}, {mild(), mild()});
                break;
            case 3:
                path.appendArc({mild(), mild()}, mild(), mild(), mild(), random() % 2);
                break;
            default:
                path.lineTo({mild(), mild()});
            }
        path.rule = FillRule(random() % 2);
        path.lineWidth = mild();
        path.cap = LineCap(random() % 3);
        path.join = LineJoin(random() % 3);
        canvas.fill(path);
        canvas.stroke(path);
        canvas.fillRect({mild(), mild(), mild(), mild()}, Operation(random() % 8));
        canvas.drawBitmap(stamp, {mild(), mild(), mild(), mild()}, Operation(random() % 8), mild());
        canvas.drawMask(stamp, {mild(), mild(), mild(), mild()});
        // What comes after is drawn all the same.
        const RecordingRef before = canvas.finish();
        Canvas after({100, 80});
        after.setColor(red);
        after.fillRect({2, 2, 4, 4});
        Recording whole = *before;
        whole.ops.push_back(after.finish()->ops.front());
        const auto bitmap = rasterize(whole, 100, 80);
        ASSERT_TRUE(bitmap) << round << ": " << bitmap.error();
        EXPECT_EQ(pixel(**bitmap, 3, 75), kRed) << round;
        path.contains({mild(), mild()}, path.rule);
        if (round % 10 == 0)
            for (VectorFormat format : {VectorFormat::Pdf, VectorFormat::Svg, VectorFormat::Eps}) {
                const auto bytes = encodeVector(whole, format, "");
                EXPECT_TRUE(bytes) << round << ": " << bytes.error();
            }
        EXPECT_FALSE(traceOf(whole).empty());
    }
}

TEST(Raster, RefusesSizesItCannotDraw)
{
    const RecordingRef plain = Canvas({10, 10}).finish();
    for (const auto& [width, height] : {std::pair{0, 10}, {10, -1}, {32768, 1}, {1, 100000}}) {
        const auto bitmap = rasterize(*plain, width, height);
        ASSERT_FALSE(bitmap);
        EXPECT_FALSE(bitmap.error().empty());
    }
    EXPECT_TRUE(rasterize(*plain, 32767, 1));
    for (Size size : {Size{0, 10}, Size{NAN, 10}, Size{10, -4}})
        EXPECT_FALSE(rasterize(*Canvas(size).finish(), 10, 10));
}

} // namespace
} // namespace drawing
