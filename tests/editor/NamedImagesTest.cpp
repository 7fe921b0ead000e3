// Cursors and small pictures by type and by name.
#include "editor/NamedImages.h"

#include <QPixmap>

#include <gtest/gtest.h>

using namespace editor;

TEST(NamedImages, SomeTypesAreOwnCursorsAndSomeArePictures)
{
    for (int type = -1; type <= 16; ++type) {
        const bool isOwn = type >= 0 && type <= 11 && type != 6 && type != 7;
        const Qt::CursorShape others = type == 6 ? Qt::IBeamCursor : Qt::ArrowCursor;
        EXPECT_EQ(cursorFromType(type).shape(), isOwn ? Qt::BitmapCursor : others) << type;
        EXPECT_EQ(imageFromType(type).isNull(), type != 7 && (type < 11 || type > 14)) << type;
    }
    EXPECT_EQ(cursorFromType(4).hotSpot(), QPoint(5, 6));
    EXPECT_EQ(cursorFromType(10).hotSpot(), QPoint(0, 0));
}

TEST(NamedImages, AreFoundByNameOrByFileNameAndKept)
{
    const QImage shapes = imageWithNameOfType("shapes", "tif");
    EXPECT_EQ(shapes.size(), QSize(16, 16));
    EXPECT_EQ(imageWithNameOfType("shapes.tif").cacheKey(), shapes.cacheKey());
    const QImage dense = imageWithNameOfType("shapes", "tif", 2);
    EXPECT_EQ(dense.size(), QSize(32, 32));
    EXPECT_EQ(dense.devicePixelRatio(), 2);
    EXPECT_TRUE(imageWithNameOfType("nothing", "tif").isNull());
}
