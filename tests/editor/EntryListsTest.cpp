// The two lists and their tabs in the real window: choosing, groups, and the search.
#include "editor/CatalogueModel.h"
#include "editor/CatalogueSearch.h"
#include "platform/foundation/Bundle.h"
#include "tests/editor/EditorRun.h"

namespace {

using editor::CatalogueModel;

class EntryLists : public EditorRun {
protected:
    QTableView& filters() { return *parts()._tableView; }
    QTableView& generators() { return *parts()._GLIFTableView; }
    QLineEdit& search() { return *parts()._searchField; }

    static int rowNamed(const QTableView& list, const QString& name)
    {
        for (int row = 0; row < list.model()->rowCount(); ++row)
            if (list.model()->index(row, 0).data() == name)
                return row;
        throw std::runtime_error("no row " + name.toStdString());
    }
    static int selectedRow(const QTableView& list)
    {
        const auto rows = list.selectionModel()->selectedRows();
        return rows.isEmpty() ? -1 : rows.front().row();
    }
    static void clickRow(QTableView& list, int row)
    {
        const QModelIndex index = list.model()->index(row, 0);
        list.scrollTo(index);
        QTest::mouseClick(list.viewport(), Qt::LeftButton, {}, list.visualRect(index).center());
    }
    // The names that are left to see, categories in brackets.
    static QStringList shownRows(const QTableView& list)
    {
        QStringList names;
        for (int row = 0; row < list.model()->rowCount(); ++row) {
            const QModelIndex index = list.model()->index(row, 0);
            if (list.isRowHidden(row))
                continue;
            const bool isCategory = index.data(CatalogueModel::SeparatorRole).toBool();
            names << (isCategory ? u'[' + index.data().toString() + u']' : index.data().toString());
        }
        return names;
    }
    QStringList found(const QString& text)
    {
        search().setText(text);
        return shownRows(controller.selectedTab() == "filters" ? filters() : generators());
    }
    QString shownPage(const QStackedWidget* pages) { return pages->currentWidget()->objectName(); }
};

} // namespace

TEST_F(EntryLists, ChooseTheEntryThatIsClicked)
{
    edit(photo(), [&] {
        EXPECT_EQ(selectedRow(filters()), 0);
        EXPECT_EQ(controller.filterName(), "Crop");
        const int row = rowNamed(filters(), "Twirl Distortion");
        clickRow(filters(), row);
        EXPECT_EQ(controller.filterName(), "CITwirlDistortion");
        EXPECT_EQ(controller.pointingMode(), 2);
        waitForResult();
        EXPECT_FALSE(same(controller.outputImage(), controller.picture()));
        // A category refuses.
        clickRow(filters(), rowNamed(filters(), "Style"));
        EXPECT_EQ(selectedRow(filters()), row);
        EXPECT_EQ(controller.filterName(), "CITwirlDistortion");
        // Keys go past it.
        filters().setFocus();
        clickRow(filters(), rowNamed(filters(), "Page Curl"));
        QTest::keyClick(&filters(), Qt::Key_Down);
        EXPECT_EQ(controller.filterName(), "CIBloom");
        EXPECT_EQ(controller.pointingMode(), 1);
    });
}

TEST_F(EntryLists, AGroupShowsItsEntriesInItsPopUp)
{
    edit(photo(), [&] {
        const int row = rowNamed(filters(), "Blur");
        clickRow(filters(), row);
        EXPECT_EQ(controller.filterName(), "CIGaussianBlur");
        QComboBox& menu = *parts()._filtersGroupPopUpButton30;
        ASSERT_EQ(menu.count(), 3);
        EXPECT_EQ(menu.currentText(), "Gaussian Blur");
        menu.setCurrentIndex(2);
        Q_EMIT menu.activated(2);
        EXPECT_EQ(controller.filterName(), "CIDiscBlur");
        EXPECT_EQ(menu.currentText(), "Disc Blur");
        EXPECT_EQ(selectedRow(filters()), row);
        waitForResult();
        const PictureRef blurred = controller.outputImage();

        // The tab comes back to the entry, not to the name of the group.
        controller.selectTab("generators");
        controller.selectTab("filters");
        EXPECT_EQ(controller.filterName(), "CIDiscBlur");
        EXPECT_EQ(menu.currentText(), "Disc Blur");
        waitForResult();
        EXPECT_TRUE(same(controller.outputImage(), blurred));

        // By name, from anywhere.
        choose("CIHueAdjust");
        choose("CISixfoldRotatedTile");
        EXPECT_EQ(selectedRow(filters()), rowNamed(filters(), "Reflected Textures"));
        EXPECT_EQ(menu.count(), 4);
        EXPECT_EQ(menu.currentText(), "Sixfold Rotated");
        // A click on the row takes the first again.
        clickRow(filters(), row);
        clickRow(filters(), rowNamed(filters(), "Reflected Textures"));
        EXPECT_EQ(controller.filterName(), "CIEightfoldReflectedTile");
    });
}

