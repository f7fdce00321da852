#include "M5QX/volumesettingwidget.h"

#include "M5QX/diagnostic.h"
#include "M5QX/pagesettings.h"
#include "M5QX/setuppagekeywidget.h"
#include "common/customslider.h"
#include "common/scroll.h"
#include "common/settings.h"
#include "common/transferstation.h"
#include "common/translator.h"
#include "hvaudio/audioservice.h"
#include "hvaudio/audiosources.h"
#include "ui_volumesettingwidget.h"

namespace {

enum Section : int {
    Live,    ///< a channel's volume now: the service keeps it and tells when it has changed
    StartUp, ///< a channel's volume at power-on: stored, nobody is told
    Gain,    ///< a source's input gain: stored and applied
};

struct RowData
{
    Section section;
    const mem::Setting& setting; ///< of a live row a family, by channel
    int service;                 ///< channel of a live row, HVAudio_source_id_e of a gain row
    int textId;
    const char* fixedText = ""; ///< where textId is 0
};

constexpr int noService = -1;

constexpr RowData gainRow(const hvaudio::AudioSource& source)
{
    return {Gain, source.gain, source.id, source.nameId, source.fixedName};
}

// Navigation is channel 5 and voice channel 4, crossed against their order on the page: that is how the
// service counts. Channel 3 has no row.
// clang-format off
constexpr RowData rowData[] = {
    {Live,    mem::settingOf("volume%1"),                           0,                          436},
    {Live,    mem::settingOf("volume%1"),                           1,                          437},
    {Live,    mem::settingOf("volume%1"),                           2,                          438},
    {Live,    mem::settingOf("volume%1"),                           5,                          439},
    {Live,    mem::settingOf("volume%1"),                           4,                          440},
    {StartUp, mem::settingOf("Setup_Main_Volume"),                  noService,                  1249},
    {StartUp, mem::settingOf("Setup_Volume_Type_BT_Ringer"),        noService,                  1250},
    {StartUp, mem::settingOf("Setup_Volume_Type_BT_Talking"),       noService,                  1251},
    {StartUp, mem::settingOf("Setup_Volume_Type_Navi"),             noService,                  1254},
    {StartUp, mem::settingOf("Setup_Volume_Type_Voice"),            noService,                  1255},
    gainRow(hvaudio::audioSources[0]),
    gainRow(hvaudio::audioSources[1]),
    gainRow(hvaudio::audioSources[2]),
    gainRow(hvaudio::audioSources[3]),
    gainRow(hvaudio::audioSources[4]),
    gainRow(hvaudio::audioSources[5]),
    gainRow(hvaudio::audioSources[6]),
};
// clang-format on
static_assert(std::size(rowData) == VolumeSettingWidget::rowCount, "one line a row");

using Form = Ui_VolumeSettingWidget;

struct RowWidgets
{
    QWidget* Form::*row;
    QLabel* Form::*label;
    QSlider* Form::*place;
    QPushButton* Form::*down;
    QPushButton* Form::*up;
};

// clang-format off
constexpr RowWidgets rowWidgets[] = {
    {&Form::widget_main,               &Form::label_main,               &Form::slider_main,               &Form::key_main_down,               &Form::key_main_up},
    {&Form::widget_ring,               &Form::label_ring,               &Form::slider_ring,               &Form::key_ring_down,               &Form::key_ring_up},
    {&Form::widget_call,               &Form::label_call,               &Form::slider_call,               &Form::key_call_down,               &Form::key_call_up},
    {&Form::widget_navi,               &Form::label_navi,               &Form::slider_navi,               &Form::key_navi_down,               &Form::key_navi_up},
    {&Form::widget_voice,              &Form::label_voice,              &Form::slider_voice,              &Form::key_voice_down,              &Form::key_voice_up},
    {&Form::widget_default_main,       &Form::label_main_default,       &Form::slider_main_default,       &Form::key_main_default_down,       &Form::key_main_default_up},
    {&Form::widget_default_ring,       &Form::label_ring_default,       &Form::slider_ring_default,       &Form::key_ring_default_down,       &Form::key_ring_default_up},
    {&Form::widget_default_call,       &Form::label_call_default,       &Form::slider_call_default,       &Form::key_call_default_down,       &Form::key_call_default_up},
    {&Form::widget_default_navi,       &Form::label_navi_default,       &Form::slider_navi_default,       &Form::key_navi_default_down,       &Form::key_navi_default_up},
    {&Form::widget_default_voice,      &Form::label_voice_default,      &Form::slider_voice_default,      &Form::key_voice_default_down,      &Form::key_voice_default_up},
    {&Form::widget_source_radio,       &Form::label_source_radio,       &Form::slider_source_radio,       &Form::key_source_radio_down,       &Form::key_source_radio_up},
    {&Form::widget_source_usb,         &Form::label_source_usb,         &Form::slider_source_usb,         &Form::key_source_usb_down,         &Form::key_source_usb_up},
    {&Form::widget_source_btaudio,     &Form::label_source_btaudio,     &Form::slider_source_btaudio,     &Form::key_source_btaudio_down,     &Form::key_source_btaudio_up},
    {&Form::widget_source_avin,        &Form::label_source_avin,        &Form::slider_source_avin,        &Form::key_source_avin_down,        &Form::key_source_avin_up},
    {&Form::widget_source_carplay,     &Form::label_source_carplay,     &Form::slider_source_carplay,     &Form::key_source_carplay_down,     &Form::key_source_carplay_up},
    {&Form::widget_source_androidauto, &Form::label_source_androidauto, &Form::slider_source_androidauto, &Form::key_source_androidauto_down, &Form::key_source_androidauto_up},
    {&Form::widget_source_dab,         &Form::label_source_dab,         &Form::slider_source_dab,         &Form::key_source_dab_down,         &Form::key_source_dab_up},
};
// clang-format on
static_assert(std::size(rowWidgets) == VolumeSettingWidget::rowCount, "one line a row");

constexpr QRect scrollBarPlace(978, 160, 16, 237);
constexpr int liveRowCount = VolumeSettingWidget::VoiceRow + 1;
constexpr int rowHeight = 78;
constexpr int liveRowsHeight = liveRowCount * rowHeight + 50; // with the room above the first

hvaudio::AudioService* audioService()
{
    return hvaudio::AudioService::instance();
}

int levelOf(const RowData& row)
{
    return stored::number(mem::SettingsFunc::instance(), row.setting, row.service);
}
} // namespace

