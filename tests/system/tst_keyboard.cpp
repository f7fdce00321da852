// The keyboard and the screen reader on every screen: Tab goes through what can be worked, in reading order,
// and each of it says what it is.

#include "tests/system/screens.h"

#include "platform/common/texts/language.h"

#include <QAbstractButton>
#include <QAbstractSlider>
#include <QAccessible>
#include <QApplication>
#include <QScrollBar>
#include <QtTest>

using namespace screens;

namespace {

// clang-format off
const char* const orders[PageCount] = {
    "key_back Key_eqtype_minus Key_eqtype_plus",
    "key_up_level key_left_level key_right_btn key_reset_level key_down_level "
        "key_loudness key_subwoofer key_sub_level_down SUBWOOFER_LEVEL key_sub_level_up",
    "key_front key_rear key_subwoofer Key_troggle_phase "
        "key_filter_down key_filter_up key_slope_down key_slope_up key_level_down key_level_up",
    "Key_front_left_minus Key_front_left_plus Key_front_right_minus Key_front_right_plus "
        "Key_rear_left_minus Key_rear_left_plus Key_rear_right_minus Key_rear_right_plus "
        "key_reset Key_subwoofer_minus Key_subwoofer_plus key_preset1 key_preset2 key_preset3",
    "key_user1 key_jazz key_hiphop key_pop key_user2 key_rock key_rb key_flat",
    "key_main_default_down MAIN_VOLUME key_main_default_up key_ring_default_down RINGTONE key_ring_default_up "
        "key_call_default_down CALL key_call_default_up key_navi_default_down NAVIGATION key_navi_default_up "
        "key_voice_default_down VOICE key_voice_default_up key_source_radio_down RADIO key_source_radio_up "
        "key_source_usb_down USB key_source_usb_up key_source_btaudio_down BT_AUDIO key_source_btaudio_up "
        "key_source_avin_down AUX key_source_avin_up key_source_carplay_down CARPLAY key_source_carplay_up "
        "key_source_androidauto_down ANDROID_AUTO key_source_androidauto_up Key_prev_page Key_next_page",
    "key_back key_high_pass Key_hpf_freq_minus Key_hpf_freq_plus "
        "key_hpf_slope_6db key_hpf_slope_12db key_hpf_slope_18db "
        "key_low_pass Key_low_freq_minus Key_low_freq_plus "
        "key_low_slope_6db key_low_slope_12db key_low_slope_18db "
        "Key_subwoofer_freq_minus Key_subwoofer_freq_plus Key_subwoofer_level_minus Key_subwoofer_level_plus",
};
constexpr char tabBar[] = " key_balance_setting key_EQ_setting key_eq_preset key_crossover_setting key_audio_level "
                          "key_time_alignment";
// clang-format on

bool isSeen(const QWidget* widget)
{
    if (!widget->isVisible())
        return false;
    for (const QWidget* up = widget; up; up = up->parentWidget()) {
        if (up->size().isEmpty())
            return false;
    }
    return true;
}

/// Keys and sliders that are seen, or can be scrolled to, and are enabled. Without the emblem of a title, a
/// key by its kind only; scroll bars, which follow; and the touch pad, whose work the four arrow keys do.
QList<QWidget*> controls(const Screen& screen)
{
    QList<QWidget*> list;
    for (QWidget* widget : screen.window()->findChildren<QWidget*>()) {
        const bool control = qobject_cast<QAbstractButton*>(widget) || qobject_cast<QAbstractSlider*>(widget);
        const bool emblem = widget->objectName() == QLatin1String("key_back") && widget->x() < 100;
        const bool pad =
            widget->inherits("k41_audio_root_bf") || widget->inherits("audiosetting::balanceFaderControl");
        if (control && !emblem && !pad && !qobject_cast<QScrollBar*>(widget) && widget->isEnabled() &&
            isSeen(widget))
            list.append(widget);
    }
    return list;
}

QString spokenName(QWidget* widget)
{
    QAccessibleInterface* accessible = QAccessible::queryAccessibleInterface(widget);
    return accessible ? accessible->text(QAccessible::Name) : QString();
}

/// Sliders have no object name; the row's text is theirs.
QString nameOf(const QWidget* widget)
{
    if (!widget)
        return QString();
    return widget->objectName().isEmpty()
               ? widget->accessibleName().replace(QLatin1Char(' '), QLatin1Char('_'))
               : widget->objectName();
}

/// The order in which the page is read, without what isn't there or is disabled.
QStringList readingOrder(const Screen& screen, Page page)
{
    QStringList there;
    for (const QWidget* widget : controls(screen))
        there.append(nameOf(widget));
    QStringList order;
    const QString all =
        QLatin1String(orders[page]) + (page == MainCrossover ? QString() : QLatin1String(tabBar));
    for (const QString& one : all.split(QLatin1Char(' '))) {
        if (there.contains(one))
            order.append(one);
    }
    return order;
}

/// To the control that has the focus, as the window system does.
void press(const Screen& screen, Qt::Key key)
{
    QWidget* focused = QApplication::focusWidget();
    QTest::keyClick(focused ? focused : screen.window(), key);
}

/// Where that key stops, from the stop of that name once round.
QStringList stops(const Screen& screen, Qt::Key key, const QString& first)
{
    const int enough = controls(screen).size() + 5;
    for (int i = 0; i < enough && nameOf(QApplication::focusWidget()) != first; ++i)
        press(screen, key);
    QStringList list;
    for (int i = 0; i < enough; ++i) {
        const QString stop = nameOf(QApplication::focusWidget());
        if (i > 0 && stop == first)
            break;
        list.append(stop);
        press(screen, key);
    }
    return list;
}

} // namespace

