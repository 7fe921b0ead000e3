// Every entry's controls in the real window: what they show, what they hand over, and what they do
// to the picture.
#include "editor/CCColorSlider.h"
#include "editor/ColorWell.h"
#include "editor/DecimalControl.h"
#include "platform/foundation/Bundle.h"
#include "plugin/Resizing.h"
#include "tests/editor/EditorRun.h"

#include <fstream>
#include <map>
#include <set>
#include <sstream>

namespace {

using editor::ColorPanel;
using editor::ColorWell;
using editor::DecimalControl;
using foundation::Color;
using foundation::Dictionary;
using foundation::Number;
using foundation::Value;

class ParameterControls : public EditorRun {
protected:
    QWidget& page(QStackedWidget* pages) { return *pages->currentWidget(); }

    // The three controls that are bound to a key and to be seen.
    std::vector<DecimalControl*> controlsOf(const std::string& key)
    {
        std::vector<DecimalControl*> found;
        for (QWidget* widget : window().findChildren<QWidget*>())
            if (auto* control = dynamic_cast<DecimalControl*>(widget))
                if (control->representedObject == key && widget->isVisible())
                    found.push_back(control);
        return found;
    }
    template <class Control>
    Control& controlOf(const std::string& key)
    {
        for (DecimalControl* control : controlsOf(key))
            if (auto* wanted = dynamic_cast<Control*>(control))
                return *wanted;
        throw std::runtime_error("no control for " + key);
    }
    void expectAgreement(const std::string& key, double value)
    {
        const auto controls = controlsOf(key);
        EXPECT_EQ(controls.size(), 3u) << key;
        for (const DecimalControl* control : controls)
            EXPECT_FLOAT_EQ(control->doubleValue(), value) << key;
    }
    const Number& numberOf(const std::string& key)
    {
        const Number* number = controller.attributes()[key].number();
        if (!number)
            throw std::runtime_error("no number under " + key);
        return *number;
    }
    void press(const std::string& key, Qt::Key keyboardKey, int times = 1)
    {
        for (int i = 0; i < times; ++i)
            QTest::keyClick(&controlOf<editor::ParameterSlider>(key), keyboardKey);
        waitForResult();
    }
    static void pick(QComboBox& menu, int item)
    {
        menu.setCurrentIndex(item);
        Q_EMIT menu.activated(item);
    }
    static void pickColor(const QColor& color)
    {
        ColorPanel::sharedColorPanel().dialog().setCurrentColor(color);
    }
    imaging::BitmapRef shown() { return pixelsOf(controller.outputImage()); }
    QUndoStack& steps() { return view().undoManager(); }

