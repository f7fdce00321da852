#include "M5QX/m5qxcrosssettingwidget.h"

#include "ui_m5qxcrosssettingwidget.h"

#include "M5QX/curvewidget.h"
#include "M5QX/diagnostic.h"
#include "M5QX/filelocal.h"
#include "M5QX/pasetuptogglekey.h"
#include "M5QX/subwoofersettings.h"

#include "common/settings.h"
#include "common/translator.h"
#include "hvaudio/audioservice.h"

#include <QButtonGroup>
#include <QVector>

namespace {

enum Group { Front, Rear, Subwoofer, GroupCount };
enum Row { FilterRow, SlopeRow, LevelRow, RowCount };

// Text ids.
constexpr int SubwooferText = 236;
constexpr int FrontText = 266;
constexpr int RearText = 267;
constexpr int OffText = 790;
constexpr int CrossoverText = 1229;
constexpr int HighPassText = 1243;
constexpr int LowPassText = 1244;
constexpr int TitleText = 1247;

constexpr QLatin1String GroupKey("settings_cross_filter");
constexpr int GroupDefault = Front;
constexpr QLatin1String PhaseKey("Audio_Phase_Troggle");
constexpr bool PhaseDefault = false;
constexpr QLatin1String SubSlopeKey("subwooferslope");
constexpr int SubSlopeDefault = 0;

constexpr int RearPair = 0x80; ///< kept beside the frequency of the rear pair

/// The grid's left margin: the curve widgets begin there, the frequency table counts from the grid's edge.
constexpr int CurveLeft = 26;
constexpr int CurveRight = 6;
constexpr int CurveBottom = 16;

// clang-format off
struct GroupRow { QLabel* Ui_M5QXCrossSettingWidget::*label; QPushButton* Ui_M5QXCrossSettingWidget::*key; int text; QRgb colour; };
const GroupRow groupRows[] = {
    {&Ui_M5QXCrossSettingWidget::label_front,     &Ui_M5QXCrossSettingWidget::key_front,     FrontText,     qRgba(255, 108, 0, 255)},
    {&Ui_M5QXCrossSettingWidget::label_rear,      &Ui_M5QXCrossSettingWidget::key_rear,      RearText,      qRgba(255, 204, 0, 255)},
    {&Ui_M5QXCrossSettingWidget::label_subwoofer, &Ui_M5QXCrossSettingWidget::key_subwoofer, SubwooferText, qRgba(100, 100, 100, 255)},
};
static_assert(sizeof(groupRows) / sizeof(groupRows[0]) == GroupCount, "a row for each speaker group");

/// Where the grid's picture has its lines; the distances are not uniform.
struct FrequencyPlace { int hz; int x; };
constexpr FrequencyPlace frequencyPlaces[] = {
    {0,   82},
    {30,  82},
    {40,  126},
    {60,  168},
    {80,  210},
    {100, 256},
    {120, 302},
    {160, 437},
    {250, 635},
};
static_assert(sizeof(frequencyPlaces) / sizeof(frequencyPlaces[0]) == 9, "off and eight frequencies");

struct SlopePlace { int db; float gradient; };
constexpr SlopePlace slopePlaces[] = {
    {-6,  -4.9F},
    {-12, -7.8F},
    {-18, -15.0F},
    {-24, -24.0F},
};
static_assert(sizeof(slopePlaces) / sizeof(slopePlaces[0]) == 4, "four slopes");
// clang-format on

constexpr int OffHz = frequencyPlaces[0].hz;
constexpr int MaxHz = 250;
constexpr int FlattestSlope = -6;
constexpr int SteepestSlope = -24;
constexpr int LowestGain = -12;

hvaudio::AudioService* service()
{
    return hvaudio::AudioService::instance();
}

mem::SettingsFunc* store()
{
    return mem::SettingsFunc::instance();
}

} // namespace

/// One step row: which index it moves through which list, and the key that keeps it.
struct M5QXCrossSettingWidget::StepRow
{
    QMap<int, int> M5QXCrossSettingWidget::*index;
    QMap<int, QList<int>> M5QXCrossSettingWidget::*values;
    QLatin1String key;
    QLatin1String defaultMap;
};

// clang-format off
const M5QXCrossSettingWidget::StepRow M5QXCrossSettingWidget::stepRows[] = {
    {&M5QXCrossSettingWidget::freqIndex,  &M5QXCrossSettingWidget::filterToFreqList,  QLatin1String("settings_cross_freq_index"),  QLatin1String("0;0;1;0;2;6")},
    {&M5QXCrossSettingWidget::slopeIndex, &M5QXCrossSettingWidget::filterToSlopeList, QLatin1String("settings_cross_slope_index"), QLatin1String("0;0;1;0;2;0")},
    {&M5QXCrossSettingWidget::gainIndex,  &M5QXCrossSettingWidget::filterToGainList,  QLatin1String("settings_cross_gain_index"),  QLatin1String("0;0;1;0;2;0")},
};
// clang-format on

