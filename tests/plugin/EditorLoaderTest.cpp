// The editor's entry points, with a module in its place and without one.
#include "plugin/EditorLoader.h"
#include "Environment.h"
#include "platform/drawing/Picture.h"
#include "plugin/CIFMain.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using drawing::Picture;
using foundation::Rect;
using testing::ElementsAre;

class EditorLoader : public testing::Test {
protected:
    ~EditorLoader() override { plugin::setEditorModule({}); }
    CIFMain main;
    LogLines log;
};

} // namespace

TEST_F(EditorLoader, RefusesWithoutAnEditor)
{
    TemporaryFolder folder;
    const auto picture = Picture::blank({4, 4});
    // Missing, and present but no module.
    for (const auto& file : {folder.path() / "none.so", folder.write("broken.so", "no module")}) {
        plugin::setEditorModule(file);
        log.lines.clear();
        EXPECT_FALSE(main.CIFShowDialogUseSelectionWithRectSourceSize(picture, true, {}, {}));
        EXPECT_FALSE(main.CIFShowDialogUseSelectionWithRect(picture, true, {}));
        EXPECT_THAT(log.lines, ElementsAre("Can't load image editor", "Can't load image editor"));
        // The generator's entry point says nothing.
        EXPECT_FALSE(main.GLIFShowDialogWithRect(nullptr, {0, 0, 5, 5}));
        EXPECT_EQ(log.lines.size(), 2u);
    }
    EXPECT_FALSE(main.CIFOutputImage());
    EXPECT_FALSE(main.CIFIsSelected());
    EXPECT_EQ(main.CIFSelectionRect(), Rect());
}

TEST_F(EditorLoader, HandsOverAndKeepsTheAnswers)
{
    plugin::setEditorModule(CIF_TEST_EDITOR_MODULE);
    const auto picture = Picture::blank({4, 4});
    EXPECT_TRUE(main.CIFShowDialogUseSelectionWithRect(picture, true, {0.1, 1, 2, 3}));
    EXPECT_EQ(main.CIFOutputImage(), picture);
    EXPECT_TRUE(main.CIFIsSelected());
    // In single precision.
    EXPECT_EQ(main.CIFSelectionRect(), (Rect{double(0.1f), 1, 2, 3}));

    // A cancelled run replaces the answers all the same.
    EXPECT_FALSE(main.CIFShowDialogUseSelectionWithRectSourceSize(nullptr, true, {1, 1, 1, 1}, {}));
    EXPECT_FALSE(main.CIFOutputImage());

    // A generator's run leaves the selection alone.
    EXPECT_TRUE(main.GLIFShowDialogWithRect(nullptr, {0, 0, 7, 5}));
    ASSERT_TRUE(main.CIFOutputImage());
    EXPECT_EQ(main.CIFOutputImage()->size(), (foundation::Size{7, 5}));
    EXPECT_TRUE(main.CIFIsSelected());
    EXPECT_EQ(main.CIFSelectionRect(), (Rect{1, 1, 1, 1}));
    EXPECT_THAT(log.lines, ElementsAre());
}