    // The controls of the entry from the top to the bottom, then the attributes.
    std::string describedEntry()
    {
        const bool filters = controller.selectedTab() == "filters";
        std::ostringstream text;
        text << controller.filterName() << '\n';
        for (QStackedWidget* pages :
             {filters ? parts()._filterControlsTabView : parts()._GLIFControlsTabView,
              filters ? nullptr : parts()._GLIFColorControlsTabView})
            if (pages)
                text << "  page " << page(pages).objectName().toStdString() << '\n';
        std::map<std::pair<int, int>, std::string> lines; // by place
        for (QWidget* widget : parts()._controlsView->findChildren<QWidget*>())
            if (widget->isVisible())
                if (const std::string line = describedControl(*widget); !line.empty()) {
                    const QPoint at = widget->mapTo(&window(), QPoint());
                    lines[{at.y(), at.x()}] = line;
                }
        for (const auto& [place, line] : lines)
            text << "    " << line << '\n';
        for (const auto& [key, value] : controller.attributes())
            text << "  " << key << " = " << describedValue(value) << '\n';
        return text.str();
    }

private:
    static std::string describedColor(const std::optional<Color>& c)
    {
        std::ostringstream text;
        if (c)
            text << c->red << ", " << c->green << ", " << c->blue << ", " << c->alpha;
        return c ? text.str() : "no color";
    }
    static std::string describedValue(const Value& value)
    {
        std::ostringstream text;
        if (const Number* number = value.number())
            text << number->doubleValue()
                 << (number->kind() == Number::Kind::Integer ? ", whole" : "");
        else if (const Color* color = value.color())
            text << describedColor(*color);
        else if (const auto* point = value.get<foundation::Point>())
            text << point->x << ", " << point->y;
        else
            text << (value.picture() ? "a picture" : "something else");
        return text.str();
    }
    std::string describedControl(QWidget& widget)
    {
        std::ostringstream text;
        if (auto* slider = dynamic_cast<editor::ParameterSlider*>(&widget)) {
            const std::string& key = slider->representedObject;
            expectAgreement(key, slider->doubleValue());
            text << key << ": " << slider->minValue() << " to " << slider->maxValue() << " from "
                 << slider->doubleValue() << (slider->takesWholeNumbers() ? ", whole" : "")
                 << (widget.isEnabled() ? "" : ", disabled");
            for (DecimalControl* control : controlsOf(key))
                EXPECT_EQ(control->widget().toolTip().toStdString(),
                          slider->widget().toolTip().toStdString());
        } else if (auto* well = dynamic_cast<ColorWell*>(&widget)) {
            text << well->toolTip().toStdString() << " color " << describedColor(well->color());
        } else if (auto* menu = qobject_cast<QComboBox*>(&widget)) {
            text << menu->itemData(0).toString().toStdString() << ": " << menu->currentIndex()
                 << " of";
            for (int i = 0; i < menu->count(); ++i)
                text << " '" << menu->itemText(i).toStdString() << '\'';
        } else if (auto* range = dynamic_cast<CCColorSlider*>(&widget)) {
            text << "marks " << range->getRangeMinValue() << " and " << range->getRangeMaxValue();
        } else if (auto* box = qobject_cast<QCheckBox*>(&widget)) {
            text << (box->isChecked() ? "[x] " : "[ ] ") << box->text().toStdString();
        } else if (auto* label = qobject_cast<QLabel*>(&widget)) {
            text << '"' << label->text().toStdString() << '"';
        }
        return text.str();
    }
};

bool differ(const imaging::BitmapRef& a, const imaging::BitmapRef& b)
{
    return a->width() != b->width() || a->height() != b->height() ||
           support::compare(*a, *b).largest != 0;
}

} // namespace

// What a person sees of every entry, and what the plug-in is handed before anything is moved. The
// list agrees with what filters and generators advertise.
TEST_F(ParameterControls, OfEveryEntryAreWhatTheListSays)
{
    std::ostringstream all;
    const auto describeEntries = [&](std::uint32_t effectsSet) {
        for (const std::string& identifier : entriesOf(effectsSet)) {
            choose(identifier);
            all << describedEntry();
        }
    };
    edit(photo(), [&] { describeEntries(0); });
    generate({96, 64}, [&] { describeEntries(1); });
    std::ofstream(CIF_TEST_OUTPUT "/editor-controls.txt") << all.str();
    std::ostringstream wanted;
    wanted << std::ifstream(CIF_TEST_DATA "/golden/editor-controls.txt").rdbuf();
    EXPECT_TRUE(all.str() == wanted.str()) << "see " CIF_TEST_OUTPUT "/editor-controls.txt";
}

