// Any generator, its declared attributes filled from bytes, drawn small.
#include "tests/fuzz/Bytes.h"

#include "generators/Register.h"
#include "platform/drawing/Picture.h"

#include <cstdio>
#include <cstdlib>

using foundation::Dictionary;
using foundation::Number;
using foundation::Value;

namespace {

// Of the kind that the attribute's default has, or of any.
Value valueOf(fuzz::Bytes& bytes, const Dictionary& description)
{
    const Value& normal = description["GLIFDefValue"];
    if (!normal.number())
        return bytes.value("CIColor", 0, 1);
    const double n = bytes.number(description.doubleValue("GLIFMinValue", 0),
                                  description.doubleValue("GLIFMaxValue", 1));
    switch (normal.number()->kind()) {
    case Number::Kind::Boolean:
        return n > 0.5;
    case Number::Kind::Integer:
        return foundation::truncToInt(n);
    case Number::Kind::Float:
        return float(n);
    case Number::Kind::Double:
        break;
    }
    return n;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    fuzz::Bytes bytes({reinterpret_cast<const char*>(data), size});
    const auto names = generators::classNames();
    const std::string& name = names[bytes.pick(names.size())];
    const auto generator = generators::makeGenerator(name);
    const Dictionary described = generator->GLIFQueryAttributes();
    // A second picture by the same object: caches must not remember what no longer fits.
    for (int pass = 0; pass < 2; ++pass) {
        Dictionary attributes;
        for (const auto& [key, description] : described)
            if (!bytes.oneIn(5) && description.dictionary())
                attributes.set(key, valueOf(bytes, *description.dictionary()));
        const int width = int(bytes.pick(65)), height = int(bytes.pick(65));
        std::srand(bytes.word());
        const auto picture =
            generator->GLIFOutputImageWidthHeightAttributes(nullptr, width, height, attributes);
        if (!picture)
            continue;
        const auto bitmap = picture->bitmap();
        if (!bitmap || bitmap->width() != width || bitmap->height() != height) {
            std::fprintf(stderr, "%s: no picture of %d x %d\n", name.c_str(), width, height);
            std::abort();
        }
    }
    return 0;
}
