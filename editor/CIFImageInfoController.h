// Asks for a new picture size, in pixels or in percent of the present one: as a sheet on a window
// or as a modal window of its own.
#pragma once

#include "platform/foundation/Geometry.h"

#include <QObject>
#include <QPointer>

#include <cstdint>
#include <functional>

class QAbstractButton;
class QComboBox;
class QDialog;
class QLineEdit;

class CIFImageInfoController final : public QObject {
    Q_OBJECT

public:
    using Size = foundation::Size;
    // Called when a sheet has closed, with 1 for OK or 0 for Cancel, and a null context.
    using EndHandler = std::function<void(QWidget* sheet, int returnCode, void* contextInfo)>;

    // + sharedImageInfoTool
    static CIFImageInfoController& sharedImageInfoTool();

    // init
    CIFImageInfoController();
    ~CIFImageInfoController() override;

    // sheetChangeSize:constrainProportions:makeThumbnail:disableFitToSize:modalDelegate:didEndSelector:
    // — opens the sheet on the delegate's window and returns at once. False when the form is
    // missing (with a line in the log and a beep) and while one is open already.
    bool
    sheetChangeSizeConstrainProportionsMakeThumbnailDisableFitToSizeModalDelegateDidEndSelector(
        Size size, bool constrainProportions, bool makeThumbnail, bool disableFitToSize,
        QWidget* modalDelegate, EndHandler didEnd);
    // changeSize:constrainProportions:makeThumbnail:disableFitToSize: — true for OK.
    bool changeSizeConstrainProportionsMakeThumbnailDisableFitToSize(Size size,
                                                                     bool constrainProportions,
                                                                     bool makeThumbnail,
                                                                     bool disableFitToSize);

    // The answer. After Cancel, what the fields showed. Each side is 1 to the largest that a bitmap
    // can have.
    Size imageSize() const { return {_imageSize.width, _imageSize.height}; }
    bool isMakeThumbnail() const;

    // What was typed so far.
    Size sizeInPixels() const { return tempSizePixel; }
    Size sizeInPercent() const { return tempSizePercent; }
    // The window of the latest opening; null before it.
    QDialog* window() const;

    // close: — of the sender's tag: 0 cancels.
    void close(QObject* sender);
    // selectPercentPopUpButton:
    void selectPercentPopUpButton(QComboBox* sender);
    // makeThumbnailButton:
    void makeThumbnailButton(QAbstractButton* sender);
    // controlTextDidChange: — tag 1 is the width, 2 the height.
    void controlTextDidChange(QLineEdit* field);
    // windowWillClose: — by the window's own closing button.
    void windowWillClose();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    bool load(QWidget* parent);
    bool begin(QWidget* parent, Size size, bool constrainProportions, bool makeThumbnail,
               bool disableFitToSize);
    void end(int returnCode);
    bool inPercent() const;

    QPointer<QDialog> _window;
    QPointer<QLineEdit> _widthTextField, _heightTextField;
    QPointer<QAbstractButton> _constrainProportionsButton, _makeThumbnailButton;
    QPointer<QComboBox> _percentPopUpButton, _percentPopUpButton2; // the same item in both

    struct {
        float width = 0, height = 0;
    } _imageSize;
    double _dImageSizeRate = 1.0; // width by height
    bool _isSheetWindow = false;
    Size realSizePixel;   // on opening
    Size tempSizePixel;   // as typed so far
    Size tempSizePercent; // likewise
    // Neither item 0, pixels, nor item 1, percent, is ever remembered here.
    std::int32_t _currUnitsPopUpIndex = 0;
    EndHandler _didEnd;
};
