#include "editor/CIFImageInfoController.h"

#include "editor/Forms.h"
#include "editor/Shared.h"
#include "editor/WindowFrame.h"
#include "platform/foundation/Log.h"
#include "platform/foundation/Numbers.h"
#include "platform/imaging/Bitmap.h"

#include <QAbstractButton>
#include <QApplication>
#include <QComboBox>
#include <QDialog>
#include <QDialogButtonBox>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPushButton>
#include <QRegularExpressionValidator>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <utility>

namespace {

constexpr double kLargest = imaging::Bitmap::kMaximumSide;

// A picture has at least one pixel. What is no number counts as none.
double counted(double side)
{
    return side >= 1 ? std::min(side, kLargest) : 1;
}

// The whole number that the text begins with; 1 for an empty field and for less.
double countedValue(const QLineEdit& field)
{
    return counted(
        static_cast<double>(std::strtoll(field.text().toLatin1().constData(), nullptr, 10)));
}

// What divisions leave of a whole number is that number: the last bit decides about no pixel.
double settled(double value)
{
    const double whole = std::round(value);
    return std::abs(value - whole) <= 1e-12 * std::max(1.0, whole) ? whole : value;
}

void showCut(QLineEdit& field, double value)
{
    field.setText(QString::number(foundation::truncToInt(settled(value))));
}

enum Unit { Pixels, Percent };

} // namespace

CIFImageInfoController& CIFImageInfoController::sharedImageInfoTool()
{
    return editor::sharedInstance<CIFImageInfoController>();
}

CIFImageInfoController::CIFImageInfoController() = default;

CIFImageInfoController::~CIFImageInfoController()
{
    delete _window;
}

bool CIFImageInfoController::load(QWidget* parent)
{
    QWidget* form = editor::loadForm(QStringLiteral("ImageInfoTool"), parent);
    auto* window = qobject_cast<QDialog*>(form);
    if (window) {
        // Read by the last end handler; replaced only now.
        if (_window)
            _window->deleteLater();
        _window = window;
        _widthTextField = window->findChild<QLineEdit*>(QStringLiteral("_widthTextField"));
        _heightTextField = window->findChild<QLineEdit*>(QStringLiteral("_heightTextField"));
        _constrainProportionsButton =
            window->findChild<QAbstractButton*>(QStringLiteral("_constrainProportionsButton"));
        _makeThumbnailButton =
            window->findChild<QAbstractButton*>(QStringLiteral("_makeThumbnailButton"));
        _percentPopUpButton = window->findChild<QComboBox*>(QStringLiteral("_percentPopUpButton"));
        _percentPopUpButton2 =
            window->findChild<QComboBox*>(QStringLiteral("_percentPopUpButton2"));
    }
    auto* buttons = form ? form->findChild<QDialogButtonBox*>() : nullptr;
    if (!window || !_widthTextField || !_heightTextField || !_constrainProportionsButton ||
        !_makeThumbnailButton || !_percentPopUpButton || !_percentPopUpButton2 || !buttons) {
        delete form;
        foundation::log("Failed to load ImageInfoTool.nib");
        QApplication::beep();
        return false;
    }

    window->installEventFilter(this);
    for (QLineEdit* field : {_widthTextField.get(), _heightTextField.get()}) {
        static const QRegularExpression digits(QStringLiteral("[0-9]*"));
        field->setValidator(new QRegularExpressionValidator(digits, field));
        connect(field, &QLineEdit::textEdited, this, [=, this] { controlTextDidChange(field); });
        // What was left in the field shows as what it counts as.
        connect(field, &QLineEdit::editingFinished, this,
                [=] { showCut(*field, countedValue(*field)); });
    }
    for (QComboBox* menu : {_percentPopUpButton.get(), _percentPopUpButton2.get()}) {
        menu->setCurrentIndex(std::clamp(_currUnitsPopUpIndex, 0, menu->count() - 1));
        connect(menu, &QComboBox::activated, this, [=, this] { selectPercentPopUpButton(menu); });
    }
    connect(_makeThumbnailButton, &QAbstractButton::clicked, this,
            [this] { makeThumbnailButton(_makeThumbnailButton); });
    // The box puts its buttons into the desktop's order; its own texts are the toolkit's.
    const std::pair<QDialogButtonBox::StandardButton, QString> texts[] = {
        {QDialogButtonBox::Cancel, editor::localizedString("Cancel")},
        {QDialogButtonBox::Ok, editor::localizedString("OK")}};
    for (int tag = 0; tag < 2; ++tag)
        if (QPushButton* button = buttons->button(texts[tag].first)) {
            button->setProperty("tag", tag);
            button->setDefault(tag != 0);
            button->setText(texts[tag].second);
            connect(button, &QAbstractButton::clicked, this, [=, this] { close(button); });
        }
    return true;
}

bool CIFImageInfoController::begin(QWidget* parent, Size size, bool constrainProportions,
                                   bool makeThumbnail, bool disableFitToSize)
{
    if (_window && _window->isVisible())
        return false;
    if (!load(parent))
        return false;
    _isSheetWindow = parent != nullptr;
    realSizePixel = tempSizePixel = {counted(size.width), counted(size.height)};
    tempSizePercent = {100, 100};
    _dImageSizeRate = realSizePixel.width / realSizePixel.height;
    showCut(*_widthTextField, realSizePixel.width);
    showCut(*_heightTextField, realSizePixel.height);
    _constrainProportionsButton->setChecked(constrainProportions);
    _makeThumbnailButton->setChecked(makeThumbnail);
    _constrainProportionsButton->setEnabled(!makeThumbnail);
    _makeThumbnailButton->setEnabled(!disableFitToSize);
    _widthTextField->setFocus();
    _widthTextField->selectAll();
    return true;
}

