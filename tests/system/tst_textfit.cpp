// Every text of every screen, in every language, measured against the rectangle that the page gives it, the
// other texts and the controls beside it. What is measured is the ink: a line's unused height above and below
// may stand out, a glyph may not.

#include "tests/system/screens.h"

#include "M5QX/pa_balancefadercontrol.h"
#include "platform/common/texts/language.h"

#include <QAbstractButton>
#include <QAbstractSlider>
#include <QApplication>
#include <QGlyphRun>
#include <QLabel>
#include <QTextLayout>
#include <QtTest>

using namespace screens;

namespace {

QString say(const Text& text)
{
    const auto rect = [](const QRect& r) {
        return QStringLiteral("(%1,%2 %3x%4)").arg(r.x()).arg(r.y()).arg(r.width()).arg(r.height());
    };
    return QStringLiteral("%1 \"%2\" %3 in %4")
        .arg(text.widget->objectName(), QString(text.text).replace(QLatin1Char('\n'), QLatin1Char('|')),
             rect(text.drawn), rect(text.rect));
}

/// Whether what scrolls shows only a part of it.
bool isHalfScrolledAway(const QWidget* widget)
{
    for (const QWidget* parent = widget->parentWidget(); parent; parent = parent->parentWidget()) {
        if (parent->objectName() == QLatin1String("qt_scrollarea_viewport")) {
            const QRect there(widget->mapTo(parent, QPoint()), widget->size());
            return !parent->rect().contains(there);
        }
    }
    return false;
}

/// Everything in view that a finger moves or presses.
QVector<QWidget*> controls(const Screen& screen)
{
    QVector<QWidget*> found;
    for (QWidget* widget : screen.window()->findChildren<QWidget*>()) {
        const bool control = qobject_cast<QAbstractButton*>(widget) ||
                             qobject_cast<QAbstractSlider*>(widget) ||
                             qobject_cast<audiosetting::balanceFaderControl*>(widget);
        if (control && widget->isVisible() && !widget->size().isEmpty() && !isHalfScrolledAway(widget))
            found.append(widget);
    }
    return found;
}

/// A key's own text, or a label that is laid over the control to name it, which is one with its middle there.
bool names(const Text& text, const QWidget* control, const QRect& place)
{
    return text.widget == control || place.contains(text.rect.center());
}

QStringList faults(const Screen& screen)
{
    QStringList list;
    const QVector<Text> all = texts(screen);
    const QVector<QWidget*> keys = controls(screen);
    for (int i = 0; i < all.size(); ++i) {
        const Text& text = all.at(i);
        if (isHalfScrolledAway(text.widget))
            continue;
        if (!text.rect.contains(text.drawn))
            list.append(QStringLiteral("cut: ") + say(text));
        for (QWidget* parent = text.widget->parentWidget(); parent; parent = parent->parentWidget()) {
            const QRect room(parent->mapTo(screen.window(), QPoint()), parent->size());
            if (!room.contains(text.drawn))
                list.append(QStringLiteral("cut by %1: ").arg(parent->objectName()) + say(text));
            if (parent == screen.window())
                break;
        }
        for (const QWidget* key : keys) {
            const QRect place(key->mapTo(screen.window(), QPoint()), key->size());
            if (place.intersects(text.drawn) && !names(text, key, place))
                list.append(QStringLiteral("at %1: ").arg(key->objectName()) + say(text));
        }
        for (int other = 0; other < i; ++other) {
            // A pixel of air, or two words become one.
            if (text.drawn.adjusted(-1, -1, 1, 1).intersects(all.at(other).drawn) &&
                !isHalfScrolledAway(all.at(other).widget))
                list.append(QStringLiteral("overlap: ") + say(text) + QStringLiteral(" and ") +
                            say(all.at(other)));
        }
    }
    return list;
}

void everyPageAndLanguage()
{
    QTest::addColumn<int>("page");
    QTest::addColumn<QString>("language");
    const QStringList codes = cm::Language::codes();
    for (int page = 0; page < PageCount; ++page) {
        for (const QString& code : codes)
            QTest::newRow(qPrintable(QStringLiteral("%1 %2").arg(QLatin1String(name(Page(page))), code)))
                << page << code;
    }
}

} // namespace

class TestTextFit : public QObject
{
    Q_OBJECT
private slots:
    void noTextIsCutAndNoneTouchesAnother_data() { everyPageAndLanguage(); }
    void noTextIsCutAndNoneTouchesAnother();
    void everyTextStandsOnTheSameSideInEveryLanguage_data() { everyPageAndLanguage(); }
    void everyTextStandsOnTheSameSideInEveryLanguage();
    void aTextThatIsTooLongIsNoticed();
    void aTextThatLiesAtAControlIsNoticed();
    void labelsWithoutSizeKeepNone_data();
    void labelsWithoutSizeKeepNone();
    void everyTextIsReadInAFontOfItsOwnScript_data() { everyPageAndLanguage(); }
    void everyTextIsReadInAFontOfItsOwnScript();
};

