#include "M5QX/m5qx_audiosetting_tab_widget.h"

#include "M5QX/diagnostic.h"
#include "M5QX/pages.h"
#include "common/settings.h"
#include "common/settingstable.h"
#include "common/translator.h"
#include "hvaudio/audioservice.h"
#include "ui_m5qx_audiosetting_tab_widget.h"

#include <QButtonGroup>

namespace audiosetting {

namespace {

constexpr int eqTypeCount = std::size(cm::eqNameStrId);
static_assert(eqTypeCount == mem::settingOf("AudioService_EQType").largest + 1, "every EQ type has a name");

using Form = Ui_m5qx_audiosetting_tab_widget;

QString upper(int id)
{
    return Translator::translate(id).toUpper();
}

/// Spaces of these texts are where the key's caption breaks.
QString broken(int id)
{
    return Translator::translate(id).replace(QLatin1Char(' '), QLatin1Char('\n'));
}

// Captions of the keys. "CROSSOVER" and "ALIGNMENT" are the product's own words and stay as they are in every
// language.
QString eqSettingCaption()
{
    return upper(195) + QLatin1Char('\n') + upper(387);
}

QString balanceCaption()
{
    return upper(421) + QLatin1Char('\n') + upper(141);
}

QString crossoverCaption()
{
    return QStringLiteral("CROSSOVER\n") + upper(141);
}

QString timeAlignmentCaption()
{
    return upper(735) + QStringLiteral("\nALIGNMENT");
}

QString eqPresetCaption()
{
    return broken(1227);
}

QString audioLevelCaption()
{
    return broken(1246);
}

// clang-format off
const struct { Page page; QPushButton* Form::*key; QLabel* Form::*label; QString (*caption)(); } pageKeys[] = {
    {EQSettingPage,         &Form::key_EQ_setting,        &Form::text_eq_setting,        eqSettingCaption},
    {AudioLevelsPage,       &Form::key_balance_setting,   &Form::text_balance_setting,   balanceCaption},
    {CrossoverSettingsPage, &Form::key_crossover_setting, &Form::text_crossover_setting, crossoverCaption},
    {TimeAlignmentPage,     &Form::key_time_alignment,    &Form::text_time_alignment,    timeAlignmentCaption},
    {EQPresetPage,          &Form::key_eq_preset,         &Form::label_eq_preset,        eqPresetCaption},
    {VolumeLevelPage,       &Form::key_audio_level,       &Form::label_audio_level,      audioLevelCaption},
};
// clang-format on
static_assert(std::size(pageKeys) == PageCount, "one key a page");

} // namespace

m5qx_eq_tab_widget::m5qx_eq_tab_widget(QWidget* parent)
    : QWidget(parent)
    , ui(new Ui::m5qx_audiosetting_tab_widget)
{
    ui->setupUi(this);
    init();
}

m5qx_eq_tab_widget::~m5qx_eq_tab_widget() = default;

void m5qx_eq_tab_widget::init()
{
    m_pages = new QButtonGroup(this);
    for (const auto& row : pageKeys) {
        (ui.data()->*row.label)->setAttribute(Qt::WA_TransparentForMouseEvents);
        (ui.data()->*row.key)->setCheckable(true);
        m_pages->addButton(ui.data()->*row.key, row.page);
    }
    m_pages->setExclusive(true);

    const struct
    {
        QObject* sender;
        const char* signal;
        const char* slot;
    } bindings[] = {
        {m_pages, SIGNAL(buttonClicked(int)), SLOT(onPageButGroupClicked(int))},
        {ui->key_audio_setting_left, SIGNAL(clicked()), SLOT(onPrevEQType())},
        {ui->key_audio_setting_right, SIGNAL(clicked()), SLOT(onNextEQType())},
        {mem::SettingsUtil::instance(), SIGNAL(EQType(int)), SLOT(onEQTypeChanged(int))},
    };
    for (const auto& binding : bindings)
        connect(binding.sender, binding.signal, this, binding.slot);
}

void m5qx_eq_tab_widget::showEvent(QShowEvent*)
{
    retranslateUi();
}

void m5qx_eq_tab_widget::retranslateUi()
{
    showEQTypeText();
    for (const auto& row : pageKeys) {
        const QString caption = row.caption();
        (ui.data()->*row.label)->setText(caption);
        (ui.data()->*row.key)->setAccessibleName(caption.simplified());
    }
}

void m5qx_eq_tab_widget::setCheckedPage(int id)
{
    QAbstractButton* key = m_pages->button(id);
    if (!key) {
        AS_ERROR() << "no page key with id" << id;
        return;
    }
    key->setChecked(true);
}

void m5qx_eq_tab_widget::onPageButGroupClicked(int id)
{
    AS_DEBUG() << "page id" << id;
    soundClickedBeep();
    invokeOfPage(this, &PageRow::signal, id);
}

void m5qx_eq_tab_widget::onNextEQType()
{
    AS_DEBUG();
    soundClickedBeep();
    nextEQType();
}

void m5qx_eq_tab_widget::onPrevEQType()
{
    AS_DEBUG();
    soundClickedBeep();
    prevEQType();
}

void m5qx_eq_tab_widget::onEQTypeChanged(int type)
{
    AS_DEBUG() << "type:" << type;
    emit EQTypeChanged();
    showEQTypeText();
}

// The keys run against the numbering, on purpose: "next" steps down and "previous" up.
void m5qx_eq_tab_widget::nextEQType()
{
    const int type = currEQType();
    stepEQType(type <= 0 ? eqTypeCount - 1 : qMin(type, eqTypeCount) - 1);
}

void m5qx_eq_tab_widget::prevEQType()
{
    const int type = currEQType();
    stepEQType(type >= eqTypeCount - 1 ? 0 : qMax(type, -1) + 1);
}

/// The name isn't refreshed here: it follows when the platform says that the type has changed.
void m5qx_eq_tab_widget::stepEQType(int type)
{
    hvaudio::AudioService::instance()->setEQType(static_cast<AudioEQType>(type), true);
    emit EQTypeChanged();
}

int m5qx_eq_tab_widget::currEQType()
{
    return hvaudio::AudioService::instance()->getCurrEQType();
}

void m5qx_eq_tab_widget::showEQTypeText()
{
    const int type = currEQType();
    const bool known = type >= 0 && type < eqTypeCount;
    ui->text_EQ_type->setText(known ? Translator::translate(cm::eqNameStrId[type]) : QString());
}

void m5qx_eq_tab_widget::soundClickedBeep()
{
    hvaudio::AudioService::instance()->doBeep(0);
}

} // namespace audiosetting
