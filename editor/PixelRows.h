// What is done to rows of pixels on their way to the screen, eight numbers at a time. Pixels have
// red, green, blue and alpha in this order in memory; the screen's are the toolkit's QRgb.
#pragma once

#include <QRgb>

#include <array>
#include <cstdint>
#include <vector>

namespace editor {

// Pixels that are squares of two colours, in the order of pictures; what shows through.
using Backdrop = const std::uint32_t*;

// Components times alpha, each rounded to nearest. In place is fine.
void premultiplyRow(const std::uint32_t* pixels, int count, std::uint32_t* out);
// Opaque pixels as the screen's.
void toScreenRow(const std::uint32_t* pixels, int count, QRgb* out);
// Premultiplied pixels over the backdrop.
void overRow(const std::uint32_t* pixels, Backdrop backdrop, int count, QRgb* out);

// A weight in 65536ths; what is nearly 1 is a little less.
std::uint16_t asWeight(double weight);

// Four numbers to a pixel, each 256 times the byte it stands for.
using Sums = std::vector<std::uint16_t>;

// The weighted sum of one to three rows of pixels; rows of weight 0 are not read. The sums have
// room for two pixels more, which are 0.
void sumRows(const std::array<const std::uint32_t*, 3>& rows,
             const std::array<std::uint16_t, 3>& weights, int count, Sums& sums);

// How pixels of the screen are made of the sums of neighbouring columns.
class ColumnMixer {
public:
    // Up to three neighbours from each first one on.
    void append(int first, const std::array<std::uint16_t, 3>& weights);
    int count() const { return static_cast<int>(_first.size()); }
    // Without a backdrop the sums are opaque, otherwise premultiplied.
    void mix(const Sums& sums, Backdrop backdrop, QRgb* out) const;

private:
    template <bool Three, bool Opaque>
    void mixRow(const std::uint16_t* sums, Backdrop backdrop, QRgb* out) const;

    std::vector<std::uint32_t> _first;
    // Four equal ones to a pixel, to be multiplied with its four numbers.
    std::vector<std::uint16_t> _firstTwo, _third;
    bool _three = false;
};

} // namespace editor
