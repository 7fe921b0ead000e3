// Controls of one number: a slider, a number field and a stepper, which stand side by side in the
// editor's pages and always show the same value.
#pragma once

#include <QDoubleSpinBox>
#include <QSlider>
#include <QString>
#include <QWidget>

#include <functional>
#include <string>

namespace editor {

class DecimalControl {
public:
    virtual ~DecimalControl() = default;

    virtual QWidget& widget() = 0;
    virtual double doubleValue() const = 0;
    // Shown as well as the control can; sends no action.
    virtual void setDoubleValue(double value) = 0;
    double minValue() const { return _minValue; }
    double maxValue() const { return _maxValue; }
    double increment() const { return _increment; }
    // Sends no action. The increment is one step of an arrow key; ten are one of a page key.
    void setRange(double minimum, double maximum, double increment, bool wholeNumbers = false);

    // The key of the parameter; empty while the control is not bound.
    std::string representedObject;
    // The user changed the value.
    std::function<void(DecimalControl&)> action;
    // The user asked for the value it starts with.
    std::function<void(DecimalControl&)> resetAction;

protected:
    virtual void rangeDidChange() = 0;
    double _minValue = 0, _maxValue = 1, _increment = 0.01;
    bool _wholeNumbers = false;
};

// The steps of a stepper for a range: 1 for whole numbers, else a hundredth of the span, rounded to
// 1, 2 or 5 times a power of ten.
double incrementForRange(double minimum, double maximum, bool wholeNumbers);

class ParameterSlider final : public QSlider, public DecimalControl {
    Q_OBJECT

public:
    explicit ParameterSlider(QWidget* parent = nullptr);
    QWidget& widget() override { return *this; }
    double doubleValue() const override { return _value; }
    void setDoubleValue(double value) override;

protected:
    void rangeDidChange() override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;

private:
    double _value = 0;
};

class NumberField final : public QDoubleSpinBox, public DecimalControl {
    Q_OBJECT

public:
    explicit NumberField(QWidget* parent = nullptr);
    QWidget& widget() override { return *this; }
    double doubleValue() const override { return value(); }
    void setDoubleValue(double value) override;

protected:
    void rangeDidChange() override;
};

class Stepper final : public QAbstractSpinBox, public DecimalControl {
    Q_OBJECT

public:
    explicit Stepper(QWidget* parent = nullptr);
    QWidget& widget() override { return *this; }
    double doubleValue() const override { return _value; }
    void setDoubleValue(double value) override;
    void stepBy(int steps) override;
    QSize sizeHint() const override;

protected:
    StepEnabled stepEnabled() const override;
    void rangeDidChange() override;

private:
    double _value = 0;
};

} // namespace editor
