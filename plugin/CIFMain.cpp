// Life, identity and settings of the plug-in object, and everything that only reads the catalogues.
#include "plugin/CIFMain.h"

#include "filters/Register.h"
#include "generators/GLIFCoreObject.h"
#include "generators/Register.h"
#include "platform/builtin/Register.h"
#include "platform/foundation/Log.h"
#include "plugin/Catalogue.h"

namespace {

using foundation::Array;
using foundation::ArrayRef;
using foundation::Dictionary;
using foundation::DictionaryRef;
using foundation::Value;

void registerFiltersOnce()
{
    static const bool done = [] {
        imaging::FilterRegistry& registry = imaging::FilterRegistry::shared();
        builtin::registerBuiltinFilters(registry);
        filters::registerFilters(registry);
        return true;
    }();
    static_cast<void>(done);
}

const Array& list(const Dictionary& category)
{
    return **category["CIFFilterList"].get<ArrayRef>();
}

const Dictionary& categoryAt(const ArrayRef& catalogue, int index)
{
    // A negative index becomes one past any end.
    return **catalogue->at(static_cast<std::size_t>(index)).get<DictionaryRef>();
}

DictionaryRef entryAt(const ArrayRef& catalogue, int entry, int category)
{
    return list(categoryAt(catalogue, category)).at(static_cast<std::size_t>(entry)).dictionary();
}

// The entry at a flat position with the category that holds it; nulls on a separator slot and past
// the end.
struct Place {
    DictionaryRef entry, category;
};
Place placeAt(const ArrayRef& catalogue, std::uint32_t index, bool skip)
{
    std::uint32_t base = 0;
    for (const Value& value : *catalogue) {
        const Array& entries = list(*value.dictionary());
        const auto count = static_cast<std::uint32_t>(entries.size());
        // Unsigned: an index below the base wraps around and lies in no category.
        if (index - base < count)
            return {entries[index - base].dictionary(), value.dictionary()};
        base += count + (skip ? 0 : 1);
    }
    return {};
}

bool isGenerator(std::string_view name)
{
    return name.starts_with("GLIF_");
}

std::unique_ptr<imaging::Filter> filterWithDefaults(std::string_view name)
{
    std::unique_ptr<imaging::Filter> filter = imaging::Filter::filterWithName(name);
    if (filter)
        filter->setDefaults();
    return filter;
}

} // namespace

CIFMain::CIFMain()
{
    registerFiltersOnce();
    _GLIFcategoriesListDesc = initGLIFList();
    _categoriesListDesc = initCIFList();
    _effectsList = {_categoriesListDesc, _GLIFcategoriesListDesc};
}

CIFMain::~CIFMain() = default;

void CIFMain::CIFSetEffectsSet(std::uint32_t set)
{
    if (set >= _effectsList.size()) {
        foundation::log("CIF Effects Set " + std::to_string(static_cast<std::int32_t>(set)) +
                        " Not Supported");
        return;
    }
    _currEffectsSet = set;
}

void CIFMain::CIFSetBackgroundColor(const Color& color)
{
    // A pattern has no components to take.
    if (color.space != Color::Space::Pattern)
        _backgroundColor = Color::rgb(color.red, color.green, color.blue, 1);
}

int CIFMain::CIFFilterCategoriesCount() const
{
    return static_cast<int>(currCategoriesListDesc()->size());
}

int CIFMain::CIFFilterCountForCategoryAtIndex(int category) const
{
    return static_cast<int>(list(categoryAt(currCategoriesListDesc(), category)).size());
}

int CIFMain::CIFFilterCount() const
{
    int count = 0;
    for (int i = 0; i < CIFFilterCategoriesCount(); ++i)
        count += CIFFilterCountForCategoryAtIndex(i);
    return count;
}

int CIFMain::CIFFilterCountBySkipCategory() const
{
    return CIFFilterCount() + CIFFilterCategoriesCount() - 1;
}

std::string CIFMain::CIFCategoryNameAtIndex(int category) const
{
    return categoryAt(currCategoriesListDesc(), category).stringValue("CIFCategoryName");
}

std::string CIFMain::CIFFilterNameAtIndexForCategoryIndex(int entry, int category) const
{
    return entryAt(currCategoriesListDesc(), entry, category)->stringValue("CIFFilterName");
}

std::string CIFMain::CIFFilterIdentifierAtIndexForCategoryIndex(int entry, int category) const
{
    return entryAt(currCategoriesListDesc(), entry, category)->stringValue("CIFFilterIdentifier");
}

CIFMain::Name CIFMain::CIFFilterIconAtIndexForCategoryIndex(int entry, int category) const
{
    const DictionaryRef descriptor = entryAt(currCategoriesListDesc(), entry, category);
    const std::string* icon = (*descriptor)["CIFFilterIcon"].string();
    return icon ? Name(*icon) : Name();
}

