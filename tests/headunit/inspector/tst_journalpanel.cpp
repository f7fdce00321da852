#include "headunit/inspector/journalpanel.h"

#include "headunit/inspector/journalmodel.h"

#include "platform/common/framework/journal.h"

#include <QAbstractItemModelTester>
#include <QLineEdit>
#include <QScrollBar>
#include <QTableView>
#include <QtTest>

using namespace headunit;

class TestJournalPanel : public QObject
{
    Q_OBJECT
private slots:
    void showsWhatWasRecordedBefore();
    void followsNewEntries();
    void keepsTheNewestOfVeryMany();
    void clearEmptiesTheTableOnly();
    void filterWantsEveryWord();
    void tableFollowsItsEndUnlessTheReaderScrolledUp();
};

static void record(const QString& operation)
{
    cm::Journal::instance()->record("Test", operation);
}

static QString operationIn(const QAbstractItemModel* model, int row)
{
    return model->index(row, JournalModel::Operation).data().toString();
}

void TestJournalPanel::showsWhatWasRecordedBefore()
{
    record("early()");
    JournalModel model;
    QCOMPARE(operationIn(&model, model.rowCount() - 1), QStringLiteral("early()"));
    QCOMPARE(model.index(model.rowCount() - 1, JournalModel::Subsystem).data().toString(),
             QStringLiteral("Test"));
}

void TestJournalPanel::followsNewEntries()
{
    JournalModel model;
    QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
    const int rows = model.rowCount();
    record("late(1)");
    QCOMPARE(model.rowCount(), rows + 1);
    QCOMPARE(operationIn(&model, rows), QStringLiteral("late(1)"));
}

void TestJournalPanel::keepsTheNewestOfVeryMany()
{
    JournalModel model;
    const int many = JournalModel::kept + 3 * JournalModel::batch;
    for (int i = 0; i < many; ++i)
        record(QString::number(i));
    QVERIFY(model.rowCount() >= JournalModel::kept);
    QVERIFY(model.rowCount() <= JournalModel::kept + JournalModel::batch);
    QCOMPARE(operationIn(&model, model.rowCount() - 1), QString::number(many - 1));
    QCOMPARE(operationIn(&model, 0), QString::number(many - model.rowCount()));
}

void TestJournalPanel::clearEmptiesTheTableOnly()
{
    record("kept()");
    JournalModel model;
    const int entries = cm::Journal::instance()->entries().size();
    model.clear();
    QCOMPARE(model.rowCount(), 0);
    QCOMPARE(cm::Journal::instance()->entries().size(), entries);
}

void TestJournalPanel::filterWantsEveryWord()
{
    JournalPanel panel(nullptr);
    auto* table = panel.findChild<QTableView*>("journal_table");
    auto* filter = panel.findChild<QLineEdit*>("journal_filter");
    QVERIFY(table && filter);
    record("setNeedle(1)");
    record("getNeedle()");
    filter->setText("test NEEDLE");
    QCOMPARE(table->model()->rowCount(), 2);
    filter->setText("needle set");
    QCOMPARE(table->model()->rowCount(), 1);
    QCOMPARE(operationIn(table->model(), 0), QStringLiteral("setNeedle(1)"));
    record("setNeedle(2)"); // live, too
    QCOMPARE(table->model()->rowCount(), 2);
    filter->clear();
    QVERIFY(table->model()->rowCount() >= 3);
}

void TestJournalPanel::tableFollowsItsEndUnlessTheReaderScrolledUp()
{
    JournalPanel panel(nullptr);
    panel.resize(400, 300);
    panel.show();
    for (int i = 0; i < 100; ++i)
        record("fill()");
    QScrollBar* bar = panel.findChild<QTableView*>("journal_table")->verticalScrollBar();
    QTRY_VERIFY(bar->maximum() > 0);
    QTRY_COMPARE(bar->value(), bar->maximum());
    record("more()");
    QTRY_COMPARE(bar->value(), bar->maximum());
    bar->setValue(3);
    record("more()");
    QCoreApplication::processEvents();
    QCOMPARE(bar->value(), 3);
}

QTEST_MAIN(TestJournalPanel)
#include "tst_journalpanel.moc"