VolumeSettingWidget::VolumeSettingWidget(QWidget* parent)
    : QWidget(parent)
    , ui(new Ui_VolumeSettingWidget)
{
    ui->setupUi(this);
    ui->key_exit->hide();
    showSetupPageKeyWidget();
    setTexts();
    createSliders();
    createScrolling();
    for (const RowWidgets& widgets : rowWidgets)
        m_rows.append(ui.data()->*widgets.row);
    cm::R9TransferStation* station = cm::TransferFunction::instance()->getTS();
    connect(station, SIGNAL(setupNextPage()), this, SLOT(onSetupNextPage()));
    connect(station, SIGNAL(setupPrevPage()), this, SLOT(onSetupPrevPage()));
    setupWidget();
}

VolumeSettingWidget::~VolumeSettingWidget()
{
    delete m_scrollManage;
}

void VolumeSettingWidget::showSetupPageKeyWidget()
{
    if (!m_pageKeys) {
        m_pageKeys = new SetupPageKeyWidget(this);
        m_pageKeys->resizeHeightofKeyWidget(40);
    }
    m_pageKeys->raise();
    m_pageKeys->move(960, 70);
    m_pageKeys->show();
}

void VolumeSettingWidget::setTexts()
{
    const QString title = Translator::translate(1246).toUpper();
    ui->label_title->setText(title);
    ui->label_title_default_volume->setText(QLatin1Char(' ') + Translator::translate(1256).toUpper());
    ui->label_title_volume->setText(Translator::translate(435).toUpper());
    ui->label_title_source->setText(QLatin1Char(' ') + Translator::translate(441).toUpper());
    ui->key_back->setAccessibleName(title);
    ui->key_exit->setAccessibleName(title + QStringLiteral(" X"));
    m_pageKeys->setPageName(title);
    for (int i = 0; i < rowCount; ++i) {
        const RowWidgets& widgets = rowWidgets[i];
        const int id = rowData[i].textId;
        const QString name =
            id ? Translator::translate(id).toUpper() : QString::fromLatin1(rowData[i].fixedText);
        (ui.data()->*widgets.label)->setText(name);
        // The label's end lies over the down key.
        (ui.data()->*widgets.label)->setAttribute(Qt::WA_TransparentForMouseEvents);
        (ui.data()->*widgets.down)->setAccessibleName(name + QStringLiteral(" -"));
        (ui.data()->*widgets.up)->setAccessibleName(name + QStringLiteral(" +"));
    }
}

