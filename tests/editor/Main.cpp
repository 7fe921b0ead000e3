// One application for all tests of the window, with nothing left to the machine it runs on.
#include "platform/foundation/Bundle.h"

#include <QApplication>
#include <QFont>
#include <QSettings>
#include <QStyleFactory>
#include <QTemporaryDir>

#include <gmock/gmock.h>

int main(int count, char** arguments)
{
    testing::InitGoogleMock(&count, arguments);
    qputenv("QT_QPA_PLATFORM", "offscreen");
    foundation::setLanguage("C");
    const QTemporaryDir configuration;
    QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, configuration.path());
    QApplication application(count, arguments);
    QApplication::setStyle(QStyleFactory::create("Fusion"));
    QApplication::setFont(QFont("DejaVu Sans", 9));
    return RUN_ALL_TESTS();
}
