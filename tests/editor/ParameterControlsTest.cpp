// Every entry's controls in the real window: what they show, what they hand over, and what they do
// to the picture.
#include "editor/CCColorSlider.h"
#include "editor/ColorWell.h"
#include "editor/DecimalControl.h"
#include "platform/foundation/Bundle.h"
#include "plugin/Resizing.h"
#include "tests/editor/EditorRun.h"

#include <QCheckBox>
#include <QColorDialog>
#include <QComboBox>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QStackedWidget>
#include <QTableView>

#include <algorithm>
#include <cmath>
#include <map>
#include <set>

namespace {

using editor::ColorPanel;
using editor::ColorWell;
using editor::DecimalControl;
using foundation::Color;
using foundation::Dictionary;
using foundation::DictionaryRef;
using foundation::Number;
using foundation::Value;

// One parameter of a page, as the description and the catalogue have it.
struct Row {
    std::string key, label;
    double minimum, maximum, start;
};

struct Entry {
    std::string identifier;
    std::string page;
    std::vector<Row> rows;
    std::vector<std::pair<std::string, Color>> colors;
};

std::vector<DictionaryRef> descriptorsOf(const foundation::ArrayRef& categories)
{
    std::vector<DictionaryRef> all;
    for (const Value& category : *categories) {
        const auto entries = (*category.dictionary())["CIFFilterList"].array();
        for (const Value& value : *entries) {
            const DictionaryRef entry = value.dictionary();
            if (const auto members = (*entry)["DESC_LIST"].array())
                for (const Value& member : *members)
                    all.push_back(member.dictionary());
            else
                all.push_back(entry);
        }
    }
    return all;
}

Entry filterEntry(CIFMain& plugIn, const Dictionary& descriptor)
{
    Entry entry;
    entry.identifier = descriptor.stringValue("CIFFilterIdentifier");
    const int tag = descriptor.intValue("CIFTag", 0);
    const std::map<int, std::pair<std::string, int>> pages = {
        {10, {"10", 1}}, {20, {"20", 2}}, {31, {"30", 3}}, {32, {"30", 3}}, {33, {"30", 3}}};
    const auto page = pages.find(tag);
    entry.page = page == pages.end() ? "0" : page->second.first;
    const std::size_t room = page == pages.end() ? 4 : page->second.second;
    const auto keys = plugIn.CIFQueryInputKeysForFilter(entry.identifier);
    const DictionaryRef described = plugIn.CIFQueryAttributesForFilter(entry.identifier);
    for (const std::string& key : keys ? *keys : std::vector<std::string>()) {
        const DictionaryRef input = (*described)[key].dictionary();
        const std::string kind = input ? input->stringValue("CIAttributeClass") : "";
        if (kind == "CIColor" && entry.colors.size() < 2)
            entry.colors.emplace_back(key, *(*input)["CIAttributeDefault"].color());
        if (kind != "NSNumber" || entry.rows.size() == room)
            continue;
        const std::size_t number = entry.rows.size() + 1;
        Row row;
        row.key = key;
        row.label = input->stringValue("CIAttributeDisplayName");
        row.start = descriptor.doubleValue("CIFFilterDefValue" + std::to_string(number),
                                           input->doubleValue("CIAttributeDefault", 0));
        row.minimum = std::min(input->doubleValue("CIAttributeSliderMin", 0), row.start);
        row.maximum = input->doubleValue("CIAttributeSliderMax", 1);
        if (number == 1)
            row.maximum = descriptor.doubleValue("CIFFilterMaxValue", row.maximum);
        row.maximum = std::max(row.maximum, row.start);
        entry.rows.push_back(row);
    }
    return entry;
}

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
    void chooseKeepingStatus(const std::string& identifier) { controller.chooseEntry(identifier); }
};

bool differ(const imaging::BitmapRef& a, const imaging::BitmapRef& b)
{
    return a->width() != b->width() || a->height() != b->height() ||
           support::compare(*a, *b).largest != 0;
}

} // namespace