void VolumeSettingWidget::createSliders()
{
    // clang-format off
    const char* const saveSlots[] = {
        SLOT(onMainSave(int)),
        SLOT(onRingSave(int)),
        SLOT(onCallSave(int)),
        SLOT(onNaviSave(int)),
        SLOT(onVoiceSave(int)),
        SLOT(onMainDefaultSave(int)),
        SLOT(onRingDefaultSave(int)),
        SLOT(onCallDefaultSave(int)),
        SLOT(onNaviDefaultSave(int)),
        SLOT(onVoiceDefaultSave(int)),
        SLOT(onSourceRadioSave(int)),
        SLOT(onSourceUSBSave(int)),
        SLOT(onSourceBtaudioSave(int)),
        SLOT(onSourceAVINSave(int)),
        SLOT(onSourceCarplaySave(int)),
        SLOT(onSourceAndroidautoSave(int)),
        SLOT(onSourceDABSave(int)),
    };
    // clang-format on
    static_assert(std::size(saveSlots) == rowCount, "one slot a row");

    for (int i = 0; i < rowCount; ++i) {
        const RowWidgets& widgets = rowWidgets[i];
        const RowData& data = rowData[i];
        QSlider* place = ui.data()->*widgets.place;
        place->hide();
        auto* slider = new settings::CustomSlider_2(ui.data()->*widgets.row, place->geometry(), 4);
        slider->setHintColor(Qt::white);
        slider->setOffset(data.section == Gain ? -hvaudio::gainOfZeroDb : 0);
        slider->setMaximum(data.setting.largest);
        slider->setMinimum(data.setting.smallest);
        connect(slider, SIGNAL(valSave(int)), this, saveSlots[i]);
        slider->setAccessibleName((ui.data()->*widgets.label)->text());
        QWidget::setTabOrder(ui.data()->*widgets.down, slider);
        m_sliders[i] = slider;
    }
}

void VolumeSettingWidget::createScrolling()
{
    // Made, replaced by the one below, and left to the area: it is never asked to scroll.
    m_scrollManage = new cm::ScrollManage(ui->scrollArea, false, false);
    m_scrollBar = new cm::ScrollBar(this, scrollBarPlace, 0);
    ui->scrollArea->setVerticalScrollBar(m_scrollBar);
    ui->scrollArea->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    // The area took the bar into its own frame; back on the page it lies above the key strip.
    m_scrollBar->setParent(this);
    m_scrollBar->setGeometry(scrollBarPlace);
    m_scrollManage = new cm::ScrollManage(ui->scrollArea, true, false);
    connect(audioService(), SIGNAL(audioVolumeChanged(bool, int, int)), this,
            SLOT(onVolumeChanged(bool, int, int)));
}

void VolumeSettingWidget::setupWidget()
{
    int height = 100;
    for (int i = 0; i < m_rows.size(); ++i) {
        QWidget* row = m_rows.at(i);
        if (i < liveRowCount) {
            row->hide();
            row->setGeometry(0, 0, 0, 0);
        } else {
            row->setGeometry(row->geometry().translated(0, -liveRowsHeight));
            height += row->height();
            if (row->size().isEmpty()) { // never seen, so no place for the keyboard to stop at
                for (QWidget* child : row->findChildren<QWidget*>())
                    child->setFocusPolicy(Qt::NoFocus);
            }
        }
    }
    ui->scrollAreaWidgetContents->setGeometry(0, 0, 1024, height + 70);
}

void VolumeSettingWidget::resume()
{
    updateVolume();
    updateDefaultVolume();
    updateSourceOffset();
}

void VolumeSettingWidget::updateVolume()
{
    updateRows(MainRow, VoiceRow);
}

void VolumeSettingWidget::updateDefaultVolume()
{
    updateRows(MainDefaultRow, VoiceDefaultRow);
}

void VolumeSettingWidget::updateSourceOffset()
{
    updateRows(RadioRow, DabRow);
}

void VolumeSettingWidget::updateRows(Row first, Row last)
{
    for (int i = first; i <= last; ++i)
        m_sliders[i]->setValue(levelOf(rowData[i]));
}

/// A key's step: the value that was sent or stored. At an end of the range the value stays and is sent all
/// the same. A live row's slider waits for the service's word.
int VolumeSettingWidget::step(Row row, int by)
{
    audioService()->doBeep(0);
    const RowData& data = rowData[row];
    int value = levelOf(data);
    if (by > 0 ? value < data.setting.largest : value > data.setting.smallest)
        value += by;
    value = save(row, value);
    if (data.section == StartUp)
        updateDefaultVolume();
    else if (data.section == Gain)
        updateSourceOffset();
    return value;
}

