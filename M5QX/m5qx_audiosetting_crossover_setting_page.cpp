#include "M5QX/m5qx_audiosetting_crossover_setting_page.h"

#include "M5QX/backrequest.h"
#include "M5QX/diagnostic.h"
#include "M5QX/pagesettings.h"
#include "M5QX/pasetuptogglekey.h"
#include "common/settings.h"
#include "common/translator.h"
#include "hvaudio/audioservice.h"
#include "hvaudio/crossovers.h"
#include "ui_m5qx_audiosetting_crossover_setting_page.h"

#include <QButtonGroup>
#include <QPixmapCache>
#include <QTimer>

namespace audiosetting {

using Page = m5qx_eq_crossover_setting_page;
using Form = Ui_m5qx_audiosetting_crossover_setting_page;
using hvaudio::AudioService;

namespace {

// Text ids.
constexpr int settingsText = 141;
constexpr int subwooferText = 236;
constexpr int mainAudioText = 1228;
constexpr int crossoverText = 1229;
constexpr int subFreqText = 1230;
constexpr int subLevelText = 1231;

constexpr const mem::Setting& subOn = mem::settingOf("subwooferOnOff");
constexpr const mem::Setting& subFreq = mem::settingOf("subwooferFreq");
constexpr const mem::Setting& subLevel = mem::settingOf("subwooferLevel");

// What the step keys reach: of the filters everything but "OFF", of the subwoofer less than its range.
constexpr int freqCount = std::size(hvaudio::mainHighPass);
constexpr int freqMin = 1;
constexpr int freqMax = freqCount - 1;
constexpr int subFreqMin = 0;
constexpr int subFreqMax = 4;
constexpr int subLevelMin = 1;
constexpr int subLevelMax = hvaudio::loudestMainSubwoofer;

constexpr int slopeCount = 3;
constexpr int freqBits = 0x7F;   ///< what a filter's second argument takes of the frequency
constexpr int lineIconStep = 44; ///< pixels of the sketch between two frequencies
constexpr int speakers[] = {1, 2, 4, 8};

/// All that tells the high-pass column from the low-pass one.
struct Filter
{
    const mem::Setting& state;
    const mem::Setting& freq;
    const mem::Setting& slope;
    void (AudioService::*send)(int, int, int, int);
    QPushButton* Form::*next;
    QPushButton* Form::*prev;
    QLabel* Form::*caption;
    QLabel* Form::*line;
    QWidget* Form::*freqRow;
    QWidget* Form::*slopeRow;
    QLabel* Form::*slopeCaption;
    QPushButton* Form::*slopeKeys[slopeCount];
    QLabel* Form::*slopeTexts[slopeCount];
    const char* lines[slopeCount];
    const hvaudio::CrossoverFrequency (&frequencies)[freqCount];
};

// clang-format off
constexpr Filter hpf = {
    mem::settingOf("hpfState"), mem::settingOf("hpfFreq"), mem::settingOf("hpfslope"), &AudioService::setHPFFilter,
    &Form::Key_hpf_freq_plus, &Form::Key_hpf_freq_minus,
    &Form::text_high_pass, &Form::icon_line_hpf, &Form::hpf_freq_widget, &Form::hpf_slope_widget, &Form::text_hpf_freq_slope,
    {&Form::key_hpf_slope_6db, &Form::key_hpf_slope_12db, &Form::key_hpf_slope_18db},
    {&Form::text_lpf_slope_6db, &Form::text_lpf_slope_12db, &Form::text_lpf_slope_18db},
    {":/vexa_m5qx_audiosettingicon/filter_thumb_left65.png", ":/vexa_m5qx_audiosettingicon/filter_thumb_left75.png", ":/vexa_m5qx_audiosettingicon/filter_thumb_left85.png"},
    hvaudio::mainHighPass,
};
// A fresh low-pass is off and has none of the three slopes: what no key of the page reaches stands for "never set".
constexpr Filter lpf = {
    mem::settingOf("lpfState"), mem::settingOf("lpfFreq"), mem::settingOf("lpfslope"), &AudioService::setLPFFilter,
    &Form::Key_low_freq_plus, &Form::Key_low_freq_minus,
    &Form::text_low_pass, &Form::icon_line_lpf, &Form::low_freq_widgetl, &Form::low_slope_widget, &Form::text_low_freq_slope,
    {&Form::key_low_slope_6db, &Form::key_low_slope_12db, &Form::key_low_slope_18db},
    {&Form::text_low_slope_6db, &Form::text_low_slope_12db, &Form::text_low_slope_18db},
    {":/vexa_m5qx_audiosettingicon/filter_thumb_right65.png", ":/vexa_m5qx_audiosettingicon/filter_thumb_right75.png", ":/vexa_m5qx_audiosettingicon/filter_thumb_right85.png"},
    hvaudio::mainLowPass,
};

struct Binding { QPushButton* Form::*key; const char* slot; };
const Binding bindings[] = {
    {&Form::key_back,                  SLOT(onBackClicked())},
    {&Form::key_high_pass,             SLOT(onHighPassClicked())},
    {&Form::Key_hpf_freq_plus,         SLOT(onHpfFreqNextClicked())},
    {&Form::Key_hpf_freq_minus,        SLOT(onHpfFreqPrevClicked())},
    {&Form::key_low_pass,              SLOT(onLowPassClicked())},
    {&Form::Key_low_freq_plus,         SLOT(onLpfFreqNextClicked())},
    {&Form::Key_low_freq_minus,        SLOT(onLpfFreqPrevClicked())},
    {&Form::Key_subwoofer_freq_plus,   SLOT(onSUBFreqNextClicked())},
    {&Form::Key_subwoofer_freq_minus,  SLOT(onSUBFreqPrevClicked())},
    {&Form::Key_subwoofer_level_plus,  SLOT(onSUBLevelNextClicked())},
    {&Form::Key_subwoofer_level_minus, SLOT(onSUBLevelPrevClicked())},
};
static_assert(std::size(bindings) == 11, "every key but the slopes");
// clang-format on

/// What has no entry in the list has no text.
template <int count>
void showFreqText(QLabel* label, const hvaudio::CrossoverFrequency (&list)[count], int freq)
{
    label->setText(QLatin1String(freq >= 0 && freq < count ? list[freq].text : ""));
}

void placeLine(QLabel* line, int freq)
{
    if (freq < freqMin || freq > freqMax)
        return;
    line->move(lineIconStep * (freq - 1), 0);
    line->raise();
    line->show();
}

void showParts(Form* form, const Filter& filter, bool on)
{
    (form->*filter.line)->setVisible(on);
    (form->*filter.caption)->setVisible(on);
    (form->*filter.freqRow)->setVisible(on);
    (form->*filter.slopeRow)->setVisible(on);
}

/// The store says which slope is selected, not the click, and it may be none of the three.
void showSlope(QButtonGroup* keys, int slope)
{
    keys->setExclusive(false);
    for (QAbstractButton* key : keys->buttons()) {
        const bool selected = keys->id(key) == slope;
        const QLatin1String picture(selected ? ":/vexa_m5qx_audiosettingicon/icon_circle_blue.png"
                                             : ":/vexa_m5qx_audiosettingicon/icon_circle_grey.png");
        QIcon icon;
        icon.addFile(picture, QSize(), QIcon::Normal, QIcon::Off);
        icon.addFile(picture, QSize(), QIcon::Normal, QIcon::On);
        key->setIcon(icon);
        key->setChecked(selected);
    }
    keys->setExclusive(true);
}

void showSlopeLine(Form* form, const Filter& filter, int slope)
{
    const bool known = slope >= 0 && slope < slopeCount;
    (form->*filter.line)->setPixmap(known ? QPixmap(QLatin1String(filter.lines[slope])) : QPixmap());
}

int up(int value, int max)
{
    return value < max ? value + 1 : value;
}

int down(int value, int min)
{
    return value > min ? value - 1 : value;
}

/// To each speaker; freq 0 switches the filter off.
void send(const Filter& filter, int freq, int slope)
{
    for (const int speaker : speakers)
        (AudioService::instance()->*filter.send)(freq, freq & freqBits, speaker, slope);
}

/// level: with its flag; without it the subwoofer is silent.
void sendSub(int freq, int level)
{
    AudioService::instance()->setSubFilter(level & mem::subwooferWrittenWhileOn ? freq : 0,
                                           level & mem::subwooferLevelBits, 0);
}

// A line of the title's size is higher than its label, what is drawn isn't: an accent needs the room above,
// an Arabic tail that below. So the ink is centred instead of the line.
void centreInk(QLabel* label)
{
    const QFontMetrics line(label->font());
    const QRect ink = line.tightBoundingRect(label->text());
    const int unusedAbove = line.ascent() + ink.top();
    const int unusedBelow = line.descent() - ink.bottom();
    const int down = unusedBelow - unusedAbove; // twice the way, for it moves by half of a margin
    label->setContentsMargins(0, qMax(0, down), 0, qMax(0, -down));
}

} // namespace

m5qx_eq_crossover_setting_page::m5qx_eq_crossover_setting_page(QWidget* parent)
    : QWidget(parent)
    , ui(new Form)
    , m_settings(nullptr)
{
    ui->setupUi(this);
    m_settings = new mem::SettingsExe(this);
    init();
}

m5qx_eq_crossover_setting_page::~m5qx_eq_crossover_setting_page()
{
    ui.reset();
    QPixmapCache::clear();
}

void Page::init()
{
    m_timer = new QTimer(this);
    m_timer->setSingleShot(true);
    m_highPassKey.reset(new PaSetupToggleKey(ui->key_high_pass));
    m_lowPassKey.reset(new PaSetupToggleKey(ui->key_low_pass));
    m_highPassKey->showToggleKey(getHpfState(), 1);
    m_lowPassKey->showToggleKey(getLpfState(), 0);
    m_hpfSlopeKeys = new QButtonGroup(this);
    m_lpfSlopeKeys = new QButtonGroup(this);
    for (int slope = 0; slope < slopeCount; ++slope) {
        m_hpfSlopeKeys->addButton(ui.data()->*hpf.slopeKeys[slope], slope);
        m_lpfSlopeKeys->addButton(ui.data()->*lpf.slopeKeys[slope], slope);
    }
    for (const Binding& binding : bindings)
        connect(ui.data()->*binding.key, SIGNAL(clicked()), this, binding.slot);
    connect(m_hpfSlopeKeys, SIGNAL(buttonClicked(int)), this, SLOT(onHpfSlopeButtonClicked(int)));
    connect(m_lpfSlopeKeys, SIGNAL(buttonClicked(int)), this, SLOT(onLpfSlopeButtonClicked(int)));
    // Backgrounds, slope captions and titles reach over the edges of keys.
    for (QLabel* label : findChildren<QLabel*>())
        label->setAttribute(Qt::WA_TransparentForMouseEvents);
}

void Page::showEvent(QShowEvent* event)
{
    AS_DEBUG();
    QWidget::showEvent(event);
    retranslateUi();
    updateAll();
}

void Page::retranslateUi()
{
    ui->text_titel->setText(Translator::translate(crossoverText) +
                            Translator::translate(settingsText).toUpper());
    centreInk(ui->text_titel);
    for (QLabel* title : {ui->text_hpf_main_audio, ui->text_low_main_audio})
        title->setText(Translator::translate(mainAudioText).toUpper());
    ui->text_subwoofer->setText(Translator::translate(subwooferText).toUpper());
    ui->text_subwoo_freq_tiltel->setText(Translator::translate(subFreqText));
    ui->text_subwoofer_Level_tiltel->setText(Translator::translate(subLevelText));
    setAccessibleNames();
}

void Page::setAccessibleNames()
{
    const auto nameSteps = [](const QLabel* caption, QPushButton* next, QPushButton* prev) {
        next->setAccessibleName(caption->text() + QStringLiteral(" +"));
        prev->setAccessibleName(caption->text() + QStringLiteral(" -"));
    };
    for (const Filter* filter : {&hpf, &lpf}) {
        Form* form = ui.data();
        nameSteps(form->*filter->caption, form->*filter->next, form->*filter->prev);
        for (int slope = 0; slope < slopeCount; ++slope) {
            (form->*filter->slopeKeys[slope])
                ->setAccessibleName((form->*filter->slopeCaption)->text() + QLatin1Char(' ') +
                                    (form->*filter->slopeTexts[slope])->text());
        }
    }
    nameSteps(ui->text_subwoo_freq_tiltel, ui->Key_subwoofer_freq_plus, ui->Key_subwoofer_freq_minus);
    nameSteps(ui->text_subwoofer_Level_tiltel, ui->Key_subwoofer_level_plus, ui->Key_subwoofer_level_minus);
    ui->key_high_pass->setAccessibleName(ui->text_high_pass->text());
    ui->key_low_pass->setAccessibleName(ui->text_low_pass->text());
    ui->key_back->setAccessibleName(ui->text_titel->text() + QStringLiteral(" X"));
}

void Page::updateAll()
{
    updateCurrHPFFreqText(getHpfFreq());
    updateCurrHPFFreqBtnState(getHpfFreq());
    updateCurrHPFFreqLineIcon(getHpfFreq());
    updateHPFStateIcon(getHpfState());
    updateCurrLPFFreqText(getLpfFreq());
    updateCurrLPFFreqBtnState(getLpfFreq());
    updateCurrLPFFreqLineIcon(getLpfFreq());
    updateLPFStateIcon(getLpfState());
    updateHPFSlopeIcon(getHpfSlope());
    updateHPFSlopeLineIcon(getHpfSlope());
    updateLPFSlopeIcon(getLpfSlope());
    updateLPFSlopeLineIcon(getLpfSlope());
    updateCurrSubWooferText();
    updateCurrSubFreqText(getSubFreq());
    updateCurrSubFreqBtnState(getSubFreq());
    updateCurrSubLevelText(getSubLevel() & mem::subwooferLevelBits);
    updateCurrSubLevelBtnState(getSubLevel() & mem::subwooferLevelBits);
}

// Some log texts name another value than the one at hand; log collectors know them so.
// clang-format off
void Page::updateCurrHPFFreqText(int freq)     { AS_DEBUG() << "current hpf freq:" << freq;  showFreqText(ui->text_hpf_freq, hpf.frequencies, freq); }
void Page::updateCurrLPFFreqText(int freq)     { AS_DEBUG() << "current hpf freq:" << freq;  showFreqText(ui->text_low_freq, lpf.frequencies, freq); }
void Page::updateCurrHPFFreqBtnState(int freq) { AS_DEBUG() << "current hpf freq:" << freq;  updateButtonState(ui->Key_hpf_freq_plus, ui->Key_hpf_freq_minus, freqMax, freqMin, freq); }
void Page::updateCurrLPFFreqBtnState(int freq) { AS_DEBUG() << "current lpf freq:" << freq;  updateButtonState(ui->Key_low_freq_plus, ui->Key_low_freq_minus, freqMax, freqMin, freq); }
void Page::updateCurrHPFFreqLineIcon(int freq) { AS_DEBUG() << "current hpf freq:" << freq;  placeLine(ui->icon_line_hpf, freq); }
void Page::updateCurrLPFFreqLineIcon(int freq) { AS_DEBUG() << "current lpf freq:" << freq;  placeLine(ui->icon_line_lpf, freq); }
void Page::updateHPFSlopeIcon(int slope)       { AS_DEBUG() << "current hpf freq:" << slope; showSlope(m_hpfSlopeKeys, slope); }
void Page::updateLPFSlopeIcon(int slope)       { AS_DEBUG() << "current lpf freq:" << slope; showSlope(m_lpfSlopeKeys, slope); }
void Page::updateHPFSlopeLineIcon(int slope)   { AS_DEBUG() << "current hpf freq:" << slope; showSlopeLine(ui.data(), hpf, slope); }
void Page::updateLPFSlopeLineIcon(int slope)   { AS_DEBUG() << "current lpf freq:" << slope; showSlopeLine(ui.data(), lpf, slope); }
// clang-format on

void Page::updateHPFStateIcon(bool on)
{
    AS_DEBUG() << "current hpf state:" << on;
    showParts(ui.data(), hpf, on);
    if (on) {
        updateCurrHPFFreqText(getHpfFreq());
        updateCurrHPFFreqBtnState(getHpfFreq());
    }
}

void Page::updateLPFStateIcon(bool on)
{
    AS_DEBUG() << "current lpf state:" << on;
    showParts(ui.data(), lpf, on);
    if (on) {
        updateCurrLPFFreqText(getLpfFreq());
        updateCurrLPFFreqBtnState(getLpfFreq());
    }
}

void Page::updateCurrSubWooferText()
{
    // Read for the log alone: the title is the same when the subwoofer is off.
    AS_DEBUG() << "subwoofer:" << isSubWooferOn();
    ui->text_subwoofer->setText(Translator::translate(subwooferText).toUpper());
}

void Page::updateCurrSubFreqText(int freq)
{
    AS_DEBUG() << "current hpf freq:" << freq;
    showFreqText(ui->text_subwoofer_freq, hvaudio::mainSubwoofer, freq);
}

void Page::updateCurrSubFreqBtnState(int freq)
{
    AS_DEBUG() << "current subwoofer level:" << freq;
    updateSubButtonState(ui->Key_subwoofer_freq_plus, ui->Key_subwoofer_freq_minus, subFreqMax, subFreqMin,
                         freq);
}

void Page::updateCurrSubLevelText(int level)
{
    AS_DEBUG() << "current subwoofer freq:" << level;
    ui->text_subwoofer_level->setText(QString::number(level));
}

void Page::updateCurrSubLevelBtnState(int level)
{
    AS_DEBUG() << "current subwoofer level:" << level;
    updateSubButtonState(ui->Key_subwoofer_level_plus, ui->Key_subwoofer_level_minus, subLevelMax,
                         subLevelMin, level);
}

void Page::updateButtonState(QPushButton* next, QPushButton* prev, int max, int min, int value)
{
    next->setEnabled(value != max);
    prev->setEnabled(value != min);
}

void Page::updateSubButtonState(QPushButton* next, QPushButton* prev, int max, int min, int value)
{
    if (isSubWooferOn()) {
        updateButtonState(next, prev, max, min, value);
        return;
    }
    next->setEnabled(false);
    prev->setEnabled(false);
}

// clang-format off
bool Page::getHpfState() { const bool on   = stored::flag(m_settings, hpf.state);   AS_DEBUG() << "get current hpf state:" << on;    return on; }
int  Page::getHpfFreq()  { const int freq  = stored::number(m_settings, hpf.freq);  AS_DEBUG() << "get current hpf freq:" << freq;   return freq; }
int  Page::getHpfSlope() { const int slope = stored::number(m_settings, hpf.slope); AS_DEBUG() << "get current hpf slope:" << slope; return slope; }
bool Page::getLpfState() { const bool on   = stored::flag(m_settings, lpf.state);   AS_DEBUG() << "get current hpf state:" << on;    return on; }
int  Page::getLpfFreq()  { const int freq  = stored::number(m_settings, lpf.freq);  AS_DEBUG() << "get current hpf freq:" << freq;   return freq; }
int  Page::getLpfSlope() { const int slope = stored::number(m_settings, lpf.slope); AS_DEBUG() << "get current lpf slope:" << slope; return slope; }
int  Page::getSubFreq()  { const int freq  = stored::number(m_settings, subFreq);   AS_DEBUG() << "current subwoofer freq:" << freq; return freq; }
int  Page::getSubLevel() { const int level = stored::number(m_settings, subLevel);  AS_DEBUG() << "current subwoofer level:" << level; return level; }

void Page::setHpfState(bool on)   { AS_DEBUG() << "set current hpf state:" << on;        stored::write(m_settings, hpf.state, on);    setHpfFilter(on ? getHpfFreq() : 0); }
void Page::setHpfFreq(int freq)   { AS_DEBUG() << "set current hpf freq:" << freq;       stored::write(m_settings, hpf.freq, freq);   setHpfFilter(); }
void Page::setHpfSlope(int slope) { AS_DEBUG() << "set current hpf slope:" << slope;     stored::write(m_settings, hpf.slope, slope); setHpfFilter(); }
void Page::setLpfState(bool on)   { AS_DEBUG() << "set current lpf state:" << on;        stored::write(m_settings, lpf.state, on);    setLpfFilter(on ? getLpfFreq() : 0); }
void Page::setLpfFreq(int freq)   { AS_DEBUG() << "set current lpf freq:" << freq;       stored::write(m_settings, lpf.freq, freq);   setLpfFilter(); }
void Page::setLpfSlope(int slope) { AS_DEBUG() << "set current lpf slope:" << slope;     stored::write(m_settings, lpf.slope, slope); setLpfFilter(); }
void Page::setSubFreq(int freq)   { AS_DEBUG() << "set current subwoofer freq:" << freq; stored::write(m_settings, subFreq, freq);    setSubFilter(); }
// clang-format on

void Page::setSubLevel(int level)
{
    AS_DEBUG() << "set current subwoofer Level:" << level;
    // Sent before it is stored, unlike everything else on this page. Deliberate.
    setSubGain(level);
    stored::write(m_settings, subLevel, level);
}

// clang-format off
void Page::setHpfFilter()         { setHpfFilter(getHpfFreq()); }
void Page::setHpfFilter(int freq) { send(hpf, freq, getHpfSlope()); }
void Page::setLpfFilter()         { setLpfFilter(getLpfFreq()); }
void Page::setLpfFilter(int freq) { send(lpf, freq, getLpfSlope()); }
void Page::setSubFilter()         { const int freq = getSubFreq(); sendSub(freq, getSubLevel()); }
void Page::setSubGain(int level)  { sendSub(getSubFreq(), level); }
bool Page::isSubWooferOn()        { return stored::flag(mem::SettingsFunc::instance(), subOn); }
void Page::soundClickedBeep()     { AudioService::instance()->doBeep(0); }
// clang-format on

void Page::onBackClicked()
{
    AS_DEBUG() << "back last display";
    soundClickedBeep();
    postBackRequest();
}

void Page::onHighPassClicked()
{
    AS_DEBUG();
    soundClickedBeep();
    const bool on = !getHpfState();
    m_highPassKey->showToggleKey(on, 1);
    setHpfState(on);
    updateHPFStateIcon(on);
    if (on)
        showHpfFreq(getHpfFreq());
}

void Page::onLowPassClicked()
{
    AS_DEBUG();
    soundClickedBeep();
    const bool on = !getLpfState();
    m_lowPassKey->showToggleKey(on, 0);
    setLpfState(on);
    updateLPFStateIcon(on);
    if (on)
        showLpfFreq(getLpfFreq());
}

void Page::showHpfFreq(int freq)
{
    updateCurrHPFFreqText(freq);
    updateCurrHPFFreqBtnState(freq);
    updateCurrHPFFreqLineIcon(freq);
}

void Page::showLpfFreq(int freq)
{
    updateCurrLPFFreqText(freq);
    updateCurrLPFFreqBtnState(freq);
    updateCurrLPFFreqLineIcon(freq);
}

// clang-format off
void Page::stepHpfFreq(int freq) { setHpfFreq(freq); showHpfFreq(freq); }
void Page::stepLpfFreq(int freq) { setLpfFreq(freq); showLpfFreq(freq); }
void Page::stepSubFreq(int freq) { setSubFreq(freq); updateCurrSubFreqText(freq); updateCurrSubFreqBtnState(freq); }

// A step is stored and sent also where it leads nowhere, so that what sounds is what is shown.
void Page::onHpfFreqNextClicked()  { AS_DEBUG(); soundClickedBeep(); stepHpfFreq(up(getHpfFreq(), freqMax)); }
void Page::onHpfFreqPrevClicked()  { AS_DEBUG(); soundClickedBeep(); stepHpfFreq(down(getHpfFreq(), freqMin)); }
void Page::onLpfFreqNextClicked()  { AS_DEBUG(); soundClickedBeep(); stepLpfFreq(up(getLpfFreq(), freqMax)); }
void Page::onLpfFreqPrevClicked()  { AS_DEBUG(); soundClickedBeep(); stepLpfFreq(down(getLpfFreq(), freqMin)); }
void Page::onSUBFreqNextClicked()  { AS_DEBUG(); soundClickedBeep(); stepSubFreq(up(getSubFreq(), subFreqMax)); }
void Page::onSUBFreqPrevClicked()  { AS_DEBUG(); soundClickedBeep(); stepSubFreq(down(getSubFreq(), subFreqMin)); }
// clang-format on

void Page::onSUBLevelNextClicked()
{
    AS_DEBUG();
    soundClickedBeep();
    const int stored = getSubLevel();
    stepSubLevel(stored, up(stored & mem::subwooferLevelBits, subLevelMax));
}

void Page::onSUBLevelPrevClicked()
{
    AS_DEBUG();
    soundClickedBeep();
    const int stored = getSubLevel();
    stepSubLevel(stored, down(stored & mem::subwooferLevelBits, subLevelMin));
}

void Page::stepSubLevel(int stored, int level)
{
    setSubLevel((stored & mem::subwooferWrittenWhileOn) | level);
    updateCurrSubLevelText(level);
    updateCurrSubLevelBtnState(level);
}

void Page::onHpfSlopeButtonClicked(int slope)
{
    AS_DEBUG() << "slope:" << slope;
    soundClickedBeep();
    setHpfSlope(slope);
    updateHPFSlopeIcon(slope);
    updateHPFSlopeLineIcon(slope);
}

void Page::onLpfSlopeButtonClicked(int slope)
{
    AS_DEBUG() << "slope:" << slope;
    soundClickedBeep();
    setLpfSlope(slope);
    updateLPFSlopeIcon(slope);
    updateLPFSlopeLineIcon(slope);
}

} // namespace audiosetting
