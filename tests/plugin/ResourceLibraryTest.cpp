// The content library: where it is, what its folders list and which file a name means.
#include "plugin/ResourceLibrary.h"
#include "Environment.h"
#include "platform/codecs/Codecs.h"
#include "platform/drawing/Picture.h"
#include "plugin/CIFMain.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>

namespace {

using foundation::PictureRef;
using testing::ElementsAre;
using testing::Optional;

// A picture file of so many columns, to tell files apart by.
std::string picture(codecs::FileFormat format, int width)
{
    const auto bitmap = imaging::Bitmap::makeClear(width, 2, imaging::PixelFormat::Rgba8);
    for (int y = 0; y < 2; ++y)
        std::memset(bitmap->row(y), 0xff, 4 * static_cast<std::size_t>(width));
    return *codecs::encodePicture(*drawing::Picture::fromBitmap(bitmap), format, {});
}

class ResourceLibrary : public testing::Test {
protected:
    TemporaryFolder folder;
    Variable library{"CIF_CONTENT_LIBRARY", folder.path().string()};
    CIFMain main;
};

} // namespace

TEST_F(ResourceLibrary, ListsThePicturesOfAFolder)
{
    folder.write("Textures/Glass Textures/Ripple.JPG", "listed by its name alone");
    folder.write("Textures/Glass Textures/Notes.txt", "no picture");
    folder.write("Textures/Glass Textures/Old/Wave.jpg", "in a folder");
    folder.write("Textures/Glass Textures/Folder.jpg/x", "a folder");
    folder.write("Textures/Glass Textures/plain", "no extension");
    EXPECT_THAT(main.CIFGlassTextureNames(), Optional(ElementsAre("Ripple")));

    folder.write("Textures/Shading Materials/notes.txt", "");
    EXPECT_THAT(main.CIFShadingMaterialNames(), Optional(ElementsAre()));
    for (const char* name : {"b.tiff", "a.tif", "B.jpeg", "two.parts.jpg", "\xc3\xa4.jpg"})
        folder.write(std::filesystem::path("Brushes") / name, "");
    EXPECT_THAT(main.CIFBrushNames(),
                Optional(ElementsAre("B", "a", "b", "two.parts", "\xc3\xa4")));

    std::filesystem::create_directories(folder.path() / "Empty");
    EXPECT_FALSE(main.resourceContentDirectoryAtPath((folder.path() / "Empty").string()));
    EXPECT_FALSE(main.resourceContentDirectoryAtPath((folder.path() / "Missing").string()));
    EXPECT_FALSE(main.resourceContentDirectoryAtPath((folder.path() / "Brushes/a.tif").string()));
}

TEST_F(ResourceLibrary, LoadsTheFirstTypeThatCanBeReadAndKeepsIt)
{
    const std::filesystem::path glass = "Textures/Glass Textures";
    folder.write(glass / "Ice.jpg", picture(codecs::FileFormat::Jpeg, 3));
    folder.write(glass / "Ice.tiff", picture(codecs::FileFormat::Tiff, 4));
    folder.write(glass / "Worn.jpg", "not a picture");
    folder.write(glass / "Worn.tif", picture(codecs::FileFormat::Tiff, 5));
    folder.write(glass / "Ripple.JPG", picture(codecs::FileFormat::Jpeg, 6));
    folder.write(glass / "Other.png", picture(codecs::FileFormat::Png, 7));
    LogLines log;

    const PictureRef ice = main.CIFGlassTextureWithName("Ice");
    ASSERT_TRUE(ice);
    EXPECT_EQ(ice->pixelsWide(), 3);
    std::filesystem::remove(folder.path() / glass / "Ice.jpg");
    EXPECT_EQ(main.CIFGlassTextureWithName("Ice"), ice);
    EXPECT_EQ(CIFMain().CIFGlassTextureWithName("Ice"), ice);
    EXPECT_EQ(main.resourceImageWithNamePath("Ice", *CIFMain::sharedGlassTexturesPath()), ice);

    ASSERT_TRUE(main.CIFGlassTextureWithName("Worn"));
    EXPECT_EQ(main.CIFGlassTextureWithName("Worn")->pixelsWide(), 5);
    ASSERT_TRUE(main.CIFGlassTextureWithName("Ripple"));
    EXPECT_EQ(main.CIFGlassTextureWithName("Ripple")->pixelsWide(), 6);

    EXPECT_FALSE(main.CIFGlassTextureWithName("Other"));
    EXPECT_FALSE(main.CIFGlassTextureWithName(""));
    EXPECT_FALSE(main.CIFBrushWithName("Ice"));
    EXPECT_FALSE(main.CIFShadingMaterialWithName("Ice"));
    EXPECT_THAT(log.lines, ElementsAre());
}

