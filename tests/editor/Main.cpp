// One application for all tests of the window, with nothing left to the machine it runs on.
#include "editor/Preferences.h"
#include "platform/foundation/Bundle.h"

#include <QApplication>
#include <QDir>
#include <QFileInfo>
#include <QFont>
#include <QSettings>
#include <QStyleFactory>
#include <QTemporaryDir>

#include <gmock/gmock.h>

namespace {

// No test knows what another one has left in the preferences.
class ForgetPreferences final : public testing::EmptyTestEventListener {
    void OnTestStart(const testing::TestInfo&) override
    {
        const QString file = editor::Preferences().fileName();
        editor::Preferences().clear();
        QDir(QFileInfo(file).path()).removeRecursively();
    }
};

} // namespace

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
    testing::UnitTest::GetInstance()->listeners().Append(new ForgetPreferences);
    return RUN_ALL_TESTS();
}
