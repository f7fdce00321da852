// The right identifier, and an object that isn't an application.
#include <QObject>
#include <QtPlugin>

class Plugin : public QObject
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID "org.headunit.Qt.noapppluginPlugin")
};

#include "noappplugin.moc"
