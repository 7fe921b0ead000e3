// A slider, a number field and a stepper of one parameter: they agree, round what hands do and keep
// what is given, and say so when a typed number is out of range.
#include "editor/DecimalControl.h"

#include <QAccessible>
#include <QApplication>
#include <QLineEdit>
#include <QShortcut>
#include <QSignalSpy>
#include <QTest>
#include <QToolTip>
#include <QVBoxLayout>
#include <QWheelEvent>

#include <gmock/gmock.h>

#include <cmath>
#include <limits>

using namespace editor;
using testing::ElementsAre;

namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr double kLargest = std::numeric_limits<double>::max();

// Wired as a window does: what one of them changes the others show.
class DecimalRow : public testing::Test {
protected:
    DecimalRow()
    {
        auto* layout = new QVBoxLayout(&window);
        layout->addWidget(slider);
        layout->addWidget(field);
        layout->addWidget(stepper);
        layout->addWidget(elsewhere);
        for (DecimalControl* control : all) {
            control->action = [this](DecimalControl& sender) {
                sent.push_back(sender.doubleValue());
                for (DecimalControl* other : all)
                    other->setDoubleValue(sender.doubleValue());
            };
            control->resetAction = [this](DecimalControl&) { ++resets; };
        }
        setRange(0, 100, 1);
        slider->setFixedWidth(300);
        window.show();
        window.activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&window));
    }
    ~DecimalRow() override { QToolTip::hideText(); }

    void setRange(double minimum, double maximum, double increment, bool whole = false)
    {
        for (DecimalControl* control : all)
            control->setRange(minimum, maximum, increment, whole);
    }
    void setValue(double value)
    {
        for (DecimalControl* control : all)
            control->setDoubleValue(value);
    }
    void expectAll(double value, const char* where = "")
    {
        for (DecimalControl* control : all)
            EXPECT_EQ(control->doubleValue(), value) << where;
    }
    void mouse(QEvent::Type type, double x, Qt::KeyboardModifiers modifiers = {})
    {
        const QPointF at(x, slider->height() / 2.0);
        QMouseEvent event(type, at, slider->mapToGlobal(at),
                          type == QEvent::MouseMove ? Qt::NoButton : Qt::LeftButton,
                          type == QEvent::MouseButtonRelease ? Qt::NoButton : Qt::LeftButton,
                          modifiers);
        QCoreApplication::sendEvent(slider, &event);
    }
    void wheel(QWidget* control, int eighths)
    {
        QWheelEvent event(QPointF(5, 5), control->mapToGlobal(QPointF(5, 5)), {}, {0, eighths},
                          Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
        QCoreApplication::sendEvent(control, &event);
    }
    void type(const QString& text)
    {
        field->setFocus();
        field->selectAll();
        QTest::keyClicks(field, text);
    }
    QString text() const { return field->text(); }

    QWidget window;
    ParameterSlider* slider = new ParameterSlider;
    NumberField* field = new NumberField;
    Stepper* stepper = new Stepper;
    QLineEdit* elsewhere = new QLineEdit;
    const std::vector<DecimalControl*> all{slider, field, stepper};
    const std::vector<QWidget*> widgets{slider, field, stepper};
    std::vector<double> sent;
    int resets = 0;
};

} // namespace

TEST(Increment, IsARoundHundredthOfTheSpan)
{
    EXPECT_EQ(incrementForRange(-180, 180, false), 5);
    EXPECT_EQ(incrementForRange(0, 2.5, false), 0.02);
    EXPECT_EQ(incrementForRange(0, 1000, true), 1);
    for (double span = 1e-9; span < 1e12; span *= 1.37) {
        const double steps = span / incrementForRange(-span / 3, span * 2 / 3, false);
        EXPECT_TRUE(steps > 60 && steps < 180) << span;
    }
}

TEST_F(DecimalRow, KeepsWhatItIsGivenAndSendsNothing)
{
    const struct {
        double minimum, maximum, given, kept;
    } cases[] = {
        {3, 180, 60.264F, 60.264F}, // finer than the slider's pixels and the field's digits
        {0, 1, 1.0 / 3, 1.0 / 3},
        {-50, 50, 11.76F, 11.76F},
        {0, 100, 250, 100},
        {0, 100, -kInfinity, 0},
        {-1, 1, kNan, -1},
        {1, -1, 0.5, 0.5}, // the wrong way round
        {-kLargest, kLargest, 1e300, 1e300},
        {0, 1e-12, 3e-13, 3e-13},
        {7, 7, 12, 7},
        {0, 5e-324, 0, 0},
        {kNan, kInfinity, 5, 0}, // no range at all
    };
    for (const auto& c : cases) {
        setRange(c.minimum, c.maximum, incrementForRange(c.minimum, c.maximum, false));
        setValue(c.given);
        expectAll(c.kept, std::to_string(c.given).c_str());
    }
    EXPECT_TRUE(sent.empty());
}

