// Controls of one number: a slider, a number field and a stepper, which stand side by side in the
// editor's pages and always show the same value; and the label before them.
//
// The value is kept as it was given, within the range, however finely a control can show it. What
// the user sets with the mouse or the keyboard is a round number.
#pragma once

#include "editor/FormWidgets.h"

#include <QDoubleSpinBox>
#include <QSlider>
#include <QString>
#include <QWidget>

#include <functional>
#include <string>

class QStyleOptionSlider;

namespace editor {

class DecimalControl {
public:
    virtual ~DecimalControl() = default;

    virtual QWidget& widget() = 0;
    double doubleValue() const { return _value; }
    // Within the range; what is no number is the minimum. Sends no action.
    void setDoubleValue(double value);
    double minValue() const { return _minValue; }
    double maxValue() const { return _maxValue; }
    double increment() const { return _increment; }
    bool takesWholeNumbers() const { return _wholeNumbers; }
    // Sends no action. The increment is one step of an arrow key; ten are one of a page key. The
    // ends may come in either order; one that is no finite number counts as 0, an increment that is
    // none as what incrementForRange says.
    void setRange(double minimum, double maximum, double increment, bool wholeNumbers = false);

    // The key of the parameter; empty while the control is not bound.
    std::string representedObject;
    // The user changed the value.
    std::function<void(DecimalControl&)> action;
    // The user asked for the value it starts with.
    std::function<void(DecimalControl&)> resetAction;

    // By the user: limited to the range, to whole numbers where there are no others, and to a
    // multiple of the step (0 for any), and the action is sent if it is another value.
    void changeValue(double value, double step = 0);

protected:
    virtual void rangeDidChange() = 0;
    virtual void valueDidChange() = 0;

    double _value = 0;
    double _minValue = 0, _maxValue = 1, _increment = 0.01;
    bool _wholeNumbers = false;

private:
    double limited(double value) const;
};

// The steps of a stepper for a range: 1 for whole numbers, else a hundredth of the span, rounded to
// 1, 2 or 5 times a power of ten.
double incrementForRange(double minimum, double maximum, bool wholeNumbers);

// A click takes the mark to the place, a drag moves it along, with Shift ten times as finely. The
// wheel turns it only while it has the focus. A double click resets.
class ParameterSlider final : public QSlider, public DecimalControl {
    Q_OBJECT

public:
    explicit ParameterSlider(QWidget* parent = nullptr);
    QWidget& widget() override { return *this; }
    using DecimalControl::setRange;

protected:
    void rangeDidChange() override;
    void valueDidChange() override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;

private:
    // Where the mark's middle can be, in pixels from the left.
    struct Track {
        double first, length;
        bool mirrored;
    };
    Track track(QStyleOptionSlider& option) const;
    double fraction() const;
    double fractionAt(double x, const Track& track) const;
    void changeFraction(double fraction, double step);

    bool _isUpdating = false;
    bool _isDragging = false;
    double _lastX = 0;
    double _draggedTo = 0; // a fraction of the range, before rounding
    int _turnedBy = 0;     // of the wheel, eighths of a degree short of a step
};

// Takes numbers in the user's notation. A number outside the range can be typed, is marked as such,
// and becomes the nearest one in it when the user is done: by Return, which does nothing else, or
// by going elsewhere. Escape takes back what was typed.
class NumberField final : public QDoubleSpinBox, public DecimalControl {
    Q_OBJECT

public:
    explicit NumberField(QWidget* parent = nullptr);
    QWidget& widget() override { return *this; }
    using DecimalControl::setRange;
    // What stands in the field is a number outside the range.
    bool isOutOfRange() const { return _isOutOfRange; }
    // Takes what was typed, as Return does.
    void commit();

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }
    QValidator::State validate(QString& text, int& position) const override;
    void fixup(QString& text) const override;
    QString textFromValue(double value) const override;
    double valueFromText(const QString& text) const override;
    void stepBy(int steps) override;

protected:
    void rangeDidChange() override;
    void valueDidChange() override;
    bool event(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void changeEvent(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    QString rangeText() const;
    void checkRange();
    void showFeedback();

    bool _isOutOfRange = false;
    bool _isUpdating = false;
};

class Stepper final : public QAbstractSpinBox, public DecimalControl {
    Q_OBJECT

public:
    explicit Stepper(QWidget* parent = nullptr);
    QWidget& widget() override { return *this; }
    using DecimalControl::setRange;
    void stepBy(int steps) override;
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    StepEnabled stepEnabled() const override;
    void rangeDidChange() override;
    void valueDidChange() override;
    void keyPressEvent(QKeyEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
};

// The label of a row of such controls or of a colour.
class ParameterLabel final : public FormLabel {
    Q_OBJECT

public:
    explicit ParameterLabel(QWidget* parent = nullptr);

Q_SIGNALS:
    void doubleClicked();

protected:
    void mouseDoubleClickEvent(QMouseEvent* event) override;
};

} // namespace editor
