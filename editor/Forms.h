// Windows and pages from the descriptions among the resources.
#pragma once

#include <QString>

#include <string_view>

class QObject;
class QWidget;

namespace editor {

// The widgets of forms/NAME.ui, with their texts in the user's language. Null when there is no such
// form or it cannot be read.
QWidget* loadForm(const QString& name, QWidget* parent = nullptr);

// Puts the texts of an object and of all below it into the user's language, each being its own key:
// titles, labels, items, tips and what screen readers say, but not what is typed into fields.
void localizeTexts(QObject& root);

// foundation::localizedString, for texts on the screen. (A test finds the keys that are written out
// in the sources, so write `localizedString("…")`.)
QString localizedString(std::string_view key);

} // namespace editor
