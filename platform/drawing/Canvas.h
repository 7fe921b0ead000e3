// The vector drawing surface: it records what is drawn, so that one drawing can become pixels, a
// PDF or SVG file and a trace.
#pragma once

#include "platform/drawing/Path.h"
#include "platform/foundation/Color.h"
#include "platform/foundation/Result.h"
#include "platform/imaging/Bitmap.h"

#include <memory>
#include <stop_token>
#include <string>
#include <variant>
#include <vector>

namespace drawing {

using foundation::Color;
using foundation::Size;

// How a fill or image meets what is below it. Every operation acts only inside the shape drawn.
//   Copy             replaces it, transparency included
//   SourceOver       lies over it
//   Clear            leaves nothing
//   SourceIn         replaces it where it is opaque: the source times the alpha below
//   SourceAtop       lies over it and keeps its alpha: recolours what is there
//   DestinationOver  lies under it
//   Plus             adds to it, up to white
//   Multiply         darkens it by the product
enum class Operation {
    Copy,
    SourceOver,
    Clear,
    SourceIn,
    SourceAtop,
    DestinationOver,
    Plus,
    Multiply
};

// One finished drawing: operations in the order in which they were drawn. Immutable once made.
struct Recording {
    struct Fill {
        Color color;
        FillRule rule;
        Path path; // in picture coordinates, all transforms applied
        Operation operation = Operation::SourceOver;
    };
    struct Stroke {
        Color color;
        Path path;              // as drawn, before the transform; carries width, cap and join
        AffineTransform matrix; // the transform in force: it shapes the pen too
    };
    struct Image {
        imaging::BitmapRef bitmap; // an alpha mask when tinted
        Color tint;                // the colour painted through the mask
        bool tinted = false;
        double fraction = 1;    // opacity
        Size size;              // of the unit drawn, in points before the matrix
        AffineTransform matrix; // from a rectangle of that size at the origin, y up
        Operation operation = Operation::SourceOver;
    };
    using Op = std::variant<Fill, Stroke, Image>;

    Size size; // of the picture, in points
    std::vector<Op> ops;
};
using RecordingRef = std::shared_ptr<const Recording>;

// Inside a WorkScope drawing can be stopped: every operation is a checkpoint.
class Canvas {
public:
    explicit Canvas(Size size);

    Size size() const { return _recording->size; }

    // Graphics state: transform, colours. A restore without a save changes nothing.
    void save();
    void restore();
    // Prepended to the transform in force: what is drawn next goes through t first.
    void concat(const AffineTransform& t);
    const AffineTransform& matrix() const { return _state.matrix; }
    // Of fills and strokes alike.
    void setColor(const Color& color) { _state.color = _state.strokeColor = color; }
    void setFillColor(const Color& color) { _state.color = color; }
    void setStrokeColor(const Color& color) { _state.strokeColor = color; }
    // Of fills.
    const Color& color() const { return _state.color; }

    // By the path's own rule, width, cap and join.
    void fill(const Path& path);
    void stroke(const Path& path);
    void fillRect(const Rect& rect, Operation operation = Operation::Copy);
    void strokeRect(const Rect& rect, double lineWidth = 1);
    // Scales the bitmap into the rectangle; one of width or height 0 draws nothing, a negative one
    // mirrors. The fraction is an opacity, limited to 0…1.
    void drawBitmap(imaging::BitmapRef bitmap, const Rect& rect,
                    Operation operation = Operation::SourceOver, double fraction = 1);
    // Paints the current colour through the bitmap's alpha.
    void drawMask(imaging::BitmapRef mask, const Rect& rect);

    // Ends the drawing and hands it over.
    RecordingRef finish();

private:
    struct State {
        AffineTransform matrix;
        Color color = Color::black(); // of fills, masks
        Color strokeColor = Color::black();
    };

    std::shared_ptr<Recording> _recording;
    State _state;
    std::vector<State> _saved;
};

// Longest side of a drawing made into pixels.
constexpr int kMaximumRasterSide = 32'767;

// Replays a drawing into Rgba8 pixels of the given size (the drawing is scaled to fill them). A
// line width of 0 draws a one-pixel line whatever the scale. Points that are not finite are left
// out of their path, strokes and images under a transform that is not finite or flattens everything
// are skipped, and coordinates of any size are good. An error when a side is not in
// 1…kMaximumRasterSide, the drawing library is missing or memory is short. Inside a WorkScope it
// reports its progress and can be stopped before each operation.
foundation::Result<std::shared_ptr<imaging::Bitmap>> rasterize(const Recording& recording,
                                                               int width, int height);

// A part of the drawing (in points, y up; what lies outside the drawing is part of the plane too),
// scaled to fill the pixels: for looking at. On all cores, without the operations that miss the
// part; where a shape is cut, a few pixels may differ from the whole's by a few levels.
struct RasterOptions {
    std::stop_token stop; // ends early, with an error, when a stop is requested
    bool threaded = true; // false: everything on the calling thread
};
foundation::Result<std::shared_ptr<imaging::Bitmap>> rasterizePart(
    const Recording& recording, const Rect& part, int width, int height,
    const RasterOptions& options = {});

// Replays a drawing into a vector file in memory, its page as large as the drawing; one pixel of an
// SVG is one point, and a line width of 0 draws a line of one point. What a format cannot express
// (translucency in EPS, operations other than laying over in PDF and SVG) is embedded as pixels at
// 300 to the inch. The same drawing always gives the same bytes.
// `metadata` is JSON text kept in a field of the file's own and may be empty:
//   PDF  the document's Keywords, "cif-recipe:" and the base64 of the text
//   SVG  <metadata id="cif-recipe"> with the escaped text, first in the root element
//   EPS  a header comment line "%%cif-recipe: " and the base64 of the text
// An error when a side of the drawing is not above 0 and up to 100,000 points or the drawing
// library is missing.
enum class VectorFormat { Pdf, Svg, Eps };
foundation::Result<std::string> encodeVector(const Recording& recording, VectorFormat format,
                                             const std::string& metadata);

// The operations as JSON lines, coordinates after all transforms rounded to three decimals:
// {"op":"fill","rgba":[…],"rule":"nonzero","path":[["M",x,y],["L",x,y],["C",…],["Z"]]},
// {"op":"stroke","rgba":[…],"width":w,"cap":"butt","join":"miter","path":[…]},
// {"op":"image","rgba":[tint],"size":[w,h],"matrix":[a,b,c,d,tx,ty]}.
// Widths are scaled by the square root of the transform's area factor; an image without a tint
// counts as white with its opacity as alpha; a number that is not finite is null. Every line ends
// with a newline.
std::string traceOf(const Recording& recording);

} // namespace drawing
