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
