// The one object of a class that lives as long as the application does.
#pragma once

#include <QCoreApplication>

#include <utility>

namespace editor {

// Made on first use. It goes with the application, while widgets may still be destroyed; a later
// application in the same process gets a new one.
template <class T>
T& sharedInstance()
{
    static T* instance = nullptr;
    if (!instance) {
        instance = new T;
        qAddPostRoutine([] { delete std::exchange(instance, nullptr); });
    }
    return *instance;
}

} // namespace editor