/// The one place through which a level goes out: clamped, stored, sent. Returns what went out.
int VolumeSettingWidget::save(Row row, int value)
{
    const RowData& data = rowData[row];
    value = qBound(data.setting.smallest, value, data.setting.largest);
    if (data.section == Live) {
        audioService()->setVolumeLevel(value, data.service);
        return value;
    }
    stored::write(mem::SettingsFunc::instance(), data.setting, value);
    if (data.section == Gain)
        audioService()->setSourceOffsetGain(static_cast<HVAudio_source_id_e>(data.service), value);
    return value;
}

// clang-format off
void VolumeSettingWidget::on_key_main_up_clicked()                       { AS_DEBUG() << "value:" << step(MainRow, +1); }
void VolumeSettingWidget::on_key_main_down_clicked()                     { AS_DEBUG() << "value:" << step(MainRow, -1); }
void VolumeSettingWidget::on_key_ring_up_clicked()                       { AS_DEBUG() << "value:" << step(RingRow, +1); }
void VolumeSettingWidget::on_key_ring_down_clicked()                     { AS_DEBUG() << "value:" << step(RingRow, -1); }
void VolumeSettingWidget::on_key_call_up_clicked()                       { AS_DEBUG() << "value:" << step(CallRow, +1); }
void VolumeSettingWidget::on_key_call_down_clicked()                     { AS_DEBUG() << "value:" << step(CallRow, -1); }
void VolumeSettingWidget::on_key_navi_up_clicked()                       { AS_DEBUG() << "value:" << step(NaviRow, +1); }
void VolumeSettingWidget::on_key_navi_down_clicked()                     { AS_DEBUG() << "value:" << step(NaviRow, -1); }
void VolumeSettingWidget::on_key_voice_up_clicked()                      { AS_DEBUG() << "value:" << step(VoiceRow, +1); }
void VolumeSettingWidget::on_key_voice_down_clicked()                    { AS_DEBUG() << "value:" << step(VoiceRow, -1); }
void VolumeSettingWidget::on_key_main_default_up_clicked()               { AS_DEBUG() << "value:" << step(MainDefaultRow, +1); }
void VolumeSettingWidget::on_key_main_default_down_clicked()             { AS_DEBUG() << "value:" << step(MainDefaultRow, -1); }
void VolumeSettingWidget::on_key_ring_default_up_clicked()               { AS_DEBUG() << "value:" << step(RingDefaultRow, +1); }
void VolumeSettingWidget::on_key_ring_default_down_clicked()             { AS_DEBUG() << "value:" << step(RingDefaultRow, -1); }
void VolumeSettingWidget::on_key_call_default_up_clicked()               { AS_DEBUG() << "value:" << step(CallDefaultRow, +1); }
void VolumeSettingWidget::on_key_call_default_down_clicked()             { AS_DEBUG() << "value:" << step(CallDefaultRow, -1); }
void VolumeSettingWidget::on_key_navi_default_up_clicked()               { AS_DEBUG() << "value:" << step(NaviDefaultRow, +1); }
void VolumeSettingWidget::on_key_navi_default_down_clicked()             { AS_DEBUG() << "value:" << step(NaviDefaultRow, -1); }
void VolumeSettingWidget::on_key_voice_default_up_clicked()              { AS_DEBUG() << "value:" << step(VoiceDefaultRow, +1); }
void VolumeSettingWidget::on_key_voice_default_down_clicked()            { AS_DEBUG() << "value:" << step(VoiceDefaultRow, -1); }
void VolumeSettingWidget::on_key_source_radio_up_clicked()               { AS_DEBUG() << "value:" << step(RadioRow, +1); }
void VolumeSettingWidget::on_key_source_radio_down_clicked()             { AS_DEBUG() << "value:" << step(RadioRow, -1); }
void VolumeSettingWidget::on_key_source_usb_up_clicked()                 { AS_DEBUG() << "value:" << step(UsbRow, +1); }
void VolumeSettingWidget::on_key_source_usb_down_clicked()               { AS_DEBUG() << "value:" << step(UsbRow, -1); }
void VolumeSettingWidget::on_key_source_btaudio_up_clicked()             { AS_DEBUG() << "value:" << step(BtAudioRow, +1); }
void VolumeSettingWidget::on_key_source_btaudio_down_clicked()           { AS_DEBUG() << "value:" << step(BtAudioRow, -1); }
void VolumeSettingWidget::on_key_source_avin_up_clicked()                { AS_DEBUG() << "value:" << step(AvInRow, +1); }
void VolumeSettingWidget::on_key_source_avin_down_clicked()              { AS_DEBUG() << "value:" << step(AvInRow, -1); }
void VolumeSettingWidget::on_key_source_carplay_up_clicked()             { AS_DEBUG() << "value:" << step(CarplayRow, +1); }
void VolumeSettingWidget::on_key_source_carplay_down_clicked()           { AS_DEBUG() << "value:" << step(CarplayRow, -1); }
void VolumeSettingWidget::on_key_source_androidauto_up_clicked()         { AS_DEBUG() << "value:" << step(AndroidAutoRow, +1); }
void VolumeSettingWidget::on_key_source_androidauto_down_clicked()       { AS_DEBUG() << "value:" << step(AndroidAutoRow, -1); }
void VolumeSettingWidget::on_key_source_dab_up_clicked()                 { AS_DEBUG() << "value:" << step(DabRow, +1); }
void VolumeSettingWidget::on_key_source_dab_down_clicked()               { AS_DEBUG() << "value:" << step(DabRow, -1); }

