#include "platform/common/texts/language.h"
#include "platform/common/widgets/palette.h"
#include "platform/common/widgets/unitstyle.h"

#include <QGlyphRun>
#include <QLabel>
#include <QPainter>
#include <QPushButton>
#include <QTextLayout>
#include <QtTest>

#include <cmath>
#include <memory>

namespace {

const QColor normalOff(10, 200, 10), normalOn(200, 10, 10), selectedOff(10, 10, 200),
    selectedOn(200, 10, 200), active(200, 200, 10), disabled(10, 200, 200);

QPixmap plain(const QColor& color)
{
    QPixmap pixmap(60, 40);
    pixmap.fill(color);
    return pixmap;
}

qreal luminance(const QColor& color)
{
    const auto linear = [](qreal c) { return c <= 0.03928 ? c / 12.92 : std::pow((c + 0.055) / 1.055, 2.4); };
    return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) + 0.0722 * linear(color.blueF());
}

qreal contrast(const QColor& a, const QColor& b)
{
    const qreal la = luminance(a) + 0.05, lb = luminance(b) + 0.05;
    return la > lb ? la / lb : lb / la;
}

/// The family that a letter is really drawn in.
QString familyOf(const QString& letter, const QFont& font)
{
    QTextLayout layout(letter, font);
    layout.beginLayout();
    layout.createLine();
    layout.endLayout();
    const QList<QGlyphRun> runs = layout.glyphRuns();
    if (runs.isEmpty() || runs.first().glyphIndexes().value(0) == 0)
        return {};
    return runs.first().rawFont().familyName().section(',', 0, 0); // the first one's engine knows them all
}

} // namespace

