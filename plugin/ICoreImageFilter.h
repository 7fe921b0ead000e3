// The protocol between a host and the plug-in object: everything a host asks of it.
//
// Hosts include this header and the value headers it names, get the object from CIFCreatePlugIn
// (hosts/CoreImageFilter.h) and link to nothing. All calls come from one thread, one at a time.
#pragma once

#include "platform/foundation/Color.h"
#include "platform/foundation/Geometry.h"
#include "platform/foundation/Value.h"
#include "platform/imaging/Image.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

class ICoreImageFilter {
public:
    using ArrayRef = foundation::ArrayRef;
    using Color = foundation::Color;
    using Dictionary = foundation::Dictionary;
    using DictionaryRef = foundation::DictionaryRef;
    using Image = imaging::Image;
    using PictureRef = foundation::PictureRef;
    using Rect = foundation::Rect;
    using Size = foundation::Size;
    using Name = std::optional<std::string>;
    using NameList = std::optional<std::vector<std::string>>;

    // ---- Identity

    // CIFMajorPlugInVersion
    virtual std::int32_t CIFMajorPlugInVersion() const = 0;
    // CIFMinorPlugInVersion
    virtual std::int32_t CIFMinorPlugInVersion() const = 0;
    // CIFCopyrightString
    virtual std::string CIFCopyrightString() const = 0;

    // ---- Settings

    // CIFSetEffectsSet: — 0 the filter catalogue (at first), 1 the generator catalogue. Any other
    // value logs a line and changes nothing. Every counting and lookup below reads the current
    // catalogue.
    virtual void CIFSetEffectsSet(std::uint32_t set) = 0;
    // CIFSetBackgroundColor: — what CIFOutputImageForFilter lays results over, always opaque; white
    // until set.
    virtual void CIFSetBackgroundColor(const Color& color) = 0;

    // ---- Counting (a group counts as one entry)

    // CIFFilterCategoriesCount
    virtual int CIFFilterCategoriesCount() const = 0;
    // CIFFilterCountForCategoryAtIndex: — throws std::out_of_range.
    virtual int CIFFilterCountForCategoryAtIndex(int category) const = 0;
    // CIFFilterCount
    virtual int CIFFilterCount() const = 0;
    // CIFFilterCountBySkipCategory — the length of the flat list with one separator slot between
    // categories.
    virtual int CIFFilterCountBySkipCategory() const = 0;

    // ---- Lookup by category and position. All throw std::out_of_range.

    // CIFCategoryNameAtIndex:
    virtual std::string CIFCategoryNameAtIndex(int category) const = 0;
    // CIFFilterNameAtIndex:forCategoryIndex:
    virtual std::string CIFFilterNameAtIndexForCategoryIndex(int entry, int category) const = 0;
    // CIFFilterIdentifierAtIndex:forCategoryIndex:
    virtual std::string CIFFilterIdentifierAtIndexForCategoryIndex(int entry,
                                                                   int category) const = 0;
    // CIFFilterIconAtIndex:forCategoryIndex: — nothing for a group.
    virtual Name CIFFilterIconAtIndexForCategoryIndex(int entry, int category) const = 0;

    // ---- Lookup by flat index. With skip false every category is followed by a separator slot,
    // with skip true there are none. Nothing on a separator slot and past the end.

    // CIFFilterNameAtIndex:skipCategories:
    virtual Name CIFFilterNameAtIndexSkipCategories(std::uint32_t index, bool skip) const = 0;
    // CIFFilterIdentifierAtIndex:skipCategories:
    virtual Name CIFFilterIdentifierAtIndexSkipCategories(std::uint32_t index, bool skip) const = 0;
    // CIFFilterDescAtIndex:skipCategories: — a dictionary of "filterName" and "filterCategory", not
    // the filter descriptor.
    virtual DictionaryRef CIFFilterDescAtIndexSkipCategories(std::uint32_t index,
                                                             bool skip) const = 0;
    // CIFCategoryNameWithinFilterNameAtIndex: — the name of the category that begins after the
    // separator slot at that index. Throws std::out_of_range for an index that is no separator slot
    // between two categories.
    virtual std::string CIFCategoryNameWithinFilterNameAtIndex(std::int32_t index) const = 0;

    // ---- Whole lists and lookup by identifier. Descriptors are shared and immutable.

    // CIFAllFilterIdentifiers — top-level entries, with "NSToolbarSeparatorItemIdentifier" between
    // categories.
    virtual std::vector<std::string> CIFAllFilterIdentifiers() const = 0;
    // CIFAllFilterDescriptors — the catalogue itself: category descriptors with "CIFCategoryName"
    // and "CIFFilterList".
    virtual ArrayRef CIFAllFilterDescriptors() const = 0;
    // CIFDescriptorForFilterName: — top-level entries only, groups by their own identifier.
    virtual DictionaryRef CIFDescriptorForFilterName(std::string_view identifier) const = 0;
    // CIFDescriptorForFilterNameWithGroups: — members of groups instead of the groups.
    virtual DictionaryRef CIFDescriptorForFilterNameWithGroups(
        std::string_view identifier) const = 0;
    // CIFFiltersDescriptorForGroup: — the members of a group; null for plain entries and unknown
    // names.
    virtual ArrayRef CIFFiltersDescriptorForGroup(std::string_view identifier) const = 0;

