#include "headunit/inspector/settingsmodel.h"

#include "platform/common/settings/settingsstore.h"

#include <QAbstractItemModelTester>
#include <QtTest>

using namespace headunit;

class TestSettingsModel : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void listsTheKeysOfTheUnitWithoutValues_data();
    void listsTheKeysOfTheUnitWithoutValues();
    void showsAndFollowsStoredValues();
    void listsKeysThatItDoesNotKnow();
    void onlyTheValueCanBeEdited();
    void editsInTheKeysType_data();
    void editsInTheKeysType();
    void refusesWhatDoesNotConvert();
    void unsetGivesTheKeyBackToItsDefault();

private:
    QVariant shown(const QString& key, SettingsModel::Column column, int role = Qt::DisplayRole) const
    {
        return m_model->index(m_model->rowOf(key), column).data(role);
    }
    QModelIndex valueOf(const QString& key) const
    {
        return m_model->index(m_model->rowOf(key), SettingsModel::Value);
    }

    QScopedPointer<SettingsModel> m_model;
    QScopedPointer<QAbstractItemModelTester> m_tester;
};

static mem::SettingsStore* store()
{
    return mem::SettingsStore::instance();
}

void TestSettingsModel::init()
{
    m_tester.reset();
    m_model.reset();
    store()->clear(); // never opened: it works from memory
    m_model.reset(new SettingsModel);
    m_tester.reset(
        new QAbstractItemModelTester(m_model.data(), QAbstractItemModelTester::FailureReportingMode::QtTest));
}

void TestSettingsModel::listsTheKeysOfTheUnitWithoutValues_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<QString>("type");
    QTest::newRow("a number") << "AudioSetting_Page"
                              << "int";
    QTest::newRow("a switch") << "customloudnes"
                              << "bool";
    QTest::newRow("a list") << "settings_cross_freq_index"
                            << "string";
    QTest::newRow("first of a row") << "eq10"
                                    << "int";
    QTest::newRow("last of a row") << "eq212"
                                   << "int";
    QTest::newRow("the service's own") << "AudioService_Balance"
                                       << "int";
    QTest::newRow("the unit's own") << "Headunit_Source_Radio"
                                    << "string";
}

void TestSettingsModel::listsTheKeysOfTheUnitWithoutValues()
{
    QFETCH(QString, key);
    QVERIFY(m_model->rowOf(key) >= 0);
    QCOMPARE(shown(key, SettingsModel::Key).toString(), key);
    QTEST(shown(key, SettingsModel::Type).toString(), "type");
    QCOMPARE(shown(key, SettingsModel::Value).toString(), QStringLiteral("not set"));
    QCOMPARE(m_model->rowOf("eq1%1"), -1);
    QCOMPARE(m_model->rowOf("eq213"), -1);
}

void TestSettingsModel::showsAndFollowsStoredValues()
{
    QSignalSpy changed(m_model.data(), SIGNAL(dataChanged(QModelIndex, QModelIndex, QVector<int>)));
    store()->setValue("AudioSetting_Page", 4, true);
    QCOMPARE(changed.count(), 1);
    QCOMPARE(shown("AudioSetting_Page", SettingsModel::Value).toString(), QStringLiteral("4"));
}

void TestSettingsModel::listsKeysThatItDoesNotKnow()
{
    const int rows = m_model->rowCount();
    store()->setValue("A_Key", QString("text"), true);
    QCOMPARE(m_model->rowCount(), rows + 1);
    QCOMPARE(m_model->rowOf("A_Key"), 0); // they stay sorted
    QCOMPARE(shown("A_Key", SettingsModel::Type).toString(), QStringLiteral("string"));
    store()->remove("A_Key");
    QCOMPARE(m_model->rowCount(), rows);
    store()->setValue("A_Key", 1, true);
    store()->clear();
    QCOMPARE(m_model->rowOf("A_Key"), -1);
}

void TestSettingsModel::onlyTheValueCanBeEdited()
{
    QVERIFY(m_model->flags(m_model->index(0, SettingsModel::Value)) & Qt::ItemIsEditable);
    QVERIFY(!(m_model->flags(m_model->index(0, SettingsModel::Key)) & Qt::ItemIsEditable));
    QVERIFY(!(m_model->flags(m_model->index(0, SettingsModel::Type)) & Qt::ItemIsEditable));
    QVERIFY(!m_model->setData(m_model->index(0, SettingsModel::Key), "x"));
}

void TestSettingsModel::editsInTheKeysType_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<QVariant>("typed");
    QTest::addColumn<QVariant>("stored");
    QTest::newRow("number from its editor") << "volume0" << QVariant(7) << QVariant(7);
    QTest::newRow("number from text") << "volume0" << QVariant("7") << QVariant(7);
    QTest::newRow("switch") << "lpfState" << QVariant(true) << QVariant(true);
    QTest::newRow("text of digits stays text")
        << "settings_cross_gain_index" << QVariant("1") << QVariant("1");
}

void TestSettingsModel::editsInTheKeysType()
{
    QFETCH(QString, key);
    QFETCH(QVariant, typed);
    QFETCH(QVariant, stored);
    // The editor is chosen by the type, also before there is a value.
    QCOMPARE(valueOf(key).data(Qt::EditRole).type(), stored.type());
    QVERIFY(m_model->setData(valueOf(key), typed));
    QCOMPARE(store()->value(key).type(), stored.type());
    QCOMPARE(store()->value(key), stored);
}

void TestSettingsModel::refusesWhatDoesNotConvert()
{
    store()->setValue("volume0", 5, true);
    QVERIFY(!m_model->setData(valueOf("volume0"), "loud"));
    QCOMPARE(store()->value("volume0"), QVariant(5));
}

void TestSettingsModel::unsetGivesTheKeyBackToItsDefault()
{
    store()->setValue("volume0", 5, true);
    m_model->unset(valueOf("volume0"));
    QVERIFY(!store()->value("volume0").isValid());
    QCOMPARE(shown("volume0", SettingsModel::Value).toString(), QStringLiteral("not set"));
    m_model->unset(QModelIndex()); // nothing chosen
}

QTEST_MAIN(TestSettingsModel)
#include "tst_settingsmodel.moc"
