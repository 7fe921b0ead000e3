// What one catalogue entry takes, and the values that the editor's controls show when it is chosen.
// The command line starts from the same values.
#pragma once

#include "platform/foundation/Result.h"
#include "plugin/CIFMain.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace plugin {

using foundation::Dictionary;
using foundation::PictureRef;
using foundation::Result;
using foundation::Size;
using foundation::Value;

// What a parameter takes. The last three are pictures with a folder of their own in the content
// library.
enum class ValueKind {
    Boolean,
    Integer,
    Float,
    Double,
    Point,
    Vector,
    Color,
    Transform,
    Picture,
    GlassTexture,
    ShadingMaterial,
    Brush
};

struct Range {
    std::optional<double> minimum, maximum; // open on a side that has none

    void widenTo(double value);
    bool contains(double value) const;
};

struct Parameter {
    std::string key;       // as the entry lists it: "inputCenter"
    std::string handedKey; // as the plug-in object is given it: "CIFinputCenter"
    std::string label;     // display name in English, empty when none is described
    bool isListed = true;  // false: understood besides the entry's own input keys
    ValueKind kind = ValueKind::Double;
    int components = 0;  // of a vector; 0 when the description does not tell
    Range valid;         // numbers: described limits, widened by what the catalogue offers
    Range slider;        // numbers of filters: what the editor's slider spans
    int row = 0;         // numbers of filters: the row on the editor's page, from 1; 0 for none
    Value defaultValue;  // what the description calls the default
    Value startingValue; // what a control starts with; nothing when there is no control for it, or
                         // when it depends on the picture or the content library
};

struct Entry {
    std::string identifier;
    bool isGenerator = false;
    // In input-key order; then, for a generator, what it understands without listing it: the keys
    // that all of them share, and "GLIFBrush" of GLIF_Dabs.
    std::vector<Parameter> parameters;

    // By its own or its handed key; null when there is none.
    const Parameter* find(std::string_view key) const;
};

bool isGeneratorName(std::string_view identifier);

// Nothing when no filter or generator has the name ("Crop" and the groups name none). Makes the
// effects set that the name belongs to the current one.
std::optional<Entry> describeEntry(CIFMain& main, std::string_view identifier);

// What the editor would hand over under the parameter's key for a picture of that size in points;
// nothing when the key is left out. The error is the line that the editor would log when the
// content library lacks what the entry needs.
Result<Value> startingValue(const CIFMain& main, const Parameter& parameter, Size pictureSize);
// All of them, under the keys they are handed over by. The seed is the caller's business.
Result<Dictionary> startingValues(const CIFMain& main, const Entry& entry, Size pictureSize);

// Names of the content library in the order of the editor's menu for parameters of that kind; the
// first is what the editor starts with. Empty for other kinds.
std::vector<std::string> libraryNames(const CIFMain& main, ValueKind kind);
// Null when the library has none of that name.
PictureRef libraryPicture(const CIFMain& main, ValueKind kind, std::string_view name);

// A brush that the user has chosen from a file: pixels without transparency, 8 bits each, become
// black with the first component as alpha; any other picture is answered as it is.
PictureRef convertMaskImage(const PictureRef& picture);

} // namespace plugin
