// Pages of stacked widgets by identifier, which is their object name.
#pragma once

#include <QStackedWidget>
#include <QString>

namespace editor {

// Null when there is none.
inline QWidget* pageOf(const QStackedWidget& pages, const QString& identifier)
{
    for (int i = 0; i < pages.count(); ++i)
        if (pages.widget(i)->objectName() == identifier)
            return pages.widget(i);
    return nullptr;
}

} // namespace editor
