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

TEST_F(Controller, MakesToolbarItemsOfEntries)
{
    const struct {
        const char *identifier, *text, *picture;
    } items[] = {{"CIFSobel", "Sobel", "shapes.tif"}, {"id", "Wrap", "inspector_wrap.tif"}};
    for (const auto& [identifier, text, picture] : items) {
        QAction* made = item(identifier);
        EXPECT_EQ(made->text(), text);
        EXPECT_EQ(made->toolTip(), text);
        const QImage wanted = CIFImageEditorController::imageWithNameOfType(picture);
        EXPECT_EQ(made->icon().pixmap(QSize(16, 16), 1.0).toImage(),
                  QPixmap::fromImage(wanted).toImage());
        made->trigger();
        EXPECT_EQ(controller.filterName(), identifier);
    }
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
    const QStringList identifiers = controller.toolbarAllowedItemIdentifiers(made);
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
