#include "M5QX/m5qx_audiosetting_tab_widget.h"

#include "M5QX/diagnostic.h"
#include "M5QX/filelocal.h"
#include "common/settings.h"
#include "common/translator.h"
#include "hvaudio/audioservice.h"
#include "ui_m5qx_audiosetting_tab_widget.h"

#include <QButtonGroup>

namespace audiosetting {

namespace {

constexpr int pageCount = 6;
constexpr int eqTypeCount = 9;
static_assert(sizeof(cm::eqNameStrId) / sizeof(cm::eqNameStrId[0]) == eqTypeCount,
              "every EQ type has a name");

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

} // namespace

/// One page key; its row is its group id, which is the hub's page index.
struct m5qx_eq_tab_widget::PageKey
{
    QPushButton* Ui_m5qx_audiosetting_tab_widget::*key;
    QLabel* Ui_m5qx_audiosetting_tab_widget::*label;
    void (m5qx_eq_tab_widget::*show)();
    QString (*caption)();
};

// clang-format off
const m5qx_eq_tab_widget::PageKey m5qx_eq_tab_widget::pageKeys[] = {
    {&Ui_m5qx_audiosetting_tab_widget::key_EQ_setting,        &Ui_m5qx_audiosetting_tab_widget::text_eq_setting,        &m5qx_eq_tab_widget::triShowEQSettingPage,        eqSettingCaption},
    {&Ui_m5qx_audiosetting_tab_widget::key_balance_setting,   &Ui_m5qx_audiosetting_tab_widget::text_balance_setting,   &m5qx_eq_tab_widget::triShowAudioLevelsPage,      balanceCaption},
    {&Ui_m5qx_audiosetting_tab_widget::key_crossover_setting, &Ui_m5qx_audiosetting_tab_widget::text_crossover_setting, &m5qx_eq_tab_widget::triShowCrossoverSettingPage, crossoverCaption},
    {&Ui_m5qx_audiosetting_tab_widget::key_time_alignment,    &Ui_m5qx_audiosetting_tab_widget::text_time_alignment,    &m5qx_eq_tab_widget::triShowTimeAlignmentpage,    timeAlignmentCaption},
    {&Ui_m5qx_audiosetting_tab_widget::key_eq_preset,         &Ui_m5qx_audiosetting_tab_widget::label_eq_preset,        &m5qx_eq_tab_widget::triShowEQPreset,             eqPresetCaption},
    {&Ui_m5qx_audiosetting_tab_widget::key_audio_level,       &Ui_m5qx_audiosetting_tab_widget::label_audio_level,      &m5qx_eq_tab_widget::triVolumeLevel,              audioLevelCaption},
};
// clang-format on

m5qx_eq_tab_widget::m5qx_eq_tab_widget(QWidget* parent)
    : QWidget(parent)
    , ui(new Ui::m5qx_audiosetting_tab_widget)
{
    static_assert(sizeof(pageKeys) / sizeof(pageKeys[0]) == pageCount, "one row a page");
    ui->setupUi(this);
    init();
}

m5qx_eq_tab_widget::~m5qx_eq_tab_widget()
{
    delete ui;
}

void m5qx_eq_tab_widget::init()
{
    m_pages = new QButtonGroup(this);
    int id = 0;
    for (const PageKey& row : pageKeys) {
        (ui->*row.label)->setAttribute(Qt::WA_TransparentForMouseEvents);
        (ui->*row.key)->setCheckable(true);
        m_pages->addButton(ui->*row.key, id++);
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
    for (const PageKey& row : pageKeys) {
        const QString caption = row.caption();
        (ui->*row.label)->setText(caption);
        (ui->*row.key)->setAccessibleName(caption.simplified());
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
    if (id < 0 || id >= pageCount)
        return;
    const auto show = pageKeys[id].show;
    emit(this->*show)();
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
    stepEQType(type == 0 ? eqTypeCount - 1 : type - 1);
}

void m5qx_eq_tab_widget::prevEQType()
{
    const int type = currEQType();
    stepEQType(type == eqTypeCount - 1 ? 0 : type + 1);
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