TEST_F(DecimalRow, GoesThroughTheRangeByTheKeyboard)
{
    for (QWidget* control : widgets) {
        setValue(50);
        sent.clear();
        for (const Qt::Key key : {Qt::Key_Up, Qt::Key_PageUp, Qt::Key_Down, Qt::Key_PageDown})
            QTest::keyClick(control, key);
        EXPECT_THAT(sent, ElementsAre(51, 61, 60, 50)) << control->metaObject()->className();
        expectAll(50);
    }
    sent.clear();
    for (const Qt::Key key : {Qt::Key_Right, Qt::Key_Home, Qt::Key_Left, Qt::Key_End, Qt::Key_End})
        QTest::keyClick(slider, key);
    slider->setLayoutDirection(Qt::RightToLeft);
    QTest::keyClick(slider, Qt::Key_Right);
    // Nothing is sent where nothing changes.
    EXPECT_THAT(sent, ElementsAre(51, 0, 100, 99));
    QTest::keyClick(slider, Qt::Key_Delete);
    EXPECT_EQ(resets, 1);
}

TEST_F(DecimalRow, StepsInRoundNumbers)
{
    setRange(0, 1, 0.01);
    for (int i = 0; i < 30; ++i)
        QTest::keyClick(slider, Qt::Key_Up);
    EXPECT_EQ(sent.back(), 0.3); // not 30 times 0.01
    EXPECT_EQ(text(), "0.30");
    // Of whole numbers, only those.
    setRange(1, 20, 1, true);
    mouse(QEvent::MouseButtonPress, 203);
    EXPECT_EQ(sent.back(), std::round(sent.back()));
    type("3.5");
    EXPECT_EQ(text(), "35"); // no place for the point
}

TEST_F(DecimalRow, JumpsToTheClickAndFollowsThePointer)
{
    mouse(QEvent::MouseButtonPress, 150); // the middle of 300
    EXPECT_NEAR(slider->doubleValue(), 50, 0.5);
    const double before = slider->doubleValue();
    mouse(QEvent::MouseMove, 179);
    const double far = slider->doubleValue() - before;
    EXPECT_NEAR(far, 10, 1);
    mouse(QEvent::MouseMove, 208, Qt::ShiftModifier);
    EXPECT_NEAR(slider->doubleValue() - before - far, far / 10, 0.1);
    // It does not run ahead of a pointer that comes back from outside.
    mouse(QEvent::MouseMove, 900);
    mouse(QEvent::MouseMove, 850);
    mouse(QEvent::MouseButtonRelease, 850);
    expectAll(100);

    // A click on the mark does not move it, however coarse the pixels are.
    setRange(0, 1000, 10);
    setValue(123.456);
    sent.clear();
    mouse(QEvent::MouseButtonPress, 0.123456 * 288 + 6);
    mouse(QEvent::MouseButtonRelease, 0.123456 * 288 + 6);
    EXPECT_TRUE(sent.empty());
    mouse(QEvent::MouseButtonDblClick, 40);
    EXPECT_EQ(resets, 1);

    slider->setLayoutDirection(Qt::RightToLeft);
    mouse(QEvent::MouseButtonPress, 75);
    mouse(QEvent::MouseButtonRelease, 75);
    EXPECT_NEAR(slider->doubleValue(), 750, 15);
}

TEST_F(DecimalRow, TurnsByTheWheelOnlyWithTheFocus)
{
    setValue(50);
    elsewhere->setFocus();
    for (QWidget* control : widgets)
        wheel(control, 120);
    expectAll(50);
    slider->setFocus();
    wheel(slider, 60);
    wheel(slider, 60); // a fine wheel's half steps add up
    expectAll(51);
    field->setFocus();
    wheel(field, -240);
    expectAll(49);
}