namespace {

class MovedControls : public ParameterControls {
protected:
    // From the first values to both ends of the range and a place between; notes it when the
    // picture is always the same.
    void moveRow(const std::string& key)
    {
        controller.resetEntry();
        waitForResult();
        const auto before = shown();
        bool changes = false;
        for (const auto& [place, times] :
             {std::pair(Qt::Key_End, 1), {Qt::Key_Home, 1}, {Qt::Key_PageUp, 4}}) {
            press(key, place, times);
            const double value = controlOf<editor::ParameterSlider>(key).doubleValue();
            EXPECT_FLOAT_EQ(numberOf(key).doubleValue(), value) << key;
            expectAgreement(key, value);
            changes |= differ(before, shown());
        }
        EXPECT_EQ(numberOf(key).kind(), Number::Kind::Float) << key;
        if (!changes)
            unchanged.insert(controller.filterName() + " " + key);
        // The plug-in object was given these very values.
        EXPECT_TRUE(
            same(controller.outputImage(), applied(controller.filterName(), controller.attributes(),
                                                   controller.picture(), controller.randomSeed())))
            << key;
        ++moved;
    }
    void moveRows()
    {
        std::set<std::string> keys;
        for (QWidget* widget : window().findChildren<QWidget*>())
            if (auto* control = dynamic_cast<DecimalControl*>(widget);
                control && widget->isVisible() && !control->representedObject.empty())
                keys.insert(control->representedObject);
        for (const std::string& key : keys)
            moveRow(key);
    }
    // To every item but "Other...".
    void moveMenu(QComboBox& menu)
    {
        controller.resetEntry();
        waitForResult();
        const bool isBrush = &menu == parts()._dabsTypePopUpButton;
        const std::string key = isBrush ? "GLIFType" : menu.itemData(0).toString().toStdString();
        auto before = shown();
        for (int i = menu.count() - 1; i >= 0; --i) {
            const QString item = menu.itemText(i);
            if (menu.currentIndex() == i || item.isEmpty() || item == "Other...")
                continue;
            pick(menu, i);
            waitForResult();
            EXPECT_EQ(numberOf(key).kind(), Number::Kind::Integer) << key;
            EXPECT_EQ(numberOf(key).intValue(), i) << key;
            if (!differ(before, shown()))
                unchanged.insert(controller.filterName() + " " + key + "=" + std::to_string(i));
            before = shown();
            ++moved;
        }
    }

    std::set<std::string> unchanged;
    int moved = 0;
};

} // namespace

TEST_F(MovedControls, OfFiltersHandOverTheirValuesAndChangeThePicture)
{
    edit(photo(), [&] {
        for (const std::string& identifier : entriesOf(0)) {
            SCOPED_TRACE(identifier);
            choose(identifier);
            moveRows();
        }
    });
    EXPECT_EQ(moved, 136);
    // Rings, lenses and tiles that start larger than the small picture. A large one changes.
    const std::set<std::string> needRoom = {
        "CICircularWrap inputAngle", "CITorusLensDistortion inputRadius",
        "CITorusLensDistortion inputRefraction", "CITriangleTile inputAngle"};
    EXPECT_EQ(unchanged, needRoom);
    unchanged.clear();
    edit(*plugin::resized(photo(), 720, 480, false), [&] {
        for (const std::string& control : needRoom) {
            choose(control.substr(0, control.find(' ')));
            moveRow(control.substr(control.find(' ') + 1));
        }
    });
    EXPECT_EQ(unchanged, std::set<std::string>());
}

TEST_F(MovedControls, OfGeneratorsHandOverTheirValuesAndChangeThePicture)
{
    generate({96, 64}, [&] {
        for (const std::string& identifier : entriesOf(1)) {
            SCOPED_TRACE(identifier);
            choose(identifier);
            moveRows();
            for (QComboBox* menu : page(parts()._GLIFControlsTabView).findChildren<QComboBox*>())
                moveMenu(*menu);
        }
    });
    EXPECT_EQ(moved, 109);
    // Two numbers mean the same kind of plasma.
    EXPECT_EQ(unchanged, std::set<std::string>{"GLIF_Plasma GLIFShapesType=2"});
}

TEST_F(ParameterControls, OfARowAgreeAtOnce)
{
    edit(photo(), [&] {
        choose("CIBoxBlur");
        auto& field = controlOf<editor::NumberField>("inputRadius");
        auto& stepper = controlOf<editor::Stepper>("inputRadius");
        // Beyond the range is the end of it.
        for (const auto& [typed, taken] : {std::pair("999", 20.0), {"12.5", 12.5}}) {
            type(field, typed);
            expectAgreement("inputRadius", taken);
            EXPECT_EQ(numberOf("inputRadius").doubleValue(), taken);
        }
        stepper.stepBy(1);
        expectAgreement("inputRadius", 12.5 + stepper.increment());
        EXPECT_FLOAT_EQ(numberOf("inputRadius").doubleValue(), 12.5 + stepper.increment());
    });
}

