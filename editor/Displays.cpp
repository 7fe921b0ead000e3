// Asks the displays in the order in which Qt would, each by its own greeting.
#include "editor/Displays.h"

#include <QCoreApplication>
#include <QDir>
#include <QJsonArray>
#include <QJsonObject>
#include <QPluginLoader>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <cstring>
#include <dlfcn.h>
#include <fcntl.h>
#include <memory>
#include <mutex>
#include <poll.h>
#include <string>
#include <sys/socket.h>
#include <sys/un.h>
#include <thread>
#include <unistd.h>

namespace editor {

namespace {

constexpr std::chrono::seconds kPatience{5};

using Connection = std::shared_ptr<void>; // null when nobody answers

// The X library waits for the server's greeting as long as it takes, so it does that on a thread;
// one that never comes back is left behind.
Connection xServer()
{
    if (qEnvironmentVariableIsEmpty("DISPLAY"))
        return nullptr;
    struct Attempt {
        std::mutex lock;
        std::condition_variable changed;
        bool isOver = false;
        Connection connection;
    };
    const auto attempt = std::make_shared<Attempt>();
    std::thread([attempt] {
        void* xcb = dlopen("libxcb.so.1", RTLD_NOW | RTLD_LOCAL);
        const auto function = [xcb]<class F>(const char* name, F*& f) {
            f = xcb ? reinterpret_cast<F*>(dlsym(xcb, name)) : nullptr;
            return f != nullptr;
        };
        void* (*connect)(const char*, int*) = nullptr;
        int (*hasError)(void*) = nullptr;
        void (*disconnect)(void*) = nullptr;
        Connection connection;
        if (function("xcb_connect", connect) && function("xcb_connection_has_error", hasError) &&
            function("xcb_disconnect", disconnect)) {
            connection.reset(connect(nullptr, nullptr), disconnect); // never null
            if (hasError(connection.get()) != 0)
                connection = nullptr;
        }
        const std::lock_guard lock(attempt->lock);
        attempt->isOver = true;
        attempt->connection = std::move(connection);
        attempt->changed.notify_all();
    }).detach();
    std::unique_lock lock(attempt->lock);
    attempt->changed.wait_for(lock, kPatience, [&] { return attempt->isOver; });
    return std::move(attempt->connection);
}

class Descriptor {
public:
    explicit Descriptor(int number) : _number(number) {}
    ~Descriptor()
    {
        if (_number >= 0)
            close(_number);
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    operator int() const { return _number; }

private:
    int _number;
};

// Sends the compositor the shortest request there is, to be told when it has come that far.
Connection compositor()
{
    QByteArray path = qgetenv("WAYLAND_DISPLAY");
    if (path.isEmpty())
        path = "wayland-0";
    if (!path.startsWith('/')) {
        if (qEnvironmentVariableIsEmpty("XDG_RUNTIME_DIR"))
            return nullptr;
        path = qgetenv("XDG_RUNTIME_DIR") + '/' + path;
    }
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    if (path.size() >= static_cast<qsizetype>(sizeof address.sun_path))
        return nullptr;
    std::memcpy(address.sun_path, path.constData(), path.size());

    // Without blocking: a full queue of connections counts as no answer.
    const auto socket = std::make_shared<Descriptor>(
        ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    if (*socket < 0 ||
        connect(*socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0)
        return nullptr;
    const std::uint32_t sync[] = {1 /* the display */, 12 << 16 /* bytes, and request 0 */, 2};
    if (send(*socket, sync, sizeof sync, MSG_NOSIGNAL) != sizeof sync)
        return nullptr;
    pollfd waiting = {*socket, POLLIN, 0};
    char reply = 0;
    const bool answers =
        poll(&waiting, 1, static_cast<int>(std::chrono::milliseconds(kPatience).count())) == 1 &&
        recv(*socket, &reply, 1, 0) == 1;
    return answers ? socket : nullptr;
}

// Whether Qt has the plug-in, with everything that it links to.
bool canOpenPlugin(const QByteArray& platform)
{
    QStringList folders = {qEnvironmentVariable("QT_QPA_PLATFORM_PLUGIN_PATH")};
    for (const QString& path : QCoreApplication::libraryPaths())
        folders += path + "/platforms";
    for (const QString& folder : folders) {
        if (folder.isEmpty())
            continue;
        for (const QFileInfo& file : QDir(folder).entryInfoList({"*.so"}, QDir::Files)) {
            QPluginLoader loader(file.absoluteFilePath());
            const QJsonArray keys =
                loader.metaData().value("MetaData").toObject().value("Keys").toArray();
            const bool isIt = std::ranges::any_of(keys, [&](const QJsonValue& key) {
                return key.toString().compare(QLatin1StringView(platform), Qt::CaseInsensitive) ==
                       0;
            });
            if (isIt && loader.load())
                return true;
        }
    }
    return false;
}

Platform usable(const QByteArray& platform)
{
    const QByteArray name = platform.split(':').first().trimmed().toLower();
    const bool needsNothing = name == "offscreen" || name == "minimal" || name == "vnc";
    const bool isX = name == "xcb", isWayland = name.startsWith("wayland");
    // Of the others nothing can be told beforehand.
    if ((!needsNothing && !isX && !isWayland) || !canOpenPlugin(name))
        return {};
    if (needsNothing)
        return {platform.trimmed(), nullptr};
    if (Connection connection = isX ? xServer() : compositor())
        return {platform.trimmed(), std::move(connection)};
    return {};
}

// What Qt itself would try when the user does not say.
QList<QByteArray> usualPlatforms()
{
    const bool isWayland =
        qEnvironmentVariableIsSet("WAYLAND_DISPLAY") || qgetenv("XDG_SESSION_TYPE") == "wayland";
    const bool isGnome = qgetenv("XDG_CURRENT_DESKTOP").toLower().contains("gnome") ||
                         qgetenv("XDG_SESSION_DESKTOP").toLower().contains("gnome");
    if (!isWayland)
        return {"xcb"};
    return isGnome ? QList<QByteArray>{"xcb", "wayland"} : QList<QByteArray>{"wayland", "xcb"};
}

} // namespace

Platform usablePlatform()
{
    const QByteArray chosen = qgetenv("QT_QPA_PLATFORM");
    for (const QByteArray& name : chosen.isEmpty() ? usualPlatforms() : chosen.split(';'))
        if (Platform platform = usable(name); !platform.name.isEmpty())
            return platform;
    return {};
}

} // namespace editor
