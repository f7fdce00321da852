// Needs a function that no library has, as one built against a newer platform would.
#include "tests/plugins/testplugin.h"

void functionOfANewerPlatform();

class Plugin : public QObject, public TestPlugin
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID "org.headunit.Qt.missingsymbolPlugin")
    Q_INTERFACES(AppPlugin)
public:
    void create() override { functionOfANewerPlatform(); }
};

#include "missingsymbol.moc"