M5QXCrossSettingWidget::M5QXCrossSettingWidget(QWidget* parent)
    : QWidget(parent)
    , ui(new Ui_M5QXCrossSettingWidget)
{
    ui->setupUi(this);
    init();
}

M5QXCrossSettingWidget::~M5QXCrossSettingWidget() = default;

void M5QXCrossSettingWidget::init()
{
    static_assert(sizeof(stepRows) / sizeof(stepRows[0]) == RowCount, "a row for each pair of step keys");
    initFreqToX();
    initGainToY();
    initFilterToFreqList();
    initFilterToGainList();
    initFilterToSlopeList();
    initLabel();
    initButtons();
    initCurveWidget();
}

void M5QXCrossSettingWidget::initLabel()
{
    for (const GroupRow& row : groupRows)
        (ui.data()->*row.label)->setText(Translator::translate(row.text).toUpper());
    ui->label_title->setText(Translator::translate(CrossoverText).toUpper() +
                             Translator::translate(TitleText).toUpper());
    // The screen is left through the hub.
    ui->key_exit->hide();
    // Captions lie over their keys, row titles over the upper edge of the step keys.
    for (QLabel* label : findChildren<QLabel*>())
        label->setAttribute(Qt::WA_TransparentForMouseEvents);
}

void M5QXCrossSettingWidget::initButtons()
{
    m_groupKeys = new QButtonGroup(this);
    for (int group = Front; group < GroupCount; ++group)
        m_groupKeys->addButton(ui.data()->*groupRows[group].key, group);
    m_phaseKey.reset(new PaSetupToggleKey(ui->Key_troggle_phase));
    connect(ui->Key_troggle_phase, SIGNAL(clicked()), this, SLOT(onKey_troggle_phase()));
}

void M5QXCrossSettingWidget::initFreqToX()
{
    for (const FrequencyPlace& place : frequencyPlaces)
        freqToX.insert(place.hz, place.x);
}

void M5QXCrossSettingWidget::initGainToY()
{
    for (int gain = 0; gain >= LowestGain; --gain)
        gainToY.insert(gain, 2 + 23 * -gain);
}

// Nothing to fill and not called: the curves are drawn, not moved pictures. The pair of names is part of the
// class.
void M5QXCrossSettingWidget::initSlopeToImagePath()
{
}
void M5QXCrossSettingWidget::initFilterToXOffsetList()
{
}

void M5QXCrossSettingWidget::initFilterToFreqList()
{
    for (int group = Front; group < GroupCount; ++group) {
        for (const FrequencyPlace& place : frequencyPlaces)
            filterToFreqList[group].append(place.hz);
    }
}

void M5QXCrossSettingWidget::initFilterToSlopeList()
{
    for (int group = Front; group < GroupCount; ++group) {
        for (const SlopePlace& place : slopePlaces)
            filterToSlopeList[group].append(place.db);
    }
}

void M5QXCrossSettingWidget::initFilterToGainList()
{
    for (int group = Front; group < GroupCount; ++group) {
        for (int gain = 0; gain >= LowestGain; --gain)
            filterToGainList[group].append(gain);
    }
}

void M5QXCrossSettingWidget::initCurveWidget()
{
    for (const GroupRow& row : groupRows) {
        auto* curve = new CurveWidget(ui->widget_adjust);
        curve->setGeometry(ui->bg->geometry().adjusted(CurveLeft, 0, -CurveRight, -CurveBottom));
        curve->setCurveColor(QColor::fromRgba(row.colour));
        curve->setAttribute(Qt::WA_TransparentForMouseEvents);
        m_curves.append(curve);
    }
}

QString M5QXCrossSettingWidget::mapToString(const QMap<int, int>& map)
{
    QStringList parts;
    for (auto it = map.cbegin(); it != map.cend(); ++it)
        parts << QString::number(it.key()) << QString::number(it.value());
    return parts.join(QLatin1Char(';'));
}

QMap<int, int> M5QXCrossSettingWidget::stringToMap(const QString& text)
{
    QMap<int, int> map;
    const QVector<QStringRef> parts = text.splitRef(QLatin1Char(';'));
    for (int i = 0; i + 1 < parts.size(); i += 2)
        map.insert(parts.at(i).toInt(), parts.at(i + 1).toInt());
    return map;
}

