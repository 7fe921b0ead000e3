// Controls of one number.
#include "editor/DecimalControl.h"

#include "editor/ControlAccess.h"
#include "editor/Forms.h"

#include <QHelpEvent>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPainter>
#include <QStyle>
#include <QStyleOptionSlider>
#include <QStyleOptionSpinBox>
#include <QToolTip>
#include <QWheelEvent>

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>
#include <tuple>
#include <utility>

namespace editor {

namespace {

// Positions of the toolkit's slider, which counts in whole numbers: more than any screen has
// pixels.
constexpr int kPositions = 1'000'000;
constexpr int kWheelStep = 120; // eighths of a degree
constexpr int kMostDecimals = 12;

int exponentOf(double increment)
{
    // The logarithm of a power of ten may lie a little below the whole number.
    return static_cast<int>(std::floor(std::log10(increment) + 1e-9));
}

// What a number set with the mouse is a multiple of: a tenth of the increment's power of ten.
double fineStep(double increment)
{
    return std::pow(10.0, exponentOf(increment) - 1);
}

bool isBackward(const QKeyEvent& event)
{
    return event.key() == Qt::Key_Left || event.key() == Qt::Key_Down ||
           event.key() == Qt::Key_PageDown;
}

} // namespace

double incrementForRange(double minimum, double maximum, bool wholeNumbers)
{
    if (wholeNumbers)
        return 1;
    // In halves, so that the widest range has a width.
    const double wanted = (maximum / 2 - minimum / 2) / 50;
    if (!(wanted > std::numeric_limits<double>::min()) || !std::isfinite(wanted))
        return 0.01;
    const double power = std::pow(10.0, exponentOf(wanted));
    const double digits = wanted / power;
    return (digits < 1.5 ? 1 : digits < 3.5 ? 2 : digits < 7.5 ? 5 : 10) * power;
}

double DecimalControl::limited(double value) const
{
    return value > _minValue ? std::min(value, _maxValue) : _minValue;
}

void DecimalControl::setDoubleValue(double value)
{
    // Compared first: a field that the user is typing into shall keep the text.
    if (std::exchange(_value, limited(value)) != _value)
        valueDidChange();
}

void DecimalControl::setRange(double minimum, double maximum, double increment, bool wholeNumbers)
{
    const auto finite = [](double value) { return std::isfinite(value) ? value : 0; };
    std::tie(_minValue, _maxValue) = std::minmax({finite(minimum), finite(maximum)});
    _increment = increment > 0 && std::isfinite(increment)
                     ? increment
                     : incrementForRange(_minValue, _maxValue, wholeNumbers);
    _wholeNumbers = wholeNumbers;
    _value = limited(_value);
    rangeDidChange();
    valueDidChange();
}

void DecimalControl::changeValue(double value, double step)
{
    if (_wholeNumbers)
        value = std::round(value);
    else if (step >= 1)
        value = std::round(value / step) * step;
    else if (step > 0)
        // By the inverse, which is a whole number, so that 0.3 is the 0.3 that one would type.
        value = std::round(value * std::round(1 / step)) / std::round(1 / step);
    value = limited(value);
    if (value == _value)
        return;
    _value = value;
    valueDidChange();
    if (action)
        action(*this);
}

// ParameterSlider

ParameterSlider::ParameterSlider(QWidget* parent) : QSlider(Qt::Horizontal, parent)
{
    announceControls();
    setFocusPolicy(Qt::StrongFocus);
    QSlider::setRange(0, kPositions);
    setSingleStep(kPositions / 100);
    setPageStep(kPositions / 10);
    // From whatever moves the mark without the operations below.
    connect(this, &QSlider::valueChanged, this, [this](int position) {
        if (!_isUpdating)
            changeFraction(position / double(kPositions), fineStep(_increment));
    });
    rangeDidChange();
    valueDidChange();
}

double ParameterSlider::fraction() const
{
    const double half = _maxValue / 2 - _minValue / 2;
    return half > 0 ? (_value / 2 - _minValue / 2) / half : 0;
}

void ParameterSlider::changeFraction(double fraction, double step)
{
    const double t = std::clamp(fraction, 0.0, 1.0);
    // The ends are as they are, however odd.
    if (t == 0 || t == 1)
        changeValue(t == 0 ? _minValue : _maxValue);
    else
        changeValue(_minValue * (1 - t) + _maxValue * t, step);
    valueDidChange();
}

void ParameterSlider::rangeDidChange() {}

void ParameterSlider::valueDidChange()
{
    _isUpdating = true;
    setValue(static_cast<int>(std::lround(fraction() * kPositions)));
    _isUpdating = false;
}

ParameterSlider::Track ParameterSlider::track(QStyleOptionSlider& option) const
{
    initStyleOption(&option);
    const QRect groove =
        style()->subControlRect(QStyle::CC_Slider, &option, QStyle::SC_SliderGroove, this);
    const QRect handle =
        style()->subControlRect(QStyle::CC_Slider, &option, QStyle::SC_SliderHandle, this);
    return {groove.left() + handle.width() / 2.0,
            std::max(1.0, static_cast<double>(groove.width() - handle.width())), option.upsideDown};
}

double ParameterSlider::fractionAt(double x, const Track& track) const
{
    const double t = (x - track.first) / track.length;
    return track.mirrored ? 1 - t : t;
}

void ParameterSlider::mousePressEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton) {
        event->ignore();
        return;
    }
    QStyleOptionSlider option;
    const Track place = track(option);
    const QRect handle =
        style()->subControlRect(QStyle::CC_Slider, &option, QStyle::SC_SliderHandle, this);
    _isDragging = true;
    _lastX = event->position().x();
    _draggedTo = fraction();
    setSliderDown(true);
    if (!handle.contains(event->position().toPoint())) {
        _draggedTo = std::clamp(fractionAt(_lastX, place), 0.0, 1.0);
        changeFraction(_draggedTo, fineStep(_increment));
    }
    update();
}

