#include "headunit/remote/page.h"

#include <QtTest>

using namespace headunit;

class TestPage : public QObject
{
    Q_OBJECT
private slots:
    void policyNamesWhatStandsInThePageAndNothingElse();
    void pageNeedsNothingFromElsewhere();
    void everythingThatIsTouchedHasAName();
};

void TestPage::policyNamesWhatStandsInThePageAndNothingElse()
{
    const Page page;
    const QByteArray policy = page.policy("ws://127.0.0.1:1");
    for (const char* name : {"script", "style"}) {
        const QRegularExpression element(QString("<%1>(.*)</%1>").arg(name),
                                         QRegularExpression::DotMatchesEverythingOption);
        const QByteArray text = element.match(QString::fromUtf8(page.html())).captured(1).toUtf8();
        QVERIFY(!text.isEmpty());
        const QByteArray hash = QCryptographicHash::hash(text, QCryptographicHash::Sha256).toBase64();
        QVERIFY2(policy.contains(QByteArray(name) + "-src 'sha256-" + hash + "';"), policy);
        QCOMPARE(page.html().count(QByteArray("<") + name), 1);
    }
    QVERIFY(policy.startsWith("default-src 'none'; "));
    QVERIFY(policy.contains("connect-src ws://127.0.0.1:1;"));
    QVERIFY(!policy.contains("unsafe") && !policy.contains('*'));
}

void TestPage::pageNeedsNothingFromElsewhere()
{
    const QString html = QString::fromUtf8(Page().html());
    QVERIFY(html.startsWith("<!doctype html>"));
    for (const char* pattern : {"\\ssrc=", "@import", "url\\(", "\\sstyle=", "\\son[a-z]+=",
                                "\\b(eval|innerHTML|fetch)\\b", "href=\"(?!data:)"}) {
        const QRegularExpressionMatch match = QRegularExpression(pattern).match(html);
        QVERIFY2(!match.hasMatch(), qPrintable(match.captured()));
    }
}

void TestPage::everythingThatIsTouchedHasAName()
{
    const QString html = QString::fromUtf8(Page().html());
    QVERIFY(html.contains("<html lang=\"en\">"));
    QVERIFY(QRegularExpression("id=\"glass\"[^>]* aria-label=\"[^\"]+\" aria-describedby=\"help\"")
                .match(html)
                .hasMatch());
    QVERIFY(html.contains("aria-live=\"polite\""));
    QVERIFY(!html.contains("user-scalable=no") && !html.contains("maximum-scale"));
}

QTEST_GUILESS_MAIN(TestPage)
#include "tst_page.moc"
