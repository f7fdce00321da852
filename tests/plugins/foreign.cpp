// A plug-in of some other framework.
#include "tests/plugins/testplugin.h"

static const LoadMark mark("HEADUNIT_TEST_LOADED_foreign");

class Plugin : public QObject, public TestPlugin
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID "org.example.Qt.foreignPlugin")
    Q_INTERFACES(AppPlugin)
public:
    ~Plugin() override { qputenv("HEADUNIT_TEST_DELETED_foreign", "1"); }
};

#include "foreign.moc"
