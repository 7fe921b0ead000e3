// The form of the editor window: it has every part that the controller looks for, nothing is cut
// off in any language, and the keyboard and screen readers find their way.
#include "editor/CCColorSlider.h"
#include "editor/ColorWell.h"
#include "editor/DecimalControl.h"
#include "editor/EditorOutlets.h"
#include "editor/Forms.h"
#include "editor/Glyphs.h"
#include "editor/PictureScrollView.h"
#include "platform/foundation/Bundle.h"
#include "plugin/CIFMain.h"

#include <QTest>
#include <QtWidgets>

#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <memory>
#include <set>

using namespace editor;

namespace {

class EditorForm : public testing::Test {
protected:
    EditorForm() { load(); }
    ~EditorForm() override
    {
        foundation::setLanguage("C");
        QApplication::setLayoutDirection(Qt::LeftToRight);
    }

    void load()
    {
        window.reset(qobject_cast<QMainWindow*>(loadForm(QStringLiteral("ImageEditor"))));
        if (!window)
            throw std::runtime_error("the form cannot be read");
        outlets = EditorOutlets::of(*window);
    }
    static void settle()
    {
        QCoreApplication::sendPostedEvents();
        QCoreApplication::processEvents();
    }
    void show(QSize size)
    {
        window->resize(size);
        window->show();
        settle();
    }
    // A page with what it lies in.
    void showPage(QWidget& page)
    {
        for (QWidget* widget = &page; widget; widget = widget->parentWidget())
            if (auto* stack = qobject_cast<QStackedWidget*>(widget->parentWidget()))
                stack->setCurrentWidget(widget);
        settle();
    }
    static QWidget* pageOf(QStackedWidget& stack, const QString& name)
    {
        for (int i = 0; i < stack.count(); ++i)
            if (stack.widget(i)->objectName() == name)
                return stack.widget(i);
        return nullptr;
    }
    // Every page in which controls stand.
    std::vector<QWidget*> pages()
    {
        std::vector<QWidget*> all;
        for (QStackedWidget* stack : {outlets._filterControlsTabView, outlets._GLIFControlsTabView,
                                      outlets._GLIFColorControlsTabView})
            for (int i = 0; i < stack->count(); ++i)
                all.push_back(stack->widget(i));
        return all;
    }
    QRect placeOf(const QWidget& widget) const
    {
        return {widget.mapTo(window.get(), QPoint()), widget.size()};
    }
    template <class Visit>
    void forEachShown(Visit visit)
    {
        const auto widgets = window->findChildren<QWidget*>();
        for (QWidget* widget : widgets)
            if (widget->isVisible() && !widget->objectName().startsWith(QLatin1String("qt_")))
                visit(*widget);
    }
    void expectNothingCutOff(const std::string& where);

    std::unique_ptr<QMainWindow> window;
    EditorOutlets outlets;
};

int widestItem(const QComboBox& menu)
{
    int width = 0;
    for (int i = 0; i < menu.count(); ++i)
        width = std::max(width, menu.fontMetrics().horizontalAdvance(menu.itemText(i)));
    return width;
}

void EditorForm::expectNothingCutOff(const std::string& where)
{
    forEachShown([&](QWidget& widget) {
        const std::string name = where + ": " + widget.objectName().toStdString();
        if (auto* label = qobject_cast<QLabel*>(&widget)) {
            if (label->sizePolicy().horizontalPolicy() != QSizePolicy::Ignored &&
                !label->wordWrap()) {
                EXPECT_GE(label->width(), label->sizeHint().width()) << name;
            }
            EXPECT_GE(label->height(), label->wordWrap() ? label->heightForWidth(label->width())
                                                         : label->sizeHint().height())
                << name;
        } else if (qobject_cast<QAbstractButton*>(&widget) ||
                   qobject_cast<QAbstractSpinBox*>(&widget)) {
            EXPECT_GE(widget.width(), widget.sizeHint().width()) << name;
            EXPECT_GE(widget.height(), widget.sizeHint().height()) << name;
        } else if (auto* menu = qobject_cast<QComboBox*>(&widget)) {
            QStyleOptionComboBox option;
            option.initFrom(menu);
            option.subControls = QStyle::SC_All;
            const QRect text = menu->style()->subControlRect(QStyle::CC_ComboBox, &option,
                                                             QStyle::SC_ComboBoxEditField, menu);
            EXPECT_GE(text.width(), widestItem(*menu)) << name;
        }
    });
}

QString nameOf(QWidget& widget)
{
    QAccessibleInterface* accessible = QAccessible::queryAccessibleInterface(&widget);
    return accessible ? accessible->text(QAccessible::Name) : QString();
}

} // namespace

