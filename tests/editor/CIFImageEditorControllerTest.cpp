// The controller's toolbar and menus.
#include "editor/CIFImageEditorController.h"

#include "plugin/CIFMain.h"
#include "plugin/Catalogue.h"

#include <QAction>
#include <QApplication>
#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>
#include <QTimer>
#include <QToolBar>

#include <gtest/gtest.h>

namespace {

class Controller : public testing::Test {
protected:
    Controller()
    {
        controller.awakeFromNib();
        controller.setWindow(&window);
    }

    QAction* item(const char* identifier)
    {
        return controller.toolbarItemForItemIdentifierWillBeInsertedIntoToolbar(&toolbar,
                                                                                identifier, true);
    }

    QMainWindow window;
    QToolBar toolbar;
    CIFImageEditorController controller;
};

} // namespace

TEST_F(Controller, IsOneForTheProcess)
{
    EXPECT_EQ(&CIFImageEditorController::sharedImageEditor(),
              &CIFImageEditorController::sharedImageEditor());
}

TEST_F(Controller, MakesToolbarItemsOfEntries)
{
    QAction* sobel = item("CIFSobel");
    EXPECT_EQ(sobel->text(), "Sobel");
    EXPECT_EQ(sobel->toolTip(), "Sobel");
    EXPECT_EQ(sobel->property("tag"), 0);
    EXPECT_EQ(sobel->icon().pixmap(QSize(16, 16), 1.0).toImage(),
              QPixmap::fromImage(CIFImageEditorController::imageWithNameOfType("shapes", "tif"))
                  .toImage());
    EXPECT_TRUE(controller.filterName().empty());
    sobel->trigger();
    EXPECT_EQ(controller.filterName(), "CIFSobel");

    QAction* wrap = item("id");
    EXPECT_EQ(wrap->text(), "Wrap");
    EXPECT_EQ(wrap->toolTip(), "Wrap");
    EXPECT_EQ(
        wrap->icon().pixmap(QSize(16, 16), 1.0).toImage(),
        QPixmap::fromImage(CIFImageEditorController::imageWithNameOfType("inspector_wrap.tif"))
            .toImage());
    wrap->trigger();
    EXPECT_EQ(controller.filterName(), "id");

    // An entry of the other effects set is as unknown as none at all.
    for (const char* unknown : {"CINothing", "", "GLIF_Plasma"}) {
        QAction* nothing = item(unknown);
        EXPECT_TRUE(nothing->text().isEmpty()) << unknown;
        EXPECT_TRUE(nothing->icon().isNull()) << unknown;
        nothing->trigger();
        EXPECT_EQ(controller.filterName(), "id") << unknown;
    }
}

TEST_F(Controller, FillsTheToolbarAndHidesItUntilItIsWanted)
{
    controller.createToolbar();
    window.show();
    QToolBar* made = controller.toolbar();
    ASSERT_NE(made, nullptr);
    EXPECT_EQ(made->objectName(), "Properties toolbar");
    EXPECT_EQ(made->iconSize(), QSize(16, 16));
    const QStringList identifiers = controller.toolbarAllowedItemIdentifiers(made);
    EXPECT_EQ(controller.toolbarDefaultItemIdentifiers(made), identifiers);
    EXPECT_EQ(controller.toolbarSelectableItemIdentifiers(made), identifiers);
    const QList<QAction*> items = made->actions();
    ASSERT_EQ(items.size(), identifiers.size());
    ASSERT_EQ(items.size(), 66 + 8);
    int separators = 0;
    for (int i = 0; i < items.size(); ++i) {
        if (items[i]->isSeparator()) {
            EXPECT_EQ(identifiers[i], plugin::kToolbarSeparatorItemIdentifier);
            ++separators;
            continue;
        }
        EXPECT_EQ(items[i]->data(), identifiers[i]);
        EXPECT_FALSE(items[i]->text().isEmpty());
    }
    EXPECT_EQ(separators, 8);

    EXPECT_FALSE(made->isVisible());
    QMenu* view = controller.createViewMenu(*window.menuBar());
    ASSERT_EQ(view->actions().size(), 1);
    EXPECT_EQ(view->actions()[0]->text(), "Properties Toolbar");
    view->actions()[0]->trigger();
    EXPECT_TRUE(made->isVisible());
    view->actions()[0]->trigger();
    EXPECT_FALSE(made->isVisible());

    // The window's own toolbar is used again, and not filled twice.
    controller.createToolbar();
    EXPECT_EQ(controller.toolbar(), made);
    EXPECT_EQ(made->actions().size(), 66 + 8);
}

TEST_F(Controller, LetsTheUserChooseTheToolbarsItems)
{
    window.show();
    controller.createToolbar();
    QToolBar* made = controller.toolbar();
    made->show();
    controller.plugIn()->CIFSetEffectsSet(1); // the other list is shown by now
    const auto choose = [&](const char* category, const char* name) {
        QTimer::singleShot(0, made, [=] {
            auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
            ASSERT_NE(menu, nullptr);
            EXPECT_EQ(menu->actions().size(), 9 + 2); // a separator and the toolbar itself
            for (const QAction* one : menu->actions())
                for (QAction* choice : one->menu() ? one->menu()->actions() : QList<QAction*>())
                    if (one->text() == QLatin1String(category) &&
                        choice->text() == QLatin1String(name))
                        choice->trigger();
            menu->close();
        });
        Q_EMIT made->customContextMenuRequested(QPoint(5, 5));
    };
    const auto isShown = [&](const char* identifier) {
        for (const QAction* one : made->actions())
            if (one->data() == identifier)
                return one->isVisible();
        return false;
    };
    EXPECT_TRUE(isShown("CIFSobel"));
    choose("Style", "Sobel");
    EXPECT_FALSE(isShown("CIFSobel"));
    EXPECT_TRUE(isShown("CIBloom"));
    choose("Style", "Sobel");
    EXPECT_TRUE(isShown("CIFSobel"));
}

TEST_F(Controller, MakesAMenuOfAGroup)
{
    const auto group = controller.plugIn()->CIFFiltersDescriptorForGroup("BlurFilters");
    const auto menu = CIFImageEditorController::filtersMenuWithGroupDesc(group);
    const QList<QAction*> items = menu->actions();
    ASSERT_EQ(items.size(), 3);
    EXPECT_EQ(items[0]->text(), "Gaussian Blur");
    EXPECT_EQ(items[0]->data(), "CIGaussianBlur");
    EXPECT_EQ(items[2]->data(), "CIDiscBlur");
    for (const QAction* one : items)
        EXPECT_TRUE(CIFImageEditorController::validateMenuItem(one));
    EXPECT_TRUE(CIFImageEditorController::filtersMenuWithGroupDesc(nullptr)->isEmpty());
    const auto odd = std::make_shared<foundation::Array>(
        foundation::Array{3, foundation::Dictionary{{"CIFFilterName", "Dodge & Burn"}}});
    const auto oddMenu = CIFImageEditorController::filtersMenuWithGroupDesc(odd);
    ASSERT_EQ(oddMenu->actions().size(), 1);
    EXPECT_EQ(oddMenu->actions()[0]->text(), "Dodge && Burn");
}

TEST_F(Controller, KnowsTheCursors)
{
    EXPECT_EQ(CIFImageEditorController::cursorFromType(6).shape(), Qt::IBeamCursor);
    EXPECT_EQ(CIFImageEditorController::cursorFromType(4).hotSpot(), QPoint(5, 6));
    EXPECT_EQ(CIFImageEditorController::imageFromType(13).size(), QSize(11, 13));
}