TEST_F(ParameterControls, KeepTheirValuesFromEntryToEntryAndRunToRun)
{
    edit(photo(), [&] {
        choose("CIColorControls");
        press("inputContrast", Qt::Key_End);
        choose("CIWhitePointAdjust");
        parts()._colorWell1->activate();
        pickColor(QColor::fromRgbF(0.25, 0.5, 0.75));
        EXPECT_EQ(parts()._colorWell1->color(), *controller.attributes()["inputColor"].color());
        choose("CIColorControls");
        expectAgreement("inputContrast", 4);
        expectAgreement("inputSaturation", 1.5);
        choose("CIWhitePointAdjust");
        EXPECT_NEAR(parts()._colorWell1->color()->blue, 0.75, 0.01);
    });
    generate({96, 64}, [&] {
        choose("GLIF_Foam");
        pick(*parts()._colorSchemePopUpButton, 1);
        choose("GLIF_Plasma");
        choose("GLIF_Foam");
        EXPECT_EQ(parts()._colorSchemePopUpButton->currentIndex(), 1);
    });
    edit(photo(), [&] {
        choose("CIColorControls");
        expectAgreement("inputContrast", 4);
    });
}

TEST_F(ParameterControls, ColorsComeFromTheWellThatIsActive)
{
    edit(photo(), [&] {
        choose("CIFalseColor");
        ColorWell& first = *parts()._colorWell1;
        ColorWell& second = *parts()._colorWell2;
        const Dictionary before = controller.attributes();
        controller.changeColor(Color::rgb(1, 0, 0));
        EXPECT_EQ(controller.attributes(), before) << "no well is active";

        second.activate();
        pickColor(Qt::green);
        waitForResult();
        EXPECT_EQ(controller.attributes()["inputColor1"], Value(Color::rgb(0, 1, 0)));
        EXPECT_EQ(controller.attributes()["inputColor0"], before["inputColor0"]);
        first.activate();
        EXPECT_FALSE(second.isActive());
        pickColor(Qt::blue);
        EXPECT_EQ(controller.attributes()["inputColor0"], Value(Color::rgb(0, 0, 1)));
        EXPECT_EQ(first.color(), Color::rgb(0, 0, 1));

        // A well that is gone takes nothing.
        choose("CIColorInvert");
        EXPECT_FALSE(first.isActive());
        controller.changeColor(Color::rgb(1, 0, 0));
        EXPECT_FALSE(controller.attributes().contains("inputColor0"));
        ColorPanel::sharedColorPanel().close();
    });
}

TEST_F(ParameterControls, GeneratorsTakeColorsFromTheirPages)
{
    generate({96, 64}, [&] {
        choose("GLIF_TwistPolygons");
        CCColorSlider& range = *parts()._colorGradientSlider;
        range.moveMarkTo(CCColorSlider::Mark::Start, 0.25);
        range.moveMarkTo(CCColorSlider::Mark::End, 0.5);
        EXPECT_NEAR(numberOf("GLIFColorRangeMin").doubleValue(), 0.25, 0.01);
        EXPECT_NEAR(numberOf("GLIFColorRangeMax").doubleValue(), 0.5, 0.01);
        waitForResult();

        const auto white = shown();
        parts()._useBackColorButton2->click();
        waitForResult();
        EXPECT_EQ(controller.attributes()["GLIFUseBackgroundColor"], Value(true));
        EXPECT_EQ(controller.attributes()["GLIFBackgroundColor"], Value(Color::white()));
        const auto over = shown();
        EXPECT_TRUE(differ(white, over));
        parts()._backColorWell2->activate();
        pickColor(Qt::red);
        waitForResult();
        EXPECT_EQ(controller.attributes()["GLIFBackgroundColor"], Value(Color::rgb(1, 0, 0)));
        EXPECT_TRUE(differ(over, shown()));
        ColorPanel::sharedColorPanel().close();

        choose("GLIF_Foam");
        CCColorSlider& key = *parts()._colorSchemeSlider;
        key.moveMarkTo(CCColorSlider::Mark::Start, 0.75);
        EXPECT_NEAR(numberOf("GLIFSchemeKeyColor").doubleValue(), 0.75, 0.01);
        pick(*parts()._colorSchemePopUpButton, 3);
        EXPECT_EQ(numberOf("GLIFColorScheme").intValue(), 3);
        // Without a colour of its own there is none to hand over.
        choose("GLIF_Parquet");
        parts()._useBackColorButton1->click();
        EXPECT_EQ(controller.attributes()["GLIFUseBackgroundColor"], Value(true));
        EXPECT_FALSE(controller.attributes().contains("GLIFBackgroundColor"));
    });
}