TEST_F(ParameterControls, ShowWhatDescriptionAndCatalogueSayOfEveryFilter)
{
    CIFMain plugIn;
    int rows = 0, colors = 0;
    edit(photo(), [&] {
        for (const DictionaryRef& descriptor : descriptorsOf(plugIn.CIFAllFilterDescriptors())) {
            const Entry entry = filterEntry(plugIn, *descriptor);
            SCOPED_TRACE(entry.identifier);
            choose(entry.identifier);
            EXPECT_EQ(page(parts()._filterControlsTabView).objectName().toStdString(), entry.page);
            Dictionary expected;
            std::size_t bound = 0;
            for (const Row& row : entry.rows) {
                expected.set(row.key, row.start);
                const auto controls = controlsOf(row.key);
                ASSERT_EQ(controls.size(), 3u) << row.key;
                for (DecimalControl* control : controls) {
                    EXPECT_EQ(control->minValue(), row.minimum) << row.key;
                    EXPECT_EQ(control->maxValue(), row.maximum) << row.key;
                    EXPECT_FLOAT_EQ(control->doubleValue(), row.start) << row.key;
                    EXPECT_TRUE(control->widget().isEnabled());
                    EXPECT_EQ(control->widget().toolTip().toStdString(), row.key);
                    EXPECT_FALSE(control->widget().accessibleName().isEmpty());
                }
                // Rows in key order, from the top of the page.
                const std::string suffix = entry.page == "0" ? "" : "in" + entry.page;
                const std::string name =
                    "_labelTextField" + std::to_string(++bound) + suffix;
                const auto& label = part<QLabel>(name.c_str());
                EXPECT_TRUE(label.isVisible());
                if (!row.label.empty()) {
                    EXPECT_EQ(label.text().toStdString(), row.label + ":");
                }
                EXPECT_GT(label.text().size(), 1);
                ++rows;
            }
            const std::vector<ColorWell*> wells = {parts()._colorWell1, parts()._colorWell2};
            for (std::size_t i = 0; i < wells.size(); ++i) {
                EXPECT_EQ(wells[i]->isVisible(), i < entry.colors.size());
                EXPECT_EQ(wells[i]->isEnabled(), i < entry.colors.size());
                if (i >= entry.colors.size())
                    continue;
                const auto& [key, color] = entry.colors[i];
                expected.set(key, color);
                EXPECT_EQ(wells[i]->color(), color);
                EXPECT_EQ(wells[i]->tag, static_cast<int>(i));
                EXPECT_EQ(wells[i]->toolTip().toStdString(), key);
                ++colors;
            }
            if (!entry.colors.empty()) {
                EXPECT_EQ(parts()._labelColorWell1->text(), "Color:");
            }
            // What is left over is out of sight and bound to nothing.
            for (QLabel* label : page(parts()._filterControlsTabView).findChildren<QLabel*>())
                if (label->objectName().startsWith("_labelTextField") && !label->isVisible()) {
                    EXPECT_TRUE(label->text().isEmpty()) << label->objectName().toStdString();
                }
            for (QWidget* widget :
                 page(parts()._filterControlsTabView).findChildren<QWidget*>())
                if (auto* control = dynamic_cast<DecimalControl*>(widget)) {
                    EXPECT_EQ(widget->isVisible(), !control->representedObject.empty());
                    EXPECT_EQ(widget->isEnabled(), !control->representedObject.empty());
                }
            Dictionary attributes = controller.attributes();
            for (const char* handed : {"CIFinputCenter", "CIFinputTexture",
                                       "CIFinputShadingImage", "GLIFRandomSeed"})
                attributes.remove(handed);
            EXPECT_EQ(attributes, expected);
        }
    });
    EXPECT_EQ(rows, 136);
    EXPECT_EQ(colors, 16);
}