TEST_F(EditorForm, HasEveryOutlet)
{
    // All of them are pointers.
    using Outlets = std::array<const void*, sizeof(EditorOutlets) / sizeof(void*)>;
    const auto parts = std::bit_cast<Outlets>(outlets);
    for (std::size_t i = 0; i < parts.size(); ++i)
        EXPECT_NE(parts[i], nullptr) << "outlet " << i;
    QSet<const void*> different(parts.begin(), parts.end());
    EXPECT_EQ(different.size(), static_cast<qsizetype>(parts.size()));

    for (const auto& [stack, names] :
         {std::pair(outlets._filtersTabView, QStringList{"filters", "generators"}),
          std::pair(outlets._GLIFControlsTabView, QStringList{"dump"}),
          std::pair(outlets._GLIFColorControlsTabView,
                    QStringList{"color scheme", "color gradient"})})
        for (const QString& name : names)
            EXPECT_TRUE(pageOf(*stack, name)) << name.toStdString();
    // One segment at a time.
    outlets._windowTabSegmentButton2->click();
    EXPECT_FALSE(outlets._windowTabSegmentButton->isChecked());
}

TEST_F(EditorForm, CutsNothingOffInAnyLanguage)
{
    // Of all parameters of all filters, as the rows' labels show them.
    std::set<std::string> names;
    CIFMain plugIn;
    for (const std::string& identifier : plugIn.CIFAllFilterIdentifiers())
        if (const auto attributes = plugIn.CIFQueryAttributesForFilter(identifier))
            for (const auto& [key, value] : *attributes)
                if (const auto described = value.dictionary();
                    described && described->stringValue("CIAttributeClass") == "NSNumber")
                    names.insert(described->stringValue("CIAttributeDisplayName"));
    ASSERT_GT(names.size(), 20u);
    for (const std::string language : {"en", "de", "fr", "ja"}) {
        foundation::setLanguage(language);
        load();
        outlets._texturePopUpButton10->addItem(localizedString("Glide Reflected"));
        outlets._checkBox1->setText(localizedString("Preview"));
        const QSize least = window->minimumSizeHint();
        // Within 1280 by 720, and a screen of 1920 by 1080 at twice the scale has hardly less.
        EXPECT_LE(least.width(), 960) << language;
        EXPECT_LE(least.height(), 500) << language;
        show(least);
        for (QWidget* page : pages()) {
            showPage(*page);
            expectNothingCutOff(language + ", " + page->objectName().toStdString());
        }
        showPage(*pageOf(*outlets._filterControlsTabView, "0"));
        auto* label = window->findChild<QLabel*>("_labelTextField1");
        for (const std::string& name : names) {
            label->setText(localizedString(name) + u':');
            settle();
            EXPECT_GE(label->width(), label->sizeHint().width()) << language << ": " << name;
            // The column does not grow for it.
            EXPECT_LE(outlets._controlsView->width(), 360) << language << ": " << name;
        }
    }
}

TEST_F(EditorForm, NamesEveryControlForScreenReaders)
{
    for (QLabel* label : window->findChildren<QLabel*>())
        if (label->objectName().startsWith("_labelTextField"))
            label->setText(QString("Row %1:").arg(label->objectName().mid(15)));
    outlets._checkBox1->setText("Preview");
    int controls = 0;
    const auto widgets = window->findChildren<QWidget*>();
    for (QWidget* widget : widgets) {
        const bool control =
            (widget->focusPolicy() & Qt::TabFocus) != 0 || dynamic_cast<DecimalControl*>(widget) ||
            qobject_cast<QAbstractButton*>(widget) || qobject_cast<QProgressBar*>(widget);
        // Parts of the toolkit's own widgets have no names.
        if (!control || !widget->objectName().startsWith(u'_'))
            continue;
        ++controls;
        EXPECT_FALSE(nameOf(*widget).isEmpty()) << widget->objectName().toStdString();
    }
    EXPECT_GT(controls, 180);
    EXPECT_EQ(nameOf(*window->findChild<QWidget*>("_slider2in30")), "Row 2in30");
    EXPECT_EQ(nameOf(*window->findChild<QWidget*>("_plasmaSmoothStepper")), "Smoothness");
    EXPECT_EQ(nameOf(*window->findChild<QWidget*>("_plasmaSmoothTextField")), "Smoothness:");
}

