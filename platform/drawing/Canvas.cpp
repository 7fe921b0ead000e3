// Records what is drawn.
#include "platform/drawing/Canvas.h"

#include "platform/foundation/Work.h"

#include <algorithm>
#include <utility>

namespace drawing {

Canvas::Canvas(Size size) : _recording(std::make_shared<Recording>())
{
    _recording->size = size;
}

void Canvas::save()
{
    _saved.push_back(_state);
}

void Canvas::restore()
{
    if (_saved.empty())
        return;
    _state = _saved.back();
    _saved.pop_back();
}

void Canvas::concat(const AffineTransform& t)
{
    _state.matrix = t.followedBy(_state.matrix);
}

void Canvas::fill(const Path& path)
{
    foundation::checkpoint();
    if (path.isEmpty())
        return;
    Recording::Fill op{_state.color, path.rule, path, Operation::SourceOver};
    op.path.transform(_state.matrix);
    _recording->ops.push_back(std::move(op));
}

void Canvas::stroke(const Path& path)
{
    foundation::checkpoint();
    if (!path.isEmpty())
        _recording->ops.push_back(Recording::Stroke{_state.strokeColor, path, _state.matrix});
}

void Canvas::fillRect(const Rect& rect, Operation operation)
{
    foundation::checkpoint();
    Recording::Fill op{_state.color, FillRule::NonZero, {}, operation};
    op.path.appendRect(rect);
    op.path.transform(_state.matrix);
    _recording->ops.push_back(std::move(op));
}

void Canvas::strokeRect(const Rect& rect, double lineWidth)
{
    Path path;
    path.appendRect(rect);
    path.lineWidth = lineWidth;
    stroke(path);
}

void Canvas::drawBitmap(imaging::BitmapRef bitmap, const Rect& rect, Operation operation,
                        double fraction)
{
    foundation::checkpoint();
    if (!bitmap || rect.width == 0 || rect.height == 0)
        return;
    Recording::Image op;
    op.bitmap = std::move(bitmap);
    op.fraction = fraction > 0 ? std::min(fraction, 1.0) : 0;
    op.size = {rect.width, rect.height};
    op.matrix = AffineTransform::translation(rect.x, rect.y).followedBy(_state.matrix);
    op.operation = operation;
    _recording->ops.push_back(std::move(op));
}

void Canvas::drawMask(imaging::BitmapRef mask, const Rect& rect)
{
    foundation::checkpoint();
    if (!mask || rect.width == 0 || rect.height == 0)
        return;
    Recording::Image op;
    op.bitmap = std::move(mask);
    op.tint = _state.color;
    op.tinted = true;
    op.size = {rect.width, rect.height};
    op.matrix = AffineTransform::translation(rect.x, rect.y).followedBy(_state.matrix);
    _recording->ops.push_back(std::move(op));
}

RecordingRef Canvas::finish()
{
    auto fresh = std::make_shared<Recording>();
    fresh->size = _recording->size;
    return std::exchange(_recording, std::move(fresh));
}

} // namespace drawing
