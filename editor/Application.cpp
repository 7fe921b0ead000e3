// Makes the application where the host has none, and ends it before what it stands on goes.
#include "editor/Application.h"

#include "editor/Displays.h"
#include "platform/foundation/Bundle.h"

#include <QApplication>
#include <QLibraryInfo>
#include <QLocale>
#include <QPauseAnimation>
#include <QThread>
#include <QTranslator>

#include <array>
#include <cerrno>
#include <clocale>
#include <csignal>
#include <dlfcn.h>
#include <optional>
#include <string>
#include <unistd.h>

namespace editor {

namespace {

QApplication* ownApplication = nullptr;
pid_t ownProcess = 0;
int uses = 0;

// What Qt and the libraries below it change in the whole process when an application is made, put
// back as the host had it.
class HostState {
public:
    HostState()
    {
        if (const char* locale = std::setlocale(LC_ALL, nullptr))
            _locale = locale;
        for (int signal = 1; signal < NSIG; ++signal)
            _isKnown[signal] = sigaction(signal, nullptr, &_actions[signal]) == 0;
    }
    ~HostState()
    {
        std::setlocale(LC_ALL, _locale.c_str());
        for (int signal = 1; signal < NSIG; ++signal)
            if (_isKnown[signal] && signal != SIGKILL && signal != SIGSTOP)
                sigaction(signal, &_actions[signal], nullptr);
    }
    HostState(const HostState&) = delete;
    HostState& operator=(const HostState&) = delete;

private:
    std::string _locale;
    std::array<struct sigaction, NSIG> _actions = {};
    std::array<bool, NSIG> _isKnown = {};
};

// Two versions of GTK in one process get into each other's way, and Qt's theme of it brings in
// version 3.
bool hasAnotherGtk()
{
    for (const char* library : {"libgtk-x11-2.0.so.0", "libgtk-4.so.1"})
        if (void* loaded = dlopen(library, RTLD_LAZY | RTLD_NOLOAD)) {
            dlclose(loaded);
            return true;
        }
    return false;
}

// Qt chooses its theme by the desktop.
class PlainDesktop {
public:
    PlainDesktop()
    {
        if (qEnvironmentVariableIsSet(kVariable))
            _former = qgetenv(kVariable);
        qputenv(kVariable, "generic");
    }
    ~PlainDesktop()
    {
        if (_former)
            qputenv(kVariable, *_former);
        else
            qunsetenv(kVariable);
    }
    PlainDesktop(const PlainDesktop&) = delete;
    PlainDesktop& operator=(const PlainDesktop&) = delete;

private:
    static constexpr const char* kVariable = "XDG_CURRENT_DESKTOP";
    std::optional<QByteArray> _former;
};

// Qt's own texts, such as the buttons of its dialogues and the names of keys, in our language. One
// that Qt has no texts in leaves them English.
void translateApplication()
{
    auto* texts = new QTranslator(ownApplication);
    if (texts->load(QLocale(QString::fromStdString(foundation::language())),
                    QStringLiteral("qtbase"), QStringLiteral("_"),
                    QLibraryInfo::path(QLibraryInfo::TranslationsPath)))
        QCoreApplication::installTranslator(texts);
}

void makeApplication(const QByteArray& platform)
{
    // Qt keeps both and may take arguments out.
    static std::string name, option, theme, themeName;
    static QByteArray wanted;
    static std::array<char*, 6> arguments;
    static int count = 0;

    const HostState state;
    std::optional<PlainDesktop> desktop;
    name = program_invocation_name;
    option = "-platform";
    wanted = platform;
    arguments = {name.data(), option.data(), wanted.data()};
    count = 3;
    if (hasAnotherGtk()) {
        desktop.emplace();
        theme = "-platformtheme";
        themeName = "generic";
        arguments[3] = theme.data();
        arguments[4] = themeName.data();
        count = 5;
    }
    // The session is the host's business, and so is when the process ends.
    QCoreApplication::setAttribute(Qt::AA_DisableSessionManager);
    ownApplication = new QApplication(count, arguments.data());
    ownProcess = getpid();
    QApplication::setQuitOnLastWindowClosed(false);
    QCoreApplication::setQuitLockEnabled(false);
    translateApplication();
}

// Not out of a window that is still up, from another thread, or in a child that only copies the
// connection to the display; then everything is left to the end of the process.
void endOwnApplication()
{
    if (ownApplication && uses == 0 && getpid() == ownProcess &&
        ownApplication->thread() == QThread::currentThread()) {
        delete ownApplication;
        ownApplication = nullptr;
    }
}

// When the process exits, what belongs to its thread is destroyed before any exit handler runs, and
// Qt's clock of animations is such an object: widgets and styles that still animate something would
// reach for it after it has gone. Destruction is in the reverse order, so this is called when
// everything that the window stands on has been made.
void endApplicationWithThread()
{
    struct Ending {
        Ending()
        {
            // The clock is made for the first that runs.
            QPauseAnimation animation(1000);
            animation.start();
        }
        ~Ending() { endOwnApplication(); }
    };
    static thread_local const Ending ending;
}

} // namespace

bool haveApplication()
{
    if (!QCoreApplication::instance()) {
        const Platform platform = usablePlatform();
        if (platform.name.isEmpty())
            return false;
        makeApplication(platform.name);
    }
    const auto* application = qobject_cast<QApplication*>(QCoreApplication::instance());
    return application && application->thread() == QThread::currentThread() &&
           !QCoreApplication::closingDown();
}

ApplicationUse::ApplicationUse()
{
    ++uses;
}

ApplicationUse::~ApplicationUse()
{
    --uses;
    if (ownApplication)
        endApplicationWithThread();
}

bool ApplicationUse::isUsed()
{
    return uses > 0;
}

} // namespace editor