void ParameterSlider::mouseMoveEvent(QMouseEvent* event)
{
    if (!_isDragging) {
        event->ignore();
        return;
    }
    QStyleOptionSlider option;
    const Track place = track(option);
    const double x = event->position().x();
    const bool fine = event->modifiers().testFlag(Qt::ShiftModifier);
    const double moved = (x - std::exchange(_lastX, x)) / place.length * (fine ? 0.1 : 1);
    // Not limited: coming back from past an end, the mark waits for the pointer.
    _draggedTo += place.mirrored ? -moved : moved;
    changeFraction(_draggedTo, fineStep(_increment) * (fine ? 0.1 : 1));
}

void ParameterSlider::mouseReleaseEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton || !std::exchange(_isDragging, false)) {
        event->ignore();
        return;
    }
    setSliderDown(false);
    valueDidChange();
    update();
}

void ParameterSlider::mouseDoubleClickEvent(QMouseEvent* event)
{
    if (event->button() == Qt::LeftButton && resetAction)
        resetAction(*this);
    else
        mousePressEvent(event);
}

void ParameterSlider::keyPressEvent(QKeyEvent* event)
{
    // The horizontal keys go the way of the mark.
    const bool horizontal = event->key() == Qt::Key_Left || event->key() == Qt::Key_Right;
    const double way =
        isBackward(*event) != (horizontal && layoutDirection() == Qt::RightToLeft) ? -1 : 1;
    const bool fine = event->modifiers().testFlag(Qt::ShiftModifier) && !_wholeNumbers;
    const double step = fineStep(_increment) * (fine ? 0.1 : 1);
    switch (event->key()) {
    case Qt::Key_Left:
    case Qt::Key_Right:
    case Qt::Key_Up:
    case Qt::Key_Down:
        changeValue(_value + way * _increment * (fine ? 0.1 : 1), step);
        break;
    case Qt::Key_PageUp:
    case Qt::Key_PageDown:
        changeValue(_value + way * 10 * _increment, step);
        break;
    case Qt::Key_Home:
        changeValue(_minValue);
        break;
    case Qt::Key_End:
        changeValue(_maxValue);
        break;
    case Qt::Key_Delete:
    case Qt::Key_Backspace:
        if (resetAction)
            resetAction(*this);
        break;
    default:
        event->ignore();
    }
}