TEST_F(EditorForm, LeadsTheKeyboardFromTopToBottom)
{
    outlets._undoButton->setEnabled(true);
    outlets._redoButton->setEnabled(true);
    show({1280, 720});
    for (QWidget* page : pages()) {
        showPage(*page);
        // Where Tab goes, in each of the three columns.
        std::array<std::vector<QWidget*>, 3> columns;
        QList<int> visited;
        QWidget* first = outlets._windowTabSegmentButton;
        for (QWidget* at = first;;) {
            if (at->isVisible() && at->isEnabled() && (at->focusPolicy() & Qt::TabFocus) &&
                at->objectName().startsWith(u'_') && !at->focusProxy())
                for (int i = 0; i < 3; ++i)
                    if (outlets._splitter->widget(i)->isAncestorOf(at)) {
                        columns[i].push_back(at);
                        visited.append(i);
                    }
            at = at->nextInFocusChain();
            if (at == first)
                break;
        }
        const std::string name = page->objectName().toStdString();
        EXPECT_EQ(columns[0].front(), first);
        EXPECT_EQ(columns[2].back(), outlets._buttonSet) << name;
        EXPECT_GE(columns[2].size(), 6U) << name;
        const auto bottomUp = [&](const QWidget* a, const QWidget* b) {
            const QRect one = placeOf(*a), two = placeOf(*b);
            return two.bottom() < one.top() ||
                   (two.right() < one.left() && one.top() <= two.bottom() &&
                    two.top() <= one.bottom());
        };
        for (const auto& column : columns)
            for (std::size_t i = 1; i < column.size(); ++i)
                EXPECT_FALSE(bottomUp(column[i - 1], column[i]))
                    << name << ": " << column[i - 1]->objectName().toStdString() << " before "
                    << column[i]->objectName().toStdString();
    }
    // The lists do not keep the keyboard.
    EXPECT_FALSE(outlets._tableView->tabKeyNavigation());
    EXPECT_FALSE(outlets._GLIFTableView->tabKeyNavigation());
}

TEST_F(EditorForm, StaysAsItIsWhenTheBusyViewComes)
{
    show(window->minimumSizeHint());
    EXPECT_FALSE(outlets._busyView->isVisible());
    const auto places = [&] {
        QList<QRect> all;
        for (const QWidget* part : std::initializer_list<const QWidget*>{
                 outlets._controlsView, outlets._scrollView, outlets._scaleSlider})
            all.append(placeOf(*part));
        return all;
    };
    const QList<QRect> before = places();
    outlets._busyView->show();
    outlets._statusLabel->setText("A long text that does not fit into the bar by any means");
    settle();
    EXPECT_EQ(places(), before);
}

TEST_F(EditorForm, ScrollsTheControlsWhenTheWindowIsLow)
{
    auto* area = window->findChild<QScrollArea*>("_controlsScrollView");
    ASSERT_TRUE(area);
    showPage(*pageOf(*outlets._GLIFControlsTabView, "GLIF_ColourBars"));
    show({window->minimumSizeHint().width(), window->minimumSizeHint().height()});
    EXPECT_GT(area->verticalScrollBar()->maximum(), 0);
    EXPECT_LE(area->widget()->width(), area->viewport()->width());
    EXPECT_TRUE(window->rect().contains(placeOf(*outlets._buttonSet)));
    // As high as its own page, not as the highest.
    const int high = area->verticalScrollBar()->maximum();
    showPage(*pageOf(*outlets._GLIFControlsTabView, "dump"));
    EXPECT_LT(area->verticalScrollBar()->maximum(), high);
    show({1280, 720});
    showPage(*pageOf(*outlets._GLIFControlsTabView, "GLIF_ColourBars"));
    EXPECT_EQ(area->verticalScrollBar()->maximum(), 0);
}

TEST_F(EditorForm, IsMirroredForTheOtherReadingDirection)
{
    QApplication::setLayoutDirection(Qt::RightToLeft);
    load();
    show({1280, 720});
    const auto left = [&](const char* name) {
        return placeOf(*window->findChild<QWidget*>(name)).x();
    };
    EXPECT_GT(left("_tableView"), left("_scrollView"));
    EXPECT_GT(left("_scrollView"), left("_slider1"));
    EXPECT_GT(left("_labelTextField1"), left("_textField1"));
    EXPECT_GT(left("_textField1"), left("_stepper1"));
    // Latin text, too, begins on the right.
    auto* label = window->findChild<QLabel*>("_labelTextField1");
    EXPECT_TRUE(label->alignment().testFlag(Qt::AlignRight));
    EXPECT_TRUE(label->alignment().testFlag(Qt::AlignAbsolute));
}

// Each of the signs can be told from the others, on the button it stands on.
TEST_F(EditorForm, ShowsASignOnEverySmallButton)
{
    show({1280, 720});
    QList<QImage> seen;
    forEachShown([&](QWidget& widget) {
        if (!widget.inherits("editor::GlyphButton"))
            return;
        EXPECT_TRUE(isGlyph(widget.property("glyph").toString()))
            << widget.objectName().toStdString();
        widget.setEnabled(true);
        const QImage image = widget.grab().toImage();
        EXPECT_FALSE(seen.contains(image)) << widget.objectName().toStdString();
        seen.append(image);
    });
    EXPECT_EQ(seen.size(), 12);
    // The star is filled, and the eye struck out, according to the state: more than the frame of a
    // pressed button changes.
    for (QAbstractButton* button :
         {static_cast<QAbstractButton*>(outlets._favouriteButton), outlets._previewButton}) {
        const auto sign = [&](bool on) {
            button->setChecked(on);
            const QImage image = button->grab().toImage();
            int dark = 0;
            for (int y = 0; y < image.height(); ++y)
                for (int x = 0; x < image.width(); ++x)
                    dark += image.pixelColor(x, y).lightness() < 90;
            return dark;
        };
        EXPECT_NE(sign(true), sign(false)) << button->objectName().toStdString();
    }
}