    // ---- What an entry takes. Nothing when there is no filter or generator of that name.

    // CIFQueryInputKeysForFilter:
    virtual NameList CIFQueryInputKeysForFilter(std::string_view name) = 0;
    // CIFQueryOutputKeysForFilter:
    virtual NameList CIFQueryOutputKeysForFilter(std::string_view name) = 0;
    // CIFQueryAttributesForFilter:
    virtual DictionaryRef CIFQueryAttributesForFilter(std::string_view name) = 0;

    // ---- Applying filters. Calls that repeat picture and name only set the parameters again.

    // CIFOutputImageForFilter:attributes:forImage: — unrendered, laid over the background colour;
    // its extent is usually infinite. A missing image for an unknown name or an unusable picture.
    virtual Image CIFOutputImageForFilterAttributesForImage(std::string_view name,
                                                            const Dictionary& attributes,
                                                            const PictureRef& picture) = 0;
    // CIFApplyFilter:attributes:forImage: — a picture of the source's pixel size (a vector source:
    // four times its points), transparency kept. Null for an unknown name ("Crop" names no filter)
    // or an unusable picture.
    virtual PictureRef CIFApplyFilterAttributesForImage(std::string_view name,
                                                        const Dictionary& attributes,
                                                        const PictureRef& picture) = 0;

    // ---- Generating. The caller seeds srand() immediately before: generators draw with rand()
    // only.

    // CIFGenerateLayer:attributes:forImage: — of the picture's size in points, truncated.
    virtual PictureRef CIFGenerateLayerAttributesForImage(std::string_view name,
                                                          const Dictionary& attributes,
                                                          const PictureRef& picture) = 0;
    // CIFGenerateLayer:attributes:size: — width and height are truncated to whole numbers.
    virtual PictureRef CIFGenerateLayerAttributesSize(std::string_view name,
                                                      const Dictionary& attributes, Size size) = 0;

    // ---- The editor window. Modal; true when the user accepted, false for cancel or no editor.

    // CIFShowDialog:useSelection:withRect:sourceSize: — the source size is accepted and not used.
    virtual bool CIFShowDialogUseSelectionWithRectSourceSize(const PictureRef& picture,
                                                             bool useSelection, Rect rect,
                                                             Size sourceSize) = 0;
    // CIFShowDialog:useSelection:withRect:
    virtual bool CIFShowDialogUseSelectionWithRect(const PictureRef& picture, bool useSelection,
                                                   Rect rect) = 0;
    // GLIFShowDialog:withRect: — a null picture starts with a blank one of the rectangle's size.
    virtual bool GLIFShowDialogWithRect(const PictureRef& picture, Rect rect) = 0;
    // CIFOutputImage — what the last run of the editor made; null before any.
    virtual PictureRef CIFOutputImage() const = 0;
    // CIFIsSelected — whether that is for a selection only.
    virtual bool CIFIsSelected() const = 0;
    // CIFSelectionRect — that selection, in single precision.
    virtual Rect CIFSelectionRect() const = 0;

    // ---- Resources. Names are file names without extension, in byte order.

    // localizedString: — the key itself when there is no translation.
    virtual std::string localizedString(std::string_view key) const = 0;
    // CIFGlassTextureNames
    virtual NameList CIFGlassTextureNames() const = 0;
    // CIFShadingMaterialNames
    virtual NameList CIFShadingMaterialNames() const = 0;
    // CIFBrushNames
    virtual NameList CIFBrushNames() const = 0;
    // CIFGlassTextureWithName: — the same object each time; null when there is none.
    virtual PictureRef CIFGlassTextureWithName(std::string_view name) const = 0;
    // CIFShadingMaterialWithName:
    virtual PictureRef CIFShadingMaterialWithName(std::string_view name) const = 0;
    // CIFBrushWithName:
    virtual PictureRef CIFBrushWithName(std::string_view name) const = 0;
    // resourceContentDirectoryAtPath: — names of the pictures in a folder; nothing when the folder
    // is missing or empty.
    virtual NameList resourceContentDirectoryAtPath(const std::string& folder) const = 0;
    // resourceImageWithName:path:
    virtual PictureRef resourceImageWithNamePath(std::string_view name,
                                                 const std::string& folder) const = 0;
    // resourceNamesOfKind: — names of all items in a sub-folder of the plug-in's own resources.
    virtual NameList resourceNamesOfKind(std::string_view subfolder) const = 0;
    // resourceImageWithName:ofKind:
    virtual PictureRef resourceImageWithNameOfKind(std::string_view name,
                                                   std::string_view subfolder) const = 0;

protected:
    // Hosts give the object back with CIFReleasePlugIn.
    ICoreImageFilter() = default;
    virtual ~ICoreImageFilter() = default;
    ICoreImageFilter(const ICoreImageFilter&) = delete;
    ICoreImageFilter& operator=(const ICoreImageFilter&) = delete;
};