void VolumeSettingWidget::onMainSave(int value)                 { AS_DEBUG() << "value:" << value; save(MainRow, value); }
void VolumeSettingWidget::onRingSave(int value)                 { AS_DEBUG() << "value:" << value; save(RingRow, value); }
void VolumeSettingWidget::onCallSave(int value)                 { AS_DEBUG() << "value:" << value; save(CallRow, value); }
void VolumeSettingWidget::onNaviSave(int value)                 { AS_DEBUG() << "value:" << value; save(NaviRow, value); }
void VolumeSettingWidget::onVoiceSave(int value)                { AS_DEBUG() << "value:" << value; save(VoiceRow, value); }
void VolumeSettingWidget::onMainDefaultSave(int value)          { AS_DEBUG() << "value:" << value; save(MainDefaultRow, value); }
void VolumeSettingWidget::onRingDefaultSave(int value)          { AS_DEBUG() << "value:" << value; save(RingDefaultRow, value); }
void VolumeSettingWidget::onCallDefaultSave(int value)          { AS_DEBUG() << "value:" << value; save(CallDefaultRow, value); }
void VolumeSettingWidget::onNaviDefaultSave(int value)          { AS_DEBUG() << "value:" << value; save(NaviDefaultRow, value); }
void VolumeSettingWidget::onVoiceDefaultSave(int value)         { AS_DEBUG() << "value:" << value; save(VoiceDefaultRow, value); }
void VolumeSettingWidget::onSourceRadioSave(int value)          { AS_DEBUG() << "value:" << value; save(RadioRow, value); }
void VolumeSettingWidget::onSourceUSBSave(int value)            { AS_DEBUG() << "value:" << value; save(UsbRow, value); }
void VolumeSettingWidget::onSourceBtaudioSave(int value)        { AS_DEBUG() << "value:" << value; save(BtAudioRow, value); }
void VolumeSettingWidget::onSourceAVINSave(int value)           { AS_DEBUG() << "value:" << value; save(AvInRow, value); }
void VolumeSettingWidget::onSourceCarplaySave(int value)        { AS_DEBUG() << "value:" << value; save(CarplayRow, value); }
void VolumeSettingWidget::onSourceAndroidautoSave(int value)    { AS_DEBUG() << "value:" << value; save(AndroidAutoRow, value); }
void VolumeSettingWidget::onSourceDABSave(int value)            { AS_DEBUG() << "value:" << value; save(DabRow, value); }
// clang-format on

void VolumeSettingWidget::on_key_exit_clicked()
{
    AS_DEBUG();
    audioService()->doBeep(0);
    emit exitUI();
}

void VolumeSettingWidget::onVolumeChanged(bool, int, int)
{
    AS_DEBUG();
    updateVolume();
}

void VolumeSettingWidget::onSetupNextPage()
{
    AS_DEBUG();
    if (isVisible())
        m_scrollManage->scrollToPos(QPoint(0, ui->scrollAreaWidgetContents->height()), false);
}

void VolumeSettingWidget::onSetupPrevPage()
{
    AS_DEBUG();
    if (isVisible())
        m_scrollManage->scrollToPos(QPoint(0, 0), false);
}
