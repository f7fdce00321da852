#pragma once

#include "hvaudio/audioservice.h"
#include "platform/common/settings/settingsstore.h"
#include "platform/hvaudio/dsp/settings.h"
#include "platform/hvaudioservice/audioservicehost.h"
#include "tests/support/askedsound.h"
#include "tests/support/messagelog.h"

#include <QtTest>

#include <functional>

using hvaudio::AudioService;
using hvaudio::AudioServiceHost;
using hvaudio::dsp::Settings;
using mem::SettingsStore;

using Call = std::function<void(AudioService*)>;
using Check = std::function<bool(const Settings&)>;
Q_DECLARE_METATYPE(Call)
Q_DECLARE_METATYPE(Check)

/// A unit with a store of its own for each test function, powered on, with an ear where the sound would be.
class ServiceFixture : public QObject
{
    Q_OBJECT
protected:
    QString m_path;
    Settings m_heard;
    int m_heardCount = 0;

    AudioService* service() { return AudioService::instance(); }
    SettingsStore* store() { return SettingsStore::instance(); }
    QVariant stored(const char* key) { return store()->value(QLatin1String(key)); }
    void setStored(const char* key, const QVariant& value)
    {
        QVERIFY(store()->setValue(QLatin1String(key), value, true));
    }
    void listen()
    {
        AudioServiceHost::setSink([this](const Settings& settings) {
            m_heard = settings;
            ++m_heardCount;
        });
    }
    void start()
    {
        QCOMPARE(store()->open(m_path), SettingsStore::Opened::Durable);
        listen();
        AudioServiceHost::powerOn();
    }
    void restart()
    {
        AudioServiceHost::powerOff();
        AudioServiceHost::shutdown();
        store()->close();
        start();
    }

private slots:
    void init()
    {
        static int number = 0;
        m_path = m_folder.filePath(QStringLiteral("%1.db").arg(++number));
        start();
    }
    void cleanup()
    {
        AudioServiceHost::setSink(nullptr);
        AudioServiceHost::setBeeper(nullptr);
        AudioServiceHost::shutdown();
        store()->close();
    }

private:
    QTemporaryDir m_folder;
};
