// The list of generators: one line each.
#include "generators/Register.h"

#include "generators/GLIF_AbstractLines.h"
#include "generators/GLIF_Biomorph.h"
#include "generators/GLIF_Cafel.h"
#include "generators/GLIF_CircleRipples.h"
#include "generators/GLIF_ColourBars.h"
#include "generators/GLIF_Dabs.h"
#include "generators/GLIF_FlashLines.h"
#include "generators/GLIF_Foam.h"
#include "generators/GLIF_HilbertCurve.h"
#include "generators/GLIF_Parquet.h"
#include "generators/GLIF_Plasma.h"
#include "generators/GLIF_RadialPlasma.h"
#include "generators/GLIF_SandGlass.h"
#include "generators/GLIF_Shapes.h"
#include "generators/GLIF_Spiral.h"
#include "generators/GLIF_StarField.h"
#include "generators/GLIF_Texture.h"
#include "generators/GLIF_Triangles.h"
#include "generators/GLIF_TwistPolygons.h"
#include "generators/GLIF_TwistedSquares.h"

namespace generators {

namespace {

template <class Generator>
std::shared_ptr<GLIFCoreObject> make()
{
    return std::make_shared<Generator>();
}

struct Entry {
    std::string_view className;
    std::shared_ptr<GLIFCoreObject> (*make)();
};

constexpr Entry kEntries[] = {
    {"GLIF_AbstractLines", make<GLIF_AbstractLines>},
    {"GLIF_Biomorph", make<GLIF_Biomorph>},
    {"GLIF_Cafel", make<GLIF_Cafel>},
    {"GLIF_CircleRipples", make<GLIF_CircleRipples>},
    {"GLIF_ColourBars", make<GLIF_ColourBars>},
    {"GLIF_Dabs", make<GLIF_Dabs>},
    {"GLIF_FlashLines", make<GLIF_FlashLines>},
    {"GLIF_Foam", make<GLIF_Foam>},
    {"GLIF_HilbertCurve", make<GLIF_HilbertCurve>},
    {"GLIF_Parquet", make<GLIF_Parquet>},
    {"GLIF_Plasma", make<GLIF_Plasma>},
    {"GLIF_RadialPlasma", make<GLIF_RadialPlasma>},
    {"GLIF_SandGlass", make<GLIF_SandGlass>},
    {"GLIF_Shapes", make<GLIF_Shapes>},
    {"GLIF_Spiral", make<GLIF_Spiral>},
    {"GLIF_StarField", make<GLIF_StarField>},
    {"GLIF_Texture", make<GLIF_Texture>},
    {"GLIF_Triangles", make<GLIF_Triangles>},
    {"GLIF_TwistPolygons", make<GLIF_TwistPolygons>},
    {"GLIF_TwistedSquares", make<GLIF_TwistedSquares>},
};

} // namespace

std::shared_ptr<GLIFCoreObject> makeGenerator(std::string_view className)
{
    for (const Entry& entry : kEntries)
        if (entry.className == className)
            return entry.make();
    return nullptr;
}

std::vector<std::string> classNames()
{
    std::vector<std::string> names;
    for (const Entry& entry : kEntries)
        names.emplace_back(entry.className);
    return names;
}

} // namespace generators