void ParameterSlider::wheelEvent(QWheelEvent* event)
{
    if (!hasFocus()) {
        event->ignore();
        return;
    }
    const QPoint delta = event->angleDelta();
    _turnedBy += delta.y() != 0 ? delta.y() : -delta.x();
    const int steps = _turnedBy / kWheelStep;
    _turnedBy %= kWheelStep;
    changeValue(_value + steps * _increment, fineStep(_increment));
    event->accept();
}

// NumberField

NumberField::NumberField(QWidget* parent) : QDoubleSpinBox(parent)
{
    setButtonSymbols(NoButtons);
    setFocusPolicy(Qt::StrongFocus);
    setKeyboardTracking(false);
    setAlignment(Qt::AlignRight | Qt::AlignTrailing | Qt::AlignVCenter);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    // Thousands are not grouped, so that a point or a comma can only be the decimal one.
    QLocale notation = locale();
    notation.setNumberOptions(QLocale::OmitGroupSeparator | QLocale::RejectGroupSeparator);
    setLocale(notation);
    connect(this, &QDoubleSpinBox::valueChanged, this, [this](double value) {
        if (!_isUpdating)
            changeValue(value);
    });
    connect(lineEdit(), &QLineEdit::textChanged, this, [this] { checkRange(); });
    rangeDidChange();
    valueDidChange();
}

QSize NumberField::sizeHint() const
{
    QStyleOptionSpinBox option;
    initStyleOption(&option);
    // The line edit keeps 2 pixels on either side and one for its cursor.
    const QSize text(fontMetrics().horizontalAdvance(QStringLiteral("-0000.00")) + 6,
                     lineEdit()->sizeHint().height());
    return style()->sizeFromContents(QStyle::CT_SpinBox, &option, text, this);
}

void NumberField::rangeDidChange()
{
    _isUpdating = true;
    const int exponent = exponentOf(_increment);
    setDecimals(_wholeNumbers ? 0 : std::clamp(2 - exponent, 0, kMostDecimals));
    QDoubleSpinBox::setRange(_minValue, _maxValue);
    setSingleStep(_increment);
    _isUpdating = false;
}

void NumberField::valueDidChange()
{
    _isUpdating = true;
    setValue(_value);
    _isUpdating = false;
    // The toolkit does not tell of texts that it writes itself.
    checkRange();
}

void NumberField::commit()
{
    interpretText();
    lineEdit()->setModified(false);
    checkRange();
}

namespace {

// Point and comma are the decimal point everywhere: number pads have the one, hands are used to the
// other.
QString inNotation(QString text, const QLocale& notation)
{
    const QString point = notation.decimalPoint();
    return text.replace(u'.', point).replace(u',', point);
}

// Without spaces around it and the marks that keep a sign on its side where text runs leftwards,
// which the toolkit writes and does not read.
QString bare(QString text)
{
    text.removeIf([](QChar c) { return c.category() == QChar::Other_Format; });
    return text.trimmed();
}

std::optional<double> numberIn(const QString& text, const QLocale& notation)
{
    bool isNumber = false;
    const double number = notation.toDouble(inNotation(bare(text), notation), &isNumber);
    return isNumber && std::isfinite(number) ? std::optional(number) : std::nullopt;
}

} // namespace

