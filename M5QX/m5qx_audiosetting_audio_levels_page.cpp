#include "M5QX/m5qx_audiosetting_audio_levels_page.h"

#include "M5QX/backrequest.h"
#include "M5QX/diagnostic.h"
#include "M5QX/k41_audio_root_bf.h"
#include "M5QX/pa_balancefadercontrol.h"
#include "M5QX/pagesettings.h"
#include "common/customslider.h"
#include "common/mcumanager.h"
#include "common/pushbutton.h"
#include "common/settings.h"
#include "common/translator.h"
#include "hvaudio/audioservice.h"
#include "hvaudio/crossovers.h"
#include "ui_m5qx_audiosetting_audio_levels_page.h"

namespace audiosetting {

namespace {

constexpr const mem::Setting& loudness = mem::settingOf("customloudnes");
constexpr const mem::Setting& subwooferOn = mem::settingOf("subwooferOnOff");
constexpr const mem::Setting& subwooferLevel = mem::settingOf("subwooferLevel");
constexpr const mem::Setting& subwooferFreq = mem::settingOf("subwooferFreq");

constexpr int maxBalanceFader = mem::settingOf("AudioService_Balance").largest; // to either side
constexpr int maxLevel = hvaudio::largestAttenuation;                           // 0 is the loudest
constexpr int keyMask = 15;     // what the two level keys take from level and frequency
constexpr int frequencyOff = 0; // subwoofer filter index that silences it
constexpr int arabicSwing = 2;  // px

mem::SettingsFunc* store()
{
    return mem::SettingsFunc::instance();
}

// The slider runs the other way round: to the right is louder.
int sliderOfLevel(int level)
{
    return maxLevel - level;
}

QString upper(int id)
{
    return Translator::translate(id).toUpper();
}

// The two keys of one axis: at an end the key towards it is disabled.
void enableArrows(int value, QWidget* minus, QWidget* plus)
{
    plus->setEnabled(value != maxBalanceFader);
    minus->setEnabled(value != -maxBalanceFader);
}

} // namespace

m5qx_eq_audio_levels_page::m5qx_eq_audio_levels_page(QWidget* parent)
    : QWidget(parent)
    , ui(new Ui::m5qx_audiosetting_audio_levels_page)
{
    ui->setupUi(this);

    m_touchArea = new k41_audio_root_bf(this);
    m_touchArea->setGeometry(0, 0, 253, 253);
    m_touchArea->setParent(ui->widget);
    m_touchArea->raise();

    ui->icon_selector->raise();
    ui->icon_selector->setParent(m_touchArea);
    ui->icon_selector->hide();

    m_pad = new balanceFaderControl(ui->widget, m_touchArea->geometry());
    connect(m_pad, SIGNAL(balanceFaderChanged(int, int)), this, SLOT(onUpdateBF(int, int)));

    m_flag1 = true;
    m_flag2 = false;
    init();
}

m5qx_eq_audio_levels_page::~m5qx_eq_audio_levels_page() = default;

void m5qx_eq_audio_levels_page::init()
{
    ui->key_back->hide();

    m_slider = new settings::CustomSlider_2(this, ui->horizontalSlider->geometry(), 4);
    ui->horizontalSlider->hide();
    m_slider->setMaximum(maxLevel);
    m_slider->setMinimum(0);
    connect(m_slider, SIGNAL(valSave(int)), this, SLOT(onSliderOnSave(int)));
    // The slider is made after the form: put it between its keys for whoever steps through by keyboard.
    setTabOrder(ui->key_sub_level_down, m_slider);

    showSwitches();

    QLabel* const labelsOverKeys[] = {ui->text_reset,      ui->text_up_level,    ui->text_down_label,
                                      ui->text_left_level, ui->text_right_level, ui->bkg_balance_fader};
    for (QLabel* label : labelsOverKeys)
        label->setAttribute(Qt::WA_TransparentForMouseEvents);

    // clang-format off
    const struct
    {
        QPushButton* key;
        const char* shortClicked;
        const char* longPressed;
        const char* longPressedRepeat;
    } arrows[] = {
        {ui->key_up_level,   SLOT(onUpClicked()),    SLOT(onUpLongPressed()),    SLOT(onUpLongRepeat())},
        {ui->key_down_level, SLOT(onDownClicked()),  SLOT(onDownLongPressed()),  SLOT(onDownLongRepeat())},
        {ui->key_left_level, SLOT(onLeftClicked()),  SLOT(onLeftLongPressed()),  SLOT(onLeftLongRepeat())},
        {ui->key_right_btn,  SLOT(onRightClicked()), SLOT(onRightLongPressed()), SLOT(onRightLongRepeat())},
    };
    // clang-format on
    for (const auto& arrow : arrows) {
        auto* wrapper = new cm::PushButton(arrow.key, this);
        connect(wrapper, SIGNAL(shortClicked()), this, arrow.shortClicked);
        connect(wrapper, SIGNAL(longPressed()), this, arrow.longPressed);
        connect(wrapper, SIGNAL(longPressedRepeat()), this, arrow.longPressedRepeat);
    }

    onUpdateBF(balance(), fader());
}

void m5qx_eq_audio_levels_page::resume()
{
    onUpdateBF(balance(), fader());
    showSwitches();
    // Bit 7 tells how the level was last written; the switch itself has a key of its own.
    const int level = stored::number(store(), subwooferLevel) & mem::subwooferLevelBits;
    m_slider->setValue(qBound(0, sliderOfLevel(level), maxLevel));
    setSubwooferSliderEnable(stored::flag(store(), subwooferOn));
}

void m5qx_eq_audio_levels_page::showEvent(QShowEvent*)
{
    onUpdateBF(balance(), fader());
    retranslateUi();
}

void m5qx_eq_audio_levels_page::retranslateUi()
{
    ui->text_titel->setText(
        (Translator::translate(421) + QLatin1Char(' ') + Translator::translate(141)).toUpper());

    // Each row's caption also names the row's keys.
    ui->label_loudness->setText(upper(444));
    ui->key_loudness->setAccessibleName(ui->label_loudness->text());

    ui->label_subwoofer->setText(upper(236));
    ui->key_subwoofer->setAccessibleName(ui->label_subwoofer->text());

    const QString level = upper(384);
    ui->label_sub_level->setText(level);
    ui->key_sub_level_down->setAccessibleName(level + QStringLiteral(" -"));
    ui->key_sub_level_up->setAccessibleName(level + QStringLiteral(" +"));
    m_slider->setAccessibleName(level);

    // The last letter of an Arabic word may swing out to the left of its line, where the label would cut it.
    for (QLabel* caption : {ui->label_loudness, ui->label_subwoofer, ui->label_sub_level})
        caption->setIndent(caption->text().isRightToLeft() ? arabicSwing : 0);

    ui->key_reset_level->setAccessibleName(ui->text_reset->text());
}

// Balance and fader

int m5qx_eq_audio_levels_page::balance()
{
    int balance = 0;
    int fader = 0;
    hvaudio::AudioService::instance()->getBalanceFader(balance, fader);
    return balance;
}

int m5qx_eq_audio_levels_page::fader()
{
    int balance = 0;
    int fader = 0;
    hvaudio::AudioService::instance()->getBalanceFader(balance, fader);
    return fader;
}

void m5qx_eq_audio_levels_page::setBalance(int fader, int balance)
{
    hvaudio::AudioService::instance()->setBalanceFader(balance, fader, true);
}

// At the end of the range a step is sent all the same: it repeats what the service has.
void m5qx_eq_audio_levels_page::faderPlus()
{
    const int b = balance();
    const int f = fader();
    setBalance(f < maxBalanceFader ? f + 1 : f, b);
}

void m5qx_eq_audio_levels_page::faderMinus()
{
    const int b = balance();
    const int f = fader();
    setBalance(f > -maxBalanceFader ? f - 1 : f, b);
}

void m5qx_eq_audio_levels_page::balancePlus()
{
    const int b = balance();
    const int f = fader();
    setBalance(f, b < maxBalanceFader ? b + 1 : b);
}

void m5qx_eq_audio_levels_page::balanceMinus()
{
    const int b = balance();
    const int f = fader();
    setBalance(f, b > -maxBalanceFader ? b - 1 : b);
}

void m5qx_eq_audio_levels_page::onUpClicked()
{
    AS_DEBUG();
    soundClickedBeep();
    faderPlus();
    onUpdateBF(balance(), fader());
}

void m5qx_eq_audio_levels_page::onDownClicked()
{
    AS_DEBUG();
    soundClickedBeep();
    faderMinus();
    onUpdateBF(balance(), fader());
}

void m5qx_eq_audio_levels_page::onLeftClicked()
{
    AS_DEBUG();
    soundClickedBeep();
    balanceMinus();
    onUpdateBF(balance(), fader());
}

void m5qx_eq_audio_levels_page::onRightClicked()
{
    AS_DEBUG();
    soundClickedBeep();
    balancePlus();
    AS_DEBUG() << "balance:" << balance() << "fader:" << fader();
    onUpdateBF(balance(), fader());
}

// A held key is one step, by its short click: nobody should be thrown across the car by a resting finger.
void m5qx_eq_audio_levels_page::onUpLongPressed()
{
    AS_DEBUG();
}

void m5qx_eq_audio_levels_page::onUpLongRepeat()
{
    AS_DEBUG();
}

void m5qx_eq_audio_levels_page::onDownLongPressed()
{
    AS_DEBUG();
}

void m5qx_eq_audio_levels_page::onDownLongRepeat()
{
    AS_DEBUG();
}

void m5qx_eq_audio_levels_page::onLeftLongPressed()
{
    AS_DEBUG();
}

void m5qx_eq_audio_levels_page::onLeftLongRepeat()
{
    AS_DEBUG();
}

void m5qx_eq_audio_levels_page::onRightLongPressed()
{
    AS_DEBUG();
}

void m5qx_eq_audio_levels_page::onRightLongRepeat()
{
    AS_DEBUG();
}

void m5qx_eq_audio_levels_page::onUpdateBF(int balance, int fader)
{
    AS_DEBUG() << "balance:" << balance << "fader:" << fader;
    enableArrows(balance, ui->key_left_level, ui->key_right_btn);
    enableArrows(fader, ui->key_down_level, ui->key_up_level);
    ui->txt_balance->setText(QString::asprintf("BAL:%d", balance));
    ui->txt_fader->setText(QString::asprintf("FAD:%d", fader));
    m_pad->setValueX(balance);
    m_pad->setValueY(fader);
    m_pad->updatePos();
}

void m5qx_eq_audio_levels_page::on_key_reset_level_clicked()
{
    AS_DEBUG();
    soundClickedBeep();
    setBalance(0, 0);
    onUpdateBF(0, 0);
}

void m5qx_eq_audio_levels_page::on_key_back_clicked()
{
    AS_DEBUG();
    soundClickedBeep();
    postBackRequest();
}

void m5qx_eq_audio_levels_page::soundClickedBeep()
{
    hvaudio::AudioService::instance()->doBeep(0);
}

// Loudness and subwoofer

void m5qx_eq_audio_levels_page::showSwitches()
{
    ui->key_loudness->setChecked(stored::flag(store(), loudness));
    ui->key_subwoofer->setChecked(stored::flag(store(), subwooferOn));
}

void m5qx_eq_audio_levels_page::on_key_loudness_clicked()
{
    AS_DEBUG() << ui->key_loudness->isChecked();
    McuManager::instance()->triggerBeep(0);
    // The service keeps the state under the key that this page reads; the page doesn't write it.
    hvaudio::AudioService::instance()->setCustomLoudness(ui->key_loudness->isChecked(), false);
}

void m5qx_eq_audio_levels_page::on_key_subwoofer_clicked()
{
    const bool on = ui->key_subwoofer->isChecked();
    AS_DEBUG() << on;
    McuManager::instance()->triggerBeep(0);
    stored::write(store(), subwooferOn, on);
    const int level = stored::number(store(), subwooferLevel);
    const int frequency = stored::number(store(), subwooferFreq);
    if (on) {
        sendSubwooferLevel(level, frequency);
    } else {
        // No hurry with this one: the switch itself is already durable, and the level is what it was.
        store()->setValue(mem::keyOf(subwooferLevel), subwooferLevel.defaultValue,
                          level & mem::subwooferLevelBits, false);
        hvaudio::AudioService::instance()->setSubFilter(frequencyOff, level & mem::subwooferLevelBits, 0);
    }
    setSubwooferSliderEnable(on);
}

void m5qx_eq_audio_levels_page::onSliderOnSave(int value)
{
    AS_DEBUG() << value;
    switchSubwooferOn();
    const int level = sliderOfLevel(qBound(0, value, maxLevel));
    sendSubwooferLevel(level, stored::number(store(), subwooferFreq));
}

void m5qx_eq_audio_levels_page::on_key_sub_level_up_clicked()
{
    AS_DEBUG();
    stepSubwooferLevel(-1);
}

void m5qx_eq_audio_levels_page::on_key_sub_level_down_clicked()
{
    AS_DEBUG();
    stepSubwooferLevel(1);
}

// A level of 13..15, which only a foreign hand can have stored, passes as it is; the slider clamps for
// itself.
void m5qx_eq_audio_levels_page::stepSubwooferLevel(int step)
{
    soundClickedBeep();
    switchSubwooferOn();
    int level = stored::number(store(), subwooferLevel) & keyMask;
    const int frequency = stored::number(store(), subwooferFreq) & keyMask;
    if (step < 0 ? level > 0 : level < maxLevel)
        level += step;
    m_slider->setValue(sliderOfLevel(level));
    sendSubwooferLevel(level, frequency);
}

// Choosing a level switches the subwoofer on. Slider and keys stay as they are: they come back with resume()
// or the switch.
void m5qx_eq_audio_levels_page::switchSubwooferOn()
{
    stored::write(store(), subwooferOn, true);
    ui->key_subwoofer->setChecked(true);
}

void m5qx_eq_audio_levels_page::sendSubwooferLevel(int level, int frequency)
{
    stored::write(store(), subwooferLevel, level | mem::subwooferWrittenWhileOn);
    hvaudio::AudioService::instance()->setSubFilter(frequency, level & mem::subwooferLevelBits, 0);
}

void m5qx_eq_audio_levels_page::setSubwooferSliderEnable(bool on)
{
    m_slider->setEnabled(on);
    ui->key_sub_level_down->setEnabled(on);
    ui->key_sub_level_up->setEnabled(on);
}

} // namespace audiosetting
