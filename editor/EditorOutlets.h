// The named parts of the form "ImageEditor". A part that a form leaves out is null.
#pragma once

#include <QString>

class CCColorSlider;
class CIFImageEditorView;
class QAbstractButton;
class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QMainWindow;
class QProgressBar;
class QSlider;
class QSplitter;
class QStackedWidget;
class QTableView;
class QTextBrowser;
class QToolButton;
class QWidget;

namespace editor {

class ColorWell;
class PictureScrollView;

struct EditorOutlets {
    // The window.
    CIFImageEditorView* _pictureView = nullptr;
    PictureScrollView* _scrollView = nullptr;
    QStackedWidget* _filtersTabView = nullptr; // pages "filters", "generators"
    QSlider* _scaleSlider = nullptr;           // −1600 … 1600: hundredths of the slider value
    QAbstractButton* _buttonSet = nullptr;     // tag 1
    QAbstractButton* _buttonCancel = nullptr;  // tag 0
    QAbstractButton* _applyButton = nullptr;
    QWidget* _controlsView = nullptr;
    QWidget* _filterControlsView = nullptr;
    QStackedWidget* _filterControlsTabView = nullptr; // pages "0", "10", "20", "30"
    QWidget* _GLIFControlsView = nullptr;
    QStackedWidget* _GLIFControlsTabView = nullptr;      // pages by generator, and "dump"
    QStackedWidget* _GLIFColorControlsTabView = nullptr; // pages "color scheme", "color gradient"
    QAbstractButton* _generateButton = nullptr;
    QTableView* _tableView = nullptr;
    QTableView* _GLIFTableView = nullptr;
    QTextBrowser* m_URLField = nullptr;
    QTextBrowser* m_URLField2 = nullptr;
    QStackedWidget* _helpTabView = nullptr;
    QStackedWidget* _listsTabView = nullptr; // pages "filters list", "generators list"
    QAbstractButton* _undoButton = nullptr;
    QAbstractButton* _redoButton = nullptr;
    QAbstractButton* _sizeButton = nullptr;
    QAbstractButton* _windowTabSegmentButton = nullptr;  // the segment "Filters"
    QAbstractButton* _windowTabSegmentButton2 = nullptr; // the segment "Generators"

    // Shared controls of the pages.
    QComboBox* _texturePopUpButton10 = nullptr;
    QComboBox* _texturePopUpButton20 = nullptr;
    QComboBox* _filtersGroupPopUpButton30 = nullptr;
    QComboBox* _dabsTypePopUpButton = nullptr;
    QCheckBox* _checkBox1 = nullptr;
    ColorWell* _colorWell1 = nullptr;
    ColorWell* _colorWell2 = nullptr;
    QLabel* _labelColorWell1 = nullptr;
    QLabel* _labelColorWell2 = nullptr;
    CCColorSlider* _colorGradientSlider = nullptr;
    CCColorSlider* _colorSchemeSlider = nullptr;
    QComboBox* _colorSchemePopUpButton = nullptr;
    QCheckBox* _useBackColorButton1 = nullptr;
    QCheckBox* _useBackColorButton2 = nullptr;
    ColorWell* _backColorWell1 = nullptr;
    ColorWell* _backColorWell2 = nullptr;

    // What the window has besides.
    QSplitter* _splitter = nullptr;
    QLineEdit* _searchField = nullptr;
    QLineEdit* _seedField = nullptr;
    QLabel* _entryTitle = nullptr; // the name of the current entry
    QToolButton* _presetsButton = nullptr;
    QToolButton* _favouriteButton = nullptr;      // checkable
    QAbstractButton* _favouritesButton = nullptr; // checkable: lists show favourites only
    QAbstractButton* _resetButton = nullptr;
    QAbstractButton* _compareButton = nullptr; // shows the original while it is held
    QAbstractButton* _splitButton = nullptr;   // checkable
    QAbstractButton* _previewButton = nullptr; // checkable
    QAbstractButton* _fitButton = nullptr;
    QAbstractButton* _actualSizeButton = nullptr;
    QLabel* _scaleLabel = nullptr;
    QWidget* _busyView = nullptr; // shown while a result is long in coming
    QProgressBar* _progressBar = nullptr;
    QAbstractButton* _stopButton = nullptr;
    QLabel* _statusLabel = nullptr;

    // By object name, among all that the window has.
    static EditorOutlets of(QWidget& window);
};

} // namespace editor
