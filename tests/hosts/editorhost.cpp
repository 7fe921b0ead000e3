// A host that shows the editor: linked to nothing of the library, it opens the bundle by its path.
//   editorhost BUNDLE SITUATION
// Prints what is not as it should be, and ends with status 1 then.
#include "Person.h"
#include "hosts/CoreImageFilter.h"

#include <QApplication>
#include <QEventLoop>
#include <QGuiApplication>
#include <QLabel>
#include <QMainWindow>
#include <QPauseAnimation>
#include <QPixmapCache>
#include <QTimer>

#include <array>
#include <clocale>
#include <csignal>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <dlfcn.h>
#include <filesystem>
#include <fstream>
#include <malloc.h>
#include <string>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

extern char** environ;

// What the libraries under the toolkit keep until the process ends. Under the leak checker only.
extern "C" const char* __lsan_default_suppressions()
{
    return "leak:libfontconfig\nleak:libglib-2.0\nleak:__cxa_thread_atexit_impl\n";
}

// Whoever makes the application, the person comes with it.
static void bringPerson()
{
    Person::comes();
}
Q_COREAPP_STARTUP_FUNCTION(bringPerson)

namespace {

int failures = 0;

#define EXPECT(condition)                                                                          \
    ((condition)                                                                                   \
         ? void()                                                                                  \
         : void((++failures, std::fprintf(stderr, "line %d: not %s\n", __LINE__, #condition))))

void* bundle = nullptr;
std::vector<std::string> logged;

template <class Function>
Function* function(const char* name)
{
    return reinterpret_cast<Function*>(dlsym(bundle, name));
}
#define FROM_BUNDLE(name) const auto name = function<decltype(::name)>(#name)

ICoreImageFilter* makePlugIn()
{
    FROM_BUNDLE(CIFCreatePlugIn);
    FROM_BUNDLE(CIFSetLanguage);
    FROM_BUNDLE(CIFSetLogSink);
    CIFSetLanguage("C");
    CIFSetLogSink([](const char* line, void*) { logged.emplace_back(line); }, nullptr);
    return CIFCreatePlugIn(CIF_PLUGIN_VERSION);
}

foundation::PictureRef ramp(int width = 48, int height = 32)
{
    FROM_BUNDLE(CIFPictureFromPixels);
    std::vector<std::uint8_t> pixels(4 * std::size_t(width) * height);
    for (std::size_t i = 0; i < pixels.size(); ++i)
        pixels[i] = static_cast<std::uint8_t>(i % 4 == 3 ? 255 : i / 4 * (i % 4 + 1));
    CIFPicture* made = CIFPictureFromPixels(pixels.data(), width, height, 4 * width, 8, nullptr, 0);
    const foundation::PictureRef picture = made ? made->picture : nullptr;
    FROM_BUNDLE(CIFPictureRelease);
    CIFPictureRelease(made);
    return picture;
}

std::vector<std::uint8_t> pixelsOf(const foundation::PictureRef& picture)
{
    FROM_BUNDLE(CIFPictureGetSize);
    FROM_BUNDLE(CIFPictureCopyPixels);
    const CIFPicture handle{picture};
    std::int32_t width = 0, height = 0;
    if (!picture || !CIFPictureGetSize(&handle, nullptr, nullptr, &width, &height))
        return {};
    std::vector<std::uint8_t> pixels(4 * std::size_t(width) * height);
    if (!CIFPictureCopyPixels(&handle, pixels.data(), width, height, 4 * width, 8))
        pixels.clear();
    return pixels;
}

bool edit(ICoreImageFilter& plugIn, const foundation::PictureRef& picture)
{
    return plugIn.CIFShowDialogUseSelectionWithRect(picture, false, {});
}

// A run of each mode, accepted and left in both ways.
void useTheEditor(ICoreImageFilter& plugIn)
{
    const foundation::PictureRef picture = ramp();
    Person::does({"choose CIColorInvert", "click _buttonSet"});
    EXPECT(edit(plugIn, picture));
    const auto inverted =
        pixelsOf(plugIn.CIFApplyFilterAttributesForImage("CIColorInvert", {}, picture));
    EXPECT(!inverted.empty());
    EXPECT(pixelsOf(plugIn.CIFOutputImage()) == inverted);
    EXPECT(!plugIn.CIFIsSelected());

    Person::does({"choose CIColorInvert", "click _buttonCancel"});
    EXPECT(!edit(plugIn, picture));
    Person::does({"close"});
    EXPECT(!edit(plugIn, picture));

    Person::does({"choose GLIF_Plasma", "click _buttonSet"});
    EXPECT(plugIn.GLIFShowDialogWithRect(nullptr, {0, 0, 40, 30}));
    EXPECT(pixelsOf(plugIn.CIFOutputImage()).size() == 4 * 40 * 30);
    EXPECT(logged.empty());
}

void expectNoEditor(ICoreImageFilter& plugIn)
{
    logged.clear();
    EXPECT(!edit(plugIn, ramp()));
    EXPECT(logged == std::vector<std::string>{"Can't load image editor"});
    EXPECT(!plugIn.GLIFShowDialogWithRect(nullptr, {0, 0, 40, 30}));
    EXPECT(logged.size() == 1);
    EXPECT(!plugIn.CIFOutputImage());
    logged.clear();
}

std::string environment()
{
    std::string all;
    for (char** variable = environ; *variable; ++variable)
        all.append(*variable).append("\n");
    return all;
}

struct Signals {
    Signals()
    {
        for (int signal = 1; signal < NSIG; ++signal)
            sigaction(signal, nullptr, &actions[signal]);
    }
    bool operator==(const Signals& other) const
    {
        for (int signal = 1; signal < NSIG; ++signal)
            if (actions[signal].sa_handler != other.actions[signal].sa_handler)
                return false;
        return true;
    }
    std::array<struct sigaction, NSIG> actions = {};
};

// The editor makes the application; the process is the host's all the same.
void withoutApplication(ICoreImageFilter& plugIn)
{
    std::setlocale(LC_ALL, "C");
    const std::string before = environment();
    std::signal(SIGPIPE, SIG_DFL);
    const Signals former;
    useTheEditor(plugIn);
    EXPECT(std::setlocale(LC_ALL, nullptr) == std::string("C"));
    EXPECT(environment() == before);
    EXPECT(Signals() == former);
    EXPECT(qobject_cast<QApplication*>(QCoreApplication::instance()));
    // A child that ends does not take the display's connection with it.
    if (const pid_t child = fork(); child == 0) {
        std::exit(0);
    } else {
        int status = 0;
        waitpid(child, &status, 0);
        EXPECT(WIFEXITED(status) && WEXITSTATUS(status) == 0);
    }
    // A style may still animate something when the process exits.
    Person::does([] { (new QPauseAnimation(100'000, Person::window()))->start(); });
    useTheEditor(plugIn);
}

// A host of Qt goes on while the window is up and after it.
void inItsOwnLoop(ICoreImageFilter& plugIn, QLabel& window, bool hidesItself)
{
    int beats = 0;
    QTimer heart;
    QObject::connect(&heart, &QTimer::timeout, [&] { ++beats; });
    heart.start(1);
    bool isQuitting = false;
    QObject::connect(qApp, &QApplication::aboutToQuit, &heart, [&] { isQuitting = true; });
    // The last window to close is the editor's then.
    window.setVisible(!hidesItself);

    const foundation::PictureRef former = plugIn.CIFOutputImage();
    const foundation::PictureRef picture = ramp();
    int seen = 0;
    Person::does([&] {
        EXPECT(QApplication::activeModalWidget() == Person::window());
        // There is one editor, and it is in use.
        EXPECT(!edit(plugIn, picture));
        EXPECT(logged.size() == 1);
        EXPECT(plugIn.CIFOutputImage() == former);
        logged.clear();
        seen = beats;
    });
    Person::waits([&] { return beats >= seen + 3; });
    Person::does({"close"});
    EXPECT(!edit(plugIn, picture));
    useTheEditor(plugIn);

    QEventLoop later;
    QTimer::singleShot(20, &later, [&] { later.exit(7); });
    EXPECT(later.exec() == 7);
    EXPECT(!isQuitting);
}

void withItsOwn(ICoreImageFilter& plugIn, int argc, char** argv)
{
    for (const bool hidesItself : {false, true}) {
        QApplication application(argc, argv);
        QLabel window("The host");
        QTimer::singleShot(0, [&] {
            inItsOwnLoop(plugIn, window, hidesItself);
            QApplication::exit(5);
        });
        EXPECT(QApplication::exec() == 5);
        EXPECT(QApplication::quitOnLastWindowClosed());
    }
    // And none in the end: one of the editor's.
    useTheEditor(plugIn);
}

void withOneElsewhere(ICoreImageFilter& plugIn, int argc, char** argv)
{
    std::thread thread([&] {
        QApplication application(argc, argv);
        QTimer::singleShot(0, [&] {
            std::thread([&] {
                expectNoEditor(plugIn);
                QMetaObject::invokeMethod(&application, [] { QApplication::exit(5); });
            }).detach();
        });
        EXPECT(QApplication::exec() == 5);
    });
    thread.join();
}

// The editor's application goes with the thread that it was made on, and comes again on another.
// Its own texts are in the editor's language.
void fromThreads(ICoreImageFilter& plugIn)
{
    FROM_BUNDLE(CIFSetLanguage);
    CIFSetLanguage("de");
    Person::does(
        [] { EXPECT(QCoreApplication::translate("QPlatformTheme", "Cancel") == "Abbrechen"); });
    for (int i = 0; i < 2; ++i) {
        std::thread([&] { useTheEditor(plugIn); }).join();
        EXPECT(!QCoreApplication::instance());
    }
    useTheEditor(plugIn);
}

// A display's socket, where nobody ever answers.
void withADeafDisplay(ICoreImageFilter& plugIn)
{
    const int number = 10'000 + getpid();
    const std::string path = "/tmp/.X11-unix/X" + std::to_string(number);
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    path.copy(address.sun_path + 1, sizeof address.sun_path - 1); // a name that is no file
    const int listening = socket(AF_UNIX, SOCK_STREAM, 0);
    EXPECT(bind(listening, reinterpret_cast<sockaddr*>(&address),
                static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + 1 + path.size())) == 0);
    EXPECT(listen(listening, 4) == 0);
    setenv("DISPLAY", (":" + std::to_string(number)).c_str(), 1);
    setenv("QT_QPA_PLATFORM", "xcb", 1);
    logged.clear();
    EXPECT(!edit(plugIn, ramp()));
    EXPECT(logged == std::vector<std::string>{"Can't load image editor"});
    close(listening);
}

void withoutDisplay(ICoreImageFilter& plugIn)
{
    for (const char* name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"})
        unsetenv(name);
    expectNoEditor(plugIn);
    setenv("DISPLAY", ":987", 1);
    setenv("WAYLAND_DISPLAY", "none-such", 1);
    expectNoEditor(plugIn);
    withADeafDisplay(plugIn);
    // Platforms that cannot be asked, and those that there are not.
    setenv("QT_QPA_PLATFORM", "eglfs;none-such", 1);
    expectNoEditor(plugIn);
    EXPECT(!QCoreApplication::instance());
    // Later there is one.
    setenv("QT_QPA_PLATFORM", "none-such;offscreen", 1);
    useTheEditor(plugIn);
}

bool isMapped(const char* file)
{
    std::ifstream maps("/proc/self/maps");
    for (std::string line; std::getline(maps, line);)
        if (line.find(file) != line.npos)
            return true;
    return false;
}

int openFiles()
{
    int count = 0;
    for ([[maybe_unused]] const auto& entry : std::filesystem::directory_iterator("/proc/self/fd"))
        ++count;
    return count;
}

long residentKilobytes()
{
    std::ifstream statm("/proc/self/statm");
    long size = 0, resident = 0;
    statm >> size >> resident;
    return resident * (sysconf(_SC_PAGESIZE) / 1024);
}

void manyTimes(ICoreImageFilter& plugIn)
{
    // A quarter of a megabyte each: one that is kept would be seen.
    const foundation::PictureRef picture = ramp(300, 200);
    const auto runs = [&](int count) {
        for (int i = 0; i < count; ++i) {
            if (i % 2) {
                Person::does({"choose CIFSobel", "click _buttonSet"});
                EXPECT(edit(plugIn, picture));
            } else {
                Person::does({"choose GLIF_Plasma", "click _buttonCancel"});
                EXPECT(!plugIn.GLIFShowDialogWithRect(nullptr, {0, 0, 300, 200}));
            }
        }
    };
    // What Qt keeps of drawn icons has a limit of its own.
    const auto measure = [] {
        QPixmapCache::clear();
        malloc_trim(0);
        return std::pair(openFiles(), residentKilobytes());
    };
    runs(40);
    const auto [files, kilobytes] = measure();
    runs(200);
    const auto [filesAfter, kilobytesAfter] = measure();
    std::printf("files %d, then %d; resident %ld kB, then %ld kB\n", files, filesAfter, kilobytes,
                kilobytesAfter);
    // A thread that came later has one; a leak would have hundreds.
    EXPECT(filesAfter <= files + 3);
#ifndef __SANITIZE_ADDRESS__ // which holds back what is freed
    EXPECT(kilobytesAfter - kilobytes < 16'000);
#endif
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 3)
        return 2;
    bundle = dlopen(argv[1], RTLD_NOW | RTLD_LOCAL);
    ICoreImageFilter* const plugIn = bundle ? makePlugIn() : nullptr;
    if (!plugIn) {
        std::fprintf(stderr, "no bundle\n");
        return 1;
    }
    // Nothing of a window before one is asked for.
    EXPECT(!isMapped("CoreImageFilterEditor"));
    const std::string situation = argv[2];
    if (situation == "none") {
        withoutApplication(*plugIn);
    } else if (situation == "own") {
        withItsOwn(*plugIn, argc, argv);
    } else if (situation == "elsewhere") {
        withOneElsewhere(*plugIn, argc, argv);
    } else if (situation == "threads") {
        fromThreads(*plugIn);
    } else if (situation == "gui") {
        const QGuiApplication application(argc, argv);
        expectNoEditor(*plugIn);
    } else if (situation == "core") {
        const QCoreApplication application(argc, argv);
        expectNoEditor(*plugIn);
    } else if (situation == "no-display") {
        withoutDisplay(*plugIn);
    } else if (situation == "exit") {
        // The host ends while the window is up, in a second run.
        useTheEditor(*plugIn);
        Person::does({"choose CIMotionBlur"});
        Person::does([] { std::exit(failures ? 1 : 0); });
        edit(*plugIn, ramp());
        EXPECT(!"reached");
    } else if (situation == "many") {
        manyTimes(*plugIn);
    } else {
        return 2;
    }
    FROM_BUNDLE(CIFReleasePlugIn);
    CIFReleasePlugIn(plugIn);
    dlclose(bundle);
    return failures ? 1 : 0;
}