namespace {

// The sheet that asks for a file.
QFileDialog& panelOf(QMainWindow& window)
{
    for (auto* panel : window.findChildren<QFileDialog*>())
        if (panel->isVisible())
            return *panel;
    throw std::runtime_error("no panel is open");
}

int otherItem(const QComboBox& menu)
{
    return menu.findText("Other...");
}

} // namespace

TEST_F(ParameterControls, TakeATextureOrABrushFromAFile)
{
    const TemporaryFolder folder;
    QImage grey(16, 16, QImage::Format_RGB888);
    grey.fill(QColor(200, 200, 200));
    const QString good = QString::fromStdString((folder.path() / "grey.png").string());
    ASSERT_TRUE(grey.save(good));
    const QString bad = QString::fromStdString(folder.write("bad.png", "not a picture").string());

    const auto choosesFile = [&](const QString& file) {
        QFileDialog& panel = panelOf(window());
        EXPECT_EQ(panel.windowModality(), Qt::WindowModal);
        QTest::qWait(0);
        panel.selectFile(file);
        panel.findChild<QLineEdit*>("fileNameEdit")->setText(file);
        QMetaObject::invokeMethod(&panel, "accept");
        waitFor([&] { return !panel.isVisible(); });
        waitForResult();
    };
    edit(photo(), [&] {
        choose("CIGlassDistortion");
        QComboBox& menu = *parts()._texturePopUpButton10;
        const auto before = shown();
        pick(menu, 1);
        waitForResult();
        EXPECT_TRUE(differ(before, shown()));
        const PictureRef second = controller.textureImage();
        pick(menu, otherItem(menu));
        panelOf(window()).reject();
        EXPECT_EQ(menu.currentIndex(), otherItem(menu)) << "stays there";
        EXPECT_EQ(controller.attributes()["CIFinputTexture"].picture(), second);
        const auto with = shown();
        pick(menu, otherItem(menu));
        choosesFile(good);
        EXPECT_EQ(controller.textureImage()->size(), (foundation::Size{16, 16}));
        EXPECT_EQ(controller.attributes()["CIFinputTexture"].picture(), controller.textureImage());
        EXPECT_TRUE(differ(with, shown()));
        const PictureRef own = controller.textureImage();
        pick(menu, otherItem(menu));
        choosesFile(bad);
        EXPECT_EQ(controller.textureImage(), own);
        EXPECT_TRUE(parts()._statusLabel->text().contains("bad.png"));
    });
    generate({96, 64}, [&] {
        choose("GLIF_Dabs");
        QComboBox& menu = *parts()._dabsTypePopUpButton;
        const PictureRef first = controller.brushImage();
        EXPECT_EQ(controller.attributes()["GLIFBrush"].picture(), first);
        pick(menu, otherItem(menu));
        choosesFile(good);
        const PictureRef own = controller.brushImage();
        EXPECT_EQ(controller.attributes()["GLIFBrush"].picture(), own);
        // Grey became black, as opaque as it was bright.
        EXPECT_EQ(own->bitmap()->rowAs<std::uint8_t>(3)[0], 0);
        EXPECT_EQ(own->bitmap()->rowAs<std::uint8_t>(3)[3], 200);
        pick(menu, otherItem(menu));
        choosesFile(bad);
        EXPECT_EQ(controller.brushImage(), own);
        pick(menu, otherItem(menu));
        panelOf(window()).reject();
        waitForResult();
        EXPECT_EQ(menu.currentIndex(), 0);
        EXPECT_EQ(controller.brushImage(), first);
        EXPECT_EQ(controller.attributes()["GLIFBrush"].picture(), first);
    });
}

