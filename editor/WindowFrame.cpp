#include "editor/WindowFrame.h"

#include "editor/Preferences.h"

#include <QEvent>
#include <QWidget>

namespace editor {

namespace {

class FrameSaver final : public QObject {
public:
    FrameSaver(QWidget& window, const QString& name)
        : QObject(&window), _window(window), _key(QLatin1String("Frames/") + name)
    {
        window.installEventFilter(this);
        window.restoreGeometry(Preferences().value(_key).toByteArray());
    }

protected:
    bool eventFilter(QObject*, QEvent* event) override
    {
        if (event->type() == QEvent::Hide)
            Preferences().setValue(_key, _window.saveGeometry());
        return false;
    }

private:
    QWidget& _window;
    QString _key;
};

} // namespace

void setFrameAutosaveName(QWidget& window, const QString& name)
{
    new FrameSaver(window, name);
}

} // namespace editor
