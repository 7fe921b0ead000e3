// The two lists of the window: their rows against the catalogues, and how the cells are drawn.
#include "editor/CatalogueModel.h"

#include "editor/CIFCategoryCell.h"
#include "editor/CIFImageCategoryCell.h"
#include "editor/CIFImageEditorController.h"
#include "editor/NamedImages.h"
#include "platform/foundation/Bundle.h"
#include "plugin/CIFMain.h"
#include "plugin/Catalogue.h"
#include "tests/plugin/Environment.h"

#include <QApplication>
#include <QIcon>
#include <QPainter>
#include <QStandardItemModel>
#include <QTableView>
#include <QTest>

#include <gtest/gtest.h>

namespace {

using editor::CatalogueModel;

struct Form {
    double version;
    std::uint32_t effectsSet;
    int entries, categories;
};

class CatalogueRows : public testing::TestWithParam<Form> {
protected:
    CatalogueRows()
    {
        plugin::setToolkitVersion(GetParam().version);
        controller.awakeFromNib();
        controller.plugIn()->CIFSetEffectsSet(GetParam().effectsSet);
    }
    ~CatalogueRows() override { plugin::resetToolkitVersion(); }

    CIFImageEditorController controller;
};

INSTANTIATE_TEST_SUITE_P(Forms, CatalogueRows,
                         testing::Values(Form{1404, 0, 66, 9}, Form{900, 0, 59, 9},
                                         Form{1404, 1, 20, 5}, Form{900, 1, 20, 5}));

// The type of mark by which the catalogue's styles are told apart.
int markOf(int style)
{
    return style == 1 ? 11 : style == 2 ? 12 : style == 3 ? 14 : style == 255 ? 13 : 0;
}

} // namespace

TEST_P(CatalogueRows, AreTheEntriesWithCategoriesBetween)
{
    const CatalogueModel model(controller);
    EXPECT_EQ(model.rowCount(), GetParam().entries + GetParam().categories - 1);
    int row = 0;
    for (const auto& value : *controller.plugIn()->CIFAllFilterDescriptors()) {
        const auto category = value.dictionary();
        const auto at = [&](int column) { return model.index(row, column); };
        const auto title = [&] { return at(0).data().toString().toStdString(); };
        if (row > 0) {
            EXPECT_EQ(title(), category->stringValue("CIFCategoryName"));
            EXPECT_TRUE(at(0).data(CatalogueModel::SeparatorRole).toBool());
            EXPECT_FALSE(at(0).data(CatalogueModel::IdentifierRole).isValid());
            EXPECT_FALSE(at(1).data(Qt::DecorationRole).isValid());
            EXPECT_EQ(model.flags(at(0)), Qt::NoItemFlags);
            ++row;
        }
        for (const auto& entry : *(*category)["CIFFilterList"].array()) {
            const auto descriptor = entry.dictionary();
            const std::string identifier = descriptor->stringValue("CIFFilterIdentifier");
            SCOPED_TRACE(identifier);
            EXPECT_EQ(title(), descriptor->stringValue("CIFFilterName"));
            EXPECT_FALSE(at(0).data(CatalogueModel::SeparatorRole).toBool());
            EXPECT_TRUE(model.flags(at(1)).testFlag(Qt::ItemIsSelectable));
            EXPECT_EQ(model.rowOfIdentifier(QString::fromStdString(identifier)), row);

            const int type = markOf(descriptor->intValue("CIFFilterStyle", 0));
            ASSERT_TRUE(at(1).data(Qt::DecorationRole).isValid());
            const auto mark = at(1).data(Qt::DecorationRole).value<QIcon>();
            EXPECT_EQ(mark.isNull(), type == 0);
            if (type != 0) {
                EXPECT_EQ(mark.pixmap(QSize(11, 13), 1.0).toImage(),
                          QPixmap::fromImage(editor::imageFromType(type)).toImage());
            }
            EXPECT_EQ(at(1).data(Qt::AccessibleTextRole).toString().isEmpty(), type == 0);
            ++row;
        }
    }
    EXPECT_EQ(row, model.rowCount());
    // Past the ends there is nothing, and nothing to select.
    for (const int outside : {-1, row, 1 << 30}) {
        EXPECT_FALSE(controller.tableViewShouldSelectRow(outside));
        EXPECT_TRUE(
            controller.tableViewObjectValueForTableColumnRow(u"title", outside).string.isEmpty());
    }
}