TEST_F(DecimalRow, MarksAndClampsNumbersOutOfRange)
{
    setValue(40);
    type("250");
    const auto isMarked = [&] {
        return field->findChild<QLineEdit*>()->palette().color(QPalette::Text) !=
               elsewhere->palette().color(QPalette::Text);
    };
    EXPECT_TRUE(field->isOutOfRange() && isMarked());
    EXPECT_TRUE(QToolTip::isVisible());
    EXPECT_EQ(QToolTip::text(), "0 to 100");
    expectAll(40, "nothing is taken while typing");

    QTest::keyClick(field, Qt::Key_Return);
    EXPECT_FALSE(field->isOutOfRange() || isMarked());
    EXPECT_EQ(text(), "100");
    EXPECT_EQ(field->findChild<QLineEdit*>()->selectedText(), "100");
    expectAll(100);

    // Leaving it takes what was typed; Escape does not.
    type("-3");
    elsewhere->setFocus();
    expectAll(0);
    type("77");
    QTest::keyClick(field, Qt::Key_Escape);
    EXPECT_EQ(text(), "0");
    EXPECT_THAT(sent, ElementsAre(100, 0));
}

// Return and Escape are the field's while it has something to do for them, not the window's.
TEST_F(DecimalRow, KeepsItsKeysFromTheWindow)
{
    QShortcut enter(Qt::Key_Return, &window), escape(Qt::Key_Escape, &window);
    QSignalSpy entered(&enter, &QShortcut::activated), escaped(&escape, &QShortcut::activated);
    type("12");
    QTest::keyClick(field, Qt::Key_Return);
    type("13");
    QTest::keyClick(field, Qt::Key_Escape);
    EXPECT_EQ(entered.count() + escaped.count(), 0);
    QTest::keyClick(field, Qt::Key_Escape);
    EXPECT_EQ(escaped.count(), 1);
}

TEST_F(DecimalRow, KeepsOrForgetsTheTyping)
{
    setValue(40);
    type("7");
    setValue(40);
    EXPECT_EQ(text(), "7") << "while the same value is shown";
    setValue(41);
    EXPECT_EQ(text(), "41");
    type("12");
    window.hide();
    EXPECT_TRUE(sent.empty());
    expectAll(41);
}

TEST_F(DecimalRow, WritesNumbersInTheUsersWay)
{
    QLocale german(QLocale::German);
    german.setNumberOptions(QLocale::OmitGroupSeparator | QLocale::RejectGroupSeparator);
    field->setLocale(german);
    setRange(0, 2000, 0.5);
    setValue(1234.5);
    EXPECT_EQ(text(), "1234,5");
    // A point is that of a number pad; letters are not taken.
    for (const auto& [typed, value] : {std::pair("0,25", 0.25), {"1.75", 1.75}, {"1e3", 13.0}}) {
        type(typed);
        QTest::keyClick(field, Qt::Key_Return);
        expectAll(value);
    }

    // A mark of direction stands before the sign.
    field->setLocale(QLocale::Persian);
    setRange(-10, 10, 0.5);
    setValue(-2.5);
    QTest::keyClick(field, Qt::Key_End);
    QTest::keyClick(field, Qt::Key_Backspace);
    QTest::keyClick(field, Qt::Key_Return);
    expectAll(-2);
    type("-1.5");
    QTest::keyClick(field, Qt::Key_Return);
    expectAll(-1.5);
}

TEST_F(DecimalRow, ShowsAsManyDigitsAsTheStepsNeed)
{
    const struct {
        double increment, value;
        const char* shown;
    } cases[] = {{1, 10, "10"},           {1, 10.5, "10.5"},       {0.01, 0.5, "0.50"},
                 {0.01, 0.505F, "0.505"}, {0.5, 1 / 3.0, "0.333"}, {0.01, -1e-9, "0.00"}};
    for (const auto& c : cases) {
        setRange(-100, 100, c.increment);
        setValue(c.value);
        EXPECT_EQ(text(), c.shown);
    }
}

TEST_F(DecimalRow, IsReadOutInTheParametersOwnNumbers)
{
    setRange(-1, 1, 0.02);
    setValue(0.25);
    for (QWidget* control : {widgets[0], widgets[2]}) {
        QAccessibleInterface* accessible = QAccessible::queryAccessibleInterface(control);
        ASSERT_TRUE(accessible && accessible->valueInterface());
        EXPECT_EQ(accessible->text(QAccessible::Value), "0.25");
        EXPECT_EQ(accessible->valueInterface()->minimumValue().toDouble(), -1);
        EXPECT_EQ(accessible->valueInterface()->maximumValue().toDouble(), 1);
        accessible->valueInterface()->setCurrentValue(0.75);
        expectAll(0.75);
        accessible->valueInterface()->setCurrentValue(kNan);
        expectAll(0.75);
        setValue(0.25);
    }
}
