// A store that somebody else has filled: every key with values of the wrong type, far outside their range,
// empty, malformed. Each page is opened, touched and left on the reference platform. Nothing may crash, and
// nothing that wasn't touched may be rewritten.

#include "tests/system/soundunit.h"

#include "M5QX/m5qx_audiosetting_crossover_setting_page.h"
#include "M5QX/m5qx_mainwidget.h"
#include "platform/common/settings/settingsstore.h"
#include "platform/hvaudioservice/audioservicehost.h"

#include <QAbstractSlider>
#include <QMouseEvent>
#include <QPushButton>
#include <QtTest>

using namespace audiosetting;

namespace {

QStringList allKeys()
{
    QStringList keys = {"AudioSetting_Page",
                        "customloudnes",
                        "subwooferOnOff",
                        "subwooferLevel",
                        "subwooferFreq",
                        "subwooferslope",
                        "lpfState",
                        "lpfFreq",
                        "lpfslope",
                        "hpfState",
                        "hpfFreq",
                        "hpfslope",
                        "settings_cross_filter",
                        "settings_cross_freq_index",
                        "settings_cross_gain_index",
                        "settings_cross_slope_index",
                        "Audio_Phase_Troggle",
                        "Audio_Time_Alignment_Preset",
                        "Setup_Main_Volume",
                        "Setup_Volume_Type_BT_Ringer",
                        "Setup_Volume_Type_BT_Talking",
                        "Setup_Volume_Type_Navi",
                        "Setup_Volume_Type_Voice",
                        "Setup_Input_Gain_Type_Radio",
                        "Setup_Input_Gain_Type_USB",
                        "Setup_Input_Gain_Type_BT_Audio",
                        "Setup_Input_Gain_Type_AUX",
                        "Setup_Input_Gain_Type_Carplay",
                        "Setup_Input_Gain_Type_Android_Auto",
                        "Setup_Input_Gain_Type_DAB"};
    for (int band = 0; band < 13; ++band)
        keys << QStringLiteral("eq1%1").arg(band) << QStringLiteral("eq2%1").arg(band);
    for (int item = 0; item < 5; ++item) {
        for (int preset = 1; preset <= 3; ++preset)
            keys << QStringLiteral("Audio_Time_Alignment_Num%1%2").arg(preset).arg(item);
    }
    for (int channel : {0, 1, 2, 4, 5})
        keys << QStringLiteral("volume%1").arg(channel);
    return keys;
}

struct Hostile
{
    const char* name;
    QVariant value;
};

QVector<Hostile> hostileValues()
{
    return {
        {"empty text", QString()},
        {"text", QStringLiteral("eleven")},
        {"number as text", QStringLiteral("7")},
        {"true", true},
        {"false", false},
        {"minus one", -1},
        {"one beyond most tables", 9},
        {"127", 127},
        {"255", 255},
        {"largest int", INT_MAX},
        {"smallest int", INT_MIN},
        {"map with a huge index", QStringLiteral("0;2147483647;1;-2147483648;2;99")},
        {"map with foreign groups", QStringLiteral("7;1;-3;2;0;8")},
        {"map with an odd part", QStringLiteral("0;3;1;4;2")},
        {"map of separators", QString(64, QLatin1Char(';'))},
        {"map of 1 MiB", QStringLiteral("0;1;").repeated(1 << 18)},
        {"text of 1 MiB", QString(1 << 20, QLatin1Char('x'))},
        {"numbers that overflow", QStringLiteral("0;99999999999999999999;1;1e9;2;0x7f")},
    };
}

void send(QWidget* target, QEvent::Type type, QPoint pos)
{
    QMouseEvent event(type, pos, target->mapToGlobal(pos), Qt::LeftButton,
                      type == QEvent::MouseButtonRelease ? Qt::NoButton : Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(target, &event);
}

void touchEverything(QWidget* root)
{
    const auto buttons = root->findChildren<QPushButton*>();
    for (QPushButton* button : buttons) {
        if (button->isVisible())
            QTest::mouseClick(button, Qt::LeftButton);
    }
    const auto sliders = root->findChildren<QAbstractSlider*>();
    for (QAbstractSlider* slider : sliders) {
        if (!slider->isVisible())
            continue;
        send(slider, QEvent::MouseButtonPress, slider->rect().center());
        send(slider, QEvent::MouseMove, slider->rect().bottomRight());
        send(slider, QEvent::MouseButtonRelease, slider->rect().topLeft());
    }
}

} // namespace

class TestHostileStore : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase() { SoundUnit::hushLog(); }
    void everyPageStandsEveryValue_data();
    void everyPageStandsEveryValue();
};

void TestHostileStore::everyPageStandsEveryValue_data()
{
    QTest::addColumn<QVariant>("value");
    const auto values = hostileValues();
    for (const Hostile& hostile : values)
        QTest::newRow(hostile.name) << hostile.value;
}

void TestHostileStore::everyPageStandsEveryValue()
{
    QFETCH(QVariant, value);
    mem::SettingsStore* store = mem::SettingsStore::instance();
    store->clear();
    const QStringList keys = allKeys();
    for (const QString& key : keys)
        QVERIFY(store->setValue(key, value, false));
    hvaudio::AudioServiceHost::powerOn();

    const char* const shows[] = {"onShowEQSettingPage",         "onShowAudioLevelsPage",
                                 "onShowCrossoverSettingsPage", "onShowTimeAlignmentPage",
                                 "onShowEQPresetPage",          "onShowVolumeLevelPage"};

    // Looking at every page rewrites nothing but the number of the page.
    auto before = store->values();
    {
        m5qx_mainwidget hub(nullptr);
        hub.show();
        for (const char* show : shows) {
            QVERIFY(QMetaObject::invokeMethod(&hub, show));
            QVERIFY(!hub.grab().isNull());
        }
        m5qx_eq_crossover_setting_page page(nullptr);
        page.show();
        QVERIFY(!page.grab().isNull());
    }
    auto after = store->values();
    before.remove(QStringLiteral("AudioSetting_Page"));
    after.remove(QStringLiteral("AudioSetting_Page"));
    for (auto it = before.cbegin(); it != before.cend(); ++it)
        QVERIFY2(after.value(it.key()) == it.value(), qPrintable(it.key()));
    QCOMPARE(after.keys(), before.keys());

    // Touching everything harms nothing.
    {
        m5qx_mainwidget hub(nullptr);
        hub.show();
        for (const char* show : shows) {
            QVERIFY(QMetaObject::invokeMethod(&hub, show));
            const auto pages = hub.findChildren<QWidget*>();
            for (QWidget* page : pages) {
                if (page->isVisible() && page->size() == QSize(1024, 510))
                    touchEverything(page);
            }
        }
        m5qx_eq_crossover_setting_page page(nullptr);
        page.show();
        touchEverything(&page);
    }
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    hvaudio::AudioServiceHost::shutdown();
}

QTEST_MAIN(TestHostileStore)
#include "tst_hostilestore.moc"
