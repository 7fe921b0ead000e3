// What a canvas records, read back through the trace.
#include "tests/drawing/Support.h"

#include <cmath>

namespace drawing {
namespace {

TEST(Canvas, TracesWhatWasDrawnAfterAllTransforms)
{
    Canvas canvas({100, 50});
    canvas.setColor(Color::rgb(1, 0.5f, 0.25f));
    canvas.fillRect({0, 0, 10, 5});

    canvas.save();
    canvas.concat(AffineTransform::translation(20, 10));
    canvas.concat(AffineTransform::scaling(2, 8)); // first scaled, then moved
    Path curve;
    curve.moveTo({0, 0});
    curve.curveTo({1, 0}, {1, 1}, {1.0 / 3, -0.0001});
    curve.close();
    curve.lineWidth = 1.5;
    curve.cap = LineCap::Round;
    curve.join = LineJoin::Bevel;
    curve.rule = FillRule::EvenOdd;
    canvas.setStrokeColor(Color::black().withAlpha(0.125f));
    canvas.fill(curve);
    canvas.stroke(curve);
    canvas.drawBitmap(bitmapFrom(1, 1, [](int, int) { return Rgba{}; }), {1, 1, 3, 4},
                      Operation::SourceOver, 0.5);
    canvas.restore();

    canvas.drawMask(bitmapFrom(1, 1, [](int, int) { return Rgba{}; }), {5, 6, 7, 8});
    canvas.setColor(Color::white());
    canvas.strokeRect({0, 0, 1e6, 1}, 0);

    EXPECT_EQ(
        traceOf(*canvas.finish()),
        R"({"op":"fill","rgba":[1,0.5,0.25,1],"rule":"nonzero","path":[["M",0,0],["L",10,0],["L",10,5],["L",0,5],["Z"]]}
{"op":"fill","rgba":[1,0.5,0.25,1],"rule":"evenodd","path":[["M",20,10],["C",22,10,22,18,20.667,9.999],["Z"]]}
{"op":"stroke","rgba":[0,0,0,0.125],"width":6,"cap":"round","join":"bevel","path":[["M",20,10],["C",22,10,22,18,20.667,9.999],["Z"]]}
{"op":"image","rgba":[1,1,1,0.5],"size":[3,4],"matrix":[2,0,0,8,22,18]}
{"op":"image","rgba":[1,0.5,0.25,1],"size":[7,8],"matrix":[1,0,0,1,5,6]}
{"op":"stroke","rgba":[1,1,1,1],"width":0,"cap":"butt","join":"miter","path":[["M",0,0],["L",1000000,0],["L",1000000,1],["L",0,1],["Z"]]}
)");
}

TEST(Canvas, TracesOddNumbersAsJson)
{
    Canvas canvas({10, 10});
    Path path;
    path.moveTo({-0.0001, 1e21});
    path.lineTo({NAN, -INFINITY});
    path.lineTo({-1.0005, 0.9996});
    canvas.fill(path);
    EXPECT_EQ(
        traceOf(*canvas.finish()),
        R"({"op":"fill","rgba":[0,0,0,1],"rule":"nonzero","path":[["M",0,1000000000000000000000],["L",null,null],["L",-1,1]]})"
        "\n");
}

TEST(Canvas, LeavesOutWhatDrawsNothing)
{
    Canvas canvas({10, 10});
    canvas.restore();
    canvas.fill({});
    canvas.stroke({});
    canvas.drawBitmap(nullptr, {0, 0, 5, 5});
    canvas.drawMask(bitmapFrom(1, 1, [](int, int) { return Rgba{}; }), {0, 0, 0, 5});
    const RecordingRef recording = canvas.finish();
    EXPECT_TRUE(recording->ops.empty());
    EXPECT_EQ(recording->size, (Size{10, 10}));
    // What is drawn later does not reach a recording handed over.
    canvas.fillRect({0, 0, 5, 5});
    EXPECT_TRUE(recording->ops.empty());
    EXPECT_EQ(canvas.finish()->ops.size(), 1u);
}

} // namespace
} // namespace drawing
