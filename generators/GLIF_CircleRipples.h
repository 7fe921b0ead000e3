// Circular waves from a few centres that run through each other.
#pragma once

#include "generators/GLIFCoreObject.h"

class GLIF_CircleRipples : public GLIFCoreObject {
public:
    GLIF_CircleRipples();

    PictureRef GLIFOutputImageWidthHeightAttributes(const PictureRef& reference, int width,
                                                    int height,
                                                    const Dictionary& attributes) override;

protected:
    const AttributeTable& attributeTable() const override;
    PictureRef makeSample(const Sampling& sampling, const Dictionary& attributes) override;

private:
    void readAttributes(const Dictionary& attributes);
    void computeField(const Sampling& sampling);

    std::int32_t _iResolution = 1; // block size in pixels
    float _fSize = 8;              // wavelength in percent of the shorter side
    float _fKoef = 1;              // sic; runs through the colours from trough to crest
    std::int32_t _shapesType = 0;  // 0 waves, 1 rings, 2 drops, 3 rosette
};