void M5QXCrossSettingWidget::resume()
{
    AS_DEBUG();
    currentFilter = store()->getValue(GroupKey, GroupDefault);
    if (currentFilter < Front || currentFilter >= GroupCount) {
        AS_ERROR() << "no speaker group:" << currentFilter;
        currentFilter = GroupDefault;
    }
    const bool phase = store()->getValue(PhaseKey, PhaseDefault);
    ui->Key_troggle_phase->setChecked(phase);
    m_phaseKey->showToggleKey(phase, 0);
    showPhaseControl();

    for (const int row : {FilterRow, LevelRow, SlopeRow}) {
        this->*stepRows[row].index =
            stringToMap(store()->getValue(stepRows[row].key, QString(stepRows[row].defaultMap)));
    }
    gainIndex[Subwoofer] =
        store()->getValue(subwoofer::LevelKey, subwoofer::LevelDefault) & subwoofer::LevelBits;
    // Only in memory: what is stored is rewritten by the driver's next step, not by looking at the page.
    for (const StepRow& row : stepRows) {
        for (int group = Front; group < GroupCount; ++group) {
            int& index = (this->*row.index)[group];
            index = qBound(0, index, (this->*row.values)[group].size() - 1);
        }
    }
    for (int group = Front; group < GroupCount; ++group)
        showGroup(group);
    // Once more, so that the rows show the selected group.
    showGroup(currentFilter);
}

float M5QXCrossSettingWidget::getRealSclope(int slopeDb)
{
    for (const SlopePlace& place : slopePlaces) {
        if (place.db == slopeDb)
            return place.gradient;
    }
    return 0.0F;
}

void M5QXCrossSettingWidget::updateButtonState(int filter, QPushButton* up, QPushButton* down, int max,
                                               int min, int value)
{
    AS_DEBUG() << "filter:" << filter << "value:" << value;
    up->setEnabled(value != max);
    down->setEnabled(value == max || value != min);
}

void M5QXCrossSettingWidget::updateCurve(int filter, int freqHz, int slopeDb, int gainDb)
{
    AS_DEBUG() << "filter:" << filter << "freq:" << freqHz << "slope:" << slopeDb << "gain:" << gainDb;
    const bool off = freqHz == OffHz;
    if (off) {
        slopeDb = 0;
        gainDb = 0;
        ui->key_filter_up->setEnabled(true);
        for (QPushButton* key : {ui->key_filter_down, ui->key_slope_up, ui->key_slope_down, ui->key_level_up,
                                 ui->key_level_down})
            key->setEnabled(false);
    } else {
        updateButtonState(filter, ui->key_filter_up, ui->key_filter_down, MaxHz, OffHz, freqHz);
        updateButtonState(filter, ui->key_slope_up, ui->key_slope_down, SteepestSlope, FlattestSlope,
                          slopeDb);
        updateButtonState(filter, ui->key_level_up, ui->key_level_down, 0, LowestGain, gainDb);
    }

    const QPoint knee(freqToX.value(freqHz) - CurveLeft, gainToY.value(gainDb));
    const float k = getRealSclope(slopeDb);
    CurveWidget* curve = m_curves.at(filter);
    if (filter == Subwoofer)
        curve->setCurveLpf(knee, k);
    else
        curve->setCurveHpf(knee, k);
    curve->update();

    m_groupKeys->button(currentFilter)->setChecked(true);
    ui->label_filter->setText(Translator::translate(currentFilter == Subwoofer ? LowPassText : HighPassText));
    ui->txt_filter->setText(off ? Translator::translate(OffText)
                                : QString::number(freqHz) + QStringLiteral(" Hz"));
    ui->txt_slope->setText(QString::number(slopeDb) + QStringLiteral(" dB"));
    ui->txt_level->setText(QString::number(gainDb));
    setAccessibleNames();
}

void M5QXCrossSettingWidget::updateDSP(int freqIndex, int gainIndex, int slopeIndex)
{
    AS_DEBUG() << "filter:" << currentFilter << "freq:" << freqIndex << "gain:" << gainIndex
               << "slope:" << slopeIndex;
    switch (currentFilter) {
    case Front:
        for (const int speaker : {1, 2})
            service()->setHPFFilter(freqIndex, gainIndex, speaker, slopeIndex);
        break;
    case Rear:
        for (const int speaker : {4, 8})
            service()->setHPFFilter(freqIndex | RearPair, gainIndex, speaker, slopeIndex);
        break;
    case Subwoofer:
        // The subwoofer's own count has one entry more at its start.
        service()->setSubFilter(freqIndex + 1, gainIndex, slopeIndex);
        store()->setValue(subwoofer::FreqKey, subwoofer::FreqDefault, freqIndex + 1, true);
        store()->setValue(SubSlopeKey, SubSlopeDefault, slopeIndex, true);
        store()->setValue(subwoofer::LevelKey, subwoofer::LevelDefault, gainIndex | subwoofer::WrittenWhileOn,
                          true);
        store()->setValue(subwoofer::OnKey, subwoofer::OnDefault, true, true);
        break;
    }
}

