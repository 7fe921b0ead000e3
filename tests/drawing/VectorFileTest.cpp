// Drawings written as PDF, SVG and EPS and read back through the sources of vector pictures.
#include "platform/drawing/VectorSources.h"
#include "tests/drawing/Support.h"

namespace drawing {
namespace {

const std::pair<VectorFormat, const char*> kFormats[] = {
    {VectorFormat::Pdf, "pdf"}, {VectorFormat::Svg, "svg"}, {VectorFormat::Eps, "eps"}};

VectorSourceResult sourceOf(VectorFormat format, std::string bytes)
{
    switch (format) {
    case VectorFormat::Pdf:
        return pdfSource(std::move(bytes));
    case VectorFormat::Svg:
        return svgSource(std::move(bytes));
    case VectorFormat::Eps:
        break;
    }
    return epsSource(std::move(bytes));
}

// Fills by both rules, caps, joins, pens, pictures, masks and translucency, on transparent.
RecordingRef testCard()
{
    Canvas canvas({150.5, 100});
    canvas.setColor(Color::rgb(0.9f, 0.95f, 1));
    canvas.fillRect({0, 0, 100, 60});
    canvas.setColor(Color::rgb(1, 0, 0));
    canvas.fillRect({0, 0, 12, 6}); // tells the bottom left corner
    Path rings = Path::ovalInRect({8, 55, 40, 40});
    rings.appendOvalInRect({18, 65, 20, 20});
    rings.rule = FillRule::EvenOdd;
    canvas.setColor(Color::rgb(0, 0.3f, 0.8f));
    canvas.fill(rings);
    for (int i = 0; i < 3; ++i) {
        Path corner;
        corner.moveTo({60.0 + i * 30, 60}), corner.lineTo({68.0 + i * 30, 88}),
            corner.lineTo({76.0 + i * 30, 60});
        corner.lineWidth = 7;
        corner.cap = LineCap(i);
        corner.join = LineJoin(i);
        canvas.setColor(Color::rgb(0.2f, 0.2f, 0.2f));
        canvas.stroke(corner);
        corner.lineWidth = 0.5;
        canvas.setColor(Color::rgb(1, 1, 0));
        canvas.stroke(corner);
    }
    canvas.save();
    canvas.concat(AffineTransform::translation(40, 30));
    canvas.concat(AffineTransform::rotation(0.4));
    canvas.setColor(Color::rgb(0, 0.6f, 0.2f).withAlpha(0.5f));
    canvas.fillRect({-15, -10, 30, 20}, Operation::SourceOver);
    canvas.concat(AffineTransform::scaling(2, 0.5));
    Path oval = Path::ovalInRect({-12, -30, 24, 60});
    oval.lineWidth = 3;
    canvas.stroke(oval);
    canvas.restore();
    canvas.drawBitmap(bitmapFrom(24, 24,
                                 [](int x, int y) {
                                     return Rgba{x * 10, y * 10, 128, 255};
                                 }),
                      {80, 10, 24, 24});
    const auto mask = bitmapFrom(32, 32, [](int x, int y) {
        return Rgba{0, 0, 0, std::max(0, 255 - ((x - 16) * (x - 16) + (y - 16) * (y - 16)))};
    });
    canvas.setColor(Color::rgb(0.8f, 0, 0.6f));
    canvas.drawMask(mask, {110, 5, 32, 32});
    return canvas.finish();
}

TEST(VectorFile, ReadsBackAsTheSamePixels)
{
    const RecordingRef card = testCard();
    const auto direct = drawn(card, 301, 200);
    keepForTheEye(*direct, "card");
    for (const auto& [format, name] : kFormats) {
        SCOPED_TRACE(name);
        const auto bytes = encodeVector(*card, format, "");
        ASSERT_TRUE(bytes) << bytes.error();
        const auto source = sourceOf(format, *bytes);
        ASSERT_TRUE(source) << source.error();
        EXPECT_NEAR((*source)->size().width, 150.5, 0.01);
        EXPECT_NEAR((*source)->size().height, 100, 0.01);
        const auto bitmap = (*source)->rasterize(301, 200);
        ASSERT_TRUE(bitmap) << bitmap.error();
        keepForTheEye(**bitmap, std::string("card-") + name);
        // Edges are drawn by different rasterisers and embedded pixels are 300 to the inch. A card
        // upside down would be off by more than 20.
        EXPECT_LT(meanDifference(*direct, **bitmap), format == VectorFormat::Pdf   ? 0.1
                                                     : format == VectorFormat::Svg ? 0.4
                                                                                   : 1.5);
        // Nothing was painted where nothing was drawn.
        EXPECT_EQ(pixel(**bitmap, 290, 100).alpha, 0);
    }
}

TEST(VectorFile, KeepsLinesOfWidthNoughtVisible)
{
    Canvas canvas({20, 10});
    Path line;
    line.moveTo({0, 5.5});
    line.lineTo({20, 5.5});
    line.lineWidth = 0;
    canvas.stroke(line);
    const RecordingRef recording = canvas.finish();
    for (const auto& [format, name] : kFormats) {
        const auto source = sourceOf(format, *encodeVector(*recording, format, ""));
        ASSERT_TRUE(source) << source.error();
        const auto bitmap = (*source)->rasterize(20, 10);
        ASSERT_TRUE(bitmap) << bitmap.error();
        for (int y = 0; y < 10; ++y)
            EXPECT_NEAR(pixel(**bitmap, 10, y).alpha, y == 4 ? 255 : 0, 2) << name << y;
    }
}

TEST(VectorFile, ComesOutTheSameEveryTime)
{
    const RecordingRef card = testCard();
    for (const auto& [format, name] : kFormats) {
        const auto first = encodeVector(*card, format, "{}");
        const auto second = encodeVector(*card, format, "{}");
        ASSERT_TRUE(first && second);
        EXPECT_TRUE(*first == *second) << name;
        EXPECT_EQ(first->find("CreationDate"), std::string::npos) << name;
    }
}

TEST(VectorFile, CarriesTheRecipe)
{
    const RecordingRef card = testCard();
    const std::string recipe = R"([{"id":"GLIF_Foam","set":{"note":"<a & b>"}}])";
    // As any base64 tool writes it.
    const std::string encoded = "W3siaWQiOiJHTElGX0ZvYW0iLCJzZXQiOnsibm90ZSI6IjxhICYgYj4ifX1d";
    const auto holds = [&](VectorFormat format, const std::string& text) {
        const auto with = encodeVector(*card, format, recipe);
        const auto without = encodeVector(*card, format, "");
        ASSERT_TRUE(with && without);
        EXPECT_NE(with->find(text), std::string::npos) << text;
        EXPECT_EQ(without->find("recipe"), std::string::npos);
        EXPECT_TRUE(sourceOf(format, *with));
    };
    holds(VectorFormat::Pdf, "/Keywords (cif-recipe:" + encoded + ")");
    holds(VectorFormat::Eps, "%!PS-Adobe-3.0 EPSF-3.0\n%%cif-recipe: " + encoded + "\n");
    holds(VectorFormat::Svg, "<metadata id=\"cif-recipe\">[{\"id\":\"GLIF_Foam\",\"set\":{\"note\":"
                             "\"&lt;a &amp; b&gt;\"}}]</metadata>");
}

TEST(VectorFile, RefusesADrawingWithoutAUsableSize)
{
    for (Size size : {Size{0, 10}, Size{10, -1}, Size{NAN, 10}, Size{100'001, 10}})
        for (const auto& [format, name] : kFormats)
            EXPECT_FALSE(encodeVector(*Canvas(size).finish(), format, "")) << name;
    for (const auto& [format, name] : kFormats)
        EXPECT_TRUE(encodeVector(*Canvas({0.5, 100'000}).finish(), format, "")) << name;
}

} // namespace
} // namespace drawing
