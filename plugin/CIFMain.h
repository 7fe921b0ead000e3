// The plug-in's principal object: the host's operations, both catalogues, the application pipeline
// and the resources. A host makes one; the editor keeps one of its own.
#pragma once

#include "platform/imaging/Filter.h"
#include "plugin/ICoreImageFilter.h"

#include <memory>
#include <string>
#include <string_view>
#include <vector>

class GLIFCoreObject;

namespace plugin {

// What the pipeline has done, so that tests can tell that repeated calls reuse their source and
// filter.
struct PipelineCounters {
    int rasterizations = 0; // times a host picture was turned into a filter image
    int filtersCreated = 0; // filter objects made for an application
};

// What applying a filter answers before any pixel is made: the part of the image from the origin on
// that the result shows, one point to a pixel.
struct FilterOutput {
    imaging::Image image;
    int width = 0, height = 0; // 0 when there is no result
    imaging::PixelFormat format = imaging::PixelFormat::Rgba8;

    explicit operator bool() const { return width > 0; }
};

} // namespace plugin

class CIFMain final : public ICoreImageFilter {
public:
    // init
    CIFMain();
    // dealloc
    ~CIFMain() override;

    std::int32_t CIFMajorPlugInVersion() const override { return 2; }
    std::int32_t CIFMinorPlugInVersion() const override { return 3; }
    std::string CIFCopyrightString() const override { return "Core Image Filter PlugIn"; }

    void CIFSetEffectsSet(std::uint32_t set) override;
    void CIFSetBackgroundColor(const Color& color) override;

    int CIFFilterCategoriesCount() const override;
    int CIFFilterCountForCategoryAtIndex(int category) const override;
    int CIFFilterCount() const override;
    int CIFFilterCountBySkipCategory() const override;

    std::string CIFCategoryNameAtIndex(int category) const override;
    std::string CIFFilterNameAtIndexForCategoryIndex(int entry, int category) const override;
    std::string CIFFilterIdentifierAtIndexForCategoryIndex(int entry, int category) const override;
    Name CIFFilterIconAtIndexForCategoryIndex(int entry, int category) const override;

    Name CIFFilterNameAtIndexSkipCategories(std::uint32_t index, bool skip) const override;
    Name CIFFilterIdentifierAtIndexSkipCategories(std::uint32_t index, bool skip) const override;
    DictionaryRef CIFFilterDescAtIndexSkipCategories(std::uint32_t index, bool skip) const override;
    std::string CIFCategoryNameWithinFilterNameAtIndex(std::int32_t index) const override;

    std::vector<std::string> CIFAllFilterIdentifiers() const override;
    ArrayRef CIFAllFilterDescriptors() const override;
    DictionaryRef CIFDescriptorForFilterName(std::string_view identifier) const override;
    DictionaryRef CIFDescriptorForFilterNameWithGroups(std::string_view identifier) const override;
    ArrayRef CIFFiltersDescriptorForGroup(std::string_view identifier) const override;

    NameList CIFQueryInputKeysForFilter(std::string_view name) override;
    NameList CIFQueryOutputKeysForFilter(std::string_view name) override;
    DictionaryRef CIFQueryAttributesForFilter(std::string_view name) override;

    Image CIFOutputImageForFilterAttributesForImage(std::string_view name,
                                                    const Dictionary& attributes,
                                                    const PictureRef& picture) override;
    PictureRef CIFApplyFilterAttributesForImage(std::string_view name, const Dictionary& attributes,
                                                const PictureRef& picture) override;
    PictureRef CIFGenerateLayerAttributesForImage(std::string_view name,
                                                  const Dictionary& attributes,
                                                  const PictureRef& picture) override;
    PictureRef CIFGenerateLayerAttributesSize(std::string_view name, const Dictionary& attributes,
                                              Size size) override;

    bool CIFShowDialogUseSelectionWithRectSourceSize(const PictureRef& picture, bool useSelection,
                                                     Rect rect, Size sourceSize) override;
    bool CIFShowDialogUseSelectionWithRect(const PictureRef& picture, bool useSelection,
                                           Rect rect) override;
    bool GLIFShowDialogWithRect(const PictureRef& picture, Rect rect) override;
    PictureRef CIFOutputImage() const override { return _outputImage; }
    bool CIFIsSelected() const override { return _isSelected; }
    Rect CIFSelectionRect() const override { return _selectionRect; }

