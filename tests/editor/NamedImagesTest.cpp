// Cursors and small pictures by type.
#include "editor/NamedImages.h"

#include <QPixmap>

#include <gtest/gtest.h>

using namespace editor;

TEST(NamedImages, CursorsAreMadeOnceAndOthersAreTheSystems)
{
    const int custom[] = {0, 1, 2, 3, 4, 5, 8, 9, 10, 11};
    for (const int type : custom) {
        const QCursor& cursor = cursorFromType(type);
        EXPECT_EQ(cursor.shape(), Qt::BitmapCursor) << type;
        // The same picture, not an equal one.
        EXPECT_EQ(cursor.pixmap().cacheKey(), cursorFromType(type).pixmap().cacheKey()) << type;
    }
    EXPECT_EQ(cursorFromType(6).shape(), Qt::IBeamCursor);
    for (const int type : {7, 12, 99, -1})
        EXPECT_EQ(cursorFromType(type).shape(), Qt::ArrowCursor) << type;
    EXPECT_EQ(cursorFromType(4).hotSpot(), QPoint(5, 6));
    EXPECT_EQ(cursorFromType(11).hotSpot(), QPoint(5, 6));
    EXPECT_EQ(cursorFromType(10).hotSpot(), QPoint(0, 0));
}

TEST(NamedImages, OnlySomeTypesHaveAPicture)
{
    for (const int type : {7, 11, 12, 13, 14})
        EXPECT_FALSE(imageFromType(type).isNull()) << type;
    for (const int type : {8, 9, 10, 0, 15, -1})
        EXPECT_TRUE(imageFromType(type).isNull()) << type;
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
