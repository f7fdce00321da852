// The plug-in class has another name than the framework's rule wants.
#include "tests/plugins/testplugin.h"

static const LoadMark mark("HEADUNIT_TEST_LOADED_otherclass");

class Application : public QObject, public TestPlugin
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID "org.headunit.Qt.otherclassPlugin")
    Q_INTERFACES(AppPlugin)
public:
    ~Application() override { qputenv("HEADUNIT_TEST_DELETED_otherclass", "1"); }
};

#include "otherclass.moc"