TEST_F(ParameterControls, MaterialsHaveNoFileOfTheirOwn)
{
    edit(photo(), [&] {
        choose("CIFShadingFilter");
        QComboBox& menu = *parts()._texturePopUpButton20;
        EXPECT_EQ(otherItem(menu), -1);
        EXPECT_EQ(static_cast<std::size_t>(menu.count()),
                  controller.plugIn()->CIFShadingMaterialNames()->size());
        auto before = shown();
        for (int i = 1; i < menu.count(); ++i) {
            pick(menu, i);
            waitForResult();
            EXPECT_TRUE(differ(before, shown())) << menu.itemText(i).toStdString();
            before = shown();
        }
        EXPECT_EQ(controller.attributes()["CIFinputShadingImage"].picture(),
                  controller.shadedMaterialImage());
    });
}

TEST_F(ParameterControls, CropOnlySelectsAndReturnAccepts)
{
    edit(photo(), [&] {
        ASSERT_TRUE(QTest::qWaitForWindowActive(&window()));
        const QSignalSpy accepts(parts()._buttonSet, &QAbstractButton::clicked);
        choose("CIColorInvert");
        EXPECT_EQ(controller.editMode(), 1);
        EXPECT_FALSE(qobject_cast<QPushButton*>(parts()._buttonSet)->isDefault());
        QTest::keyClick(&window(), Qt::Key_Return);
        EXPECT_EQ(accepts.count(), 0);
        choose("Crop");
        EXPECT_EQ(controller.pointingMode(), 0);
        EXPECT_TRUE(same(controller.outputImage(), controller.picture()));
        EXPECT_TRUE(qobject_cast<QPushButton*>(parts()._buttonSet)->isDefault());
        view().setSelection({10, 10, 30, 20});
        // The selection comes back with the entry.
        choose("CIHueAdjust");
        choose("Crop");
        EXPECT_TRUE(controller.isSelected());
        ASSERT_TRUE(controller.takeStep({"CIColorInvert", {}, {}, true}));
        controller.undoButton();
        choose("CIHueAdjust");
        choose("Crop");
        EXPECT_EQ(controller.getSelectedRect(), (foundation::Rect{10, 10, 30, 20}));
        QTest::keyClick(&window(), Qt::Key_Return);
        EXPECT_EQ(accepts.count(), 1);
    });
}

TEST_F(ParameterControls, AreNamedInTheUsersLanguage)
{
    std::set<std::string> alike; // to the English names
    CIFMain plugIn;
    foundation::setLanguage("de");
    edit(photo(), [&] {
        for (const std::string& identifier : entriesOf(0)) {
            choose(identifier);
            const auto described = plugIn.CIFQueryAttributesForFilter(identifier);
            for (auto* slider : window().findChildren<editor::ParameterSlider*>()) {
                const std::string& key = slider->representedObject;
                if (!slider->isVisible())
                    continue;
                const std::string name = slider->accessibleName().toStdString();
                EXPECT_EQ(name, controller.labelOfKey(key).toStdString());
                if (name == (*described)[key].dictionary()->stringValue("CIAttributeDisplayName"))
                    alike.insert(name);
            }
        }
        EXPECT_EQ(alike, (std::set<std::string>{"EV", "Radius"}));
        choose("CIGlassDistortion");
        EXPECT_EQ(parts()._texturePopUpButton10->currentText(),
                  QString::fromStdString(foundation::localizedString(
                      controller.plugIn()->CIFGlassTextureNames()->front())));
        press("inputScale", Qt::Key_Home);
        EXPECT_EQ(steps().undoText(), "Maßstab ändern");
        choose("CIColorMonochrome");
        EXPECT_EQ(parts()._labelColorWell1->text(), "Farbe:");
    });
    generate({96, 64}, [&] {
        choose("GLIF_Triangles");
        EXPECT_EQ(parts()._useBackColorButton1->text(), "Linienfarbe:");
    });
    foundation::setLanguage("C");
}

