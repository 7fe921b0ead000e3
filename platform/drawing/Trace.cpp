// A drawing as JSON lines, one to an operation.
#include "platform/drawing/Canvas.h"

#include <charconv>
#include <cmath>
#include <string_view>

namespace drawing {

namespace {

using Kind = Path::Element::Kind;

void appendNumber(std::string& out, double value)
{
    if (!std::isfinite(value)) {
        out += "null";
        return;
    }
    char text[330]; // the largest double has 309 digits before the point
    const char* end =
        std::to_chars(text, text + sizeof text, value, std::chars_format::fixed, 3).ptr;
    while (end[-1] == '0')
        --end;
    if (end[-1] == '.')
        --end;
    const std::string_view shown(text, end - text);
    out += shown == "-0" ? "0" : shown;
}

void appendNumbers(std::string& out, std::initializer_list<double> values)
{
    const char* separator = "";
    for (double value : values) {
        out += separator;
        appendNumber(out, value);
        separator = ",";
    }
}

void appendColor(std::string& out, const Color& c, double fraction = 1)
{
    out += "\"rgba\":[";
    appendNumbers(out, {c.red, c.green, c.blue, c.alpha * fraction});
    out += ']';
}

void appendPath(std::string& out, const Path& path)
{
    out += "\"path\":[";
    const char* separator = "";
    for (const Path::Element& element : path.elements()) {
        const Point* p = element.points;
        out += separator;
        separator = ",";
        switch (element.kind) {
        case Kind::MoveTo:
        case Kind::LineTo:
            out += element.kind == Kind::MoveTo ? "[\"M\"," : "[\"L\",";
            appendNumbers(out, {p->x, p->y});
            break;
        case Kind::CurveTo:
            out += "[\"C\",";
            appendNumbers(out, {p[0].x, p[0].y, p[1].x, p[1].y, p[2].x, p[2].y});
            break;
        case Kind::Close:
            out += "[\"Z\"";
            break;
        }
        out += ']';
    }
    out += ']';
}

const char* nameOf(LineCap cap)
{
    return cap == LineCap::Butt ? "butt" : cap == LineCap::Round ? "round" : "square";
}

const char* nameOf(LineJoin join)
{
    return join == LineJoin::Miter ? "miter" : join == LineJoin::Round ? "round" : "bevel";
}

struct Tracer {
    std::string& out;

    void operator()(const Recording::Fill& op) const
    {
        out += "{\"op\":\"fill\",";
        appendColor(out, op.color);
        out += op.rule == FillRule::NonZero ? ",\"rule\":\"nonzero\"," : ",\"rule\":\"evenodd\",";
        appendPath(out, op.path);
    }

    void operator()(const Recording::Stroke& op) const
    {
        Path path = op.path;
        path.transform(op.matrix);
        out += "{\"op\":\"stroke\",";
        appendColor(out, op.color);
        out += ",\"width\":";
        appendNumber(out, path.lineWidth * std::sqrt(std::abs(op.matrix.determinant())));
        out += ",\"cap\":\"";
        out += nameOf(path.cap);
        out += "\",\"join\":\"";
        out += nameOf(path.join);
        out += "\",";
        appendPath(out, path);
    }

    void operator()(const Recording::Image& op) const
    {
        out += "{\"op\":\"image\",";
        appendColor(out, op.tinted ? op.tint : Color::white(), op.fraction);
        out += ",\"size\":[";
        appendNumbers(out, {op.size.width, op.size.height});
        out += "],\"matrix\":[";
        const AffineTransform& m = op.matrix;
        appendNumbers(out, {m.m11, m.m12, m.m21, m.m22, m.tX, m.tY});
        out += ']';
    }
};

} // namespace

std::string traceOf(const Recording& recording)
{
    std::string out;
    for (const Recording::Op& op : recording.ops) {
        std::visit(Tracer{out}, op);
        out += "}\n";
    }
    return out;
}

} // namespace drawing
