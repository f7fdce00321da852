#include "M5QX/m5qxcrosssettingwidget.h"

#include "M5QX/curvewidget.h"
#include "M5QX/diagnostic.h"
#include "M5QX/pagesettings.h"
#include "M5QX/pasetuptogglekey.h"
#include "common/settings.h"
#include "common/translator.h"
#include "hvaudio/audioservice.h"
#include "hvaudio/crossovers.h"
#include "ui_m5qxcrosssettingwidget.h"

#include <QButtonGroup>
#include <QVector>

namespace {

enum Group { Front, Rear, Subwoofer, GroupCount };
enum Row { FilterRow, SlopeRow, LevelRow, RowCount };

// Text ids.
constexpr int subwooferText = 236;
constexpr int frontText = 266;
constexpr int rearText = 267;
constexpr int offText = 790;
constexpr int crossoverText = 1229;
constexpr int highPassText = 1243;
constexpr int lowPassText = 1244;
constexpr int titleText = 1247;

constexpr const mem::Setting& selectedGroup = mem::settingOf("settings_cross_filter");
constexpr const mem::Setting& phaseToggle = mem::settingOf("Audio_Phase_Troggle");
constexpr const mem::Setting& subwooferOn = mem::settingOf("subwooferOnOff");
constexpr const mem::Setting& subwooferFreq = mem::settingOf("subwooferFreq");
constexpr const mem::Setting& subwooferSlope = mem::settingOf("subwooferslope");
constexpr const mem::Setting& subwooferLevel = mem::settingOf("subwooferLevel");
static_assert(selectedGroup.largest == GroupCount - 1, "every group can be selected");

/// The grid's left margin: the curve widgets begin there, the frequency table counts from the grid's edge.
constexpr int curveLeft = 26;
constexpr int curveRight = 6;
constexpr int curveBottom = 16;

// clang-format off
struct GroupRow { QLabel* Ui_M5QXCrossSettingWidget::*label; QPushButton* Ui_M5QXCrossSettingWidget::*key; int text; QRgb colour; };
const GroupRow groupRows[] = {
    {&Ui_M5QXCrossSettingWidget::label_front,     &Ui_M5QXCrossSettingWidget::key_front,     frontText,     qRgba(255, 108, 0, 255)},
    {&Ui_M5QXCrossSettingWidget::label_rear,      &Ui_M5QXCrossSettingWidget::key_rear,      rearText,      qRgba(255, 204, 0, 255)},
    {&Ui_M5QXCrossSettingWidget::label_subwoofer, &Ui_M5QXCrossSettingWidget::key_subwoofer, subwooferText, qRgba(100, 100, 100, 255)},
};
static_assert(std::size(groupRows) == GroupCount, "a row for each speaker group");

// clang-format on

/// Where the grid's picture has the line of each frequency; the distances are not uniform.
constexpr int frequencyX[] = {82, 82, 126, 168, 210, 256, 302, 437, 635};
constexpr int frequencyCount = std::size(hvaudio::groupCrossoverHz);
static_assert(std::size(frequencyX) == frequencyCount, "one place a frequency");

/// How steep the edge of each slope is drawn.
constexpr float slopeGradients[] = {-4.9F, -7.8F, -15.0F, -24.0F};
constexpr int slopeCount = std::size(hvaudio::crossoverSlopes);
static_assert(std::size(slopeGradients) == slopeCount, "one gradient a slope");

constexpr int offHz = hvaudio::groupCrossoverHz[0];
constexpr int maxHz = hvaudio::groupCrossoverHz[frequencyCount - 1];
constexpr int flattestSlope = -hvaudio::crossoverSlopes[0];
constexpr int steepestSlope = -hvaudio::crossoverSlopes[slopeCount - 1];
constexpr int lowestGain = -hvaudio::largestAttenuation;

hvaudio::AudioService* service()
{
    return hvaudio::AudioService::instance();
}

mem::SettingsFunc* store()
{
    return mem::SettingsFunc::instance();
}

} // namespace

/// One step row: which index it moves through which list, and the setting that keeps it.
struct M5QXCrossSettingWidget::StepRow
{
    QMap<int, int> M5QXCrossSettingWidget::*index;
    QMap<int, QList<int>> M5QXCrossSettingWidget::*values;
    const mem::Setting& indexes;
};

// clang-format off
const M5QXCrossSettingWidget::StepRow M5QXCrossSettingWidget::stepRows[] = {
    {&M5QXCrossSettingWidget::freqIndex,  &M5QXCrossSettingWidget::filterToFreqList,  mem::settingOf("settings_cross_freq_index")},
    {&M5QXCrossSettingWidget::slopeIndex, &M5QXCrossSettingWidget::filterToSlopeList, mem::settingOf("settings_cross_slope_index")},
    {&M5QXCrossSettingWidget::gainIndex,  &M5QXCrossSettingWidget::filterToGainList,  mem::settingOf("settings_cross_gain_index")},
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
    static_assert(std::size(stepRows) == RowCount, "a row for each pair of step keys");
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
    ui->label_title->setText(Translator::translate(crossoverText).toUpper() +
                             Translator::translate(titleText).toUpper());
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
    for (int i = 0; i < frequencyCount; ++i)
        freqToX.insert(hvaudio::groupCrossoverHz[i], frequencyX[i]);
}

