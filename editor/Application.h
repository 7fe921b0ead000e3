// The Qt application under the editor: the host's, or one of our own in a host that has none.
#pragma once

namespace editor {

// Whether windows can be shown from this thread: there is a QApplication, and it lives here. If
// nobody has made one yet and a display answers, one is made now, which stays for the life of the
// process; signals, locale and environment are then as the host had them. False otherwise, also
// when the host's application has no widgets or belongs to another thread. May be asked again at
// any time.
bool haveApplication();

// While one lives, windows are up: the application of our own is not to be ended.
class ApplicationUse {
public:
    ApplicationUse();
    // An application of our own is ended when the process exits in order.
    ~ApplicationUse();
    ApplicationUse(const ApplicationUse&) = delete;
    ApplicationUse& operator=(const ApplicationUse&) = delete;
    static bool isUsed();
};

} // namespace editor
