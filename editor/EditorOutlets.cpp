// Finds the named parts of a form.
#include "editor/EditorOutlets.h"

#include "editor/CCColorSlider.h"
#include "editor/CIFImageEditorView.h"
#include "editor/ColorWell.h"
#include "editor/PictureScrollView.h"

#include <QAbstractButton>
#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QSlider>
#include <QSplitter>
#include <QStackedWidget>
#include <QTableView>
#include <QTextBrowser>
#include <QToolButton>

namespace editor {

EditorOutlets EditorOutlets::of(QWidget& window)
{
    EditorOutlets outlets;
    const auto find = [&]<class Part>(Part*& part, const char* name) {
        part = window.findChild<Part*>(QLatin1String(name));
    };
#define FIND(part) find(outlets.part, #part)
    FIND(_pictureView);
    FIND(_scrollView);
    FIND(_filtersTabView);
    FIND(_scaleSlider);
    FIND(_buttonSet);
    FIND(_buttonCancel);
    FIND(_applyButton);
    FIND(_controlsView);
    FIND(_filterControlsView);
    FIND(_filterControlsTabView);
    FIND(_GLIFControlsView);
    FIND(_GLIFControlsTabView);
    FIND(_GLIFColorControlsTabView);
    FIND(_generateButton);
    FIND(_tableView);
    FIND(_GLIFTableView);
    FIND(m_URLField);
    FIND(m_URLField2);
    FIND(_helpTabView);
    FIND(_listsTabView);
    FIND(_undoButton);
    FIND(_redoButton);
    FIND(_sizeButton);
    FIND(_windowTabSegmentButton);
    FIND(_windowTabSegmentButton2);
    FIND(_texturePopUpButton10);
    FIND(_texturePopUpButton20);
    FIND(_filtersGroupPopUpButton30);
    FIND(_dabsTypePopUpButton);
    FIND(_checkBox1);
    FIND(_colorWell1);
    FIND(_colorWell2);
    FIND(_labelColorWell1);
    FIND(_labelColorWell2);
    FIND(_colorGradientSlider);
    FIND(_colorSchemeSlider);
    FIND(_colorSchemePopUpButton);
    FIND(_useBackColorButton1);
    FIND(_useBackColorButton2);
    FIND(_backColorWell1);
    FIND(_backColorWell2);
    FIND(_splitter);
    FIND(_searchField);
    FIND(_seedField);
    FIND(_entryTitle);
    FIND(_presetsButton);
    FIND(_favouriteButton);
    FIND(_favouritesButton);
    FIND(_resetButton);
    FIND(_compareButton);
    FIND(_splitButton);
    FIND(_previewButton);
    FIND(_fitButton);
    FIND(_actualSizeButton);
    FIND(_scaleLabel);
    FIND(_busyView);
    FIND(_progressBar);
    FIND(_stopButton);
    FIND(_statusLabel);
#undef FIND
    return outlets;
}

} // namespace editor
