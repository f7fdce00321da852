#include "M5QX/m5qx_audiosetting_settings_page.h"

#include "M5QX/backrequest.h"
#include "M5QX/diagnostic.h"
#include "M5QX/pagesettings.h"
#include "common/settings.h"
#include "common/translator.h"
#include "hvaudio/audioservice.h"
#include "ui_m5qx_audiosetting_settings_page.h"

#include <QMouseEvent>

namespace audiosetting {

namespace {

constexpr const mem::Setting& userCurve1 = mem::settingOf("eq1%1");
constexpr const mem::Setting& userCurve2 = mem::settingOf("eq2%1");
static_assert(userCurve1.count == hvaudio::eqBandCount && userCurve2.count == hvaudio::eqBandCount);

constexpr int maxValue = userCurve1.largest;
constexpr float pixelsPerStep = 15.45f;

struct BandWidgets
{
    QWidget* Ui_m5qx_audiosetting_settings_page::*panel;
    QLabel* Ui_m5qx_audiosetting_settings_page::*handle;
    QLabel* Ui_m5qx_audiosetting_settings_page::*caption;
};

using Form = Ui_m5qx_audiosetting_settings_page;

// clang-format off
constexpr BandWidgets bandWidgets[] = {
    {&Form::eq_band_widget1,  &Form::icon_band_num_1,  &Form::text_band_hz_1},
    {&Form::eq_band_widget2,  &Form::icon_band_num_2,  &Form::text_band_hz_2},
    {&Form::eq_band_widget3,  &Form::icon_band_num_3,  &Form::text_band_hz_3},
    {&Form::eq_band_widget4,  &Form::icon_band_num_4,  &Form::text_band_hz_4},
    {&Form::eq_band_widget5,  &Form::icon_band_num_5,  &Form::text_band_hz_5},
    {&Form::eq_band_widget6,  &Form::icon_band_num_6,  &Form::text_band_hz_6},
    {&Form::eq_band_widget7,  &Form::icon_band_num_7,  &Form::text_band_hz_7},
    {&Form::eq_band_widget8,  &Form::icon_band_num_8,  &Form::text_band_hz_8},
    {&Form::eq_band_widget9,  &Form::icon_band_num_9,  &Form::text_band_hz_9},
    {&Form::eq_band_widget10, &Form::icon_band_num_10, &Form::text_band_hz_10},
    {&Form::eq_band_widget11, &Form::icon_band_num_11, &Form::text_band_hz_11},
    {&Form::eq_band_widget12, &Form::icon_band_num_12, &Form::text_band_hz_12},
    {&Form::eq_band_widget13, &Form::icon_band_num_13, &Form::text_band_hz_13},
};
// clang-format on
static_assert(std::size(bandWidgets) == hvaudio::eqBandCount, "one row a band");

bool isBand(int band)
{
    return band >= 0 && band < hvaudio::eqBandCount;
}

bool isCustom(int type)
{
    return type == EQ_Type_User1 || type == EQ_Type_User2;
}

// What the store holds may have been edited by hand; a handle stays on its bar whatever it says.
int travel(int value)
{
    return static_cast<int>((maxValue - qBound(-maxValue, value, maxValue)) * pixelsPerStep);
}

hvaudio::AudioService* audioService()
{
    return hvaudio::AudioService::instance();
}

} // namespace

m5qx_EQ_settings_page::m5qx_EQ_settings_page(QWidget* parent)
    : QWidget(parent)
    , ui(new Ui::m5qx_audiosetting_settings_page)
    , m_settings(new mem::SettingsExe(this))
{
    ui->setupUi(this);
    m_lastCustomType = EQ_Type_User1;
    installEventFilter(this);
    init();
}

m5qx_EQ_settings_page::~m5qx_EQ_settings_page() = default;

void m5qx_EQ_settings_page::init()
{
    for (int i = 0; i < hvaudio::eqBandCount; ++i) {
        const BandWidgets& widgets = bandWidgets[i];
        m_bands[i].panel = ui.data()->*widgets.panel;
        m_bands[i].handle = ui.data()->*widgets.handle;
        m_bands[i].caption = ui.data()->*widgets.caption;
        m_bands[i].bar = m_bands[i].panel->geometry();
    }
    ui->icon_eq_band_num->setAttribute(Qt::WA_TransparentForMouseEvents);
    ui->eq_value_widget->hide();
    loadCaches();
    updateEq(getCurrEqType());
    connect(mem::SettingsUtil::instance(), SIGNAL(EQType(int)), this, SLOT(onEQTypeChanged(int)));
    connect(ui->key_back, SIGNAL(clicked()), this, SLOT(onBackClicked()));
}

// The caches are read once. From then on only the finger changes them.
void m5qx_EQ_settings_page::loadCaches()
{
    for (int band = 0; band < hvaudio::eqBandCount; ++band)
        m_custom1[band] = stored::number(mem::SettingsFunc::instance(), userCurve1, band);
    for (int band = 0; band < hvaudio::eqBandCount; ++band)
        m_custom2[band] = stored::number(mem::SettingsFunc::instance(), userCurve2, band);
}

void m5qx_EQ_settings_page::resume()
{
    updateEq(getCurrEqType());
}

void m5qx_EQ_settings_page::retranslateUi()
{
    const QString title = Translator::translate(387);
    ui->text_title->setText(title);
    ui->key_back->setAccessibleName(title + QStringLiteral(" X"));
}

void m5qx_EQ_settings_page::showEvent(QShowEvent* event)
{
    QWidget::showEvent(event);
    // While it was hidden the page didn't listen, so it asks the service for the type now.
    rememberType(audioService()->getCurrEQType());
    retranslateUi();
    showEQTypeText();
}

void m5qx_EQ_settings_page::hideEvent(QHideEvent* event)
{
    forgetTouch();
    QWidget::hideEvent(event);
}

void m5qx_EQ_settings_page::rememberType(int type)
{
    if (isCustom(type))
        m_lastCustomType = type;
}

int m5qx_EQ_settings_page::getCurrEqType()
{
    const int type = audioService()->getCurrEQType();
    return isCustom(type) ? type : m_lastCustomType;
}

void m5qx_EQ_settings_page::setEqType(int type)
{
    audioService()->setEQType(static_cast<AudioEQType>(type), true);
}

int m5qx_EQ_settings_page::getCustomEq(int band)
{
    switch (getCurrEqType()) {
    case EQ_Type_User1:
        return stored::number(mem::SettingsFunc::instance(), userCurve1, band);
    case EQ_Type_User2:
        return stored::number(mem::SettingsFunc::instance(), userCurve2, band);
    default:
        return audioService()->getCustomEq(band);
    }
}

void m5qx_EQ_settings_page::setCustomEq(int value, int band, bool flag)
{
    AS_DEBUG() << "value:" << value << "band:" << band;
    audioService()->setCustomEq(value, band, flag);
}

void m5qx_EQ_settings_page::setCustomEq1(int value, int band, bool flag)
{
    AS_DEBUG() << "value:" << value << "band:" << band;
    audioService()->setCustomEq1(value, band, flag);
}

void m5qx_EQ_settings_page::setCustomEq2(int value, int band, bool flag)
{
    AS_DEBUG() << "value:" << value << "band:" << band;
    audioService()->setCustomEq2(value, band, flag);
}

void m5qx_EQ_settings_page::updateCustomEqVal(int band, int value)
{
    if (!isBand(band))
        return;
    const int type = getCurrEqType();
    if (type == EQ_Type_User1)
        m_custom1[band] = value;
    else if (type == EQ_Type_User2)
        m_custom2[band] = value;
    updateEq(type);
}

// Twelve of thirteen handles usually stay where they are; moving only the others keeps the repaint as small
// as the finger's step.
void m5qx_EQ_settings_page::updateEq(int type)
{
    const int* values = type == EQ_Type_User1   ? m_custom1.data()
                        : type == EQ_Type_User2 ? m_custom2.data()
                                                : hvaudio::eqCurveOf(type).value;
    for (int i = 0; i < hvaudio::eqBandCount; ++i) {
        const Band& band = m_bands[i];
        const QPoint place(band.bar.left(), band.bar.top() + travel(values[i]));
        band.handle->move(place - band.bar.topLeft()); // a child of its panel
    }
}

int m5qx_EQ_settings_page::curveNameId(int type)
{
    return hvaudio::eqCurveOf(type).nameId;
}

void m5qx_EQ_settings_page::showEQTypeText()
{
    const int type = getCurrEqType();
    ui->text_eqtype->setText(Translator::translate(cm::eqNameStrId[type]).toUpper());
    // Either key leads to the other curve, so that is what each is called.
    const int other = type == EQ_Type_User1 ? EQ_Type_User2 : EQ_Type_User1;
    const QString otherName = Translator::translate(curveNameId(other));
    ui->Key_eqtype_minus->setAccessibleName(QStringLiteral("< ") + otherName);
    ui->Key_eqtype_plus->setAccessibleName(otherName + QStringLiteral(" >"));
}

void m5qx_EQ_settings_page::onBackClicked()
{
    AS_DEBUG();
    postBackRequest();
}

void m5qx_EQ_settings_page::onEQTypeChanged(int type)
{
    AS_DEBUG() << "type:" << type;
    if (!isVisible())
        return;
    rememberType(type);
    showEQTypeText();
    updateEq(getCurrEqType());
}

void m5qx_EQ_settings_page::on_Key_eqtype_minus_clicked()
{
    AS_DEBUG();
    switchCustomType();
}

// There are only two curves, so a step up leads where a step down does.
void m5qx_EQ_settings_page::on_Key_eqtype_plus_clicked()
{
    AS_DEBUG();
    switchCustomType();
}

void m5qx_EQ_settings_page::switchCustomType()
{
    audioService()->doBeep(0);
    setEqType(getCurrEqType() == EQ_Type_User1 ? EQ_Type_User2 : EQ_Type_User1);
}

bool m5qx_EQ_settings_page::eventFilter(QObject* watched, QEvent* event)
{
    // Panels, handles and captions take no touches: what falls on them arrives here as the page's own.
    if (watched == this)
        touchEvent(event);
    return QWidget::eventFilter(watched, event);
}

void m5qx_EQ_settings_page::touchEvent(const QEvent* event)
{
    switch (event->type()) {
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonDblClick: // the second of two quick touches is a touch like any other
        if (const auto* mouse = static_cast<const QMouseEvent*>(event); mouse->button() == Qt::LeftButton)
            touchPressed(mouse->pos());
        break;
    case QEvent::MouseMove:
        touchMoved(static_cast<const QMouseEvent*>(event)->pos());
        break;
    case QEvent::MouseButtonRelease:
        if (static_cast<const QMouseEvent*>(event)->button() == Qt::LeftButton)
            touchReleased();
        break;
    default:
        break;
    }
}

void m5qx_EQ_settings_page::touchPressed(const QPoint& point)
{
    const int band = touchIndexByPoint(point);
    if (band < 0) {
        forgetTouch(); // the release of an earlier touch may have gone elsewhere
        return;
    }
    // Sent also while it is current already: a press makes sure of the type in the service.
    setEqType(getCurrEqType());
    m_touchBand = band;
    if (updateTouchPoint(band, point)) {
        audioService()->doBeep(0);
        updateeqSliderBarInfo(band, m_touchValue, point.y());
    }
}

void m5qx_EQ_settings_page::touchMoved(const QPoint& point)
{
    if (m_touchBand >= 0 && updateTouchPoint(m_touchBand, point))
        updateeqSliderBarInfo(m_touchBand, m_touchValue, point.y());
}

void m5qx_EQ_settings_page::touchReleased()
{
    if (m_touchBand < 0)
        return;
    if (getCurrEqType() == EQ_Type_User1)
        setCustomEq1(m_touchValue, m_touchBand, true);
    else
        setCustomEq2(m_touchValue, m_touchBand, true);
    forgetTouch();
}

void m5qx_EQ_settings_page::forgetTouch()
{
    m_touchBand = -1;
    ui->eq_value_widget->hide();
}

int m5qx_EQ_settings_page::touchIndexByPoint(const QPoint& point) const
{
    for (int i = 0; i < hvaudio::eqBandCount; ++i) {
        if (m_bands[i].bar.contains(point))
            return i;
    }
    return -1;
}

bool m5qx_EQ_settings_page::updateTouchPoint(int band, const QPoint& point)
{
    if (!isBand(band) || !m_bands[band].bar.contains(point))
        return false;
    const QRect& bar = m_bands[band].bar;
    // 21 equal heights, one for each value, whereas the handle travels 20 steps.
    const int value = maxValue - (21 * (point.y() - bar.top())) / bar.height();
    m_touchValue = qBound(-maxValue, value, maxValue);
    updateCustomEqVal(band, m_touchValue);
    return true;
}

void m5qx_EQ_settings_page::updateeqSliderBarInfo(int band, int value, int y)
{
    Q_UNUSED(y)
    if (!isBand(band))
        return;
    ui->text_eq_band_num->setText(QString::number(value));
    // Curve 1 for every type but 7, so that the bubble stands where the handle that is drawn stands.
    const Curve& curve = getCurrEqType() == EQ_Type_User2 ? m_custom2 : m_custom1;
    ui->eq_value_widget->move(66 * band + 57, m_bands[band].bar.top() + travel(curve[band]) + 31);
    ui->eq_value_widget->raise();
    ui->eq_value_widget->show();
}

} // namespace audiosetting