class tst_UnitStyle : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase() { cm::UnitStyle::install(*qApp); }

    void init()
    {
        QVERIFY(cm::Language::instance()->setCurrent("en"));
        m_window = std::make_unique<QWidget>();
        m_window->resize(300, 200);
        m_key = new QPushButton(m_window.get());
        m_key->setGeometry(20, 20, 60, 40);
        m_key->setFlat(true);
        m_key->setIconSize(QSize(60, 40));
        m_other = new QPushButton("other", m_window.get());
        m_other->setGeometry(120, 20, 120, 60);
        m_window->show();
        m_window->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
    }

    void cleanup() { m_window.reset(); }

    void aKeyShowsThePictureOfItsState_data()
    {
        QTest::addColumn<bool>("checked");
        QTest::addColumn<bool>("down");
        QTest::addColumn<QColor>("shown");
        QTest::newRow("at rest") << false << false << normalOff;
        QTest::newRow("checked") << true << false << normalOn;
        QTest::newRow("down") << false << true << selectedOff;
        QTest::newRow("checked and down") << true << true << selectedOff;
    }

    void aKeyShowsThePictureOfItsState()
    {
        QFETCH(bool, checked);
        QFETCH(bool, down);
        QFETCH(QColor, shown);
        m_key->setIcon(icon({{QIcon::Normal, QIcon::Off, normalOff},
                             {QIcon::Normal, QIcon::On, normalOn},
                             {QIcon::Selected, QIcon::Off, selectedOff},
                             {QIcon::Selected, QIcon::On, selectedOn}}));
        m_key->setCheckable(true);
        m_key->setChecked(checked);
        if (down)
            QTest::mousePress(m_key, Qt::LeftButton);
        QCOMPARE(centre(), shown);
        if (down)
            QTest::mouseRelease(m_key, Qt::LeftButton);
    }

    void aFingerThatSlidesOffLetsThePictureGo()
    {
        m_key->setIcon(
            icon({{QIcon::Normal, QIcon::Off, normalOff}, {QIcon::Selected, QIcon::Off, selectedOff}}));
        QTest::mousePress(m_key, Qt::LeftButton);
        QCOMPARE(centre(), selectedOff);
        QMouseEvent move(QEvent::MouseMove, QPoint(200, 100), m_key->mapToGlobal(QPoint(200, 100)),
                         Qt::NoButton, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(m_key, &move);
        QCOMPARE(centre(), normalOff);
        QTest::mouseRelease(m_key, Qt::LeftButton, Qt::NoModifier, QPoint(200, 100));
        QCOMPARE(centre(), normalOff);
    }

    void aPressedPictureInTheOnStateIsShownToo()
    {
        // Two preset tiles have it there.
        m_key->setIcon(icon({{QIcon::Normal, QIcon::Off, normalOff},
                             {QIcon::Normal, QIcon::On, normalOn},
                             {QIcon::Selected, QIcon::On, selectedOn}}));
        m_key->setDown(true);
        QCOMPARE(centre(), selectedOn);
    }

    void aKeyWithoutAPressedPictureKeepsItsOwn()
    {
        m_key->setIcon(icon({{QIcon::Normal, QIcon::Off, normalOff}, {QIcon::Normal, QIcon::On, normalOn}}));
        m_key->setDown(true);
        QCOMPARE(centre(), normalOff);
    }

    void hoverAndFocusShowNoOtherPicture()
    {
        m_key->setIcon(icon({{QIcon::Normal, QIcon::Off, normalOff}, {QIcon::Active, QIcon::Off, active}}));
        m_key->setFocus(Qt::OtherFocusReason);
        QVERIFY(m_key->hasFocus());
        QCOMPARE(centre(), normalOff);
    }

    void aDisabledKeyIsDimmedAndStillLegible()
    {
        QPixmap glyph(60, 40);
        glyph.fill(cm::palette::panel);
        QPainter(&glyph).fillRect(20, 10, 20, 20, QColor(cm::palette::ink));
        m_key->setIcon(QIcon(glyph));
        const QColor enabledInk = centre(), enabledFace = pixel(QPoint(5, 5));
        QCOMPARE(enabledInk, QColor(cm::palette::ink));
        m_key->setEnabled(false);
        const QColor ink = centre(), face = pixel(QPoint(5, 5));
        QVERIFY(luminance(ink) < luminance(enabledInk) / 3);
        QVERIFY(luminance(face) < luminance(enabledFace));
        QVERIFY2(contrast(ink, face) >= 3, qPrintable(QString::number(contrast(ink, face))));
        QCOMPARE(face, mix(QColor(cm::palette::panel), QColor(cm::palette::page)));
    }

    void aKeyDoesNotMoveWhenPressed()
    {
        QPixmap glyph(60, 40);
        glyph.fill(Qt::transparent);
        QPainter(&glyph).fillRect(20, 10, 20, 20, Qt::white);
        m_key->setIcon(QIcon(glyph));
        const QImage atRest = m_key->grab().toImage();
        m_key->setDown(true);
        QCOMPARE(m_key->grab().toImage(), atRest);
    }

    void aKeyHasNoFrame()
    {
        QPixmap empty(60, 40);
        empty.fill(Qt::transparent);
        m_key->setIcon(QIcon(empty));
        for (bool flat : {true, false})
            for (bool down : {false, true}) {
                m_key->setFlat(flat);
                m_key->setDown(down);
                const QImage image = m_key->grab().toImage();
                for (int y = 0; y < image.height(); ++y)
                    for (int x = 0; x < image.width(); ++x)
                        QCOMPARE(image.pixelColor(x, y), QColor(cm::palette::page));
            }
    }

    void aKeyOfTextAloneHasAFace()
    {
        QCOMPARE(pixel(QPoint(10, 30), m_other), QColor(cm::palette::panel));
        m_other->setDown(true);
        QCOMPARE(pixel(QPoint(10, 30), m_other), QColor(cm::palette::accentDeep));
    }

    void theFocusRingFollowsTheKeyboardAlone()
    {
        m_key->setIcon(icon({{QIcon::Normal, QIcon::Off, normalOff}}));
        m_other->setFocus();
        QTest::mouseClick(m_key, Qt::LeftButton);
        QVERIFY(!m_key->hasFocus()); // a touch takes no focus
        QVERIFY(!hasRing(m_key) && !hasRing(m_other));
        QTest::keyClick(m_window.get(), Qt::Key_Tab);
        QVERIFY(m_key->hasFocus());
        QVERIFY(hasRing(m_key));
        QTest::keyClick(m_window.get(), Qt::Key_Tab);
        QVERIFY(m_other->hasFocus());
        QVERIFY(hasRing(m_other));
        QVERIFY(!hasRing(m_key));
    }

    void aTouchTakesTheFocusRingAway()
    {
        QTest::keyClick(m_window.get(), Qt::Key_Tab);
        QWidget* focused = m_window->focusWidget();
        QVERIFY(focused);
        QVERIFY(hasRing(focused));
        QTest::mouseClick(m_window.get(), Qt::LeftButton, Qt::NoModifier, QPoint(150, 150));
        QVERIFY(!hasRing(focused));
        QCOMPARE(m_window->focusWidget(), focused); // the keyboard goes on from there
        QTest::keyClick(m_window.get(), Qt::Key_Tab);
        QVERIFY(hasRing(m_window->focusWidget()));
    }

    void everyPlainTextOfThePaletteIsLegible_data()
    {
        QTest::addColumn<QPalette::ColorGroup>("group");
        QTest::addColumn<qreal>("atLeast");
        QTest::newRow("enabled") << QPalette::Active << 7.0;
        QTest::newRow("window in the background") << QPalette::Inactive << 7.0;
        QTest::newRow("disabled") << QPalette::Disabled << 4.5;
    }

    void everyPlainTextOfThePaletteIsLegible()
    {
        QFETCH(QPalette::ColorGroup, group);
        QFETCH(qreal, atLeast);
        const QPalette palette = QApplication::palette();
        const QVector<QPair<QPalette::ColorRole, QPalette::ColorRole>> pairs{
            {QPalette::WindowText, QPalette::Window},       {QPalette::Text, QPalette::Base},
            {QPalette::Text, QPalette::AlternateBase},      {QPalette::ButtonText, QPalette::Button},
            {QPalette::ToolTipText, QPalette::ToolTipBase}, {QPalette::HighlightedText, QPalette::Highlight}};
        for (const auto& pair : pairs) {
            const qreal ratio = contrast(palette.color(group, pair.first), palette.color(group, pair.second));
            QVERIFY2(ratio >= atLeast, qPrintable(QString("role %1: %2").arg(pair.first).arg(ratio)));
        }
    }

    void theColoursAreThoseOfThePictures_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QRgb>("color");
        using namespace cm::palette;
        QTest::newRow("page") << "page" << page;
        QTest::newRow("well") << "well" << well;
        QTest::newRow("panel") << "panel" << panel;
        QTest::newRow("line") << "line" << line;
        QTest::newRow("line_strong") << "line_strong" << lineStrong;
        QTest::newRow("ink") << "ink" << ink;
        QTest::newRow("ink_dim") << "ink_dim" << inkDim;
        QTest::newRow("accent") << "accent" << accent;
        QTest::newRow("accent_bright") << "accent_bright" << accentBright;
        QTest::newRow("accent_deep") << "accent_deep" << accentDeep;
    }

    void theColoursAreThoseOfThePictures()
    {
        QFETCH(QString, name);
        QFETCH(QRgb, color);
        QFile file(PICTURE_PALETTE);
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QRegularExpression row("^set\\(" + name + "\\s+\"(#[0-9A-Fa-f]{6})\"",
                                     QRegularExpression::MultilineOption);
        const QRegularExpressionMatch match = row.match(QString::fromUtf8(file.readAll()));
        QVERIFY(match.hasMatch());
        QCOMPARE(QColor(match.captured(1)), QColor(color));
    }

    void everyScriptHasItsFamily_data()
    {
        QTest::addColumn<QString>("code");
        QTest::addColumn<QString>("letter");
        QTest::addColumn<QString>("family");
        for (const QString& code : cm::Language::codes()) {
            const bool japanese = code == "ja";
            const auto row = [&code](const char* script, const char* letter, const char* family) {
                QTest::newRow(qPrintable(code + ' ' + script)) << code << QString(letter) << QString(family);
            };
            row("Latin", "Ä", "Noto Sans");
            row("Cyrillic", "Ж", "Noto Sans");
            row("Arabic", "ض", "Noto Sans Arabic UI");
            row("kana", "プ", japanese ? "Noto Sans CJK JP" : "Noto Sans CJK SC");
            row("ideographs", "音", japanese ? "Noto Sans CJK JP" : "Noto Sans CJK SC");
        }
    }

    void everyScriptHasItsFamily()
    {
        QFETCH(QString, code);
        QFETCH(QString, letter);
        QFETCH(QString, family);
        QVERIFY(cm::Language::instance()->setCurrent(code));
        // As a label of a form has it: its own size, the family from the application.
        QLabel label;
        QFont font;
        font.setPointSize(16);
        label.setFont(font);
        QCOMPARE(familyOf(letter, label.font()), family);
        QCOMPARE(familyOf(letter, QFont("Noto Sans", 16)), family);
    }

    void theBaseSizeIsElevenPoints()
    {
        QCOMPARE(QApplication::font().pointSize(), 11);
        QCOMPARE(QLabel().font().pointSize(), 11);
    }

    void theFontOfAnUnknownLanguageIsTheEnglishOne()
    {
        QCOMPARE(cm::UnitStyle::font("xx"), cm::UnitStyle::font("en"));
    }

    void aMissingFamilyIsToldOnce()
    {
        // A second run of this program, on a machine without fonts; it changes languages, too.
        QTemporaryDir folder;
        QFile config(folder.filePath("fonts.conf"));
        QVERIFY(config.open(QIODevice::WriteOnly));
        config.write("<?xml version=\"1.0\"?><!DOCTYPE fontconfig SYSTEM \"fonts.dtd\"><fontconfig/>");
        config.close();
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert("FONTCONFIG_FILE", config.fileName());
        QProcess second;
        second.setProcessEnvironment(environment);
        second.start(QCoreApplication::applicationFilePath(), {"theDirectionOfTheLayoutNeverTurns"});
        QVERIFY(second.waitForFinished());
        const QByteArray said = second.readAllStandardOutput() + second.readAllStandardError();
        for (const char* family :
             {"Noto Sans", "Noto Sans Arabic UI", "Noto Sans CJK SC", "Noto Sans CJK JP"})
            QCOMPARE(said.count(QByteArray("font family \"") + family + "\" is not installed"), 1);
    }

    void aLineHigherThanWhatTheMarginsLeaveIsDrawnWhole()
    {
        QLabel label(QStringLiteral("gj"));
        label.setFont(QFont(label.font().family(), 28));
        label.resize(200, 41);
        label.setContentsMargins(0, 0, 0, 12);
        const QImage image = label.grab().toImage();
        bool tail = false;
        for (int y = 41 - 12; y < 41; ++y) {
            for (int x = 0; x < 200; ++x)
                tail = tail || image.pixel(x, y) != image.pixel(199, 0);
        }
        QVERIFY(tail);
    }

    void theDirectionOfTheLayoutNeverTurns()
    {
        QVERIFY(cm::Language::instance()->setCurrent("ar"));
        QApplication::sendPostedEvents();
        QCOMPARE(QApplication::layoutDirection(), Qt::LeftToRight);
        QCOMPARE(m_window->layoutDirection(), Qt::LeftToRight);
    }

