#include "generators/AttributeTable.h"

namespace generators {

using foundation::Dictionary;

std::vector<std::string> AttributeTable::keys() const
{
    std::vector<std::string> keys;
    for (const Attribute& row : *this)
        keys.emplace_back(row.key);
    return keys;
}

Dictionary AttributeTable::descriptions() const
{
    Dictionary descriptions;
    for (const Attribute& row : *this) {
        Dictionary description;
        switch (row.kind) {
        case Attribute::Kind::Number:
            description.set("GLIFMinValue", row.minimum);
            description.set("GLIFMaxValue", row.maximum);
            description.set("GLIFDefValue", row.defaultNumber);
            break;
        case Attribute::Kind::Color:
            description.set("GLIFDefValue", row.defaultColor);
            break;
        case Attribute::Kind::EmptyDescription:
            break;
        case Attribute::Kind::NoDescription:
            continue;
        }
        descriptions.set(row.key, description);
    }
    return descriptions;
}

} // namespace generators