TEST_F(ParameterControls, ShowTheAdvertisedValuesOfEveryGenerator)
{
    CIFMain plugIn;
    plugIn.CIFSetEffectsSet(1);
    int rows = 0, menus = 0, backgrounds = 0;
    generate({96, 64}, [&] {
        for (const DictionaryRef& descriptor : descriptorsOf(plugIn.CIFAllFilterDescriptors())) {
            const std::string identifier = descriptor->stringValue("CIFFilterIdentifier");
            SCOPED_TRACE(identifier);
            choose(identifier);
            QWidget& shownPage = page(parts()._GLIFControlsTabView);
            EXPECT_EQ(shownPage.objectName().toStdString(), identifier);
            const bool isGradient = descriptor->intValue("CIFTag", 0) == 1;
            EXPECT_EQ(page(parts()._GLIFColorControlsTabView).objectName(),
                      isGradient ? "color gradient" : "color scheme");
            const auto keys = *plugIn.CIFQueryInputKeysForFilter(identifier);
            const DictionaryRef all = plugIn.CIFQueryAttributesForFilter(identifier);
            Dictionary expected;
            std::set<std::string> bound;
            for (const std::string& key : keys) {
                const DictionaryRef described = (*all)[key].dictionary();
                if (!described || !described->contains("GLIFDefValue"))
                    continue;
                expected.set(key, (*described)["GLIFDefValue"]);
                for (DecimalControl* control : controlsOf(key)) {
                    EXPECT_FLOAT_EQ(control->doubleValue(),
                                    described->doubleValue("GLIFDefValue", -99));
                    EXPECT_FLOAT_EQ(control->minValue(),
                                    described->doubleValue("GLIFMinValue", -99));
                    EXPECT_FLOAT_EQ(control->maxValue(),
                                    described->doubleValue("GLIFMaxValue", -99));
                    EXPECT_EQ(control->takesWholeNumbers(),
                              (*described)["GLIFDefValue"].number()->kind() ==
                                  Number::Kind::Integer);
                    bound.insert(key);
                }
                rows += !controlsOf(key).empty();
            }
            // A numeric parameter without a slider has a menu or a colour control.
            for (QComboBox* menu : shownPage.findChildren<QComboBox*>()) {
                const std::string key = identifier == "GLIF_Dabs"
                                            ? "GLIFType"
                                            : menu->itemData(0).toString().toStdString();
                EXPECT_EQ(menu->currentIndex(), expected.intValue(key, -99));
                if (identifier != "GLIF_Dabs") {
                    EXPECT_EQ(menu->count(), (*all)[key].dictionary()->intValue("GLIFMaxValue", 0) + 1);
                }
                bound.insert(key);
                ++menus;
            }
            for (const char* color : {"GLIFColorScheme", "GLIFSchemeKeyColor", "GLIFColorRangeMin",
                                      "GLIFColorRangeMax", "GLIFUseBackgroundColor",
                                      "GLIFBackgroundColor"})
                bound.insert(color);
            for (const std::string& key : keys)
                EXPECT_TRUE(bound.contains(key)) << key;

            if (isGradient) {
                const CCColorSlider& slider = *parts()._colorGradientSlider;
                EXPECT_FLOAT_EQ(slider.getRangeMinValue(),
                                expected.doubleValue("GLIFColorRangeMin", -99));
                EXPECT_FLOAT_EQ(slider.getRangeMaxValue(),
                                expected.doubleValue("GLIFColorRangeMax", -99));
            } else {
                EXPECT_EQ(parts()._colorSchemePopUpButton->currentIndex(),
                          expected.intValue("GLIFColorScheme", -99));
                EXPECT_FLOAT_EQ(parts()._colorSchemeSlider->getRangeMinValue(),
                                expected.doubleValue("GLIFSchemeKeyColor", -99));
            }
            const bool hasBackground = std::ranges::count(keys, "GLIFUseBackgroundColor") > 0;
            QCheckBox& use =
                *(isGradient ? parts()._useBackColorButton2 : parts()._useBackColorButton1);
            ColorWell& well = *(isGradient ? parts()._backColorWell2 : parts()._backColorWell1);
            EXPECT_EQ(use.isVisible(), hasBackground);
            EXPECT_EQ(well.isVisible(), hasBackground);
            if (hasBackground) {
                EXPECT_EQ(use.isChecked(), expected.boolValue("GLIFUseBackgroundColor", false));
                const Color* color = expected["GLIFBackgroundColor"].color();
                EXPECT_EQ(well.color(), color ? std::optional(*color) : std::nullopt);
                const bool isLine = identifier == "GLIF_Triangles" ||
                                    identifier == "GLIF_AbstractLines" ||
                                    identifier == "GLIF_ColourBars";
                EXPECT_EQ(use.text(), isLine ? "Line Color:" : "Back Color:");
                ++backgrounds;
            }
            Dictionary attributes = controller.attributes();
            attributes.remove("GLIFRandomSeed");
            attributes.remove("GLIFBrush");
            EXPECT_EQ(attributes, expected);
        }
    });
    EXPECT_EQ(rows, 48);
    EXPECT_EQ(menus, 12);
    EXPECT_EQ(backgrounds, 17);
}