TEST_F(ResourceLibrary, LiesWhereTheEnvironmentSays)
{
    EXPECT_EQ(CIFMain::sharedContentLibraryPath(), folder.path().string());
    EXPECT_EQ(CIFMain::sharedGlassTexturesPath(),
              folder.path().string() + "/Textures/Glass Textures");
    EXPECT_EQ(CIFMain::sharedShadingMaterialsPath(),
              folder.path().string() + "/Textures/Shading Materials");
    EXPECT_EQ(CIFMain::sharedBrushTexturesPath(), folder.path().string() + "/Brushes");

    const Variable home("XDG_DATA_HOME", (folder.path() / "home").string());
    const Variable system("XDG_DATA_DIRS",
                          (folder.path() / "a").string() + ":" + (folder.path() / "b").string());
    const Variable resources("CIF_RESOURCES", (folder.path() / "none").string());
    const std::string name = "com.corvanix.CoreImageFilter";
    {
        const Variable missing("CIF_CONTENT_LIBRARY", (folder.path() / "none").string());
        folder.write("home/" + name + "/x", "");
        EXPECT_FALSE(CIFMain::sharedContentLibraryPath());
        EXPECT_FALSE(CIFMain::sharedBrushTexturesPath());
        EXPECT_FALSE(main.CIFBrushNames());
        EXPECT_FALSE(main.CIFBrushWithName("Round"));
    }
    const Variable unset("CIF_CONTENT_LIBRARY", std::nullopt);
    EXPECT_EQ(CIFMain::sharedContentLibraryPath(), (folder.path() / "home" / name).string());
    std::filesystem::remove_all(folder.path() / "home");
    EXPECT_FALSE(CIFMain::sharedContentLibraryPath());
    folder.write("b/" + name + "/x", "");
    EXPECT_EQ(CIFMain::sharedContentLibraryPath(), (folder.path() / "b" / name).string());
    const Variable own("CIF_RESOURCES", (folder.path() / "own").string());
    folder.write("own/" + name + "/x", "");
    std::filesystem::remove_all(folder.path() / "b");
    EXPECT_EQ(CIFMain::sharedContentLibraryPath(), (folder.path() / "own" / name).string());
}

TEST_F(ResourceLibrary, FindsTheLibrarysOwnPictures)
{
    const Variable resources("CIF_RESOURCES", folder.path().string());
    folder.write("Shapes/Star.tif", picture(codecs::FileFormat::Tiff, 9));
    folder.write("Shapes/Moon.png", "");
    folder.write("Shapes/Broken.jpg", "not a picture");
    folder.write("Shapes/Broken.tif", picture(codecs::FileFormat::Tiff, 9));
    EXPECT_THAT(main.resourceNamesOfKind("Shapes"),
                Optional(ElementsAre("Broken", "Broken", "Moon", "Star")));
    EXPECT_FALSE(main.resourceNamesOfKind("Nothing"));

    const PictureRef star = main.resourceImageWithNameOfKind("Star", "Shapes");
    ASSERT_TRUE(star);
    EXPECT_EQ(star->pixelsWide(), 9);
    // Cached by its bare name, so the sub-folder no longer matters.
    EXPECT_EQ(main.resourceImageWithNameOfKind("Star", "Elsewhere"), star);
    EXPECT_EQ(plugin::namedImage("Star"), star);
    EXPECT_FALSE(main.resourceImageWithNameOfKind("Broken", "Shapes"));
    EXPECT_FALSE(main.resourceImageWithNameOfKind("Moon", "Shapes"));
}

TEST_F(ResourceLibrary, SortsMaterialsWithSandInFrontOfWhateverItMeets)
{
    const auto order = [](const char* a, const char* b) {
        return sortShadingMateriaNames(a, b, nullptr);
    };
    EXPECT_EQ(order("Sand", "Clay"), -1);
    EXPECT_EQ(order("Clay", "Sand"), -1);
    EXPECT_EQ(order("Sand", "Sand"), -1);
    EXPECT_EQ(order("clay", "Clay"), 0);
    EXPECT_EQ(order("clay", "Dust"), -1);
    EXPECT_EQ(order("Dust", "clay"), 1);
    EXPECT_EQ(order("sand", "Clay"), 1);
    EXPECT_EQ(order("\xc3\x84rmel", "\xc3\xa4RMEL"), 0);
    EXPECT_NE(order("a\xff", "a\xfe"), 0);

    // Sand stays where it is listed and nothing passes it.
    EXPECT_THAT(plugin::sortedShadingMaterialNames({"Wood", "clay", "Sand", "Brick", "Amber"}),
                ElementsAre("clay", "Wood", "Sand", "Amber", "Brick"));
    EXPECT_THAT(plugin::sortedShadingMaterialNames({"b", "B", "a"}), ElementsAre("a", "b", "B"));
}