void TestTextFit::noTextIsCutAndNoneTouchesAnother()
{
    QFETCH(int, page);
    QFETCH(QString, language);
    QStringList list;
    for (int condition = 0; condition < ConditionCount; ++condition) {
        Screen screen(Page(page), Condition(condition), language);
        QVERIFY(texts(screen).size() >= (page == MainCrossover ? 8 : 12)); // or nothing would be measured
        list += faults(screen);
        for (int view = 0; view < screen.furtherViews(); ++view) {
            screen.scroll();
            list += faults(screen);
        }
    }
    list.removeDuplicates();
    QVERIFY2(list.isEmpty(), qPrintable(QLatin1Char('\n') + list.join(QLatin1Char('\n'))));
}

void TestTextFit::everyTextStandsOnTheSameSideInEveryLanguage()
{
    // The picture beside a text and the line below it don't change sides either. Blanks count as room, and a
    // blank is on the other side of an Arabic text.
    constexpr int room = 10;
    QFETCH(int, page);
    QFETCH(QString, language);
    const Screen screen(Page(page), Used, language);
    const QVector<Text> all = texts(screen);
    for (const Text& text : all) {
        const auto* label = qobject_cast<const QLabel*>(text.widget);
        if (!label)
            continue;
        const int indent = qMax(0, label->indent());
        const int left = text.drawn.left() - text.rect.left() - indent;
        const int right = text.rect.right() - indent - text.drawn.right();
        if (label->alignment() & Qt::AlignRight)
            QVERIFY2(right <= room, qPrintable(say(text)));
        else if (label->alignment() & Qt::AlignHCenter)
            QVERIFY2(qAbs(left - right) <= 2 * room, qPrintable(say(text)));
        else
            QVERIFY2(left <= room, qPrintable(say(text)));
    }
}

void TestTextFit::aTextThatIsTooLongIsNoticed()
{
    Screen screen(AudioLevels, Used);
    QVERIFY(faults(screen).isEmpty());
    auto* label = qobject_cast<QLabel*>(screen.child("text_reset"));
    label->setText(QStringLiteral("ZURÜCKSETZEN AUF MITTE"));
    QVERIFY(faults(screen).join(QString()).contains(QLatin1String("cut: text_reset")));
    label->setText(QStringLiteral("RESET"));
    auto* balance = qobject_cast<QLabel*>(screen.child("txt_balance"));
    balance->move(label->pos());
    QVERIFY(faults(screen).join(QString()).contains(QLatin1String("overlap: ")));
}

void TestTextFit::aTextThatLiesAtAControlIsNoticed()
{
    // The label's own room reaches under the key.
    Screen screen(Volumes, Used);
    QVERIFY(faults(screen).isEmpty());
    qobject_cast<QLabel*>(screen.child("label_main_default"))
        ->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    QVERIFY(faults(screen).join(QString()).startsWith(
        QLatin1String("at key_main_default_down: label_main_default")));
}

void TestTextFit::labelsWithoutSizeKeepNone_data()
{
    QTest::addColumn<int>("page");
    QTest::addColumn<QString>("name");
    QTest::addColumn<QSize>("size");
    const struct
    {
        Page page;
        const char* label;
        QSize size;
    } rows[] = {
        // clang-format off
        {AudioLevels, "icon_eq",            {0, 0}},
        {AudioLevels, "text_titel",         {0, 0}},
        {AudioLevels, "icon_car",           {0, 386}},
        {AudioLevels, "text_up_level",      {0, 31}},
        {AudioLevels, "text_left_level",    {0, 31}},
        {AudioLevels, "text_right_level",   {0, 31}},
        {AudioLevels, "text_down_label",    {0, 31}},
        {AudioLevels, "bkg_audio_setting",  {0, 59}},
        {AudioLevels, "text_EQ_type",       {0, 59}},
        {Volumes,     "label_title_volume", {0, 50}},
        // clang-format on
    };
    for (const auto& row : rows)
        QTest::newRow(row.label) << int(row.page) << row.label << row.size;
}

void TestTextFit::labelsWithoutSizeKeepNone()
{
    QFETCH(int, page);
    QFETCH(QString, name);
    QFETCH(QSize, size);
    const QStringList codes = cm::Language::codes();
    for (const QString& code : codes) {
        const Screen screen(Page(page), Used, code);
        auto* label = screen.window()->findChild<QLabel*>(name);
        QVERIFY(label);
        QCOMPARE(label->size(), size);
    }
}

void TestTextFit::everyTextIsReadInAFontOfItsOwnScript()
{
    // A missing glyph is drawn as a box, and so is an unassigned character.
    QFETCH(int, page);
    QFETCH(QString, language);
    const Screen screen(Page(page), Used, language);
    const QVector<Text> all = texts(screen);
    for (const Text& text : all) {
        for (const uint character : text.text.toUcs4()) {
            if (character == '\n' || QChar::isSpace(character))
                continue;
            const QString one = QString::fromUcs4(&character, 1);
            QTextLayout layout(one, text.widget->font());
            layout.beginLayout();
            layout.createLine();
            layout.endLayout();
            const auto runs = layout.glyphRuns();
            QVERIFY2(!runs.isEmpty() && !runs.first().glyphIndexes().contains(0),
                     qPrintable(QStringLiteral("U+%1 in ").arg(character, 4, 16) + say(text)));
        }
    }
}

int main(int argc, char** argv)
{
    prepare();
    QApplication application(argc, argv);
    dress(application);
    TestTextFit test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_textfit.moc"
