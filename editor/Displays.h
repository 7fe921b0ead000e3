// Finds out whether a window can be shown, without risking the process: Qt ends it when it comes up
// and no display answers.
#pragma once

#include <QByteArray>

namespace editor {

// What to hand to Qt as its platform ("xcb", "wayland", "offscreen:…"): of those that the user's
// environment asks for the first whose plug-in can be opened and whose display answers now. Empty
// when there is none. Takes some seconds when a display is there and does not answer.
QByteArray usablePlatform();

} // namespace editor