QValidator::State NumberField::validate(QString& text, int&) const
{
    constexpr int kLongest = 40;
    text = inNotation(text, locale());
    const QString typed = bare(text);
    const QString point = locale().decimalPoint();
    const qsizetype at = typed.indexOf(point);
    if (typed.size() > kLongest || typed.contains(u'e', Qt::CaseInsensitive) ||
        (at >= 0 && (decimals() == 0 || typed.size() - at - point.size() > decimals())))
        return QValidator::Invalid;
    const auto number = numberIn(typed, locale());
    if (number)
        return *number >= minimum() && *number <= maximum() ? QValidator::Acceptable
                                                            : QValidator::Intermediate;
    QString begun = typed;
    if (begun.startsWith(u'-') || begun.startsWith(u'+') || begun.startsWith(u'\u2212'))
        begun.remove(0, 1);
    return begun.isEmpty() || begun == point ? QValidator::Intermediate : QValidator::Invalid;
}

void NumberField::fixup(QString& text) const
{
    if (const auto number = numberIn(text, locale()))
        text = textFromValue(std::clamp(*number, minimum(), maximum()));
}

// Zeros at the end are shown as far as the increment needs them.
QString NumberField::textFromValue(double value) const
{
    const int needed = _wholeNumbers ? 0 : std::clamp(-exponentOf(_increment), 0, decimals());
    int shown = decimals();
    QString digits = QString::number(value, 'f', shown);
    for (; shown > needed && digits.endsWith(u'0'); --shown)
        digits.chop(1);
    const double rounded = digits.toDouble();
    return locale().toString(rounded == 0 ? 0.0 : rounded, 'f', shown);
}

double NumberField::valueFromText(const QString& text) const
{
    return numberIn(text, locale()).value_or(_value);
}

void NumberField::stepBy(int steps)
{
    commit();
    changeValue(_value + steps * _increment, std::pow(10.0, -decimals()));
    if (hasFocus())
        selectAll();
}

QString NumberField::rangeText() const
{
    return localizedString("%1 to %2").arg(textFromValue(minimum()), textFromValue(maximum()));
}

void NumberField::checkRange()
{
    const auto number = numberIn(lineEdit()->text(), locale());
    const bool outside = number && (*number < minimum() || *number > maximum());
    if (std::exchange(_isOutOfRange, outside) == outside)
        return;
    showFeedback();
    if (outside && hasFocus())
        QToolTip::showText(mapToGlobal(QPoint(0, height() / 2)), rangeText(), this);
    else
        QToolTip::hideText();
}

// A red that can be read on the field, be it light or dark.
static QColor warningColor(const QPalette& palette)
{
    return palette.color(QPalette::Base).lightnessF() < 0.5F ? QColor(255, 128, 120)
                                                             : QColor(196, 24, 24);
}

void NumberField::showFeedback()
{
    QPalette marked;
    if (_isOutOfRange)
        marked.setColor(QPalette::Text, warningColor(palette()));
    lineEdit()->setPalette(marked);
    update();
}

bool NumberField::event(QEvent* event)
{
    if (event->type() == QEvent::ToolTip && _isOutOfRange) {
        QToolTip::showText(static_cast<QHelpEvent*>(event)->globalPos(), rangeText(), this);
        return true;
    }
    if (event->type() == QEvent::ShortcutOverride) {
        const auto* key = static_cast<QKeyEvent*>(event);
        const bool isPlain = (key->modifiers() & ~Qt::KeypadModifier) == Qt::NoModifier;
        // Keys that mean the window's buttons elsewhere.
        if ((isPlain && (key->key() == Qt::Key_Return || key->key() == Qt::Key_Enter)) ||
            (key->key() == Qt::Key_Escape && lineEdit()->isModified())) {
            event->accept();
            return true;
        }
    }
    return QDoubleSpinBox::event(event);
}

void NumberField::keyPressEvent(QKeyEvent* event)
{
    switch (event->key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
        commit();
        selectAll();
        event->accept();
        return;
    case Qt::Key_Escape:
        if (lineEdit()->isModified()) {
            valueDidChange();
            selectAll();
            event->accept();
            return;
        }
        break;
    default:
        break;
    }
    QDoubleSpinBox::keyPressEvent(event);
}

