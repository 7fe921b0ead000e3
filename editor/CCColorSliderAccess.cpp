#include "editor/CCColorSliderAccess.h"

#include "editor/Forms.h"

#include <QAccessible>
#include <QAccessibleWidget>

#include <cmath>
#include <optional>

namespace editor {

namespace {

using Mark = CCColorSlider::Mark;

// The value of one mark, 0 to 1 and not past the other one.
class MarkValue : public QAccessibleValueInterface {
public:
    MarkValue(CCColorSlider& slider, Mark mark) : _slider(slider), _mark(mark) {}

    QVariant currentValue() const override { return _slider.value(_mark); }
    void setCurrentValue(const QVariant& value) override
    {
        bool isNumber = false;
        const double v = value.toDouble(&isNumber);
        if (isNumber && std::isfinite(v) && _slider.isEnabled())
            _slider.moveMarkTo(_mark, v);
    }
    QVariant minimumValue() const override
    {
        return isRange() && _mark == Mark::End ? _slider.getRangeMinValue() : 0.0;
    }
    QVariant maximumValue() const override
    {
        return isRange() && _mark == Mark::Start ? _slider.getRangeMaxValue() : 1.0;
    }
    QVariant minimumStepSize() const override { return 0.01; }

    // As people speak of hues.
    QString degrees() const
    {
        return QString::number(std::lround(_slider.value(_mark) * 360)) + QChar(0xB0);
    }

protected:
    bool isRange() const { return !_slider.isKeyColorSelectionMode(); }

    CCColorSlider& _slider;
    Mark _mark;
};

class MarkInterface final : public QAccessibleInterface, public MarkValue {
public:
    using MarkValue::MarkValue;

    bool isValid() const override { return true; }
    QObject* object() const override { return nullptr; }
    QWindow* window() const override { return _slider.window()->windowHandle(); }
    QAccessibleInterface* parent() const override
    {
        return QAccessible::queryAccessibleInterface(&_slider);
    }
    QAccessibleInterface* child(int) const override { return nullptr; }
    QAccessibleInterface* childAt(int, int) const override { return nullptr; }
    int childCount() const override { return 0; }
    int indexOfChild(const QAccessibleInterface*) const override { return -1; }

    QAccessible::Role role() const override { return QAccessible::Slider; }
    QString text(QAccessible::Text kind) const override
    {
        if (kind == QAccessible::Name)
            return _mark == Mark::Start ? localizedString("range start")
                                        : localizedString("range end");
        return kind == QAccessible::Value ? degrees() : QString();
    }
    void setText(QAccessible::Text, const QString&) override {}
    QRect rect() const override
    {
        const auto& cell = _slider.cell();
        const double position = _slider.value(_mark) * cell.gradientRect().width();
        const QRectF shape = cell.markShape(position).boundingRect();
        const QRectF inWidget(_slider.fromCell(shape.bottomLeft()),
                              _slider.fromCell(shape.topRight()));
        return QRect(_slider.mapToGlobal(inWidget.topLeft().toPoint()), inWidget.size().toSize());
    }
    QAccessible::State state() const override
    {
        QAccessible::State state;
        state.focusable = true;
        state.focused = _slider.hasFocus() && _slider.focusedMark() == _mark;
        state.disabled = !_slider.isEnabled();
        state.invisible = !_slider.isVisible();
        return state;
    }
    void* interface_cast(QAccessible::InterfaceType type) override
    {
        return type == QAccessible::ValueInterface ? static_cast<QAccessibleValueInterface*>(this)
                                                   : nullptr;
    }
};

class SliderInterface final : public QAccessibleWidget, public MarkValue {
public:
    explicit SliderInterface(CCColorSlider& slider)
        : QAccessibleWidget(&slider), MarkValue(slider, Mark::Start)
    {
    }
    ~SliderInterface() override
    {
        for (const auto& id : _marks)
            if (id)
                QAccessible::deleteAccessibleInterface(*id);
    }

    QAccessible::Role role() const override
    {
        return isRange() ? QAccessible::Grouping : QAccessible::Slider;
    }
    QString text(QAccessible::Text kind) const override
    {
        if (kind == QAccessible::Value)
            return isRange() ? QString() : degrees();
        QString given = QAccessibleWidget::text(kind);
        if (kind != QAccessible::Name || !given.isEmpty())
            return given;
        return isRange() ? localizedString("color range") : localizedString("key color");
    }
    int childCount() const override { return isRange() ? 2 : 0; }
    QAccessibleInterface* child(int index) const override
    {
        if (index < 0 || index >= childCount())
            return nullptr;
        std::optional<QAccessible::Id>& id = _marks[index];
        if (!id)
            id = QAccessible::registerAccessibleInterface(
                new MarkInterface(_slider, index == 0 ? Mark::Start : Mark::End));
        return QAccessible::accessibleInterface(*id);
    }
    int indexOfChild(const QAccessibleInterface* one) const override
    {
        for (int i = 0; i < childCount(); ++i)
            if (child(i) == one)
                return i;
        return -1;
    }
    QAccessibleInterface* childAt(int x, int y) const override
    {
        for (int i = childCount() - 1; i >= 0; --i)
            if (child(i)->rect().contains(x, y))
                return child(i);
        return nullptr;
    }
    QAccessibleInterface* focusChild() const override
    {
        if (!_slider.hasFocus())
            return nullptr;
        return isRange() ? child(_slider.focusedMark() == Mark::Start ? 0 : 1)
                         : QAccessible::queryAccessibleInterface(&_slider);
    }
    void* interface_cast(QAccessible::InterfaceType type) override
    {
        if (type == QAccessible::ValueInterface)
            return isRange() ? nullptr : static_cast<QAccessibleValueInterface*>(this);
        return QAccessibleWidget::interface_cast(type);
    }

private:
    mutable std::optional<QAccessible::Id> _marks[2];
};

QAccessibleInterface* makeInterface(const QString&, QObject* object)
{
    auto* slider = qobject_cast<CCColorSlider*>(object);
    return slider ? new SliderInterface(*slider) : nullptr;
}

// The slider itself in key-colour mode.
int childOf(const CCColorSlider& slider, Mark mark)
{
    return slider.isKeyColorSelectionMode() ? -1 : mark == Mark::Start ? 0 : 1;
}

} // namespace

void announceColorSliders()
{
    // Again for every application: with one go the factories. Installing it twice does nothing.
    QAccessible::installFactory(makeInterface);
}

void announceValue(CCColorSlider& slider, Mark mark)
{
    QAccessibleValueChangeEvent event(&slider, slider.value(mark));
    event.setChild(childOf(slider, mark));
    QAccessible::updateAccessibility(&event);
}

void announceFocus(CCColorSlider& slider)
{
    QAccessibleEvent event(&slider, QAccessible::Focus);
    event.setChild(childOf(slider, slider.focusedMark()));
    QAccessible::updateAccessibility(&event);
}

} // namespace editor