CIFMain::Name CIFMain::CIFFilterNameAtIndexSkipCategories(std::uint32_t index, bool skip) const
{
    const Place place = placeAt(currCategoriesListDesc(), index, skip);
    return place.entry ? Name(place.entry->stringValue("CIFFilterName")) : Name();
}

CIFMain::Name CIFMain::CIFFilterIdentifierAtIndexSkipCategories(std::uint32_t index,
                                                                bool skip) const
{
    const Place place = placeAt(currCategoriesListDesc(), index, skip);
    return place.entry ? Name(place.entry->stringValue("CIFFilterIdentifier")) : Name();
}

DictionaryRef CIFMain::CIFFilterDescAtIndexSkipCategories(std::uint32_t index, bool skip) const
{
    const Place place = placeAt(currCategoriesListDesc(), index, skip);
    if (!place.entry)
        return nullptr;
    return std::make_shared<const Dictionary>(
        Dictionary{{"filterName", (*place.entry)["CIFFilterName"]},
                   {"filterCategory", (*place.category)["CIFCategoryName"]}});
}

std::string CIFMain::CIFCategoryNameWithinFilterNameAtIndex(std::int32_t index) const
{
    std::int32_t position = 0;
    for (int category = 0;; ++category) {
        // Fetched before the test: an index that is no separator slot runs past the last category
        // and throws, and so does the place after the last one.
        std::string next = CIFCategoryNameAtIndex(category + 1);
        position += CIFFilterCountForCategoryAtIndex(category);
        if (index == position)
            return next;
        ++position;
    }
}

std::vector<std::string> CIFMain::CIFAllFilterIdentifiers() const
{
    std::vector<std::string> identifiers;
    for (const Value& category : *currCategoriesListDesc()) {
        if (!identifiers.empty())
            identifiers.emplace_back(plugin::kToolbarSeparatorItemIdentifier);
        for (const Value& entry : list(*category.dictionary()))
            identifiers.push_back(entry.dictionary()->stringValue("CIFFilterIdentifier"));
    }
    return identifiers;
}

ArrayRef CIFMain::CIFAllFilterDescriptors() const
{
    return currCategoriesListDesc();
}

DictionaryRef CIFMain::CIFDescriptorForFilterName(std::string_view identifier) const
{
    for (const Value& category : *currCategoriesListDesc())
        for (const Value& entry : list(*category.dictionary()))
            if (entry.dictionary()->stringValue("CIFFilterIdentifier") == identifier)
                return entry.dictionary();
    return nullptr;
}

DictionaryRef CIFMain::CIFDescriptorForFilterNameWithGroups(std::string_view identifier) const
{
    for (const Value& category : *currCategoriesListDesc())
        for (const Value& entry : list(*category.dictionary())) {
            const ArrayRef members = (*entry.dictionary())["DESC_LIST"].array();
            for (const Value& candidate : members ? *members : Array{entry})
                if (candidate.dictionary()->stringValue("CIFFilterIdentifier") == identifier)
                    return candidate.dictionary();
        }
    return nullptr;
}

ArrayRef CIFMain::CIFFiltersDescriptorForGroup(std::string_view identifier) const
{
    const DictionaryRef group = CIFDescriptorForFilterName(identifier);
    return group ? (*group)["DESC_LIST"].array() : nullptr;
}

CIFMain::NameList CIFMain::CIFQueryInputKeysForFilter(std::string_view name)
{
    if (isGenerator(name)) {
        const auto generator = GLIFSmartInstanceFromName(name);
        return generator ? NameList(generator->GLIFQueryInputKeys()) : NameList();
    }
    const auto filter = filterWithDefaults(name);
    return filter ? NameList(filter->inputKeys()) : NameList();
}

CIFMain::NameList CIFMain::CIFQueryOutputKeysForFilter(std::string_view name)
{
    if (isGenerator(name)) {
        const auto generator = GLIFSmartInstanceFromName(name);
        return generator ? NameList(generator->GLIFQueryOutputKeys()) : NameList();
    }
    const auto filter = filterWithDefaults(name);
    return filter ? NameList(filter->outputKeys()) : NameList();
}

DictionaryRef CIFMain::CIFQueryAttributesForFilter(std::string_view name)
{
    if (isGenerator(name)) {
        const auto generator = GLIFSmartInstanceFromName(name);
        return generator ? std::make_shared<const Dictionary>(generator->GLIFQueryAttributes())
                         : nullptr;
    }
    const auto filter = filterWithDefaults(name);
    return filter ? std::make_shared<const Dictionary>(filter->attributes()) : nullptr;
}

std::shared_ptr<GLIFCoreObject> CIFMain::GLIFSmartInstanceFromName(std::string_view name)
{
    if (_GLIFGeneratorInstance && _GLIFGeneratorName == name)
        return _GLIFGeneratorInstance;
    _GLIFGeneratorInstance = generators::makeGenerator(name);
    _GLIFGeneratorName = name;
    if (!_GLIFGeneratorInstance)
        foundation::log("can't instantiate class '" + std::string(name) + "'");
    return _GLIFGeneratorInstance;
}