TEST_F(ParameterControls, EachHandsOverItsValueAndChangesThePicture)
{
    // Two numbers mean the same kind of plasma.
    const std::set<std::string> without = {"GLIF_Plasma GLIFShapesType=2"};
    // Rings, lenses and tiles that start larger than the small picture.
    const std::set<std::string> needRoom = {
        "CICircularWrap inputAngle", "CITorusLensDistortion inputRadius",
        "CITorusLensDistortion inputRefraction", "CITriangleTile inputAngle"};
    std::set<std::string> unchanged, wanted;
    int moved = 0;
    const auto moveAll = [&](CIFMain& plugIn) {
        for (const DictionaryRef& descriptor : descriptorsOf(plugIn.CIFAllFilterDescriptors())) {
            const std::string identifier = descriptor->stringValue("CIFFilterIdentifier");
            SCOPED_TRACE(identifier);
            if (identifier == "Crop" ||
                std::ranges::none_of(wanted, [&](const std::string& control) {
                    return control.starts_with(identifier + " ");
                }) == !wanted.empty())
                continue;
            choose(identifier);
            std::set<std::string> keys;
            for (QWidget* widget : window().findChildren<QWidget*>())
                if (auto* control = dynamic_cast<DecimalControl*>(widget);
                    control && widget->isVisible() && !control->representedObject.empty())
                    keys.insert(control->representedObject);
            for (const std::string& key : keys) {
                if (!wanted.empty() && !wanted.contains(identifier + " " + key))
                    continue;
                controller.resetEntry();
                waitForResult();
                const auto before = shown();
                // The ends of the range, and a place between.
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
                    unchanged.insert(identifier + " " + key);
                // The plug-in object was given these very values.
                EXPECT_TRUE(same(controller.outputImage(),
                                 applied(identifier, controller.attributes(), controller.picture(),
                                         controller.randomSeed())));
                ++moved;
            }
            for (QComboBox* menu :
                 page(parts()._GLIFControlsTabView).findChildren<QComboBox*>()) {
                if (!menu->isVisible())
                    continue;
                controller.resetEntry();
                waitForResult();
                auto before = shown();
                const std::string key = identifier == "GLIF_Dabs"
                                            ? "GLIFType"
                                            : menu->itemData(0).toString().toStdString();
                for (int i = menu->count() - 1; i >= 0; --i) {
                    if (menu->currentIndex() == i || menu->itemText(i).isEmpty() ||
                        menu->itemText(i) == "Other...")
                        continue;
                    pick(*menu, i);
                    waitForResult();
                    EXPECT_EQ(numberOf(key).kind(), Number::Kind::Integer) << key;
                    EXPECT_EQ(numberOf(key).intValue(), i) << key;
                    if (!differ(before, shown()))
                        unchanged.insert(identifier + " " + key + "=" + std::to_string(i));
                    before = shown();
                    ++moved;
                }
            }
        }
    };
    CIFMain filters, generators;
    generators.CIFSetEffectsSet(1);
    edit(photo(), [&] { moveAll(filters); });
    EXPECT_EQ(unchanged, needRoom);
    EXPECT_EQ(moved, 136);
    unchanged.clear();
    generate({96, 64}, [&] { moveAll(generators); });
    EXPECT_EQ(unchanged, without);
    EXPECT_EQ(moved, 245);
    unchanged.clear();
    wanted = needRoom;
    edit(*plugin::resized(photo(), 720, 480, false), [&] { moveAll(filters); });
    EXPECT_EQ(unchanged, std::set<std::string>());
    EXPECT_EQ(moved, 249);
}
