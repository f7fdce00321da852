#include "M5QX/pasetuptogglekey.h"
#include "tests/M5QX/formcheck.h"

#include <QtTest>

class TestPaSetupToggleKey : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void showsPictureAndTextOfTheState_data();
    void showsPictureAndTextOfTheState();
    void onPicturesOfTheTwoStylesDifferAndOffIsTheSame();
    void withoutALabelOnlyTheIconChanges();
    void textsWithoutLabelAreAccepted();
    void newTextsShowWithTheNextState();
    void hasNoParentAndLeavesKeyAndLabelAlone();

private:
    QScopedPointer<QPushButton> m_key;
    QScopedPointer<QLabel> m_label;
};

namespace {

constexpr char onPicture[] = ":/dual_icon/setup_btn_on_p.png";
constexpr char onPictureOfStyle1[] = ":/vexa_m5qx_audiosettingicon/eq_btn_on1_n.png";
constexpr char offPicture[] = ":/dual_icon/setup_btn_off_n.png";

bool keyShows(const QPushButton& key, const char* path)
{
    const QSize size = QPixmap(QLatin1String(path)).size();
    return formcheck::shows(key.icon(), size, QIcon::Normal, QIcon::Off, path);
}

} // namespace

void TestPaSetupToggleKey::init()
{
    m_key.reset(new QPushButton);
    m_label.reset(new QLabel);
}

void TestPaSetupToggleKey::showsPictureAndTextOfTheState_data()
{
    QTest::addColumn<bool>("on");
    QTest::addColumn<int>("style"); // -1: showToggleSWKey()
    QTest::addColumn<QByteArray>("picture");
    QTest::addColumn<QString>("text");
    // clang-format off
    QTest::newRow("on, style 1")     << true  <<  1 << QByteArray(onPictureOfStyle1) << "yes";
    QTest::newRow("on, style 0")     << true  <<  0 << QByteArray(onPicture)       << "yes";
    QTest::newRow("on, style 2")     << true  <<  2 << QByteArray(onPicture)       << "yes";
    QTest::newRow("off, style 1")    << false <<  1 << QByteArray(offPicture)      << "no";
    QTest::newRow("off, style 0")    << false <<  0 << QByteArray(offPicture)      << "no";
    QTest::newRow("switch key, on")  << true  << -1 << QByteArray(onPicture)       << "yes";
    QTest::newRow("switch key, off") << false << -1 << QByteArray(offPicture)      << "no";
    // clang-format on
}

void TestPaSetupToggleKey::showsPictureAndTextOfTheState()
{
    QFETCH(bool, on);
    QFETCH(int, style);
    QFETCH(QByteArray, picture);
    QFETCH(QString, text);
    PaSetupToggleKey toggle(m_key.data(), m_label.data(), QStringLiteral("yes"), QStringLiteral("no"));
    if (style < 0)
        toggle.showToggleSWKey(on);
    else
        toggle.showToggleKey(on, style);
    QVERIFY(keyShows(*m_key, picture.constData()));
    QCOMPARE(m_label->text(), text);
}

void TestPaSetupToggleKey::onPicturesOfTheTwoStylesDifferAndOffIsTheSame()
{
    PaSetupToggleKey toggle(m_key.data());
    const auto image = [&](bool on, int style) {
        toggle.showToggleKey(on, style);
        return m_key->icon().pixmap(400, 400).toImage();
    };
    const QImage off = image(false, 0);
    QVERIFY(!off.isNull());
    QVERIFY(image(true, 1) != image(true, 0));
    QVERIFY(image(true, 0) != off);
    QCOMPARE(image(false, 1), off);
}

void TestPaSetupToggleKey::withoutALabelOnlyTheIconChanges()
{
    m_key->setText(QStringLiteral("caption"));
    m_key->setCheckable(true);
    PaSetupToggleKey toggle(m_key.data());
    toggle.showToggleKey(true, 1);
    QVERIFY(keyShows(*m_key, onPictureOfStyle1));
    toggle.showToggleSWKey(false);
    QVERIFY(keyShows(*m_key, offPicture));
    QCOMPARE(m_key->text(), QStringLiteral("caption"));
    QVERIFY(!m_key->isChecked());
}

void TestPaSetupToggleKey::textsWithoutLabelAreAccepted()
{
    PaSetupToggleKey toggle(m_key.data(), nullptr, QStringLiteral("yes"), QStringLiteral("no"));
    toggle.setLabelsString(QStringLiteral("1"), QStringLiteral("0"));
    toggle.showToggleKey(true, 0);
    QVERIFY(keyShows(*m_key, onPicture));
    QCOMPARE(m_key->text(), QString());
}

void TestPaSetupToggleKey::newTextsShowWithTheNextState()
{
    PaSetupToggleKey toggle(m_key.data(), m_label.data(), QStringLiteral("yes"), QStringLiteral("no"));
    toggle.showToggleSWKey(true);
    toggle.setLabelsString(QStringLiteral("180"), QStringLiteral("0"));
    QCOMPARE(m_label->text(), QStringLiteral("yes"));
    toggle.showToggleSWKey(true);
    QCOMPARE(m_label->text(), QStringLiteral("180"));
    toggle.showToggleKey(false, 1);
    QCOMPARE(m_label->text(), QStringLiteral("0"));
}

void TestPaSetupToggleKey::hasNoParentAndLeavesKeyAndLabelAlone()
{
    const QPointer<QPushButton> key(m_key.data());
    const QPointer<QLabel> label(m_label.data());
    {
        PaSetupToggleKey toggle(m_key.data(), m_label.data(), QString(), QString());
        QVERIFY(!toggle.parent());
    }
    QVERIFY(key && label);
}

QTEST_MAIN(TestPaSetupToggleKey)
#include "tst_pasetuptogglekey.moc"