class TestKeyboard : public QObject
{
    Q_OBJECT
private slots:
    void tabGoesThroughEveryControlInReadingOrder_data() { addScreenRows(); }
    void tabGoesThroughEveryControlInReadingOrder();
    void backtabGoesTheOtherWay();
    void theControlWithTheFocusIsOnTheScreen();
    void everyControlHasANameOfItsOwn_data() { tabGoesThroughEveryControlInReadingOrder_data(); }
    void everyControlHasANameOfItsOwn();
    void namesFollowTheLanguage();
    void spaceWorksTheKeyThatTabReached();
};

void TestKeyboard::tabGoesThroughEveryControlInReadingOrder()
{
    QFETCH(int, page);
    QFETCH(int, condition);
    const Screen screen{Page(page), Condition(condition)};
    const QStringList wanted = readingOrder(screen, Page(page));
    QCOMPARE(wanted.size(), controls(screen).size()); // each is in the table
    QCOMPARE(stops(screen, Qt::Key_Tab, wanted.first()), wanted);
}

void TestKeyboard::backtabGoesTheOtherWay()
{
    const Screen screen(TimeAlignment, Used);
    QStringList wanted = readingOrder(screen, TimeAlignment);
    std::reverse(wanted.begin(), wanted.end());
    QCOMPARE(stops(screen, Qt::Key_Backtab, wanted.first()), wanted);
}

void TestKeyboard::theControlWithTheFocusIsOnTheScreen()
{
    const Screen screen(Volumes, Used);
    const int count = controls(screen).size();
    for (int i = 0; i < 2 * count; ++i) { // the second time round the page stands scrolled
        press(screen, i < count + 5 ? Qt::Key_Tab : Qt::Key_Backtab);
        const QWidget* focused = QApplication::focusWidget();
        const QRect place(focused->mapTo(screen.window(), QPoint()), focused->size());
        QVERIFY2(place.top() >= 70 && place.bottom() < 600, qPrintable(nameOf(focused)));
        QVERIFY2(focused->visibleRegion().boundingRect() == focused->rect(), qPrintable(nameOf(focused)));
    }
}

void TestKeyboard::everyControlHasANameOfItsOwn()
{
    QFETCH(int, page);
    QFETCH(int, condition);
    const Screen screen{Page(page), Condition(condition)};
    QMap<QString, QString> owners;
    for (QWidget* widget : controls(screen)) {
        const QString spoken = spokenName(widget);
        QVERIFY2(spoken.contains(QRegularExpression(QStringLiteral("\\w"))), qPrintable(nameOf(widget)));
        // Two keys of the same name couldn't be told apart.
        QVERIFY2(
            !owners.contains(spoken),
            qPrintable(QStringLiteral("%1: %2 and %3").arg(spoken, nameOf(widget), owners.value(spoken))));
        owners.insert(spoken, nameOf(widget));
    }
}

void TestKeyboard::namesFollowTheLanguage()
{
    // Some captions are the same in every language of the unit, and so are the names of their keys.
    const QRegularExpression latin(QStringLiteral("^[\\x00-\\xFF]*$"));
    for (int page = 0; page < PageCount; ++page) {
        int translated = 0;
        const Screen screen(Page(page), Used, QStringLiteral("ru"));
        for (QWidget* widget : controls(screen))
            translated += !latin.match(spokenName(widget)).hasMatch();
        QVERIFY2(translated >= 4, name(Page(page)));
    }
}

void TestKeyboard::spaceWorksTheKeyThatTabReached()
{
    const Screen screen(Presets, Used);
    while (nameOf(QApplication::focusWidget()) != QLatin1String("key_rb"))
        press(screen, Qt::Key_Tab);
    auto* tile = qobject_cast<QAbstractButton*>(screen.child("key_rb"));
    QVERIFY(!tile->isChecked()); // looking at it did nothing yet
    QTest::keyClick(tile, Qt::Key_Space);
    QVERIFY(tile->isChecked());
}

int main(int argc, char** argv)
{
    prepare();
    QApplication application(argc, argv);
    dress(application);
    TestKeyboard test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_keyboard.moc"