void M5QXCrossSettingWidget::initGainToY()
{
    for (int gain = 0; gain >= lowestGain; --gain)
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
        for (const int hz : hvaudio::groupCrossoverHz)
            filterToFreqList[group].append(hz);
    }
}

void M5QXCrossSettingWidget::initFilterToSlopeList()
{
    for (int group = Front; group < GroupCount; ++group) {
        for (const int slope : hvaudio::crossoverSlopes)
            filterToSlopeList[group].append(-slope);
    }
}

void M5QXCrossSettingWidget::initFilterToGainList()
{
    for (int group = Front; group < GroupCount; ++group) {
        for (int gain = 0; gain >= lowestGain; --gain)
            filterToGainList[group].append(gain);
    }
}

void M5QXCrossSettingWidget::initCurveWidget()
{
    for (const GroupRow& row : groupRows) {
        auto* curve = new CurveWidget(ui->widget_adjust);
        curve->setGeometry(ui->bg->geometry().adjusted(curveLeft, 0, -curveRight, -curveBottom));
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
    currentFilter = stored::number(store(), selectedGroup);
    if (currentFilter < Front || currentFilter >= GroupCount) {
        AS_ERROR() << "no speaker group:" << currentFilter;
        currentFilter = selectedGroup.defaultValue;
    }
    const bool phase = stored::flag(store(), phaseToggle);
    ui->Key_troggle_phase->setChecked(phase);
    m_phaseKey->showToggleKey(phase, 0);
    showPhaseControl();

    for (const int row : {FilterRow, LevelRow, SlopeRow})
        this->*stepRows[row].index = stringToMap(stored::text(store(), stepRows[row].indexes));
    gainIndex[Subwoofer] = stored::number(store(), subwooferLevel) & mem::subwooferLevelBits;
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
    for (int i = 0; i < slopeCount; ++i) {
        if (slopeDb == -hvaudio::crossoverSlopes[i])
            return slopeGradients[i];
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
    const bool off = freqHz == offHz;
    if (off) {
        slopeDb = 0;
        gainDb = 0;
        ui->key_filter_up->setEnabled(true);
        for (QPushButton* key : {ui->key_filter_down, ui->key_slope_up, ui->key_slope_down, ui->key_level_up,
                                 ui->key_level_down})
            key->setEnabled(false);
    } else {
        updateButtonState(filter, ui->key_filter_up, ui->key_filter_down, maxHz, offHz, freqHz);
        updateButtonState(filter, ui->key_slope_up, ui->key_slope_down, steepestSlope, flattestSlope,
                          slopeDb);
        updateButtonState(filter, ui->key_level_up, ui->key_level_down, 0, lowestGain, gainDb);
    }

    const QPoint knee(freqToX.value(freqHz) - curveLeft, gainToY.value(gainDb));
    const float k = getRealSclope(slopeDb);
    CurveWidget* curve = m_curves.at(filter);
    if (filter == Subwoofer)
        curve->setCurveLpf(knee, k);
    else
        curve->setCurveHpf(knee, k);
    curve->update();

    m_groupKeys->button(currentFilter)->setChecked(true);
    ui->label_filter->setText(Translator::translate(currentFilter == Subwoofer ? lowPassText : highPassText));
    ui->txt_filter->setText(off ? Translator::translate(offText)
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
            service()->setHPFFilter(freqIndex | hvaudio::rearPairMark, gainIndex, speaker, slopeIndex);
        break;
    case Subwoofer:
        // The subwoofer's own count has one entry more at its start.
        service()->setSubFilter(freqIndex + 1, gainIndex, slopeIndex);
        stored::write(store(), subwooferFreq, freqIndex + 1);
        stored::write(store(), subwooferSlope, slopeIndex);
        stored::write(store(), subwooferLevel, gainIndex | mem::subwooferWrittenWhileOn);
        stored::write(store(), subwooferOn, true);
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
    stored::write(store(), r.indexes, mapToString(index));
    showGroup(currentFilter);
    sendGroup(currentFilter);
}

void M5QXCrossSettingWidget::selectGroup(int group)
{
    service()->doBeep(0);
    currentFilter = group;
    stored::write(store(), selectedGroup, group);
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
    stored::write(store(), phaseToggle, phase);
    // Deliberately the subwoofer's indexes, sent like everything else to the selected group. By touch that is
    // the subwoofer, since the control is hidden for the others.
    sendGroup(Subwoofer);
}