private:
    struct Picture
    {
        QIcon::Mode mode;
        QIcon::State state;
        QColor color;
    };

    static QIcon icon(const QVector<Picture>& pictures)
    {
        QIcon all;
        for (const Picture& picture : pictures)
            all.addPixmap(plain(picture.color), picture.mode, picture.state);
        return all;
    }

    QColor pixel(const QPoint& pos, QWidget* widget = nullptr) const
    {
        return (widget ? widget : m_key)->grab().toImage().pixelColor(pos);
    }

    QColor centre() const { return pixel(m_key->rect().center()); }

    static bool hasRing(QWidget* widget)
    {
        const QImage image = widget->grab().toImage();
        return image.pixelColor(image.width() / 2, 1) == QColor(cm::palette::accentBright) &&
               image.pixelColor(1, image.height() / 2) == QColor(cm::palette::accentBright);
    }

    static QColor mix(const QColor& over, const QColor& under)
    {
        const QImage image = [&] {
            QImage both(1, 1, QImage::Format_RGB32);
            both.fill(under);
            QPainter painter(&both);
            painter.setOpacity(cm::palette::disabledOpacity);
            painter.drawPixmap(0, 0, plain(over));
            return both;
        }();
        return image.pixelColor(0, 0);
    }

    std::unique_ptr<QWidget> m_window;
    QPushButton* m_key = nullptr;
    QPushButton* m_other = nullptr;
};

QTEST_MAIN(tst_UnitStyle)
#include "tst_unitstyle.moc"