    std::string localizedString(std::string_view key) const override;
    NameList CIFGlassTextureNames() const override;
    NameList CIFShadingMaterialNames() const override;
    NameList CIFBrushNames() const override;
    PictureRef CIFGlassTextureWithName(std::string_view name) const override;
    PictureRef CIFShadingMaterialWithName(std::string_view name) const override;
    PictureRef CIFBrushWithName(std::string_view name) const override;
    NameList resourceContentDirectoryAtPath(const std::string& folder) const override;
    PictureRef resourceImageWithNamePath(std::string_view name,
                                         const std::string& folder) const override;
    NameList resourceNamesOfKind(std::string_view subfolder) const override;
    PictureRef resourceImageWithNameOfKind(std::string_view name,
                                           std::string_view subfolder) const override;

    // Of the class rather than the object. (Its own form of localizedString: is
    // foundation::localizedString: C++ has no room for both under one name.)

    // + sharedContentLibraryPath — nothing when there is no content library; then so for the
    // others.
    static Name sharedContentLibraryPath();
    // + sharedGlassTexturesPath
    static Name sharedGlassTexturesPath();
    // + sharedShadingMaterialsPath
    static Name sharedShadingMaterialsPath();
    // + sharedBrushTexturesPath
    static Name sharedBrushTexturesPath();

    // Steps of the operations above that the editor and the tests call by themselves.

    // currCategoriesListDesc — the current effects set's catalogue.
    const ArrayRef& currCategoriesListDesc() const { return _effectsList[_currEffectsSet]; }
    // What CIFApplyFilterAttributesForImage makes its picture of.
    plugin::FilterOutput outputOfFilter(std::string_view name, const Dictionary& attributes,
                                        const PictureRef& picture);
    // GLIFSmartInstanceFromName: — the generator of that class; the last one asked for is kept.
    // Null, with a line in the log, when there is no such class.
    std::shared_ptr<GLIFCoreObject> GLIFSmartInstanceFromName(std::string_view name);
    // prepareAttributes: — the inputs that the current filter gets for a host's parameters.
    Dictionary prepareAttributes(const Dictionary& attributes);
    // constantColorImage — infinite transparent black.
    Image constantColorImage();
    // performAdditionalCompositing:withBackground: — the sum, rendered at the background's size.
    PictureRef performAdditionalCompositingWithBackground(const Image& image,
                                                          const Image& background);
    // outputAdditionalCompositing:withBackground: — the sum, unrendered.
    Image outputAdditionalCompositingWithBackground(const Image& image,
                                                    const Image& background) const;

    const plugin::PipelineCounters& pipelineCounters() const { return _counters; }

private:
    struct Application;

    // initCIFList, initGLIFList
    static ArrayRef initCIFList();
    static ArrayRef initGLIFList();

    // Which source a generator-type filter is added onto when the call repeats picture and name.
    enum class RepeatedSource { WorkingSize, PointSize };

    // The half that both application operations share: sets up source and filter and asks for the
    // output. False when there is no filter or no usable picture.
    bool beginApplication(Application& application, std::string_view name,
                          const Dictionary& attributes, const PictureRef& picture,
                          RepeatedSource repeatedSource);
    // As large as the background.
    plugin::FilterOutput sumWithBackground(const Image& image, const Image& background) const;
    Image rasterized(const PictureRef& picture, int width, int height);
    // Of _currImage; made when first asked for.
    Image pointSizeImage();

    std::vector<ArrayRef> _effectsList; // filter catalogue, generator catalogue
    std::uint32_t _currEffectsSet = 0;
    ArrayRef _categoriesListDesc;
    ArrayRef _GLIFcategoriesListDesc;
    PictureRef _currImage;
    std::string _currFilterName;
    std::unique_ptr<imaging::Filter> _CIFilterInstance;
    std::shared_ptr<GLIFCoreObject> _GLIFGeneratorInstance;
    std::string _GLIFGeneratorName; // its class
    PictureRef _outputImage;
    bool _isSelected = false;
    Rect _selectionRect;
    Image _constColorImage;
    Image _whiteBallImage;
    std::optional<Color> _backgroundColor;

    Image _sourceImage;    // of _currImage at the working size
    Image _pointSizeImage; // of _currImage at its size in points, for generator-type filters
    imaging::PixelFormat _sourceFormat = imaging::PixelFormat::Rgba8; // results have the same
    plugin::PipelineCounters _counters;
};