bool CIFImageInfoController::
    sheetChangeSizeConstrainProportionsMakeThumbnailDisableFitToSizeModalDelegateDidEndSelector(
        Size size, bool constrainProportions, bool makeThumbnail, bool disableFitToSize,
        QWidget* modalDelegate, EndHandler didEnd)
{
    if (!modalDelegate || !begin(modalDelegate->window(), size, constrainProportions, makeThumbnail,
                                 disableFitToSize))
        return false;
    _didEnd = std::move(didEnd);
    _window->setWindowFlags((_window->windowFlags() & ~Qt::WindowType_Mask) | Qt::Sheet);
    _window->setWindowModality(Qt::WindowModal);
    _window->show();
    return true;
}

bool CIFImageInfoController::changeSizeConstrainProportionsMakeThumbnailDisableFitToSize(
    Size size, bool constrainProportions, bool makeThumbnail, bool disableFitToSize)
{
    if (!begin(nullptr, size, constrainProportions, makeThumbnail, disableFitToSize))
        return false;
    _didEnd = nullptr;
    // A sheet stays where its window is.
    editor::setFrameAutosaveName(*_window, QStringLiteral("ImageEditor"));
    return _window->exec() != 0;
}

bool CIFImageInfoController::isMakeThumbnail() const
{
    return _makeThumbnailButton && _makeThumbnailButton->isChecked();
}

QDialog* CIFImageInfoController::window() const
{
    return _window;
}

bool CIFImageInfoController::inPercent() const
{
    return _percentPopUpButton->currentIndex() == Percent;
}

void CIFImageInfoController::controlTextDidChange(QLineEdit* field)
{
    if (_makeThumbnailButton->isChecked())
        return;
    const bool isWidth = field->property("tag").toInt() == 1;
    const double v = countedValue(*field);
    const auto [W, H] = realSizePixel;
    if (_constrainProportionsButton->isChecked()) {
        QLineEdit& other = isWidth ? *_heightTextField : *_widthTextField;
        if (inPercent()) {
            showCut(other, v);
            tempSizePercent = {v, v};
            tempSizePixel = {v * W / 100, v * H / 100};
        } else {
            const double side = isWidth ? v / _dImageSizeRate : v * _dImageSizeRate;
            showCut(other, counted(std::ceil(settled(side))));
            (isWidth ? tempSizePixel.width : tempSizePixel.height) = v;
            const double percent = v / (isWidth ? W : H) * 100;
            tempSizePercent = {percent, percent};
        }
        return;
    }
    double& pixel = isWidth ? tempSizePixel.width : tempSizePixel.height;
    double& percent = isWidth ? tempSizePercent.width : tempSizePercent.height;
    const double whole = isWidth ? W : H;
    pixel = inPercent() ? v * whole / 100 : v;
    percent = inPercent() ? v : v / whole * 100;
}

void CIFImageInfoController::selectPercentPopUpButton(QComboBox* sender)
{
    const int item = sender->currentIndex();
    (sender == _percentPopUpButton ? _percentPopUpButton2 : _percentPopUpButton)
        ->setCurrentIndex(item);
    switch (item) {
    case Pixels:
        showCut(*_widthTextField, realSizePixel.width * tempSizePercent.width / 100);
        showCut(*_heightTextField, realSizePixel.height * tempSizePercent.height / 100);
        break;
    case Percent:
        showCut(*_widthTextField, tempSizePercent.width);
        showCut(*_heightTextField, tempSizePercent.height);
        break;
    default:
        _currUnitsPopUpIndex = item;
    }
}

void CIFImageInfoController::makeThumbnailButton(QAbstractButton* sender)
{
    _constrainProportionsButton->setEnabled(!sender->isChecked());
}

void CIFImageInfoController::close(QObject* sender)
{
    const Size typed = {countedValue(*_widthTextField), countedValue(*_heightTextField)};
    const auto set = [this](Size size) {
        _imageSize = {static_cast<float>(counted(size.width)),
                      static_cast<float>(counted(size.height))};
    };
    set(typed);
    const bool accepted = sender->property("tag").toInt() != 0;
    if (!accepted) {
        // The answer stays what the fields show: those who ask read it without looking at the code.
        realSizePixel = tempSizePixel = imageSize();
        tempSizePercent = {100, 100};
    } else if (inPercent()) {
        set({realSizePixel.width * typed.width / 100, realSizePixel.height * typed.height / 100});
    }
    end(accepted);
}

void CIFImageInfoController::windowWillClose()
{
    if (_isSheetWindow)
        close(_window->findChild<QDialogButtonBox*>()->button(QDialogButtonBox::Cancel));
    else
        end(0);
}

void CIFImageInfoController::end(int returnCode)
{
    QPointer<QDialog> sheet = _window;
    const EndHandler didEnd = std::exchange(_didEnd, nullptr);
    sheet->done(returnCode);
    if (didEnd)
        didEnd(sheet, returnCode, nullptr);
}

bool CIFImageInfoController::eventFilter(QObject* watched, QEvent* event)
{
    // The type first: other events come while the window is no dialog any more.
    const bool isClose = event->type() == QEvent::Close;
    const bool isCancel = event->type() == QEvent::KeyPress &&
                          static_cast<QKeyEvent*>(event)->matches(QKeySequence::Cancel);
    if (!(isClose || isCancel) || watched != _window || !_window->isVisible())
        return QObject::eventFilter(watched, event);
    if (isClose)
        windowWillClose();
    else
        close(_window->findChild<QDialogButtonBox*>()->button(QDialogButtonBox::Cancel));
    return true;
}
