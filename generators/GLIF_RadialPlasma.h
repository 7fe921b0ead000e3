// A round plasma: midpoints along four radii, then ring after ring outwards.
#pragma once

#include "generators/GLIFCoreObject.h"

#include <memory>
#include <vector>

class GLIF_RadialPlasma : public GLIFCoreObject {
public:
    GLIF_RadialPlasma();

    PictureRef GLIFOutputImageWidthHeightAttributes(const PictureRef& reference, int width,
                                                    int height,
                                                    const Dictionary& attributes) override;

protected:
    const AttributeTable& attributeTable() const override;

    // The disc is grown from these. Values are bytes; 0 is a pixel that is not set yet. Positions
    // on a ring are offsets from the centre at an angle in radians.

    // Begins a disc in a picture of that size: no pixel is set. False when memory is short.
    bool beginDisc(PixelSize size);
    static double Distance(int x1, int y1, int x2, int y2);
    static int FindX(double angle, double radius);
    static int FindY(double angle, double radius);
    // The mean, displaced by a random offset that grows with the distance: 1 to 255.
    std::uint8_t RandOf(std::uint8_t mean, double distance) const;
    // The position must be inside the picture.
    std::uint8_t GetPixelAtXAtY(int x, int y) const;
    // Logs a position outside the picture, and leaves it at that.
    void PutPixelAtXAtYColor(int x, int y, std::uint8_t color);
    // Sets what lies between two pixels, midpoints first, whether it is set already or not.
    void LineOut(int x1, int y1, int x2, int y2);
    // Sets what is unset of a ring between two angles, middles first.
    void RoundOutAng1Ang2Radius(double angle1, double angle2, double radius);
    // A value for a position on a ring, displaced from the first unset one found inwards along the
    // radius. Not used by the drawing.
    std::uint8_t NearIn(double angle, double radius) const;

private:
    PictureRef radialPlasmaGeneratorWidthHeight(int width, int height);
    void growDisc();
    void growRings(int outermost);
    void storeField();

    double _fadeOut = 0;    // how much a value is lowered per pixel of distance
    double _roughness = 10; // span of the random offset per pixel of distance
    std::int32_t _iHeight = 0;
    std::int32_t _iWeight = 0; // sic; the width
    // While the disc grows: values column by column, and one entry more, which no pixel shows.
    std::unique_ptr<std::uint8_t[]> screen;
    std::int64_t _sizeOfBuffer = 0;
    std::vector<std::int64_t> _setToZero; // entries that are set, although they look unset
};
