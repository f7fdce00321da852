#include "M5QX/m5qx_audiosetting_time_alignment_page.h"

#include "M5QX/backrequest.h"
#include "M5QX/diagnostic.h"
#include "M5QX/pagesettings.h"
#include "common/settings.h"
#include "common/translator.h"
#include "hvaudio/audioservice.h"
#include "ui_m5qx_audiosetting_time_alignment_page.h"

#include <QButtonGroup>

#include <limits>

namespace audiosetting {

namespace {

using Form = Ui_m5qx_audiosetting_time_alignment_page;

constexpr const mem::Setting& currentPreset = mem::settingOf("Audio_Time_Alignment_Preset");

QString plain(int id)
{
    return Translator::translate(id);
}

QString upper(int id)
{
    return Translator::translate(id).toUpper();
}

/// One speaker channel; its row is its item number.
struct Item
{
    QPushButton* Form::*plus;
    QPushButton* Form::*minus;
    QLabel* Form::*value;
    QLabel* Form::*title;
    int speaker; ///< bit that the audio service knows the channel by; 16 is nobody's
    int textId;
    QString (*text)(int id);
};

// clang-format off
const Item items[] = {
    {&Form::Key_front_left_plus,  &Form::Key_front_left_minus,  &Form::text_front_left_data,  &Form::text_front_left_title,   1, 1239, plain},
    {&Form::Key_front_right_plus, &Form::Key_front_right_minus, &Form::text_front_right_data, &Form::text_front_right_title,  2, 1240, plain},
    {&Form::Key_rear_left_plus,   &Form::Key_rear_left_minus,   &Form::text_rear_left_data,   &Form::text_rear_left_title,    4, 1241, plain},
    {&Form::Key_rear_right_plus,  &Form::Key_rear_right_minus,  &Form::text_rear_right_data,  &Form::text_rear_right_title,   8, 1242, plain},
    {&Form::Key_subwoofer_plus,   &Form::Key_subwoofer_minus,   &Form::text_subwoofer_data,   &Form::text_subwoofer_title,   32,  236, upper},
};

/// One memory; its row is its preset number.
struct Preset
{
    QPushButton* Form::*key;
    QLabel* Form::*label;
    const char* text;
    const mem::Setting& values; ///< a family, by item; 0.1 ms each
};
constexpr Preset presets[] = {
    {&Form::key_preset1, &Form::text_preset1, "PRESET 1", mem::settingOf("Audio_Time_Alignment_Num1%1")},
    {&Form::key_preset2, &Form::text_preset2, "PRESET 2", mem::settingOf("Audio_Time_Alignment_Num2%1")},
    {&Form::key_preset3, &Form::text_preset3, "PRESET 3", mem::settingOf("Audio_Time_Alignment_Num3%1")},
};

// Pictures of updatePresetIcon(); room for a third that was never drawn.
const char* const presetImages[3] = {
    ":/vexa_m5qx_audiosettingicon/eq_btn_n.png",
    ":/vexa_m5qx_audiosettingicon/eq_btn_p.png",
};
// clang-format on

constexpr int itemCount = std::size(items);
constexpr int presetCount = std::size(presets);
constexpr int keyCount = 2 * itemCount;
static_assert(itemCount == presets[0].values.count, "one row a speaker channel");
static_assert(presetCount == currentPreset.largest + 1, "one row a memory");

constexpr int shortestDelay = presets[0].values.smallest;
constexpr int longestDelay = presets[0].values.largest;

bool isItem(int item)
{
    return item >= 0 && item < itemCount;
}

bool isPreset(int preset)
{
    return preset >= 0 && preset < presetCount;
}

bool isPlusKey(int id)
{
    return id & 1;
}

/// For ids that no key has.
void setKeyEnabled(QButtonGroup* keys, int id, bool on)
{
    if (QAbstractButton* key = keys->button(id))
        key->setEnabled(on);
}

} // namespace

m5qx_eq_time_alignment_page::m5qx_eq_time_alignment_page(QWidget* parent)
    : QWidget(parent)
    , ui(new Ui::m5qx_audiosetting_time_alignment_page)
{
    ui->setupUi(this);
    // In the form's own order the channel panel would swallow every touch on the reset key, and the second
    // preset's caption would lie under its key.
    ui->key_reset->raise();
    ui->text_reset->raise();
    ui->text_preset2->raise();
    m_settings = new mem::SettingsExe(this);
    init();
}

m5qx_eq_time_alignment_page::~m5qx_eq_time_alignment_page() = default;

void m5qx_eq_time_alignment_page::init()
{
    ui->key_back->hide();

    // "bkg_rear_right" isn't among them and needn't be: it has no width.
    QLabel* const labelsOverKeys[] = {ui->bkg_front_left, ui->bkg_front_right, ui->bkg_rear_left,
                                      ui->bkg_subwoofer,  ui->text_preset1,    ui->text_preset2,
                                      ui->text_preset3,   ui->text_reset,      ui->text_subwoofer_title};
    for (QLabel* label : labelsOverKeys)
        label->setAttribute(Qt::WA_TransparentForMouseEvents);

    for (const Item& item : items)
        m_values.append(ui.data()->*item.value);

    m_itemKeys = new QButtonGroup(this);
    int id = 1;
    for (const Item& item : items) {
        m_itemKeys->addButton(ui.data()->*item.plus, id++);
        m_itemKeys->addButton(ui.data()->*item.minus, id++);
    }
    m_itemKeys->setExclusive(true);

    for (const Preset& preset : presets)
        (ui.data()->*preset.key)->setCheckable(true);
    m_presetKeys = new QButtonGroup(this);
    for (int preset = 0; preset < presetCount; ++preset)
        m_presetKeys->addButton(ui.data()->*presets[preset].key, preset);
    m_presetKeys->setExclusive(true);

    // clang-format off
    const struct
    {
        QObject* sender;
        const char* signal;
        const char* slot;
    } bindings[] = {
        {m_itemKeys,    SIGNAL(buttonClicked(int)), SLOT(onAlmButGroupClicked(int))},
        {m_presetKeys,  SIGNAL(buttonClicked(int)), SLOT(onPreButGroupClicked(int))},
        {ui->key_reset, SIGNAL(clicked()),          SLOT(onResetClicked())},
        {ui->key_back,  SIGNAL(clicked()),          SLOT(onBackClicked())},
    };
    // clang-format on
    for (const auto& binding : bindings)
        connect(binding.sender, binding.signal, this, binding.slot);

    updateAllPresetIcon();
}

void m5qx_eq_time_alignment_page::showEvent(QShowEvent*)
{
    retranslateUi();
    updateCurrAllAlignmentText();
    updtaeCurrPreTimeAlignmentItemState();
}

void m5qx_eq_time_alignment_page::retranslateUi()
{
    // The first text ends in a blank of its own.
    ui->text_alignment_title->setText(upper(735) + QStringLiteral("ALIGNMENT ") + upper(141));

    ui->text_reset->setText(upper(224));
    ui->key_reset->setAccessibleName(ui->text_reset->text());

    for (const Preset& preset : presets) {
        const QString text = QString::fromLatin1(preset.text);
        (ui.data()->*preset.label)->setText(text);
        (ui.data()->*preset.key)->setAccessibleName(text);
    }
    for (const Item& item : items) {
        const QString title = item.text(item.textId);
        (ui.data()->*item.title)->setText(title);
        (ui.data()->*item.plus)->setAccessibleName(title + QStringLiteral(" +"));
        (ui.data()->*item.minus)->setAccessibleName(title + QStringLiteral(" -"));
    }
}

// Touches

void m5qx_eq_time_alignment_page::onAlmButGroupClicked(int id)
{
    AS_DEBUG() << "id:" << id;
    soundClickedBeep();
    const int item = currItemVlaue(id);
    int value = getTimeAlignmentValue(item);
    // No range here: a key at its end is disabled. Only the ends of the number itself hold.
    if (isPlusKey(id) ? value < std::numeric_limits<int>::max() : value > std::numeric_limits<int>::min())
        value += isPlusKey(id) ? 1 : -1;
    setTimeAlignment(item, value);
    setTimeAlignmentValue(item, value);
    updateCurrAlignmentText(item, value);
    updtaeTimeAlignmentItemState(id);
}

void m5qx_eq_time_alignment_page::onPreButGroupClicked(int preset)
{
    AS_DEBUG() << "preset:" << preset;
    soundClickedBeep();
    setTimeAlignmentPreset(preset);
    showAndSendCurrPreset();
}

void m5qx_eq_time_alignment_page::onResetClicked()
{
    AS_DEBUG();
    soundClickedBeep();
    resetAllPresetTalNum();
    showAndSendCurrPreset();
}

void m5qx_eq_time_alignment_page::onBackClicked()
{
    AS_DEBUG();
    soundClickedBeep();
    postBackRequest();
}

void m5qx_eq_time_alignment_page::showAndSendCurrPreset()
{
    updateCurrAllAlignmentText();
    updtaeCurrPreTimeAlignmentItemState();
    setCurrPresetTimeAlignment();
    updateAllTimeAlignmentItemState();
}

void m5qx_eq_time_alignment_page::soundClickedBeep()
{
    hvaudio::AudioService::instance()->doBeep(0);
}

// Values in the store

int m5qx_eq_time_alignment_page::getTimeAlignmentPreset()
{
    return stored::number(m_settings, currentPreset);
}

void m5qx_eq_time_alignment_page::setTimeAlignmentPreset(int preset)
{
    stored::write(m_settings, currentPreset, preset);
}

int m5qx_eq_time_alignment_page::getTimeAlignmentValue(int preset, int item)
{
    return isPreset(preset) ? stored::number(m_settings, presets[preset].values, item) : 0;
}

int m5qx_eq_time_alignment_page::getTimeAlignmentValue(int item)
{
    return getTimeAlignmentValue(getTimeAlignmentPreset(), item);
}

void m5qx_eq_time_alignment_page::setTimeAlignmentValue(int preset, int item, int value)
{
    if (isPreset(preset))
        stored::write(m_settings, presets[preset].values, value, item);
}

void m5qx_eq_time_alignment_page::setTimeAlignmentValue(int item, int value)
{
    setTimeAlignmentValue(getTimeAlignmentPreset(), item, value);
}

void m5qx_eq_time_alignment_page::resetAllPresetTalNum()
{
    for (int preset = 0; preset < presetCount; ++preset) {
        for (int item = 0; item < itemCount; ++item)
            setTimeAlignmentValue(preset, item, 0);
    }
}

// Delays of the service

void m5qx_eq_time_alignment_page::setTimeAlignment(int item, int value)
{
    if (!isItem(item)) {
        AS_ERROR() << "no speaker channel" << item;
        return;
    }
    const float milliseconds = static_cast<float>(value) * 0.1f;
    hvaudio::AudioService::instance()->setSurroundDelay(items[item].speaker, milliseconds);
}

void m5qx_eq_time_alignment_page::setCurrPresetTimeAlignment()
{
    for (int item = 0; item < itemCount; ++item)
        setTimeAlignment(item, getTimeAlignmentValue(item));
}

// What is shown

void m5qx_eq_time_alignment_page::updateCurrAlignmentText(int item, int value)
{
    if (!isItem(item)) {
        AS_ERROR() << "no speaker channel" << item;
        return;
    }
    m_values.at(item)->setText(QString::number(value * 0.1, 'g', 6) + QStringLiteral("ms"));
}

void m5qx_eq_time_alignment_page::updateCurrAllAlignmentText()
{
    for (int item = 0; item < itemCount; ++item)
        updateCurrAlignmentText(item, getTimeAlignmentValue(item));
}

int m5qx_eq_time_alignment_page::currItemVlaue(int id)
{
    return id >= 1 && id <= keyCount ? (id - 1) / 2 : 0;
}

int m5qx_eq_time_alignment_page::isValidValue(int value)
{
    if (value == longestDelay)
        return 0;
    return value == shortestDelay ? 1 : 2;
}

// A key looks at its own end only; its partner is enabled once the value lies between the ends.
void m5qx_eq_time_alignment_page::updtaeTimeAlignmentItemState(int id)
{
    const bool plus = isPlusKey(id);
    const int ownEnd = plus ? 0 : 1; // of isValidValue()
    const int state = isValidValue(getTimeAlignmentValue(currItemVlaue(id)));
    if (state == ownEnd) {
        setKeyEnabled(m_itemKeys, id, false);
    } else if (state == 2 && m_itemKeys->button(id)) {
        setKeyEnabled(m_itemKeys, id, true);
        setKeyEnabled(m_itemKeys, plus ? id + 1 : id - 1, true);
    }
}

void m5qx_eq_time_alignment_page::updtaeCurrPreTimeAlignmentItemState()
{
    for (int id = 1; id <= keyCount; ++id)
        updtaeTimeAlignmentItemState(id);
}

void m5qx_eq_time_alignment_page::updateAllTimeAlignmentItemState()
{
    for (int id = 1; id <= keyCount; ++id) {
        setKeyEnabled(m_itemKeys, id, true);
        updtaeTimeAlignmentItemState(id);
    }
}

void m5qx_eq_time_alignment_page::updateAllPresetIcon()
{
    if (QAbstractButton* key = m_presetKeys->button(getTimeAlignmentPreset()))
        key->setChecked(true);
}

void m5qx_eq_time_alignment_page::updatePresetIcon(int preset, bool on)
{
    QAbstractButton* key = m_presetKeys->button(preset);
    if (!key) {
        AS_ERROR() << "no preset" << preset;
        return;
    }
    QIcon icon;
    icon.addFile(QString::fromLatin1(presetImages[on ? 0 : 1]), QSize(), QIcon::Normal, QIcon::Off);
    icon.addFile(QString::fromLatin1(presetImages[1]), QSize(), QIcon::Selected, QIcon::Off);
    key->setIcon(icon);
}

} // namespace audiosetting
