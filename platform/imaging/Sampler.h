// Reading an image at positions (Sampler) and at whole-pixel distances (Window).
//
// Both exist for opaque bytes and for floats; a kernel takes them as `const auto&` and is compiled
// for each.
#pragma once

#include "platform/imaging/Pixel.h"

namespace imaging {
inline namespace CIF_LANES_NAMESPACE {

namespace detail {

constexpr int kFar = 1'000'000'000;

// A position as the lower left of its four pixels, relative to the block, and the weights beyond
// it.
struct Cell {
    I x, y;
    F tx, ty;
};

inline void splitAxis(double anchor, F offset, int blockStart, I& whole, F& part)
{
    // Relative to the middle of the block's first pixel; the whole pixels of the anchor are exact.
    const double relative = anchor - blockStart - 0.5;
    const double base = relative > -kFar && relative < kFar ? std::floor(relative)
                        : relative >= kFar                  ? kFar
                                                            : -kFar;
    const double rest = relative - base;
    const F at = offset + F(static_cast<float>(rest));
    const F down = floor(at);
    part = at - down;
    // Limited far outside every picture, so that the conversion is defined and the sum below too.
    whole = toInt(clamp(down, -1e9f, 1e9f)) + I(static_cast<int>(base));
}

inline Cell cellOf(const Coord& at, const IRect& rect)
{
    Cell c;
    splitAxis(at.anchor.x, at.offset.x, rect.left, c.x, c.tx);
    splitAxis(at.anchor.y, at.offset.y, rect.bottom, c.y, c.ty);
    return c;
}

// A position as its four pixels in an image that repeats without end, and the weights beyond the
// lower left one.
struct WrappedCell {
    I x0, x1, y0, y1;
    F tx, ty;
};

inline void wrapAxis(double anchor, F offset, int blockStart, int size, I& low, I& high, F& part)
{
    const double relative = anchor - blockStart - 0.5;
    const bool known = relative > -1e15 && relative < 1e15;
    const double base = known ? std::floor(relative) : 0;
    const double rest = known ? relative - base : 0;
    const F at = offset + F(static_cast<float>(rest));
    const F down = floor(at);
    part = at - down;
    // Whole repeats are taken off the anchor in double precision, off the rest in single precision;
    // the quotients may be one too large or too small.
    const double inFirst = base - size * std::floor(base / size);
    const I whole = toInt(clamp(down, -1e9f, 1e9f)) + I(static_cast<int>(inFirst));
    const I turns = toInt(floor(toFloat(whole) * F(1.0f / static_cast<float>(size))));
    I x = whole - turns * I(size);
    x = select(x < I(0), x + I(size), x);
    x = select(x < I(size), x, x - I(size));
    low = min(max(x, I(0)), I(size - 1));
    const I next = low + I(1);
    high = select(next < I(size), next, I(0));
}

inline WrappedCell wrappedCellOf(const Coord& at, const IRect& rect)
{
    WrappedCell c;
    wrapAxis(at.anchor.x, at.offset.x, rect.left, rect.width(), c.x0, c.x1, c.tx);
    wrapAxis(at.anchor.y, at.offset.y, rect.bottom, rect.height(), c.y0, c.y1, c.ty);
    return c;
}

// Negative in every lane whose value is not in 0 … last.
inline I outside(I v, int last)
{
    return v | (I(last) - v);
}

inline F lerp2(F a, F b, F c, F d, F tx, F ty)
{
    return mix(mix(a, b, tx), mix(c, d, tx), ty);
}

} // namespace detail

// What both samplers share: where the pixels are.
class SamplerBase {
public:
    SamplerBase(const PixelBlock& block, const IRect& extent)
        : _rect(block.rect), _extent(extent), _width(block.rect.width()),
          _height(block.rect.height())
    {
    }

    // Of the whole image.
    const IRect& extent() const { return _extent; }

protected:
    // The position limited to the middles of the image's outermost pixels.
    Coord limited(const Coord& at) const
    {
        const Point middle{(_extent.left + double(_extent.right)) * 0.5,
                           (_extent.bottom + double(_extent.top)) * 0.5};
        const Vec2 v = at - middle;
        const F halfX = static_cast<float>((_extent.width() - 1) * 0.5);
        const F halfY = static_cast<float>((_extent.height() - 1) * 0.5);
        return middle + Vec2{clamp(v.x, -halfX, halfX), clamp(v.y, -halfY, halfY)};
    }

    IRect _rect, _extent;
    int _width, _height;
};

class ByteSampler : public SamplerBase {
public:
    ByteSampler(const PixelBlock& block, const IRect& extent)
        : SamplerBase(block, extent), _pixels(reinterpret_cast<const std::uint32_t*>(block.origin)),
          _pitch(static_cast<int>(block.bytesPerRow / 4))
    {
    }

    // The bilinear sample; pixels outside the image are transparent.
    Px operator()(const Coord& at) const
    {
        const detail::Cell c = detail::cellOf(at, _rect);
        if (signs(detail::outside(c.x, _width - 2) | detail::outside(c.y, _height - 2)) == 0)
            [[likely]] {
            const I index = c.y * I(_pitch) + c.x;
            I i00, i10, i01, i11;
            loadNeighbours(_pixels, index, i00, i10);
            loadNeighbours(_pixels + _pitch, index, i01, i11);
            return blend(i00, i10, i01, i11, c.tx, c.ty);
        }
        return nearBorder(c);
    }
    // The same of the image whose border pixels go on for ever.
    Px clamped(const Coord& at) const { return (*this)(limited(at)); }
    // The same of the image repeated over the plane: the right neighbour of the last column is the
    // first. The whole image, which is not empty, must have been reached for.
    Px wrapped(const Coord& at) const
    {
        const detail::WrappedCell c = detail::wrappedCellOf(at, _rect);
        const I low = c.y0 * I(_pitch), high = c.y1 * I(_pitch);
        I i00, i10, i01, i11;
        if (all(c.x0 < c.x1)) [[likely]] {
            loadNeighbours(_pixels, low + c.x0, i00, i10);
            loadNeighbours(_pixels, high + c.x0, i01, i11);
        } else {
            const auto load = [&](I index) {
                I v;
                for (int k = 0; k < kLanes; ++k)
                    v.v[k] = static_cast<int>(_pixels[index.v[k]]);
                return v;
            };
            i00 = load(low + c.x0), i10 = load(low + c.x1);
            i01 = load(high + c.x0), i11 = load(high + c.x1);
        }
        return blend(i00, i10, i01, i11, c.tx, c.ty);
    }

private:
    static Px blend(I i00, I i10, I i01, I i11, F tx, F ty)
    {
        const auto channel = [&](int shift) {
            const auto value = [&](I v) {
                return toFloat(shift == 24 ? shiftRight(v, 24) : shiftRight(v, shift) & I(255));
            };
            return detail::lerp2(value(i00), value(i10), value(i01), value(i11), tx, ty) *
                   F(1.0f / 255);
        };
        return {channel(0), channel(8), channel(16), channel(24)};
    }

    [[gnu::noinline]] Px nearBorder(const detail::Cell& c) const
    {
        // Lanes whose four pixels all lie outside.
        const I out = detail::outside(c.x + I(1), _width) | detail::outside(c.y + I(1), _height);
        if (signs(out) == kAllLanes)
            return transparent();
        const auto pixel = [&](int dx, int dy) {
            I v;
            for (int k = 0; k < kLanes; ++k) {
                const int x = c.x.v[k] + dx, y = c.y.v[k] + dy;
                const bool inside = x >= 0 && y >= 0 && x < _width && y < _height;
                v.v[k] = inside ? static_cast<int>(_pixels[std::ptrdiff_t{y} * _pitch + x]) : 0;
            }
            return v;
        };
        return blend(pixel(0, 0), pixel(1, 0), pixel(0, 1), pixel(1, 1), c.tx, c.ty);
    }

    const std::uint32_t* _pixels;
    int _pitch;
};

class FloatSampler : public SamplerBase {
public:
    FloatSampler(const PixelBlock& block, const IRect& extent)
        : SamplerBase(block, extent), _pixels(reinterpret_cast<const float*>(block.origin)),
          _pitch(block.bytesPerRow / 16)
    {
    }

    Px operator()(const Coord& at) const
    {
        const detail::Cell c = detail::cellOf(at, _rect);
        const bool inside =
            signs(detail::outside(c.x, _width - 2) | detail::outside(c.y, _height - 2)) == 0;
        const I out = detail::outside(c.x + I(1), _width) | detail::outside(c.y + I(1), _height);
        if (!inside && signs(out) == kAllLanes)
            return transparent();
        alignas(32) float mixed[4 * kLanes];
        for (int k = 0; k < kLanes; ++k) {
            const int x = c.x.v[k], y = c.y.v[k];
            Float4 p[4];
            if (inside) [[likely]] {
                const float* corner = _pixels + 4 * (y * _pitch + x);
                std::memcpy(&p[0], corner, 32);
                std::memcpy(&p[2], corner + 4 * _pitch, 32);
            } else {
                for (int i = 0; i < 4; ++i)
                    p[i] = checked(x + (i & 1), y + (i >> 1));
            }
            const Float4 low = p[0] + (p[1] - p[0]) * c.tx.v[k];
            const Float4 high = p[2] + (p[3] - p[2]) * c.tx.v[k];
            const Float4 pixel = low + (high - low) * c.ty.v[k];
            std::memcpy(mixed + 4 * k, &pixel, 16);
        }
        return loadInterleaved(mixed);
    }
    Px clamped(const Coord& at) const { return (*this)(limited(at)); }
    Px wrapped(const Coord& at) const
    {
        const detail::WrappedCell c = detail::wrappedCellOf(at, _rect);
        alignas(32) float mixed[4 * kLanes];
        for (int k = 0; k < kLanes; ++k) {
            const auto pixel = [&](I x, I y) {
                Float4 p;
                std::memcpy(&p, _pixels + 4 * (y.v[k] * _pitch + x.v[k]), 16);
                return p;
            };
            const Float4 p00 = pixel(c.x0, c.y0), p01 = pixel(c.x0, c.y1);
            const Float4 low = p00 + (pixel(c.x1, c.y0) - p00) * c.tx.v[k];
            const Float4 high = p01 + (pixel(c.x1, c.y1) - p01) * c.tx.v[k];
            const Float4 both = low + (high - low) * c.ty.v[k];
            std::memcpy(mixed + 4 * k, &both, 16);
        }
        return loadInterleaved(mixed);
    }

private:
    Float4 checked(int x, int y) const
    {
        Float4 p{};
        if (x >= 0 && y >= 0 && x < _width && y < _height)
            std::memcpy(&p, _pixels + 4 * (y * _pitch + x), 16);
        return p;
    }

    const float* _pixels;
    std::ptrdiff_t _pitch;
};

// The pixels around kLanes pixels of a row: window(dx, dy) is the one dx to the right and dy above.
// The distances must stay within the margin that the neighbourhood declared.
class ByteWindow {
public:
    ByteWindow(const std::byte* center, std::ptrdiff_t bytesPerRow)
        : _center(center), _bytesPerRow(bytesPerRow)
    {
    }
    Px operator()(int dx, int dy) const { return unpackBytes(at(dx, dy)); }
    F red(int dx, int dy) const { return toFloat(at(dx, dy) & I(255)) * F(1.0f / 255); }
    F luma(int dx, int dy) const { return luminance((*this)(dx, dy)); }

private:
    I at(int dx, int dy) const { return loadInts(_center + dy * _bytesPerRow + dx * 4); }

    const std::byte* _center;
    std::ptrdiff_t _bytesPerRow;
};

class FloatWindow {
public:
    FloatWindow(const std::byte* center, std::ptrdiff_t bytesPerRow)
        : _center(center), _bytesPerRow(bytesPerRow)
    {
    }
    Px operator()(int dx, int dy) const
    {
        return loadInterleaved(
            reinterpret_cast<const float*>(_center + dy * _bytesPerRow + dx * 16));
    }
    F red(int dx, int dy) const { return (*this)(dx, dy).r; }
    F luma(int dx, int dy) const { return luminance((*this)(dx, dy)); }

private:
    const std::byte* _center;
    std::ptrdiff_t _bytesPerRow;
};

} // namespace CIF_LANES_NAMESPACE
} // namespace imaging
