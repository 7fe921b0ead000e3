// Finds out whether a window can be shown, without risking the process: Qt ends it when it comes up
// and no display answers.
#pragma once

#include <QByteArray>

#include <memory>

namespace editor {

struct Platform {
    QByteArray name; // as Qt is to be given it: "xcb", "wayland", "offscreen:…"
    // Keeps the display up until Qt has a connection of its own: a server without clients may begin
    // anew, and turns clients away while it does.
    std::shared_ptr<void> connection;
};

// Of the platforms that the user's environment asks for the first whose plug-in can be opened and
// whose display answers now; without a name when there is none. Takes some seconds when a display
// is there and does not answer.
Platform usablePlatform();

} // namespace editor
