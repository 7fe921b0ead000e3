// Colour wells: one is active, takes the panel's colour and lets go of it again.
#include "editor/ColorWell.h"

#include <QAccessible>
#include <QColorDialog>
#include <QDropEvent>
#include <QImage>
#include <QMimeData>
#include <QSet>
#include <QSignalSpy>
#include <QTest>
#include <QVBoxLayout>

#include <gtest/gtest.h>

using editor::ColorPanel;
using editor::ColorWell;
using foundation::Color;

namespace {

class ColorWells : public testing::Test {
protected:
    ColorWells()
    {
        auto* layout = new QVBoxLayout(&window);
        layout->addWidget(first);
        layout->addWidget(second);
        first->setColor(Color::rgb(1, 0, 0));
        second->setColor(Color::rgb(0, 0, 1, 0.5F));
        window.show();
    }
    ~ColorWells() override { panel.close(); }

    bool drop(ColorWell& well, const QMimeData& data)
    {
        QDragEnterEvent enter({5, 5}, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(&well, &enter);
        QDropEvent event(QPointF(5, 5), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(&well, &event);
        return event.isAccepted();
    }
    static int colorsIn(ColorWell& well)
    {
        const QImage image = well.grab(well.rect().adjusted(8, 8, -8, -8)).toImage();
        QSet<QRgb> colors;
        for (int y = 0; y < image.height(); ++y)
            for (int x = 0; x < image.width(); ++x)
                colors.insert(image.pixel(x, y));
        return static_cast<int>(colors.size());
    }

    QWidget window;
    ColorWell* first = new ColorWell;
    ColorWell* second = new ColorWell;
    ColorPanel& panel = ColorPanel::sharedColorPanel();
    QSignalSpy changes{&panel, &ColorPanel::colorDidChange};
};

} // namespace

TEST_F(ColorWells, AreActiveOneAtATime)
{
    QTest::mouseClick(first, Qt::LeftButton);
    EXPECT_TRUE(first->isActive() && panel.isVisible());
    EXPECT_EQ(panel.color(), *first->color());
    QTest::keyClick(second, Qt::Key_Return);
    EXPECT_TRUE(second->isActive() && !first->isActive());
    EXPECT_EQ(panel.color(), *second->color());
    QTest::keyClick(second, Qt::Key_Space);
    EXPECT_FALSE(second->isActive() || panel.isVisible());
    EXPECT_TRUE(changes.isEmpty());
}

TEST_F(ColorWells, TakeThePanelsColorWhileActive)
{
    first->activate();
    panel.dialog().setCurrentColor(Qt::green);
    EXPECT_EQ(*first->color(), Color::rgb(0, 1, 0));
    EXPECT_EQ(*second->color(), Color::rgb(0, 0, 1, 0.5F));
    // The other way round nothing is sent.
    first->setColor(Color::black());
    EXPECT_EQ(panel.dialog().currentColor(), QColor(Qt::black));
    EXPECT_EQ(changes.size(), 1);
    first->deactivate();
    panel.dialog().setCurrentColor(Qt::white);
    EXPECT_EQ(*first->color(), Color::black());
}

TEST_F(ColorWells, LetGoWithThePanelAndWhenTheyCannotBeUsed)
{
    const std::pair<const char*, std::function<void()>> ends[] = {
        {"Escape", [&] { QTest::keyClick(&panel.dialog(), Qt::Key_Escape); }},
        {"hidden", [&] { first->hide(); }},
        {"disabled", [&] { first->setEnabled(false); }},
        {"window hidden", [&] { window.hide(); }},
    };
    for (const auto& [name, end] : ends) {
        first->setEnabled(true);
        first->show();
        window.show();
        first->activate();
        EXPECT_TRUE(first->isActive() && panel.isVisible()) << name;
        end();
        EXPECT_FALSE(first->isActive() || panel.isVisible()) << name;
    }
    first->setEnabled(false);
    first->activate();
    EXPECT_FALSE(first->isActive());
}

// A modal window blocks all windows but its own.
TEST_F(ColorWells, OpenAPanelThatAModalWindowLetsThrough)
{
    window.hide();
    window.setWindowModality(Qt::ApplicationModal);
    window.show();
    first->activate();
    EXPECT_EQ(panel.dialog().parentWidget(), &window);
    EXPECT_FALSE(panel.dialog().isModal());
    auto other = std::make_unique<QWidget>();
    auto* well = new ColorWell(other.get());
    other->show();
    well->activate();
    EXPECT_EQ(panel.dialog().parentWidget(), other.get());
    // The panel goes with its window, and comes back.
    other.reset();
    EXPECT_EQ(panel.activeWell(), nullptr);
    first->activate();
    EXPECT_TRUE(panel.isVisible());
    EXPECT_EQ(panel.color(), Color::rgb(1, 0, 0));
}

TEST_F(ColorWells, TakeDroppedColors)
{
    QList<Color> dropped;
    QObject::connect(first, &ColorWell::colorDropped,
                     [&](const Color& color) { dropped.append(color); });
    QMimeData data;
    data.setText("blue");
    EXPECT_FALSE(drop(*first, data));
    data.setColorData(QColor(0, 0, 255));
    first->activate();
    EXPECT_TRUE(drop(*first, data));
    EXPECT_EQ(dropped, QList<Color>{Color::rgb(0, 0, 1)});
    EXPECT_EQ(*first->color(), Color::rgb(0, 0, 1));
    EXPECT_EQ(panel.color(), Color::rgb(0, 0, 1));
}

TEST_F(ColorWells, ShowWhatCanBeSeenThroughAndWhetherTheyAreActive)
{
    EXPECT_EQ(colorsIn(*first), 1);
    EXPECT_EQ(colorsIn(*second), 2); // squares of two shades
    const QImage idle = first->grab().toImage();
    EXPECT_EQ(idle.pixelColor(first->rect().center()), QColor(Qt::red));
    first->activate();
    EXPECT_NE(first->grab().toImage(), idle);
    first->setEnabled(false);
    EXPECT_NE(first->grab().toImage().pixelColor(first->rect().center()), QColor(Qt::red));
}

TEST_F(ColorWells, SayTheirColor)
{
    second->setAccessibleName("Background Color");
    EXPECT_EQ(QAccessible::queryAccessibleInterface(second)->text(QAccessible::Name),
              "Background Color, #0000FF, opacity 50 %");
    second->setColor({});
    EXPECT_EQ(QAccessible::queryAccessibleInterface(second)->text(QAccessible::Name),
              "Background Color");
    QSignalSpy resets(second, &ColorWell::resetAction);
    QTest::keyClick(second, Qt::Key_Delete);
    EXPECT_EQ(resets.size(), 1);
}