TEST(CatalogueList, IsLaidOutForReadingAndTyping)
{
    CIFImageEditorController controller;
    controller.awakeFromNib();
    CatalogueModel model(controller);
    for (const Qt::LayoutDirection direction : {Qt::LeftToRight, Qt::RightToLeft}) {
        QTableView list;
        list.setLayoutDirection(direction);
        editor::showCatalogue(list, model);
        list.resize(240, 400);
        list.show();
        // As soon as it is there, and once it is laid out.
        for (const int row : {3, 5}) {
            editor::selectRowOfList(list, row);
            EXPECT_TRUE(list.selectionModel()->isRowSelected(row));
            ASSERT_TRUE(QTest::qWaitForWindowExposed(&list));
        }
        editor::selectRowOfList(list, 10'000);
        EXPECT_EQ(list.currentIndex().row(), 5);
        // By the first letters of a name.
        QTest::keyClicks(&list, "sob");
        EXPECT_EQ(list.currentIndex().data(CatalogueModel::IdentifierRole), "CIFSobel");
        // Names of categories take less room than entries, and both columns fill the list.
        EXPECT_LT(list.rowHeight(2), list.rowHeight(1));
        EXPECT_EQ(list.columnWidth(0) + list.columnWidth(1), list.viewport()->width());
    }
}

TEST(CatalogueList, ShowsThePictureOfAnEntryWhereThereIsOne)
{
    CIFImageEditorController controller;
    controller.awakeFromNib();
    const CatalogueModel model(controller);
    const auto hasPicture = [&](int row) {
        return !model.index(row, 0).data(Qt::DecorationRole).value<QIcon>().isNull();
    };
    EXPECT_TRUE(hasPicture(3));
    EXPECT_FALSE(hasPicture(2)); // a category

    // Known pictures are kept by name, so these have names that nothing else uses.
    const TemporaryFolder folder;
    const Variable resources("CIF_RESOURCES", folder.path().string());
    EXPECT_TRUE(editor::entryIcon("NobodysIcon").isNull());
    QImage small(32, 32, QImage::Format_ARGB32), dense(64, 64, QImage::Format_ARGB32);
    small.fill(Qt::red);
    dense.fill(Qt::blue);
    std::filesystem::create_directories(folder.path() / "Icons");
    const QString name = QString::fromStdString((folder.path() / "Icons/TwoSizes").string());
    ASSERT_TRUE(small.save(name + ".tif", "PNG"));
    ASSERT_TRUE(dense.save(name + "@2x.tif", "PNG"));
    const QIcon both = editor::entryIcon("TwoSizes");
    ASSERT_FALSE(both.isNull());
    EXPECT_EQ(both.pixmap(QSize(24, 24), 1.0).toImage().pixelColor(5, 5), Qt::red);
    EXPECT_EQ(both.pixmap(QSize(24, 24), 2.0).toImage().pixelColor(5, 5), Qt::blue);
}

namespace {

// One cell of a model of its own, drawn into a picture of 100 by 21 points.
class Cell : public testing::Test {
protected:
    void setCategory(const QString& name)
    {
        model.setData(model.index(0, 0), name);
        model.setData(model.index(0, 0), true, CatalogueModel::SeparatorRole);
    }

    template <class Delegate>
    QImage drawn(double density = 1, Qt::LayoutDirection direction = Qt::LeftToRight) const
    {
        QImage image((QSizeF(100, 21) * density).toSize(), QImage::Format_RGB32);
        image.setDevicePixelRatio(density);
        image.fill(palette.color(QPalette::Base));
        QPainter painter(&image);
        QStyleOptionViewItem option;
        option.rect = QRect(10, 0, 80, 21);
        option.direction = direction;
        option.palette = palette;
        option.font = QApplication::font();
        option.state = QStyle::State_Enabled;
        Delegate().paint(&painter, option, model.index(0, 0));
        return image;
    }
    // Columns of a row of device pixels that are not the background, first and one past the last.
    std::pair<int, int> inkInRow(const QImage& image, int y) const
    {
        int first = image.width(), last = -1;
        for (int x = 0; x < image.width(); ++x)
            if (image.pixelColor(x, y) != palette.color(QPalette::Base)) {
                first = std::min(first, x);
                last = x;
            }
        return {first, last + 1};
    }
    std::vector<int> rowsWithInk(const QImage& image) const
    {
        std::vector<int> rows;
        for (int y = 0; y < image.height(); ++y)
            if (inkInRow(image, y).second > 0)
                rows.push_back(y);
        return rows;
    }
    // The last column of any row, and one more.
    int endOfInk(const QImage& image) const
    {
        int end = 0;
        for (int y = 0; y < image.height(); ++y)
            end = std::max(end, inkInRow(image, y).second);
        return end;
    }

    QStandardItemModel model{1, 1};
    QPalette palette = QApplication::palette();
};

using Columns = std::pair<int, int>;

} // namespace

TEST_F(Cell, ACategoryWithoutANameIsAThinLineThroughTheMiddle)
{
    setCategory("");
    const QImage image = drawn<CIFCategoryCell>();
    // Half a point, which is one pixel here; two points to the right, one past the cell.
    ASSERT_EQ(rowsWithInk(image), std::vector<int>{11});
    EXPECT_EQ(inkInRow(image, 11), Columns(12, 93));
    EXPECT_EQ(image.pixelColor(50, 11), QColor(102, 102, 102));
    EXPECT_EQ(inkInRow(drawn<CIFCategoryCell>(1, Qt::RightToLeft), 11), Columns(7, 88));
    for (const double density : {1.25, 1.5, 2.0, 3.0, 4.0})
        EXPECT_EQ(rowsWithInk(drawn<CIFCategoryCell>(density)).size(), density < 4 ? 1 : 2)
            << density;
    palette.setColor(QPalette::Base, QColor(35, 38, 41));
    EXPECT_EQ(drawn<CIFCategoryCell>().pixelColor(50, 11), QColor(153, 153, 153));
}

TEST_F(Cell, ACategoryShowsItsNameOverTheLine)
{
    setCategory("Blur");
    const QImage image = drawn<CIFCategoryCell>();
    const auto rows = rowsWithInk(image);
    EXPECT_GT(rows.size(), 6u);
    // The name begins near the left, the line goes on after it to its end.
    EXPECT_LE(inkInRow(image, rows.front()).second, 45);
    EXPECT_EQ(inkInRow(image, 11).second, 93);
    const QImage mirrored = drawn<CIFCategoryCell>(1, Qt::RightToLeft);
    EXPECT_GE(inkInRow(mirrored, rows.front()).first, 55);
    EXPECT_EQ(inkInRow(mirrored, 11).first, 7);
    // A long name is cut off, and stays in the cell.
    setCategory("Bewegungsunschärfe und noch viel mehr davon");
    EXPECT_LE(endOfInk(drawn<CIFCategoryCell>()), 93);
}

TEST_F(Cell, AnEntryIsOrdinaryTextWithItsPicture)
{
    model.setData(model.index(0, 0), "Sobel");
    const QImage text = drawn<CIFCategoryCell>();
    EXPECT_GT(rowsWithInk(text).size(), 5u);
    EXPECT_LT(endOfInk(text), 60) << "no line";
    QPixmap red(32, 32);
    red.fill(Qt::red);
    model.setData(model.index(0, 0), QIcon(red), Qt::DecorationRole);
    const QImage both = drawn<CIFCategoryCell>();
    EXPECT_EQ(both.pixelColor(24, 10), Qt::red);
    EXPECT_GT(endOfInk(both), endOfInk(text) + 20);
}

TEST_F(Cell, AMarkIsAnImageNothingOrTheRestOfTheLine)
{
    const QImage line = drawn<CIFImageCategoryCell>();
    ASSERT_EQ(rowsWithInk(line), std::vector<int>{11});
    EXPECT_EQ(inkInRow(line, 11), Columns(10, 88));
    EXPECT_EQ(inkInRow(drawn<CIFImageCategoryCell>(1, Qt::RightToLeft), 11), Columns(12, 90));

    model.setData(model.index(0, 0), QIcon(), Qt::DecorationRole);
    EXPECT_TRUE(rowsWithInk(drawn<CIFImageCategoryCell>()).empty());

    QPixmap red(11, 13);
    red.fill(Qt::red);
    model.setData(model.index(0, 0), QIcon(red), Qt::DecorationRole);
    const QImage mark = drawn<CIFImageCategoryCell>();
    EXPECT_EQ(rowsWithInk(mark).size(), 13u);
    const auto [first, last] = inkInRow(mark, 10);
    EXPECT_EQ(last - first, 11);
    EXPECT_NEAR(first + last, 100, 2);
}