void M5QXCrossSettingWidget::step(int row, int direction)
{
    service()->doBeep(0);
    const StepRow& r = stepRows[row];
    QMap<int, int>& index = this->*r.index;
    index[currentFilter] =
        qBound(0, index.value(currentFilter) + direction, (this->*r.values)[currentFilter].size() - 1);
    // Stored and sent also where the list ends, so that what sounds is what is shown.
    store()->setValue(r.key, QString(r.defaultMap), mapToString(index), true);
    showGroup(currentFilter);
    sendGroup(currentFilter);
}

void M5QXCrossSettingWidget::selectGroup(int group)
{
    service()->doBeep(0);
    currentFilter = group;
    store()->setValue(GroupKey, GroupDefault, group, true);
    showPhaseControl();
    showGroup(group);
    sendGroup(group);
}

void M5QXCrossSettingWidget::showGroup(int group)
{
    updateCurve(group, filterToFreqList[group].value(freqIndex.value(group)),
                filterToSlopeList[group].value(slopeIndex.value(group)),
                filterToGainList[group].value(gainIndex.value(group)));
}

void M5QXCrossSettingWidget::sendGroup(int group)
{
    updateDSP(freqIndex.value(group), gainIndex.value(group), slopeIndex.value(group));
}

void M5QXCrossSettingWidget::showPhaseControl()
{
    ui->phase_widget->setVisible(currentFilter == Subwoofer);
}

void M5QXCrossSettingWidget::setAccessibleNames()
{
    struct Pair
    {
        QLabel* title;
        QPushButton* up;
        QPushButton* down;
    };
    for (const Pair& pair : {Pair{ui->label_filter, ui->key_filter_up, ui->key_filter_down},
                             Pair{ui->label_slope, ui->key_slope_up, ui->key_slope_down},
                             Pair{ui->label_level, ui->key_level_up, ui->key_level_down}}) {
        pair.up->setAccessibleName(pair.title->text() + QStringLiteral(" +"));
        pair.down->setAccessibleName(pair.title->text() + QStringLiteral(" -"));
    }
    for (const GroupRow& row : groupRows)
        (ui.data()->*row.key)->setAccessibleName((ui.data()->*row.label)->text());
    ui->Key_troggle_phase->setAccessibleName(ui->Txt_0->text() + QStringLiteral(" / ") + ui->Txt_180->text());
    ui->key_back->setAccessibleName(ui->label_title->text());
    ui->key_exit->setAccessibleName(ui->label_title->text() + QStringLiteral(" X"));
}

// clang-format off
void M5QXCrossSettingWidget::on_key_filter_up_clicked()   { AS_DEBUG(); step(FilterRow, +1); }
void M5QXCrossSettingWidget::on_key_filter_down_clicked() { AS_DEBUG(); step(FilterRow, -1); }
void M5QXCrossSettingWidget::on_key_slope_up_clicked()    { AS_DEBUG(); step(SlopeRow, +1); }
void M5QXCrossSettingWidget::on_key_slope_down_clicked()  { AS_DEBUG(); step(SlopeRow, -1); }
// The level list goes downwards: up means less attenuation.
void M5QXCrossSettingWidget::on_key_level_up_clicked()    { AS_DEBUG(); step(LevelRow, -1); }
void M5QXCrossSettingWidget::on_key_level_down_clicked()  { AS_DEBUG(); step(LevelRow, +1); }
void M5QXCrossSettingWidget::on_key_front_clicked()       { AS_DEBUG(); selectGroup(Front); }
void M5QXCrossSettingWidget::on_key_rear_clicked()        { AS_DEBUG(); selectGroup(Rear); }
void M5QXCrossSettingWidget::on_key_subwoofer_clicked()   { AS_DEBUG(); selectGroup(Subwoofer); }
// clang-format on

void M5QXCrossSettingWidget::on_key_exit_clicked()
{
    AS_DEBUG();
    service()->doBeep(0);
    emit exitUI();
}

void M5QXCrossSettingWidget::onKey_troggle_phase()
{
    service()->doBeep(0);
    const bool phase = ui->Key_troggle_phase->isChecked();
    AS_DEBUG() << "phase:" << phase;
    m_phaseKey->showToggleKey(phase, 0);
    store()->setValue(PhaseKey, PhaseDefault, phase, true);
    // Deliberately the subwoofer's indexes, sent like everything else to the selected group. By touch that is
    // the subwoofer, since the control is hidden for the others.
    sendGroup(Subwoofer);
}