TEST_F(EntryLists, FollowTheTabs)
{
    edit(photo(), [&] {
        EXPECT_EQ(generators().model(), nullptr) << "not before it is shown";
        EXPECT_TRUE(parts()._windowTabSegmentButton->isChecked());
        choose("CIColorInvert");
        const PictureRef inverted = controller.outputImage();
        click(parts()._windowTabSegmentButton2);
        EXPECT_TRUE(parts()._windowTabSegmentButton2->isChecked());
        EXPECT_FALSE(parts()._windowTabSegmentButton->isChecked());
        EXPECT_EQ(shownPage(parts()._listsTabView), "generators list");
        EXPECT_EQ(selectedRow(generators()), 0);
        EXPECT_EQ(controller.filterName(), "GLIF_StarField");
        choose("GLIF_Plasma");
        const PictureRef plasma = controller.outputImage();

        click(parts()._windowTabSegmentButton);
        EXPECT_EQ(controller.filterName(), "CIColorInvert");
        EXPECT_EQ(shownPage(parts()._listsTabView), "filters list");
        EXPECT_EQ(controller.numberOfRowsInTableView(), 74);
        waitForResult();
        EXPECT_TRUE(same(controller.outputImage(), inverted));
        click(parts()._windowTabSegmentButton2);
        EXPECT_EQ(controller.filterName(), "GLIF_Plasma");
        EXPECT_EQ(controller.numberOfRowsInTableView(), 24);
        waitForResult();
        EXPECT_TRUE(same(controller.outputImage(), plasma)) << "of the same seed";
        // An entry of the other list brings its tab.
        controller.chooseEntry("CIFSobel");
        EXPECT_EQ(controller.selectedTab(), "filters");
        EXPECT_EQ(controller.filterName(), "CIFSobel");
        controller.selectTab("nowhere");
        controller.chooseEntry("CINothing");
        EXPECT_EQ(controller.filterName(), "CIFSobel");
    });
}

TEST(CatalogueSearch, PassesOverCaseAccentsAndOrder)
{
    using editor::folded;
    using editor::hasWords;
    using editor::searchWords;
    EXPECT_EQ(folded("Schärfe ÉCLAT Straße"), "scharfe eclat strasse");
    EXPECT_EQ(searchWords("  Blur\tGauß "), QStringList({"blur", "gauss"}));
    EXPECT_TRUE(hasWords("gaussian blur focus", searchWords("foc GAUSS")));
    EXPECT_FALSE(hasWords("gaussian blur focus", searchWords("gauss style")));
    EXPECT_TRUE(hasWords("anything", searchWords("  ")));
}

TEST_F(EntryLists, AreSearchedByNameAndCategory)
{
    edit(photo(), [&] {
        const QStringList all = shownRows(filters());
        EXPECT_EQ(all.size(), 74);
        EXPECT_EQ(found("sobel"), QStringList({"[Style]", "Sobel"}));
        EXPECT_EQ(found("screen dot"), QStringList({"[Halftone]", "Dot Screen"}));
        EXPECT_EQ(found("HALFTONE").size(), 6);
        EXPECT_EQ(found("disc blur"), QStringList({"[Focus]", "Blur"})) << "in its group";
        EXPECT_EQ(found("crop"), QStringList({"Crop", "Transform"})) << "which has no heading";
        EXPECT_TRUE(found("zzz").isEmpty());
        EXPECT_EQ(found(" "), all);

        // What is chosen stays chosen.
        choose("CIColorInvert");
        const int row = selectedRow(filters());
        EXPECT_EQ(found("sobel").size(), 2);
        EXPECT_EQ(selectedRow(filters()), row);
        EXPECT_EQ(controller.filterName(), "CIColorInvert");
        clickRow(filters(), rowNamed(filters(), "Sobel"));
        EXPECT_EQ(controller.filterName(), "CIFSobel");

        found("plasma");
        controller.selectTab("generators");
        EXPECT_EQ(shownRows(generators()), QStringList({"[Science]", "Plasma"}));
        search().clear();
        EXPECT_EQ(shownRows(generators()).size(), 24);
        EXPECT_EQ(shownRows(filters()).size(), 74);
    });
}

TEST_F(EntryLists, AreSearchedInTheUsersLanguageAndInEnglish)
{
    foundation::setLanguage("de");
    edit(photo(), [&] {
        EXPECT_EQ(found("scharfe zeichner").size(), found("Schärfe ZEICHNER").size());
        const QString blur = found("motion blur").value(1);
        EXPECT_EQ(blur.toStdString(), foundation::localizedString("Motion Blur"));
        EXPECT_EQ(found(blur), found("motion blur"));
        controller.selectTab("generators");
        EXPECT_EQ(found("flying"), found("fliegende"));
        EXPECT_EQ(found("flying").value(1).toStdString(),
                  foundation::localizedString("Flying Lines"));
        EXPECT_EQ(found("science").size(), 6);
    });
    foundation::setLanguage("C");
}

TEST_F(EntryLists, TakeTheKeysOfTheSearchField)
{
    edit(photo(), [&] {
        search().setFocus();
        QTest::keyClicks(&search(), "gamma");
        // Also where Return would accept.
        EXPECT_EQ(controller.editMode(), 0);
        QTest::keyClick(&search(), Qt::Key_Return);
        EXPECT_EQ(controller.filterName(), "CIGammaAdjust");
        EXPECT_TRUE(window().isVisible());
        QTest::keyClick(&search(), Qt::Key_Escape);
        EXPECT_TRUE(search().text().isEmpty());
        EXPECT_TRUE(window().isVisible());
        EXPECT_EQ(controller.filterName(), "CIGammaAdjust");

        QTest::keyClicks(&search(), "box");
        QTest::keyClick(&search(), Qt::Key_Return);
        EXPECT_EQ(controller.filterName(), "CIBoxBlur");
        search().setText("sunb");
        QTest::keyClick(&search(), Qt::Key_Down);
        EXPECT_EQ(controller.filterName(), "CISunbeamsGenerator");
        search().setText("zzz");
        QTest::keyClick(&search(), Qt::Key_Return);
        QTest::keyClick(&search(), Qt::Key_Down);
        EXPECT_EQ(controller.filterName(), "CISunbeamsGenerator");
    });
}
