// A meadow by a lake: a place to look at, as colours along rays. Metres, x to the right, y up, z
// away from the viewer; colours are linear light.
#pragma once

#include "tools/sample-pictures/Math.h"

#include <vector>

namespace samples {

constexpr float kFar = 1e9f;

struct Ray {
    V3 from, along; // along has length 1
    V3 at(float t) const { return from + along * t; }
};

// What a ray meets first.
struct Hit {
    float t = kFar; // kFar: the sky
    V3 color;       // as seen, light and haze included
};

class Landscape {
public:
    Landscape();

    Hit trace(const Ray& ray) const;

    // Height of the ground.
    float ground(float x, float z) const;
    // Dry ground that grass grows on.
    bool isMeadow(float x, float z) const;
    // Share of the sun's light that reaches a place, 0…1.
    float sunlight(V3 place) const;
    // Light on a surface that faces along the normal and gets that share of the sun.
    V3 lightOn(V3 normal, float sun) const;
    V3 sky(V3 along) const;
    V3 hazed(V3 color, float distance) const;
    V3 meadowColor(float x, float z) const;

    static V3 towardsSun();

    // The crowns of the trees, as balls of leaves.
    struct Crown {
        V3 center;
        float radius;
    };
    const std::vector<Crown>& crowns() const { return _crowns; }

private:
    Hit traceSolids(const Ray& ray) const;    // everything but water, mirrors and the sky
    float marchTerrain(const Ray& ray) const; // distance to the ground, or kFar
    // How far the ray goes on in its tile of the terrain if all of that lies below it; else 0.
    float tileLeft(const Ray& ray, V3 place) const;
    V3 terrainNormal(float x, float z) const;
    V3 terrainColor(V3 place) const;
    float gridHeight(const std::vector<float>& grid, float x, float z) const;
    void makeTerrain();

    std::vector<float> _heights, _shades; // of the terrain grid
    std::vector<float> _tops;             // of its tiles, the highest point
    std::vector<Crown> _crowns;
};

} // namespace samples
