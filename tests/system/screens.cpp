#include "tests/system/screens.h"

#include "M5QX/m5qx_audiosetting_crossover_setting_page.h"
#include "M5QX/m5qx_mainwidget.h"
#include "platform/common/settings/settingsstore.h"
#include "platform/common/texts/language.h"
#include "platform/common/widgets/unitstyle.h"
#include "platform/hvaudioservice/audioservicehost.h"

#include <QAbstractButton>
#include <QApplication>
#include <QLabel>
#include <QLoggingCategory>
#include <QPainter>
#include <QScrollArea>
#include <QScrollBar>
#include <QStyle>
#include <QTest>

namespace screens {

namespace {

struct PageRow
{
    const char* name;
    const char* show; ///< the hub's slot; null: not the hub's
};

// clang-format off
constexpr PageRow pageRows[] = {
    {"equalizer",      "onShowEQSettingPage"},
    {"audio-levels",   "onShowAudioLevelsPage"},
    {"crossover",      "onShowCrossoverSettingsPage"},
    {"time-alignment", "onShowTimeAlignmentPage"},
    {"eq-presets",     "onShowEQPresetPage"},
    {"volume-levels",  "onShowVolumeLevelPage"},
    {"main-crossover", nullptr},
};
constexpr const char* conditionNames[] = {"delivered", "used", "lowest", "highest", "switched"};

/// What the store holds in a condition, where it is one value.
struct Stored
{
    const char* key;
    QVariant used, lowest, highest, switched; ///< invalid: absent
};

const Stored storedRows[] = {
    {"subwooferOnOff",              true,              true,              true,                 false},
    {"subwooferLevel",              128 | 4,           128 | 12,          128 | 0,              11},
    {"customloudnes",               true,              false,             true,                 true},
    {"settings_cross_filter",       0,                 1,                 0,                    2},
    {"settings_cross_freq_index",   "0;4;1;7;2;6",     "0;1;1;1;2;1",     "0;8;1;8;2;8",        "0;0;1;0;2;6"},
    {"settings_cross_gain_index",   "0;2;1;5;2;4",     "0;12;1;12;2;12",  "0;0;1;0;2;0",        "0;0;1;0;2;4"},
    {"settings_cross_slope_index",  "0;1;1;3;2;2",     "0;0;1;0;2;0",     "0;3;1;3;2;3",        "0;0;1;0;2;0"},
    {"Audio_Phase_Troggle",         true,              false,             true,                 true},
    {"Audio_Time_Alignment_Preset", 1,                 0,                 0,                    2},
    {"hpfState",                    true,              true,              true,                 false},
    {"hpfFreq",                     3,                 1,                 5,                    3},
    {"hpfslope",                    2,                 0,                 2,                    1},
    {"lpfState",                    true,              true,              true,                 true},
    {"lpfFreq",                     3,                 1,                 5,                    2},
    {"lpfslope",                    1,                 0,                 2,                    0},
    {"subwooferFreq",               3,                 0,                 4,                    3},
    {"AudioService_Balance",        4,                 -15,               15,                   0},
    {"AudioService_Fader",          -7,                -15,               15,                   0},
};
// clang-format on
static_assert(std::size(pageRows) == PageCount, "one row a page");
static_assert(std::size(conditionNames) == ConditionCount, "one name a condition");

constexpr int drawnCurve[] = {-6, -2, 3, 7, 9, 6, 1, -3, -5, -2, 2, 5, 8};
constexpr int drawnDelays[] = {12, 0, 35, 48, 100};

void store(const QString& key, const QVariant& value)
{
    if (value.isValid())
        mem::SettingsStore::instance()->setValue(key, value, false);
}

void fillStore(Condition condition)
{
    mem::SettingsStore::instance()->clear();
    if (condition == Delivered)
        return;
    for (const Stored& row : storedRows) {
        const QVariant values[] = {QVariant(), row.used, row.lowest, row.highest, row.switched};
        store(QLatin1String(row.key), values[condition]);
    }
    const bool low = condition == Lowest;
    const bool end = low || condition == Highest;
    for (int band = 0; band < 13; ++band)
        store(QStringLiteral("eq1%1").arg(band), end ? (low ? -10 : 10) : drawnCurve[band]);
    for (int item = 0; item < 5; ++item) {
        const int delay = end ? (low ? 0 : 100) : drawnDelays[item];
        for (int preset = 1; preset <= 3; ++preset)
            store(QStringLiteral("Audio_Time_Alignment_Num%1%2").arg(preset).arg(item), delay);
    }
    if (!end)
        return;
    for (const char* key :
         {"Setup_Main_Volume", "Setup_Volume_Type_BT_Ringer", "Setup_Volume_Type_BT_Talking",
          "Setup_Volume_Type_Navi", "Setup_Volume_Type_Voice"})
        store(QLatin1String(key), low ? 0 : 50);
    for (const char* key :
         {"Setup_Input_Gain_Type_Radio", "Setup_Input_Gain_Type_USB", "Setup_Input_Gain_Type_BT_Audio",
          "Setup_Input_Gain_Type_AUX", "Setup_Input_Gain_Type_Carplay", "Setup_Input_Gain_Type_Android_Auto",
          "Setup_Input_Gain_Type_DAB"})
        store(QLatin1String(key), low ? 0 : 15);
}

/// Lets posted events, deferred deletions and paints happen.
void settle()
{
    for (int i = 0; i < 3; ++i) {
        QCoreApplication::processEvents();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
}

QString textOf(const QWidget* widget)
{
    if (const auto* label = qobject_cast<const QLabel*>(widget))
        return label->text();
    if (const auto* key = qobject_cast<const QAbstractButton*>(widget))
        return key->text();
    return QString();
}

QRect inked(const QImage& image)
{
    QRect ink;
    for (int y = 0; y < image.height(); ++y) {
        const auto* line = reinterpret_cast<const QRgb*>(image.constScanLine(y));
        int first = -1;
        int last = -1;
        for (int x = 0; x < image.width(); ++x) {
            if (qAlpha(line[x]) < 48) // the outermost haze of antialiasing isn't missed
                continue;
            first = first < 0 ? x : first;
            last = x;
        }
        if (first >= 0)
            ink |= QRect(first, y, last - first + 1, 1);
    }
    return ink;
}

QScrollArea* scrollArea(const QWidget* window)
{
    for (QScrollArea* area : window->findChildren<QScrollArea*>()) {
        if (area->isVisible())
            return area;
    }
    return nullptr;
}

} // namespace

const char* name(Page page)
{
    return pageRows[page].name;
}

const char* name(Condition condition)
{
    return conditionNames[condition];
}

void addScreenRows()
{
    QTest::addColumn<int>("page");
    QTest::addColumn<int>("condition");
    for (int page = 0; page < PageCount; ++page) {
        for (int condition = 0; condition < ConditionCount; ++condition)
            QTest::newRow(qPrintable(QStringLiteral("%1 %2").arg(QLatin1String(name(Page(page))),
                                                                 QLatin1String(name(Condition(condition))))))
                << page << condition;
    }
}

void prepare()
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("FONTCONFIG_FILE", AUDIOSETTING_TESTS "/golden/fonts.conf");
    for (const char* scale :
         {"QT_SCALE_FACTOR", "QT_FONT_DPI", "QT_SCREEN_SCALE_FACTORS", "QT_STYLE_OVERRIDE"})
        qunsetenv(scale);
    QCoreApplication::setAttribute(Qt::AA_DisableHighDpiScaling);
    // The pages write a line for almost every slot; a report would drown in them.
    QLoggingCategory::setFilterRules(QStringLiteral("*.debug=false\n*.warning=false"));
}

void dress(QApplication& application)
{
    cm::UnitStyle::install(application);
    application.setCursorFlashTime(0);
}

Screen::Screen(Page page, Condition condition, const QString& language)
    : m_page(page)
{
    cm::Language::instance()->setCurrent(language);
    fillStore(condition);
    hvaudio::AudioServiceHost::setFilterTables(page == MainCrossover
                                                   ? hvaudio::AudioServiceHost::FilterTables::MainAudio
                                                   : hvaudio::AudioServiceHost::FilterTables::SpeakerGroups);
    hvaudio::AudioServiceHost::powerOn();
    auto* service = hvaudio::AudioService::instance();
    service->setEQType(AudioEQType(condition == Delivered ? 0 : 6), true);
    if (condition == Lowest || condition == Highest) {
        for (const int channel : {0, 1, 2, 4, 5})
            service->setVolumeLevel(condition == Lowest ? 0 : 50, channel);
    }
    if (pageRows[page].show) {
        auto* hub = new audiosetting::m5qx_mainwidget(nullptr);
        m_window.reset(hub);
        QMetaObject::invokeMethod(hub, pageRows[page].show);
    } else {
        m_window.reset(new audiosetting::m5qx_eq_crossover_setting_page(nullptr));
    }
    m_window->resize(1024, page == MainCrossover ? 510 : 600);
    m_window->show();
    m_window->activateWindow();
    settle();
}

Screen::~Screen()
{
    m_window.reset();
    settle();
    hvaudio::AudioServiceHost::shutdown();
}

QWidget* Screen::child(const char* name) const
{
    for (QWidget* widget : m_window->findChildren<QWidget*>(QLatin1String(name))) {
        if (widget->isVisible())
            return widget;
    }
    qFatal("the page %s shows no \"%s\"", screens::name(m_page), name);
    return nullptr;
}

int Screen::furtherViews() const
{
    const QScrollArea* area = scrollArea(m_window.get());
    if (!area)
        return 0;
    const int page = area->viewport()->height();
    return (area->widget()->height() - 1) / page;
}

void Screen::scroll()
{
    QScrollArea* area = scrollArea(m_window.get());
    QScrollBar* bar = area->verticalScrollBar();
    bar->setValue(bar->value() + area->viewport()->height());
    settle();
}

QImage Screen::picture() const
{
    QImage image(m_window->size(), QImage::Format_RGB32);
    image.fill(Qt::black);
    m_window->render(&image);
    return image;
}

QRect drawnRect(const QWidget* widget, const QString& text)
{
    QRect place = widget->rect();
    int flags = Qt::AlignCenter;
    if (const auto* label = qobject_cast<const QLabel*>(widget)) {
        const auto direction = text.isRightToLeft() ? Qt::RightToLeft : Qt::LeftToRight;
        flags = QStyle::visualAlignment(direction, label->alignment());
        flags |= direction == Qt::RightToLeft ? Qt::TextForceRightToLeft : Qt::TextForceLeftToRight;
        if (label->wordWrap())
            flags |= Qt::TextWordWrap;
        place = label->contentsRect();
        place.adjust(label->margin(), label->margin(), -label->margin(), -label->margin());
        const int indent = qMax(0, label->indent());
        if (flags & Qt::AlignLeft)
            place.setLeft(place.left() + indent);
        if (flags & Qt::AlignRight)
            place.setRight(place.right() - indent);
    }
    flags |= Qt::TextDontClip;
    // The lines, wanted whole where they don't fit, and as much air as any glyph stands out of its line.
    constexpr int air = 40;
    const QRect lines = QFontMetrics(widget->font()).boundingRect(place, flags, text);
    const QRect around = lines.adjusted(-air, -air, air, air);
    QImage image(around.size(), QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.translate(-around.topLeft());
    painter.setFont(widget->font());
    painter.setPen(Qt::white);
    painter.drawText(place, flags, text);
    painter.end();
    const QRect ink = inked(image);
    return ink.isNull() ? QRect() : ink.translated(around.topLeft());
}

QVector<Text> texts(const Screen& screen)
{
    QVector<Text> found;
    QWidget* window = screen.window();
    for (QWidget* widget : window->findChildren<QWidget*>()) {
        const QString text = textOf(widget);
        if (text.trimmed().isEmpty() || !widget->isVisible() || widget->size().isEmpty())
            continue;
        const QPoint origin = widget->mapTo(window, QPoint());
        const QRect rect(origin, widget->size());
        QRect seen = window->rect() & rect;
        for (QWidget* parent = widget->parentWidget(); parent && parent != window;
             parent = parent->parentWidget())
            seen &= QRect(parent->mapTo(window, QPoint()), parent->size());
        if (seen.isEmpty())
            continue;
        found.append({widget, text, rect, drawnRect(widget, text).translated(origin), widget->isEnabled()});
    }
    return found;
}

QString longestLanguage(Page page)
{
    QString longest;
    int most = 0;
    for (const QString& code : cm::Language::codes()) {
        const Screen screen(page, Used, code);
        int total = 0;
        for (const Text& text : texts(screen))
            total += text.drawn.width();
        if (total > most) {
            most = total;
            longest = code;
        }
    }
    return longest;
}

} // namespace screens
