// Brings the person into any program of Qt: the environment names the plug-in
// (QT_QPA_GENERIC_PLUGINS=person) and what is to be done (CIF_TEST_PERSON="click X; close").
#include "Person.h"

#include <QGenericPlugin>

class PersonPlugin final : public QGenericPlugin {
    Q_OBJECT
    Q_PLUGIN_METADATA(IID QGenericPluginFactoryInterface_iid FILE "person.json")

public:
    QObject* create(const QString&, const QString&) override
    {
        Person::does(qEnvironmentVariable("CIF_TEST_PERSON").split(';', Qt::SkipEmptyParts));
        Person::comes();
        return new QObject(this);
    }
};

#include "PersonPlugin.moc"
