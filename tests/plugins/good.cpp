// An application as it should be.
#include "tests/plugins/testplugin.h"

static const LoadMark mark("HEADUNIT_TEST_LOADED_good");

class Plugin : public QObject, public TestPlugin
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID "org.headunit.Qt.goodPlugin")
    Q_INTERFACES(AppPlugin)
public:
    ~Plugin() override { qputenv("HEADUNIT_TEST_DELETED_good", "1"); }
};

#include "good.moc"
