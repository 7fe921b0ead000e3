// Sees the events of another object first, without a class of its own for each purpose.
#pragma once

#include <QEvent>
#include <QObject>

#include <functional>

namespace editor {

class EventWatcher final : public QObject {
public:
    // True: the event goes no further.
    using Handler = std::function<bool(QEvent& event)>;

    // Watches for as long as the other object lives.
    EventWatcher(QObject& watched, Handler handler)
        : QObject(&watched), _handler(std::move(handler))
    {
        watched.installEventFilter(this);
    }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        return _handler(*event) || QObject::eventFilter(watched, event);
    }

private:
    Handler _handler;
};

} // namespace editor