TEST_F(ParameterControls, UndoLeadsBackStepByStep)
{
    edit(photo(), [&] {
        choose("CIColorControls");
        // A drag is one step, whatever it passes.
        auto& slider = controlOf<editor::ParameterSlider>("inputSaturation");
        const QPoint middle = slider.rect().center();
        QTest::mousePress(&slider, Qt::LeftButton, {}, middle);
        for (int dx = 5; dx <= 40; dx += 5)
            QTest::mouseMove(&slider, middle + QPoint(dx, 0));
        QTest::mouseRelease(&slider, Qt::LeftButton, {}, middle + QPoint(40, 0));
        const double dragged = slider.doubleValue();
        EXPECT_NE(dragged, 1.5);
        EXPECT_EQ(steps().count(), 1);
        EXPECT_EQ(steps().undoText(), "Change Saturation");
        // Another press of the same control is another.
        const std::tuple<const char*, Qt::Key, int> presses[] = {
            {"inputSaturation", Qt::Key_Home, 2},
            {"inputSaturation", Qt::Key_PageUp, 2},
            {"inputContrast", Qt::Key_End, 3},
            {"inputContrast", Qt::Key_Home, 3}};
        for (const auto& [key, keyboardKey, count] : presses) {
            press(key, keyboardKey);
            EXPECT_EQ(steps().count(), count) << key;
        }
        // Until there was a pause.
        QTimer& pause = *controller.findChild<QTimer*>("changePause");
        pause.setInterval(0);
        press("inputBrightness", Qt::Key_End);
        waitFor([&] { return !pause.isActive(); });
        press("inputBrightness", Qt::Key_Home);
        EXPECT_EQ(steps().count(), 5);
        pause.setInterval(1000);

        const auto last = shown();
        const std::pair<const char*, double> wayBack[] = {{"inputBrightness", 1},
                                                          {"inputBrightness", 0},
                                                          {"inputContrast", 1.3},
                                                          {"inputSaturation", dragged},
                                                          {"inputSaturation", 1.5}};
        for (const auto& [key, value] : wayBack) {
            controller.undoButton();
            expectAgreement(key, value);
        }
        EXPECT_FALSE(parts()._undoButton->isEnabled());
        while (steps().canRedo())
            controller.redoButton();
        waitForResult();
        EXPECT_FALSE(differ(last, shown()));

        // A change that leads nowhere leaves no step.
        choose("CIGammaAdjust");
        const int count = steps().count();
        press("inputPower", Qt::Key_Right);
        press("inputPower", Qt::Key_Left);
        EXPECT_EQ(steps().count(), count);
    });
}

TEST_F(ParameterControls, UndoChoosesTheEntryThatWasChanged)
{
    edit(photo(), [&] {
        choose("CIBoxBlur");
        press("inputRadius", Qt::Key_End);
        choose("CIGlassDistortion");
        pick(*parts()._texturePopUpButton10, 2);
        choose("CIFalseColor");
        parts()._colorWell1->activate();
        pickColor(Qt::green);
        ColorPanel::sharedColorPanel().close();
        choose("CITwirlDistortion");
        // The centre, by a drag.
        view().mouseDown({20, 20});
        view().mouseDragged({30, 25});
        view().mouseDragged({40, 30});
        view().mouseUp();
        EXPECT_EQ(steps().undoText(), "Move Center");
        EXPECT_EQ(controller.attributes()["CIFinputCenter"], Value(foundation::Point{40, 30}));
        EXPECT_EQ(steps().count(), 4);
        choose("Crop");

        controller.undoButton();
        EXPECT_EQ(controller.filterName(), "CITwirlDistortion");
        EXPECT_EQ(controller.attributes()["CIFinputCenter"], Value(foundation::Point{48, 32}));
        EXPECT_EQ(view().centerHandle(), (foundation::Point{48, 32}));
        controller.undoButton();
        EXPECT_EQ(controller.filterName(), "CIFalseColor");
        EXPECT_EQ(*parts()._colorWell1->color(), Color::rgb(0.3f, 0, 0));
        controller.undoButton();
        EXPECT_EQ(controller.filterName(), "CIGlassDistortion");
        EXPECT_EQ(parts()._texturePopUpButton10->currentIndex(), 0);
        controller.undoButton();
        EXPECT_EQ(controller.filterName(), "CIBoxBlur");
        expectAgreement("inputRadius", 7);
        EXPECT_EQ(parts()._filtersGroupPopUpButton30->currentData().toString(), "CIBoxBlur");
        EXPECT_FALSE(steps().canUndo());
        for (int i = 0; i < 4; ++i)
            controller.redoButton();
        EXPECT_EQ(controller.attributes()["CIFinputCenter"], Value(foundation::Point{40, 30}));
        choose("CIBoxBlur");
        expectAgreement("inputRadius", 20);
        choose("CIGlassDistortion");
        EXPECT_EQ(parts()._texturePopUpButton10->currentIndex(), 2);
    });
}

