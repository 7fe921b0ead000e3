// What the editor remembers between runs, in the user's configuration folder.
#pragma once

#include <QSettings>

namespace editor {

class Preferences final : public QSettings {
public:
    Preferences()
        : QSettings(IniFormat, UserScope, QStringLiteral("CoreImageFilter"),
                    QStringLiteral("Editor"))
    {
    }
};

} // namespace editor
