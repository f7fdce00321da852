#include "headunit/front/statusbar.h"

#include "common/translator.h"
#include "headunit/inspector/unitpanel.h"
#include "headunit/sound/mastervolume.h"
#include "platform/common/settings/settingsstore.h"
#include "platform/common/texts/language.h"
#include "platform/common/widgets/unitstyle.h"

#include <QLabel>
#include <QtTest>

using namespace headunit;

/// Whether the driver learns that settings won't be kept.
class TestStatusBar : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase() { cm::UnitStyle::install(*qApp); }
    void init();
    void cleanup();
    void markStandsWhileTheStoreKeepsNothing();
    void markSpeaksTheUnitsLanguage_data();
    void markSpeaksTheUnitsLanguage();
    void inspectorSaysWhy();

private:
    /// Between volume and clock, which goes on.
    QImage middle() { return m_bar->grab().toImage().copy(190, 0, 1024 - 140 - 190, StatusBar::barHeight); }
    bool openDurably() { return store()->open(m_folder.filePath("settings.db")) == Opened::Durable; }
    /// Below a file, where nobody can write.
    bool openInMemory();

    using Opened = mem::SettingsStore::Opened;
    static mem::SettingsStore* store() { return mem::SettingsStore::instance(); }

    QTemporaryDir m_folder;
    QScopedPointer<MasterVolume> m_volume;
    QScopedPointer<StatusBar> m_bar;
};

void TestStatusBar::init()
{
    cm::Language::instance()->setCurrent("en");
    QVERIFY(openDurably());
    m_volume.reset(new MasterVolume);
    m_bar.reset(new StatusBar(m_volume.data(), nullptr));
    m_bar->resize(1024, StatusBar::barHeight);
    m_bar->show();
}

void TestStatusBar::cleanup()
{
    m_bar.reset();
    m_volume.reset();
    store()->close();
}

bool TestStatusBar::openInMemory()
{
    QFile file(m_folder.filePath("file"));
    QString message;
    return file.open(QIODevice::WriteOnly) &&
           store()->open(m_folder.filePath("file/settings.db"), &message) == Opened::Memory;
}

void TestStatusBar::markStandsWhileTheStoreKeepsNothing()
{
    const QImage unmarked = middle();
    QVERIFY(openInMemory());
    QVERIFY(middle() != unmarked);
    QVERIFY(openDurably());
    QCOMPARE(middle(), unmarked);
}

void TestStatusBar::markSpeaksTheUnitsLanguage_data()
{
    QTest::addColumn<QString>("code");
    for (const QString& code : cm::Language::codes())
        QTest::newRow(qPrintable(code)) << code;
}

void TestStatusBar::markSpeaksTheUnitsLanguage()
{
    QFETCH(QString, code);
    QVERIFY(openInMemory());
    const QImage english = middle();
    QVERIFY(cm::Language::instance()->setCurrent(code));
    QCOMPARE(middle() == english, code == "en");
    // All of its words are there: sign and text end before volume and clock.
    QFont font = m_bar->font();
    font.setPixelSize(26);
    const int width = QFontMetrics(font).horizontalAdvance(Translator::translate(StatusBar::notKeptText));
    QVERIFY2(width <= middle().width() - 50, qPrintable(QString::number(width)));
}

void TestStatusBar::inspectorSaysWhy()
{
    UnitPanel panel(nullptr);
    auto* line = panel.findChild<QLabel*>("store");
    QVERIFY(line);
    QCOMPARE(line->text(), store()->path());
    QVERIFY(openInMemory());
    panel.show();
    QVERIFY2(line->text().startsWith("Settings won't be kept: "), qPrintable(line->text()));
    QVERIFY2(line->text().contains(store()->problem()) && !store()->problem().isEmpty(),
             qPrintable(line->text()));
    cm::Language::instance()->setCurrent("de");
    QVERIFY2(line->text().startsWith("Einstellungen werden nicht gespeichert: "), qPrintable(line->text()));
    QVERIFY(openDurably());
    QCOMPARE(line->text(), store()->path());
}

QTEST_MAIN(TestStatusBar)
#include "tst_statusbar.moc"