TEST_F(ParameterControls, ShareTheStepsOfGenerate)
{
    generate({96, 64}, [&] {
        choose("GLIF_Foam");
        const auto first = shown();
        const std::uint32_t seed = controller.randomSeed();
        press("GLIFSize", Qt::Key_Home);
        const auto small = shown();
        controller.generateWithSeed(77);
        waitForResult();
        pick(part<QComboBox>("_foamFigurePopUpButton"), 1);
        waitForResult();
        EXPECT_EQ(steps().count(), 3);
        controller.undoButton();
        EXPECT_EQ(numberOf("GLIFIdFigure").intValue(), 0);
        EXPECT_EQ(controller.randomSeed(), 77u);
        controller.undoButton();
        waitForResult();
        EXPECT_EQ(controller.randomSeed(), seed);
        EXPECT_FALSE(differ(small, shown()));
        controller.undoButton();
        waitForResult();
        EXPECT_FALSE(differ(first, shown()));
        expectAgreement("GLIFSize", 62);
        controller.redoButton();
        controller.redoButton();
        EXPECT_EQ(controller.randomSeed(), 77u);
        expectAgreement("GLIFSize", 10);
        // Another generator begins anew; a filter does not.
        choose("GLIF_Plasma");
        EXPECT_EQ(steps().count(), 0);
        press("GLIFSmoothness", Qt::Key_End);
        controller.selectTab("filters");
        choose("CIHueAdjust");
        EXPECT_EQ(steps().count(), 1);
        controller.undoButton();
        EXPECT_EQ(controller.selectedTab(), "generators");
        EXPECT_EQ(controller.filterName(), "GLIF_Plasma");
        expectAgreement("GLIFSmoothness", 5);
        EXPECT_TRUE(steps().canRedo());
    });
}

TEST_F(ParameterControls, ResetBringsBackTheFirstValues)
{
    edit(photo(), [&] {
        choose("CIGlassDistortion");
        const Dictionary first = controller.attributes();
        press("inputScale", Qt::Key_End);
        pick(*parts()._texturePopUpButton10, 3);
        view().mouseDown({20, 20});
        view().mouseUp();
        choose("CIHueAdjust");
        choose("CIGlassDistortion");
        expectAgreement("inputScale", 500);
        click(parts()._resetButton);
        waitForResult();
        EXPECT_EQ(controller.attributes(), first);
        EXPECT_EQ(steps().undoText(), "Reset Values");
        controller.undoButton();
        expectAgreement("inputScale", 500);
        EXPECT_EQ(parts()._texturePopUpButton10->currentIndex(), 3);
        EXPECT_EQ(controller.attributes()["CIFinputCenter"], Value(foundation::Point{20, 20}));

        // One value, by a double click on its label.
        choose("CITorusLensDistortion");
        press("inputWidth", Qt::Key_Home);
        press("inputRadius", Qt::Key_Home);
        QTest::mouseDClick(&part<QLabel>("_labelTextField2"), Qt::LeftButton);
        expectAgreement("inputWidth", 80);
        expectAgreement("inputRadius", 0);
        EXPECT_EQ(steps().undoText(), "Reset Width");
        controller.resetValue("inputNothing");
        controller.resetValue("");
        EXPECT_EQ(steps().undoText(), "Reset Width");
        controller.resetValue("inputCenter");
        EXPECT_EQ(controller.attributes()["CIFinputCenter"], Value(foundation::Point{48, 32}));
    });
    generate({96, 64}, [&] {
        choose("GLIF_Plasma");
        parts()._colorGradientSlider->moveMarkTo(CCColorSlider::Mark::End, 0.75);
        press("GLIFSmoothness", Qt::Key_End);
        QTest::mouseDClick(&part<QLabel>("_plasmaSmoothLabel"), Qt::LeftButton);
        expectAgreement("GLIFSmoothness", 5);
        controller.resetValue("GLIFColorRangeMin");
        EXPECT_FLOAT_EQ(parts()._colorGradientSlider->getRangeMaxValue(), 0.28);
    });
}
