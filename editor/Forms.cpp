#include "editor/Forms.h"

#include "editor/CCColorSlider.h"
#include "editor/CIFImageEditorView.h"
#include "editor/ColorWell.h"
#include "editor/DecimalControl.h"
#include "editor/FormWidgets.h"
#include "editor/PictureScrollView.h"
#include "platform/foundation/Bundle.h"

#include <QComboBox>
#include <QFile>
#include <QLineEdit>
#include <QMetaProperty>
#include <QTabWidget>
#include <QUiLoader>
#include <QVariant>

namespace editor {

namespace {

template <class Control>
QWidget* made(QWidget* parent)
{
    return new Control(parent);
}

struct OwnControl {
    const char* className;
    QWidget* (*make)(QWidget* parent);
};
constexpr OwnControl kOwnControls[] = {
    {"CCColorSlider", made<CCColorSlider>},
    {"editor::BusyView", made<BusyView>},
    {"editor::ColorWell", made<ColorWell>},
    {"editor::ColumnScrollArea", made<ColumnScrollArea>},
    {"editor::FormLabel", made<FormLabel>},
    {"editor::GlyphButton", made<GlyphButton>},
    {"editor::LinkView", made<LinkView>},
    {"editor::NumberField", made<NumberField>},
    {"editor::PageStack", made<PageStack>},
    {"editor::ParameterLabel", made<ParameterLabel>},
    {"editor::ParameterSlider", made<ParameterSlider>},
    {"editor::PictureScrollView", made<PictureScrollView>},
    {"editor::SegmentButton", made<SegmentButton>},
    {"editor::Separator", made<Separator>},
    {"editor::StatusLabel", made<StatusLabel>},
    {"editor::Stepper", made<Stepper>},
};

// Knows the window's own controls by the class names that forms give them.
class FormLoader final : public QUiLoader {
public:
    QWidget* createWidget(const QString& className, QWidget* parent, const QString& name) override
    {
        for (const auto& [known, make] : kOwnControls)
            if (className == QLatin1String(known)) {
                QWidget* control = make(parent);
                control->setObjectName(name);
                return control;
            }
        return QUiLoader::createWidget(className, parent, name);
    }
};

QString localized(const QString& key)
{
    return localizedString(key.toStdString());
}

void localizeTextsOf(QObject& object)
{
    static constexpr const char* kTexts[] = {
        "windowTitle",    "title",          "text",
        "toolTip",        "statusTip",      "whatsThis",
        "suffix",         "accessibleName", "accessibleDescription",
        "placeholderText"};
    for (const char* name : kTexts) {
        if (qobject_cast<QLineEdit*>(&object) && qstrcmp(name, "text") == 0)
            continue;
        const int index = object.metaObject()->indexOfProperty(name);
        if (index < 0)
            continue;
        const QMetaProperty property = object.metaObject()->property(index);
        const QString text = property.read(&object).toString();
        if (property.isWritable() && !text.isEmpty())
            property.write(&object, localized(text));
    }
    if (auto* menu = qobject_cast<QComboBox*>(&object))
        for (int i = 0; i < menu->count(); ++i)
            menu->setItemText(i, localized(menu->itemText(i)));
    if (auto* tabs = qobject_cast<QTabWidget*>(&object))
        for (int i = 0; i < tabs->count(); ++i)
            tabs->setTabText(i, localized(tabs->tabText(i)));
}

} // namespace

QWidget* loadForm(const QString& name, QWidget* parent)
{
    const auto path = foundation::resourcePath(name.toStdString(), "ui", "forms");
    if (!path)
        return nullptr;
    QFile file(QString::fromStdString(path->string()));
    if (!file.open(QIODevice::ReadOnly))
        return nullptr;
    FormLoader loader;
    // Not by the host's own translators.
    loader.setTranslationEnabled(false);
    QWidget* form = loader.load(&file, parent);
    if (form)
        localizeTexts(*form);
    return form;
}

void localizeTexts(QObject& root)
{
    localizeTextsOf(root);
    const auto all = root.findChildren<QObject*>();
    for (QObject* object : all)
        localizeTextsOf(*object);
}

QString localizedString(std::string_view key)
{
    return QString::fromStdString(foundation::localizedString(key));
}

} // namespace editor
