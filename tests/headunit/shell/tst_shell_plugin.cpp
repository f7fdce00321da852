#include "headunit/shell/shell.h"

#include "tests/headunit/shell/shellfixture.h"

#include "headunit/inspector/settingsmodel.h"

#include <QLabel>

using namespace headunit;

/// The shell with the plug-in that ships, loaded from its library, all in this process.
class TestShellPlugin : public ShellFixture
{
    Q_OBJECT
private slots:
    void init();
    void cleanup() { endUnit(); }
    void libraryOffersTheOneWindow();
    void statusBarGoesWhileTheApplicationIsInFront();
    void backKeyLeaves();
    void languageSwitchRenewsTexts_data();
    void languageSwitchRenewsTexts();
    void powerCycleComesBackToTheSamePage();
    void factoryResetStartsOnTheFirstPage();
    void pageForALookIsNotRemembered();
    void editInTheInspectorIsShownByTheOpenPage_data();
    void editInTheInspectorIsShownByTheOpenPage();
    void editOfThePageTurnsToIt();
    void editLeavesAPageForALookInFront();
    void editAfterALookIsShown();

private:
    void press(KeyEvent::Key key)
    {
        ShellFixture::press(key);
        settle();
    }
    static void settle()
    {
        QCoreApplication::processEvents();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
    QWidget* root() const { return m_shell->front() ? m_shell->front()->root() : nullptr; }
    QAbstractButton* key(const char* name) const
    {
        return root() ? root()->findChild<QAbstractButton*>(name) : nullptr;
    }

    /// As the inspector's table does.
    static bool edit(const QString& key, const QVariant& value)
    {
        SettingsModel model;
        const bool done = model.setData(model.index(model.rowOf(key), SettingsModel::Value), value);
        settle();
        return done;
    }
};

void TestShellPlugin::init()
{
    openStore();
    m_shell.reset(new Shell(true));
    QCOMPARE(m_shell->loadApplications(APPLICATIONS), 1);
    m_shell->unit()->show();
    settle();
}

void TestShellPlugin::libraryOffersTheOneWindow()
{
    QCOMPARE(m_shell->plugins().loaded().size(), 1);
    QVERIFY(m_shell->host(33));
    QCOMPARE(m_shell->host(33)->name(), QStringLiteral("EQ"));
    for (const PluginLoader::Refused& refused : m_shell->plugins().refused())
        QCOMPARE(refused.reason, PluginLoader::refusal({})); // the platform's own libraries lie there, too
}

void TestShellPlugin::statusBarGoesWhileTheApplicationIsInFront()
{
    QVERIFY(m_shell->unit()->screen()->isStatusBarShown());
    QVERIFY(m_shell->openWindow(33));
    settle();
    QVERIFY(!m_shell->unit()->screen()->isStatusBarShown());
    m_shell->leaveApplication();
    settle();
    QVERIFY(m_shell->unit()->screen()->isStatusBarShown());
}

void TestShellPlugin::backKeyLeaves()
{
    m_shell->openWindow(33);
    press(KeyEvent::Key_Back);
    QVERIFY(!m_shell->front());
}

void TestShellPlugin::languageSwitchRenewsTexts_data()
{
    QTest::addColumn<int>("page");
    QTest::newRow("over a page that is kept") << 1;
    QTest::newRow("over a page that is made anew") << 5;
}

void TestShellPlugin::languageSwitchRenewsTexts()
{
    QFETCH(int, page);
    store()->setValue("AudioSetting_Page", page, true);
    m_shell->openWindow(33);
    settle();
    const auto texts = [this] {
        QStringList all;
        for (const QLabel* label : root()->findChildren<QLabel*>()) {
            if (label->isVisible() && !label->text().isEmpty())
                all.append(label->text());
        }
        return all;
    };
    const QStringList english = texts();
    QVERIFY(english.contains("EQ\nPRESET"));
    QVERIFY(m_shell->setLanguage("ru"));
    settle();
    const QStringList russian = texts();
    QVERIFY(!russian.contains("EQ\nPRESET"));
    QVERIFY(russian != english);
    QVERIFY(m_shell->setLanguage("en"));
    settle();
    QCOMPARE(texts(), english);
}

void TestShellPlugin::powerCycleComesBackToTheSamePage()
{
    store()->setValue("AudioSetting_Page", 4, true);
    m_shell->openWindow(33);
    settle();
    const QPointer<QWidget> before = root();
    press(KeyEvent::Key_Power);
    QVERIFY(!before);
    press(KeyEvent::Key_Power);
    QVERIFY(root());
    QVERIFY(key("key_eq_preset"));
    QVERIFY(key("key_eq_preset")->isChecked());
}

void TestShellPlugin::factoryResetStartsOnTheFirstPage()
{
    store()->setValue("AudioSetting_Page", 4, true);
    m_shell->openWindow(33);
    settle();
    m_shell->resetToFactory();
    settle();
    QVERIFY(!root());
    m_shell->openWindow(33);
    QVERIFY(key("key_balance_setting")->isChecked());
}

void TestShellPlugin::pageForALookIsNotRemembered()
{
    store()->setValue("AudioSetting_Page", 0, true);
    QVERIFY(m_shell->openAudioPage(3));
    QVERIFY(key("key_time_alignment")->isChecked());
    QCOMPARE(store()->value("AudioSetting_Page"), QVariant(0));
}

void TestShellPlugin::editInTheInspectorIsShownByTheOpenPage_data()
{
    QTest::addColumn<int>("page");
    QTest::addColumn<QString>("key");
    QTest::addColumn<QVariant>("value");
    QTest::newRow("a band of the user's curve") << 0 << "eq13" << QVariant(9);
    QTest::newRow("loudness") << 1 << "customloudnes" << QVariant(true);
    QTest::newRow("balance") << 1 << "AudioService_Balance" << QVariant(-9);
    QTest::newRow("a filter of the crossover") << 2 << "settings_cross_freq_index" << QVariant("0;4;1;0;2;6");
    QTest::newRow("a delay") << 3 << "Audio_Time_Alignment_Num10" << QVariant(42);
    QTest::newRow("the curve's type") << 4 << "AudioService_EQType" << QVariant(3);
    QTest::newRow("a start-up volume") << 5 << "Setup_Main_Volume" << QVariant(3);
}

void TestShellPlugin::editInTheInspectorIsShownByTheOpenPage()
{
    QFETCH(int, page);
    QFETCH(QString, key);
    QFETCH(QVariant, value);
    store()->setValue("AudioService_EQType", 6, true);
    store()->setValue("AudioSetting_Page", page, true);
    store()->setValue(key, QVariant(value.type()), true);
    hvaudio::AudioServiceHost::powerOn();
    m_shell->openWindow(33);
    settle();
    const QStringList before = store()->values().keys();
    const QImage unedited = root()->grab().toImage();
    QVERIFY(edit(key, value));
    const QImage edited = root()->grab().toImage();
    QVERIFY(edited != unedited);
    // The same as for who comes back to the page, and nothing is written but what was edited.
    m_shell->leaveApplication();
    m_shell->openWindow(33);
    settle();
    QCOMPARE(root()->grab().toImage(), edited);
    QCOMPARE(store()->values().keys(), before);
    QCOMPARE(store()->value(key), value);
    QCOMPARE(store()->value("AudioSetting_Page"), QVariant(page));
}

void TestShellPlugin::editOfThePageTurnsToIt()
{
    store()->setValue("AudioSetting_Page", 1, true);
    m_shell->openWindow(33);
    QVERIFY(edit("AudioSetting_Page", 4));
    QVERIFY(key("key_eq_preset")->isChecked());
}

void TestShellPlugin::editLeavesAPageForALookInFront()
{
    store()->setValue("AudioSetting_Page", 0, true);
    m_shell->openAudioPage(3);
    QVERIFY(edit("customloudnes", true));
    QVERIFY(key("key_time_alignment")->isChecked());
    QCOMPARE(store()->value("AudioSetting_Page"), QVariant(0));
}

void TestShellPlugin::editAfterALookIsShown()
{
    store()->setValue("AudioSetting_Page", 0, true);
    m_shell->openAudioPage(3);
    QTest::mouseClick(key("key_balance_setting"), Qt::LeftButton);
    settle();
    QVERIFY(!key("key_loudness")->isChecked());
    QVERIFY(edit("customloudnes", true));
    QVERIFY(key("key_loudness")->isChecked());
    QVERIFY(key("key_balance_setting")->isChecked());
}

QTEST_MAIN(TestShellPlugin)
#include "tst_shell_plugin.moc"
