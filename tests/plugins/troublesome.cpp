// An application that takes the unit down, or would, in the way that HEADUNIT_TEST_TROUBLE says; without it,
// one as it should be.
#include "tests/plugins/testplugin.h"

#include <csignal>
#include <cstdlib>
#include <stdexcept>
#include <thread>

static void makeTrouble(const char* where)
{
    const QByteArray trouble = qgetenv("HEADUNIT_TEST_TROUBLE");
    const QByteArray here = QByteArray(" in ") + where;
    if (trouble == "throws" + here)
        throw std::runtime_error("no vehicle bus");
    if (trouble == "throws a number" + here)
        throw 7;
    if (trouble == "crashes" + here)
        std::raise(SIGSEGV);
    if (trouble == "exits" + here)
        std::exit(0);
    while (trouble == "loops" + here)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
}

class TroublesomeRoot : public QWidget
{
protected:
    void mousePressEvent(QMouseEvent*) override { makeTrouble("a touch"); }
};

class TroublesomeWindow : public TestWindow
{
public:
    TroublesomeWindow()
        : TestWindow(9)
    {
    }
    void onCreate() override
    {
        makeTrouble("onCreate");
        if (!m_root)
            m_root = new TroublesomeRoot;
    }
    void onShow() override { makeTrouble("onShow"); }
    void onEnter() override { makeTrouble("onEnter"); }
    void onExit() override { makeTrouble("onExit"); }
    void onHide() override { makeTrouble("onHide"); }
    int backEvent() override
    {
        makeTrouble("backEvent");
        return 0;
    }
    int keyEvent(KeyEvent*) override
    {
        makeTrouble("keyEvent");
        return 0;
    }
    QString name() override
    {
        makeTrouble("name");
        return QStringLiteral("Trouble");
    }
};

class Plugin : public QObject, public TestPlugin
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID "org.headunit.Qt.troublesomePlugin")
    Q_INTERFACES(AppPlugin)
public:
    Plugin() { makeTrouble("its constructor"); }
    void create() override { makeTrouble("create"); }
    QList<int> windowInterfaceID() override
    {
        makeTrouble("windowInterfaceID");
        return {9};
    }
    WindowInterface* requestWindowInterface(int id) override { return id == 9 ? &m_window : nullptr; }

private:
    TroublesomeWindow m_window;
};

#include "troublesome.moc"
