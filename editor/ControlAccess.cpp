#include "editor/ControlAccess.h"

#include "editor/ColorWell.h"
#include "editor/DecimalControl.h"

#include <QAccessible>
#include <QAccessibleWidget>
#include <QLabel>

#include <cmath>

namespace editor {

namespace {

class NumberInterface final : public QAccessibleWidget, public QAccessibleValueInterface {
public:
    NumberInterface(QWidget& widget, DecimalControl& control, QAccessible::Role role)
        : QAccessibleWidget(&widget, role), _control(control)
    {
    }

    QString text(QAccessible::Text kind) const override
    {
        if (kind == QAccessible::Value)
            return widget()->locale().toString(_control.doubleValue(), 'g', 6);
        const QString given = QAccessibleWidget::text(kind);
        return kind == QAccessible::Name && given.isEmpty() ? labelOf(*widget()) : given;
    }

    QVariant currentValue() const override { return _control.doubleValue(); }
    void setCurrentValue(const QVariant& value) override
    {
        bool isNumber = false;
        const double number = value.toDouble(&isNumber);
        if (isNumber && std::isfinite(number) && widget()->isEnabled())
            _control.changeValue(number);
    }
    QVariant minimumValue() const override { return _control.minValue(); }
    QVariant maximumValue() const override { return _control.maxValue(); }
    QVariant minimumStepSize() const override { return _control.increment(); }

    void* interface_cast(QAccessible::InterfaceType type) override
    {
        return type == QAccessible::ValueInterface ? static_cast<QAccessibleValueInterface*>(this)
                                                   : QAccessibleWidget::interface_cast(type);
    }

private:
    DecimalControl& _control;
};

class WellInterface final : public QAccessibleWidget {
public:
    explicit WellInterface(ColorWell& well)
        : QAccessibleWidget(&well, QAccessible::ColorChooser), _well(well)
    {
    }

    // Buttons have no value that would be read out, so the colour goes with the name.
    QString text(QAccessible::Text kind) const override
    {
        if (kind == QAccessible::Value)
            return _well.colorText();
        QString given = QAccessibleWidget::text(kind);
        if (kind != QAccessible::Name)
            return given;
        if (given.isEmpty())
            given = labelOf(_well);
        const QString color = _well.colorText();
        return given.isEmpty() || color.isEmpty() ? given + color
                                                  : given + QLatin1String(", ") + color;
    }
    QAccessible::State state() const override
    {
        QAccessible::State state = QAccessibleWidget::state();
        state.checkable = true;
        state.checked = _well.isActive();
        return state;
    }
    QStringList actionNames() const override
    {
        return QStringList(pressAction()) + QAccessibleWidget::actionNames();
    }
    void doAction(const QString& name) override
    {
        if (name == pressAction() && _well.isEnabled())
            _well.click();
        else
            QAccessibleWidget::doAction(name);
    }

private:
    ColorWell& _well;
};

QAccessibleInterface* interfaceOf(const QString& className, QObject* object)
{
    if (className == QLatin1String("editor::ParameterSlider"))
        if (auto* slider = qobject_cast<ParameterSlider*>(object))
            return new NumberInterface(*slider, *slider, QAccessible::Slider);
    if (className == QLatin1String("editor::Stepper"))
        if (auto* stepper = qobject_cast<Stepper*>(object))
            return new NumberInterface(*stepper, *stepper, QAccessible::SpinBox);
    if (className == QLatin1String("editor::ColorWell"))
        if (auto* well = qobject_cast<ColorWell*>(object))
            return new WellInterface(*well);
    return nullptr;
}

} // namespace

void announceControls()
{
    // Installing it twice does nothing.
    QAccessible::installFactory(interfaceOf);
}

void announceValue(QWidget& control)
{
    if (!QAccessible::isActive())
        return;
    if (const auto* number = dynamic_cast<DecimalControl*>(&control)) {
        QAccessibleValueChangeEvent event(&control, number->doubleValue());
        QAccessible::updateAccessibility(&event);
    } else {
        QAccessibleEvent event(&control, QAccessible::NameChanged);
        QAccessible::updateAccessibility(&event);
    }
}

QString labelOf(const QWidget& control)
{
    const QLabel* label = nullptr;
    const QString name = control.property("labelledBy").toString();
    if (!name.isEmpty()) {
        label = control.window()->findChild<QLabel*>(name);
    } else if (const QWidget* parent = control.parentWidget()) {
        const auto labels = parent->findChildren<QLabel*>(Qt::FindDirectChildrenOnly);
        for (const QLabel* one : labels)
            if (one->buddy() == &control)
                label = one;
    }
    if (!label)
        return {};
    QString text = label->text();
    if (label->buddy())
        text.replace(QLatin1String("&&"), QString(QChar(0))).remove(u'&').replace(QChar(0), u'&');
    while (text.endsWith(u':') || text.endsWith(u'\uFF1A') || text.endsWith(u' ') ||
           text.endsWith(u'\u00A0'))
        text.chop(1);
    return text;
}

} // namespace editor
