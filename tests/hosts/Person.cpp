#include "Person.h"

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QApplication>
#include <QElapsedTimer>
#include <QLineEdit>
#include <QMainWindow>
#include <QMouseEvent>
#include <QPointer>
#include <QTimer>

#include <cstdio>
#include <deque>
#include <optional>
#include <unistd.h>

namespace {

constexpr int kPatience = 60'000; // milliseconds
constexpr int kIdentifierRole = Qt::UserRole + 1;

struct Plan {
    QString words;
    std::function<void()> action = {};
    std::function<bool()> condition = {};
};
std::deque<Plan> plans;
QElapsedTimer waiting;

void mouse(QEvent::Type type, QWidget& widget, QPointF at, Qt::MouseButtons buttons)
{
    const auto button = type == QEvent::MouseMove ? Qt::NoButton : Qt::LeftButton;
    QMouseEvent event(type, at, widget.mapToGlobal(at), button, buttons, Qt::NoModifier);
    QApplication::sendEvent(&widget, &event);
}

void click(QWidget& widget, QPointF at)
{
    mouse(QEvent::MouseButtonPress, widget, at, Qt::LeftButton);
    mouse(QEvent::MouseButtonRelease, widget, at, Qt::NoButton);
}

void key(QWidget& widget, int code)
{
    for (const QEvent::Type type : {QEvent::KeyPress, QEvent::KeyRelease}) {
        QKeyEvent event(type, code, Qt::NoModifier);
        QApplication::sendEvent(&widget, &event);
    }
}

bool isReady(const QWidget* widget)
{
    return widget && widget->isVisible() && widget->isEnabled();
}

std::optional<QPointF> place(const QWidget& widget, const QString& fractions)
{
    const QStringList xy = fractions.split(',');
    return xy.size() == 2 ? std::optional<QPointF>({xy[0].toDouble() * widget.width(),
                                                    xy[1].toDouble() * widget.height()})
                          : std::nullopt;
}

bool choose(QMainWindow& window, const QString& identifier)
{
    for (QAbstractItemView* list : window.findChildren<QAbstractItemView*>()) {
        if (!isReady(list) || !list->model())
            continue;
        const QAbstractItemModel& model = *list->model();
        for (int row = 0; row < model.rowCount(); ++row) {
            const QModelIndex index = model.index(row, 0);
            if (index.data(kIdentifierRole).toString() != identifier)
                continue;
            list->scrollTo(index);
            click(*list->viewport(), list->visualRect(index).center());
            return list->currentIndex().row() == row;
        }
    }
    return false;
}

} // namespace

QMainWindow* Person::window()
{
    for (QWidget* widget : QApplication::topLevelWidgets())
        if (auto* window = qobject_cast<QMainWindow*>(widget);
            window && window->objectName() == "ImageEditor" && window->isVisible())
            return window;
    return nullptr;
}

void Person::does(const QStringList& actions)
{
    for (const QString& action : actions)
        plans.push_back({action.trimmed()});
}

void Person::does(std::function<void()> action)
{
    plans.push_back({"do what the host wants", std::move(action)});
}

void Person::waits(std::function<bool()> condition)
{
    plans.push_back({"see what the host waits for", {}, std::move(condition)});
}

void Person::comes()
{
    static QPointer<QTimer> timer;
    if (timer)
        return;
    timer = new QTimer(QCoreApplication::instance());
    timer->setInterval(2);
    QObject::connect(timer, &QTimer::timeout, &Person::lookAround);
    timer->start();
    waiting.start();
}

void Person::lookAround()
{
    if (plans.empty() || !window()) {
        // The host does something else.
        waiting.start();
        return;
    }
    const Plan plan = plans.front();
    if (plan.action || (plan.condition ? plan.condition() : tries(plan.words))) {
        plans.pop_front();
        waiting.start();
        // Last, for an action may leave the run, or stay in one of its own.
        if (plan.action)
            plan.action();
        else if (plan.words.startsWith("click "))
            window()->findChild<QAbstractButton*>(plan.words.section(' ', 1))->click();
        else if (plan.words == "close")
            window()->close();
    } else if (waiting.elapsed() > kPatience) {
        std::fprintf(stderr, "person: waited in vain to %s\n", qPrintable(plan.words));
        _exit(70);
    }
}

bool Person::tries(const QString& action)
{
    QMainWindow& window = *Person::window();
    const QString verb = action.section(' ', 0, 0), name = action.section(' ', 1, 1);
    if (verb == "close")
        return true;
    if (verb == "shot")
        return window.grab().save(name);
    if (verb == "choose")
        return choose(window, name);
    auto* widget = window.findChild<QWidget*>(name);
    if (!isReady(widget))
        return false;
    if (verb == "click")
        return qobject_cast<QAbstractButton*>(widget);
    if (verb == "await")
        return true;
    if (verb == "type") {
        auto* field = qobject_cast<QLineEdit*>(widget);
        field = field ? field : widget->findChild<QLineEdit*>();
        if (!field)
            return false;
        field->selectAll();
        field->insert(action.section(' ', 2));
        key(*field, Qt::Key_Return);
        return true;
    }
    if (verb == "drag") {
        const auto from = place(*widget, action.section(' ', 2, 2));
        const auto to = place(*widget, action.section(' ', 3, 3));
        if (!from || !to)
            return false;
        mouse(QEvent::MouseButtonPress, *widget, *from, Qt::LeftButton);
        mouse(QEvent::MouseMove, *widget, (*from + *to) / 2, Qt::LeftButton);
        mouse(QEvent::MouseMove, *widget, *to, Qt::LeftButton);
        mouse(QEvent::MouseButtonRelease, *widget, *to, Qt::NoButton);
        return true;
    }
    return false;
}