void NumberField::wheelEvent(QWheelEvent* event)
{
    if (hasFocus())
        QDoubleSpinBox::wheelEvent(event);
    else
        event->ignore();
}

void NumberField::focusOutEvent(QFocusEvent* event)
{
    // A window that closes takes the focus away first.
    if (window()->testAttribute(Qt::WA_Mapped))
        commit();
    else
        valueDidChange();
    QDoubleSpinBox::focusOutEvent(event);
}

// Who hides the field is done with it.
void NumberField::hideEvent(QHideEvent* event)
{
    if (lineEdit()->isModified())
        valueDidChange();
    QDoubleSpinBox::hideEvent(event);
}

void NumberField::changeEvent(QEvent* event)
{
    QDoubleSpinBox::changeEvent(event);
    if (event->type() == QEvent::PaletteChange && _isOutOfRange)
        showFeedback();
}

void NumberField::paintEvent(QPaintEvent* event)
{
    QDoubleSpinBox::paintEvent(event);
    if (!_isOutOfRange)
        return;
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(warningColor(palette()), 1.5));
    painter.drawRoundedRect(QRectF(rect()).adjusted(0.75, 0.75, -0.75, -0.75), 2, 2);
}

// Stepper

Stepper::Stepper(QWidget* parent) : QAbstractSpinBox(parent)
{
    announceControls();
    // A click ends the typing in the field beside it; Tab goes past, since the field has the same
    // keys.
    setFocusPolicy(Qt::ClickFocus);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    lineEdit()->hide();
}

QSize Stepper::sizeHint() const
{
    QStyleOptionSpinBox option;
    initStyleOption(&option);
    const int height = QAbstractSpinBox::sizeHint().height();
    option.rect = QRect(0, 0, 100, height);
    option.direction = Qt::LeftToRight;
    const QRect up =
        style()->subControlRect(QStyle::CC_SpinBox, &option, QStyle::SC_SpinBoxUp, this);
    const int border = 100 - (up.left() + up.width());
    return {up.width() + 2 * std::max(border, 0), height};
}

void Stepper::stepBy(int steps)
{
    changeValue(_value + steps * _increment, fineStep(_increment) / 10);
}

QAbstractSpinBox::StepEnabled Stepper::stepEnabled() const
{
    StepEnabled enabled = StepNone;
    enabled.setFlag(StepUpEnabled, _value < _maxValue);
    enabled.setFlag(StepDownEnabled, _value > _minValue);
    return enabled;
}

void Stepper::rangeDidChange()
{
    update();
}

void Stepper::valueDidChange()
{
    update();
}

void Stepper::keyPressEvent(QKeyEvent* event)
{
    switch (event->key()) {
    case Qt::Key_Up:
    case Qt::Key_Down:
        stepBy(isBackward(*event) ? -1 : 1);
        break;
    case Qt::Key_PageUp:
    case Qt::Key_PageDown:
        stepBy(isBackward(*event) ? -10 : 10);
        break;
    case Qt::Key_Home:
        changeValue(_minValue);
        break;
    case Qt::Key_End:
        changeValue(_maxValue);
        break;
    default:
        event->ignore();
    }
}

void Stepper::wheelEvent(QWheelEvent* event)
{
    if (hasFocus())
        QAbstractSpinBox::wheelEvent(event);
    else
        event->ignore();
}

// ParameterLabel

ParameterLabel::ParameterLabel(QWidget* parent) : FormLabel(parent) {}

void ParameterLabel::mouseDoubleClickEvent(QMouseEvent* event)
{
    if (event->button() == Qt::LeftButton)
        Q_EMIT doubleClicked();
    else
        FormLabel::mouseDoubleClickEvent(event);
}

} // namespace editor
