// Somebody at the editor's window, in a process that only opened the bundle: finds the window's
// parts by their names and works with the mouse and the keyboard. Made before or after the
// application, on its thread.
#pragma once

#include <QString>
#include <QStringList>

#include <functional>

class QMainWindow;

class Person {
public:
    // One action after another, each as soon as it can be done:
    //     choose IDENTIFIER                a row of the list that is shown, with the mouse
    //     click BUTTON
    //     await WIDGET                     until it can be used
    //     type FIELD TEXT                  in place of what is there, and Enter
    //     drag WIDGET X0,Y0 X1,Y1          in parts of its width and height, from the top left
    //     shot FILE                        a picture of the window
    //     close                            by the window's own button
    // Nothing to do for long ends the process with status 70.
    static void does(const QStringList& actions);
    static void does(std::function<void()> action);
    static void waits(std::function<bool()> condition);
    // From where an application comes up, which may be now.
    static void comes();

    // The editor's window while it is up, else null.
    static QMainWindow* window();

private:
    static bool tries(const QString& action);
    static void lookAround();
};
