// Windows that come back where they were left.
#pragma once

class QString;
class QWidget;

namespace editor {

// setFrameAutosaveName: — gives the window the place and size that were saved under the name, if
// any, and saves them whenever it is hidden, in the editor's preferences.
void setFrameAutosaveName(QWidget& window, const QString& name);

} // namespace editor
