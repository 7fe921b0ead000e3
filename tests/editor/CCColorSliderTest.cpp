// The colour slider: its marks under the mouse and the keyboard, what it tells assistive technology
// and what it looks like.
#include "editor/CCColorSlider.h"

#include "platform/foundation/Bundle.h"

#include <QAccessible>
#include <QImage>
#include <QLineEdit>
#include <QPainter>
#include <QSignalSpy>
#include <QTest>
#include <QVBoxLayout>

#include <gmock/gmock.h>

#include <limits>

namespace {

using Mark = CCColorSlider::Mark;
using Range = std::pair<double, double>;

constexpr double kWidth = 190; // of the gradient

QImage pictureOf(QWidget& widget, double density = 1)
{
    QImage image((QSizeF(widget.size()) * density).toSize(), QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(density);
    image.fill(Qt::white);
    widget.render(&image, {}, {}, QWidget::DrawWindowBackground);
    return image;
}

bool areNear(QColor a, QColor b, int tolerance = 12)
{
    return std::abs(a.red() - b.red()) <= tolerance &&
           std::abs(a.green() - b.green()) <= tolerance &&
           std::abs(a.blue() - b.blue()) <= tolerance;
}

class ColorSlider : public testing::Test {
protected:
    // Positions are those of the cell, in points.
    void mouse(QEvent::Type type, double x, bool shift = false)
    {
        const QPointF p = slider.fromCell({x, 5});
        QMouseEvent event(type, p, slider.mapToGlobal(p),
                          type == QEvent::MouseMove ? Qt::NoButton : Qt::LeftButton,
                          type == QEvent::MouseButtonRelease ? Qt::NoButton : Qt::LeftButton,
                          shift ? Qt::ShiftModifier : Qt::NoModifier);
        QCoreApplication::sendEvent(&slider, &event);
    }
    void press(double x) { mouse(QEvent::MouseButtonPress, x); }
    void drag(double x, bool shift = false) { mouse(QEvent::MouseMove, x, shift); }
    void release(double x) { mouse(QEvent::MouseButtonRelease, x); }
    void key(Qt::Key key, Qt::KeyboardModifiers modifiers = {})
    {
        QTest::keyClick(&slider, key, modifiers);
    }
    void place(double mark1, double mark2)
    {
        slider.setRangeMinValue(mark1 / kWidth);
        slider.setRangeMaxValue(mark2 / kWidth);
    }
    Range marks() const { return {slider.cell().mark1(), slider.cell().mark2()}; }
    Range values() const { return {slider.getRangeMinValue(), slider.getRangeMaxValue()}; }

    void expectValues(double min, double max, int where = 0)
    {
        EXPECT_NEAR(slider.getRangeMinValue(), min, 1e-12) << where;
        EXPECT_NEAR(slider.getRangeMaxValue(), max, 1e-12) << where;
    }

    void expectMarks(double mark1, double mark2)
    {
        EXPECT_NEAR(marks().first, mark1, 1e-9);
        EXPECT_NEAR(marks().second, mark2, 1e-9);
    }

    CCColorSlider slider{QRect(0, 0, 200, 30)};
    QSignalSpy actions{&slider, &CCColorSlider::action};
};

} // namespace

TEST_F(ColorSlider, OrdersAndKeepsItsValues)
{
    slider.setRangeMinValue(0.8);
    slider.setRangeMaxValue(0.2);
    expectValues(0.2, 0.8);
    // At every size.
    for (const int width : {400, 8, 0, 1, 3000, 200}) {
        slider.resize(width, 30);
        QResizeEvent resize(slider.size(), {});
        QCoreApplication::sendEvent(&slider, &resize);
        expectValues(0.2, 0.8, width);
    }
    slider.setRangeMinValue(-3);
    slider.setRangeMaxValue(1e30);
    EXPECT_EQ(values(), Range(0, 1));
    slider.setRangeMaxValue(std::numeric_limits<double>::quiet_NaN());
    expectMarks(0, 0);
    // Only the user sends actions.
    EXPECT_EQ(actions.count(), 0);
}

// Where a press lands, and which mark it then has.
TEST_F(ColorSlider, PicksTheMarkUnderThePointOrLetsTheNearerJump)
{
    struct Case {
        double x;
        bool tracks;
        int number;
        double mark1, mark2; // after the press
    };
    const Case cases[] = {
        {40.5, true, 1, 40, 100},  // a mark reaches from its place ten points to the right,
        {49.5, true, 1, 40, 100},  //
        {40, false, -1, 40, 100},  // its ends left out; a jump to where it is
        {50, false, -1, 50, 100},  // just past it: nearer to mark 1, which goes to the point itself
        {104, true, 2, 40, 100},   //
        {110, false, -1, 40, 105}, // mark 2 goes to where it points at the point
        {60, false, -1, 60, 100},  //
        {80, false, -1, 40, 75},   //
        {70, false, -1, 65, 100},  // as near to both: mark 1, pointing there
        {2, false, -1, 2, 100},    //
        {199, false, -1, 40, 190}, // kept inside
    };
    for (const Case& c : cases) {
        place(40, 100);
        actions.clear();
        press(c.x);
        EXPECT_EQ(slider.cell().trackingMarkNumber(), c.number) << c.x;
        expectMarks(c.mark1, c.mark2);
        EXPECT_EQ(actions.count(), 1) << c.x;
        // Whether it follows from there, until the button is up.
        drag(150);
        release(150);
        drag(20);
        EXPECT_EQ(actions.count(), c.tracks ? 2 : 1) << c.x;
        EXPECT_NEAR(c.number == 1 ? marks().first : marks().second, c.tracks ? 150 : c.mark2, 1e-9);
    }
    // The first mark lies on top.
    place(40, 45);
    press(47);
    drag(160);
    expectMarks(160, 45);
    expectValues(45 / kWidth, 160 / kWidth);
}

TEST_F(ColorSlider, DragsStayInsideAndWithShiftKeepTheDistance)
{
    struct Drag {
        double x;
        bool shift;
        double mark1, mark2;
    };
    // The distance goes at the end, and comes back.
    const std::pair<double, std::vector<Drag>> presses[] = {
        {45,
         {{60, true, 60, 120}, {140, true, 140, 190}, {50, true, 50, 110}, {-500, false, 0, 110}}},
        {115, {{150, true, 40, 150}, {70, true, 0, 70}}}};
    place(40, 100);
    for (const auto& [at, drags] : presses) {
        press(at);
        for (const Drag& d : drags) {
            drag(d.x, d.shift);
            expectMarks(d.mark1, d.mark2);
        }
        release(0);
    }
}

TEST_F(ColorSlider, InKeyColorModeTheMarksAreOne)
{
    place(40, 100);
    slider.setKeyColorSelectionMode(true);
    EXPECT_TRUE(slider.isKeyColorSelectionMode() && slider.cell().isKeyColorSelectionMode());
    expectMarks(40, 40);
    slider.setRangeMinValue(0.5);
    press(97);
    drag(120, true);
    expectMarks(120, 120);
    drag(10);
    expectMarks(10, 10);
    release(10);
    // Equally far from both: always pointing at the point.
    press(105);
    expectMarks(100, 100);
    release(105);
    key(Qt::Key_Right, Qt::ShiftModifier);
    expectValues(100 / kWidth + 0.01, 100 / kWidth + 0.01);
    key(Qt::Key_End);
    expectValues(1, 1);
    // What it says of itself.
    slider.setRangeMinValue(1.0 / 3);
    QAccessibleInterface* accessible = QAccessible::queryAccessibleInterface(&slider);
    EXPECT_EQ(accessible->role(), QAccessible::Slider);
    EXPECT_EQ(accessible->text(QAccessible::Name), "key color");
    EXPECT_EQ(accessible->text(QAccessible::Value), QString::fromUtf8("120\u00b0"));
    EXPECT_EQ(accessible->childCount(), 0);
    accessible->valueInterface()->setCurrentValue(0.6);
    expectValues(0.6, 0.6);
}

TEST_F(ColorSlider, FollowsTheKeyboard)
{
    struct Case {
        Qt::Key key;
        bool shift;
        double min, max; // from 0.3 and 0.6, with the start focused
    };
    const Case cases[] = {
        {Qt::Key_Left, false, 0.29, 0.6},   {Qt::Key_Up, false, 0.31, 0.6},
        {Qt::Key_PageUp, false, 0.4, 0.6},  {Qt::Key_Home, false, 0, 0.6},
        {Qt::Key_End, false, 0.6, 0.6},     {Qt::Key_Right, true, 0.31, 0.61},
        {Qt::Key_PageDown, true, 0.2, 0.5}, {Qt::Key_End, true, 0.7, 1},
    };
    for (const auto direction : {Qt::LeftToRight, Qt::RightToLeft}) {
        slider.setLayoutDirection(direction);
        for (const Case& c : cases) {
            place(0.3 * kWidth, 0.6 * kWidth);
            actions.clear();
            key(c.key, c.shift ? Qt::ShiftModifier : Qt::NoModifier);
            expectValues(c.min, c.max, c.key);
            EXPECT_EQ(actions.count(), 1);
        }
    }
    // Nothing to move, nothing to tell; but marks that met part again.
    actions.clear();
    slider.setRangeMinValue(0.6);
    slider.setRangeMaxValue(0.6);
    key(Qt::Key_Right);
    EXPECT_EQ(actions.count(), 0);
    key(Qt::Key_Left);
    expectValues(0.59, 0.6);
    // Neither do other keys and buttons, nor any while it is disabled.
    actions.clear();
    key(Qt::Key_A);
    QTest::mouseClick(&slider, Qt::RightButton, {}, slider.fromCell({80, 5}).toPoint());
    slider.setEnabled(false);
    press(80);
    key(Qt::Key_Right);
    EXPECT_EQ(actions.count(), 0);
}

TEST(ColorSliderFocus, GoesFromMarkToMarkAndOn)
{
    QWidget window;
    auto* layout = new QVBoxLayout(&window);
    auto* before = new QLineEdit;
    auto* slider = new CCColorSlider;
    auto* after = new QLineEdit;
    for (QWidget* widget : std::initializer_list<QWidget*>{before, slider, after})
        layout->addWidget(widget);
    window.show();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
    before->setFocus();
    slider->setRangeMinValue(0.2);
    slider->setRangeMaxValue(0.8);
    const double width = slider->cell().gradientRect().width();
    const auto isRinged = [&](double value) {
        const QPoint beside = slider->fromCell({value * width + 5, -1.5}).toPoint();
        return areNear(pictureOf(*slider).pixelColor(beside),
                       slider->palette().color(QPalette::Highlight), 40);
    };
    const auto tab = [&](bool back = false) {
        QTest::keyClick(QApplication::focusWidget(), back ? Qt::Key_Backtab : Qt::Key_Tab,
                        back ? Qt::ShiftModifier : Qt::NoModifier);
        return QApplication::focusWidget();
    };
    const struct {
        bool back;
        QWidget* widget;
        bool startIsRinged, endIsRinged;
    } ways[] = {{false, slider, true, false}, {false, slider, false, true},
                {false, after, false, false}, {true, slider, false, true},
                {true, slider, true, false},  {true, before, false, false}};
    for (const auto& way : ways) {
        EXPECT_EQ(tab(way.back), way.widget);
        EXPECT_EQ(isRinged(0.2), way.startIsRinged);
        EXPECT_EQ(isRinged(0.8), way.endIsRinged);
    }
    // The mouse takes the focus to the mark that it moves.
    QTest::mouseClick(slider, Qt::LeftButton, {}, slider->fromCell({width, 5}).toPoint());
    EXPECT_EQ(QApplication::focusWidget(), slider);
    EXPECT_EQ(slider->focusedMark(), Mark::End);

    before->setFocus();
    slider->setKeyColorSelectionMode(true);
    EXPECT_EQ(tab(), slider);
    EXPECT_EQ(tab(), after);
}

TEST_F(ColorSlider, TellsAssistiveTechnologyItsRange)
{
    slider.setRangeMinValue(0.25);
    slider.setRangeMaxValue(0.75);
    QAccessibleInterface* all = QAccessible::queryAccessibleInterface(&slider);
    ASSERT_NE(all, nullptr);
    EXPECT_EQ(all->role(), QAccessible::Grouping);
    EXPECT_EQ(all->text(QAccessible::Name), "color range");
    ASSERT_EQ(all->childCount(), 2);
    EXPECT_EQ(all->child(2), nullptr);

    const char* names[] = {"range start", "range end"};
    const char* texts[] = {"90\u00b0", "270\u00b0"};
    for (int i = 0; i < 2; ++i) {
        QAccessibleInterface* mark = all->child(i);
        EXPECT_EQ(mark->role(), QAccessible::Slider);
        EXPECT_EQ(mark->text(QAccessible::Name), names[i]);
        EXPECT_EQ(mark->text(QAccessible::Value), QString::fromUtf8(texts[i]));
        EXPECT_EQ(all->indexOfChild(mark), i);
        // Where it is drawn.
        const QPoint tip =
            slider.mapToGlobal(slider.fromCell({(i == 0 ? 0.25 : 0.75) * kWidth + 5, 5}).toPoint());
        EXPECT_TRUE(mark->rect().contains(tip));
    }
    QAccessibleValueInterface* start = all->child(0)->valueInterface();
    QAccessibleValueInterface* end = all->child(1)->valueInterface();
    EXPECT_NEAR(start->maximumValue().toDouble(), 0.75, 1e-12);
    EXPECT_NEAR(end->minimumValue().toDouble(), 0.25, 1e-12);
    start->setCurrentValue(0.5);
    expectValues(0.5, 0.75);
    EXPECT_EQ(actions.count(), 1);
    start->setCurrentValue(0.9);
    end->setCurrentValue(QVariant("much"));
    end->setCurrentValue(std::numeric_limits<double>::quiet_NaN());
    slider.setEnabled(false);
    end->setCurrentValue(1);
    expectValues(0.75, 0.75);
    EXPECT_TRUE(all->child(1)->state().disabled);

    foundation::setLanguage("fr");
    EXPECT_EQ(all->child(0)->text(QAccessible::Name), QString::fromUtf8("début de la plage"));
    foundation::setLanguage("C");
    slider.setAccessibleName("Petals");
    EXPECT_EQ(all->text(QAccessible::Name), "Petals");
}

TEST_F(ColorSlider, DrawsTheHuesAndItsMarks)
{
    place(kWidth / 3, kWidth * 2 / 3);
    const auto at = [&](double x, double y) {
        return pictureOf(slider).pixelColor(slider.fromCell({x, y}).toPoint());
    };
    // A third of the hues from red is green, two thirds blue; the same in the marks below.
    const double third = kWidth / 3;
    for (const double y : {20.0, 4.0}) {
        EXPECT_TRUE(areNear(at(5 + third, y), Qt::green)) << y;
        EXPECT_TRUE(areNear(at(5 + 2 * third, y), Qt::blue)) << y;
    }
    EXPECT_TRUE(areNear(at(6, 20), Qt::red, 16));
    EXPECT_TRUE(areNear(at(193, 20), Qt::red, 30));
    // Apex up: no mark beside it, but at its foot.
    const QColor background = slider.palette().color(QPalette::Window);
    EXPECT_TRUE(areNear(at(1 + third, 7), background, 2));
    EXPECT_FALSE(areNear(at(2 + third, 1), background, 2));
    // Right to left, the same picture.
    const QImage leftToRight = pictureOf(slider);
    slider.setLayoutDirection(Qt::RightToLeft);
    EXPECT_EQ(pictureOf(slider), leftToRight);
    slider.setEnabled(false);
    const QColor disabled = slider.palette().color(QPalette::Disabled, QPalette::WindowText);
    EXPECT_TRUE(areNear(at(5 + third, 4), disabled, 2));
    EXPECT_TRUE(areNear(at(5 + third, 20), Qt::green));
    slider.setEnabled(true);
    slider.setKeyColorSelectionMode(true);
    EXPECT_TRUE(areNear(at(5 + third, 4), Qt::green));
    EXPECT_TRUE(areNear(at(5 + 2 * third, 4), background, 2));
}
