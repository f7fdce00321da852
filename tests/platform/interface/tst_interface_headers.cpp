#include <QtTest>

/// That each header compiles alone is proved by building this executable: it carries one object a header,
/// whose source is that include and nothing else.
class TestInterfaceHeaders : public QObject
{
    Q_OBJECT
private slots:
    void everyHeaderIsCompiledAlone();
    void noHeaderIncludesWhatLiesBelow();
};

void TestInterfaceHeaders::everyHeaderIsCompiledAlone()
{
    const QStringList compiled = QString::fromUtf8(INTERFACE_HEADERS).simplified().split(QLatin1Char(' '));
    const QDir folder(QStringLiteral(INTERFACE_FOLDER));
    QStringList present;
    QDirIterator files(folder.path(), {QStringLiteral("*.h")}, QDir::Files, QDirIterator::Subdirectories);
    while (files.hasNext())
        present.append(folder.relativeFilePath(files.next()));
    present.sort();
    QStringList sorted = compiled;
    sorted.sort();
    QVERIFY(!present.isEmpty());
    QCOMPARE(sorted, present);
}

void TestInterfaceHeaders::noHeaderIncludesWhatLiesBelow()
{
    const QDir folder(QStringLiteral(INTERFACE_FOLDER));
    const QRegularExpression include(QStringLiteral("#include \"([^\"]+)\""));
    QDirIterator files(folder.path(), {QStringLiteral("*.h")}, QDir::Files, QDirIterator::Subdirectories);
    while (files.hasNext()) {
        QFile file(files.next());
        QVERIFY(file.open(QIODevice::ReadOnly));
        QRegularExpressionMatchIterator found = include.globalMatch(QString::fromUtf8(file.readAll()));
        while (found.hasNext()) {
            const QString header = found.next().captured(1);
            QVERIFY2(folder.exists(header),
                     qPrintable(file.fileName() + QStringLiteral(" includes ") + header));
        }
    }
}

QTEST_APPLESS_MAIN(TestInterfaceHeaders)
#include "tst_interface_headers.moc"
