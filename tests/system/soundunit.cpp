#include "tests/system/soundunit.h"

#include "tests/support/touch.h"

#include "M5QX/k41_audio_root_bf.h"
#include "M5QX/m5qx_audiosetting_crossover_setting_page.h"
#include "M5QX/m5qx_mainwidget.h"
#include "M5QX/pa_balancefadercontrol.h"
#include "common/customslider.h"
#include "platform/common/settings/settingsstore.h"
#include "platform/hvaudioservice/audioservicehost.h"

#include <QAbstractButton>
#include <QCoreApplication>
#include <QScrollBar>

using hvaudio::AudioServiceHost;

namespace {

constexpr int halfASecond = int(SoundUnit::rate / 2);
/// Below the limiter's ceiling whatever is set.
constexpr float level = 0.05f;

/// Whether a finger at the control's middle would reach it.
bool liesOpen(QWidget* window, QWidget* control)
{
    const QWidget* hit = window->childAt(touch::middle(window, control));
    if (!hit)
        return false;
    // What takes no touches itself passes them to what lies around it.
    return hit == control || control->isAncestorOf(hit) ||
           (control->testAttribute(Qt::WA_TransparentForMouseEvents) && hit->isAncestorOf(control)) ||
           hit == control->parentWidget();
}

} // namespace

SoundUnit::SoundUnit()
{
    mem::SettingsStore::instance()->clear();
    m_engine.prepare(rate);
    AudioServiceHost::setSink([this](const sound::Settings& settings) { m_engine.set(settings); });
    AudioServiceHost::setBeeper([this] { m_engine.beep(); });
    AudioServiceHost::powerOn();
    m_hub = std::make_unique<audiosetting::m5qx_mainwidget>(nullptr);
    m_hub->show();
}

SoundUnit::~SoundUnit()
{
    m_alone.reset();
    m_hub.reset();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    AudioServiceHost::setBeeper(nullptr);
    AudioServiceHost::setSink(nullptr);
    AudioServiceHost::shutdown();
}

void SoundUnit::hushLog()
{
    qInstallMessageHandler([](QtMsgType type, const QMessageLogContext&, const QString& message) {
        if (type == QtFatalMsg)
            qt_assert(qPrintable(message), __FILE__, __LINE__);
    });
}

QWidget* SoundUnit::window() const
{
    return m_alone ? static_cast<QWidget*>(m_alone.get()) : m_hub.get();
}

QString SoundUnit::nameOf(const QWidget* control)
{
    if (qobject_cast<const audiosetting::balanceFaderControl*>(control))
        return QStringLiteral("pad");
    if (qobject_cast<const settings::CustomSlider_2*>(control))
        return control->parentWidget()->objectName() + QStringLiteral(":slider");
    return control->objectName();
}

QList<QWidget*> SoundUnit::controls() const
{
    QList<QWidget*> found;
    const auto all = window()->findChildren<QWidget*>();
    for (QWidget* widget : all) {
        // The layer under the pad is a slider in name only.
        const bool isSlider = qobject_cast<QAbstractSlider*>(widget) && !qobject_cast<QScrollBar*>(widget) &&
                              !qobject_cast<k41_audio_root_bf*>(widget);
        const bool isControl = qobject_cast<QAbstractButton*>(widget) || isSlider ||
                               widget->objectName().startsWith(QLatin1String("eq_band_widget"));
        bool shown = widget->isVisible();
        for (const QWidget* up = widget; up; up = up->parentWidget())
            shown = shown && !up->rect().isEmpty() &&
                    up->objectName() != QLatin1String("m5qx_audiosetting_tab_widget");
        if (isControl && shown)
            found << widget;
    }
    return found;
}

QWidget* SoundUnit::find(const QString& name) const
{
    // What the page made itself is called by more than its object name.
    const bool madeByPage = name == QLatin1String("pad") || name.contains(':');
    const auto all = madeByPage ? window()->findChildren<QWidget*>() : window()->findChildren<QWidget*>(name);
    for (QWidget* widget : all) {
        if (widget->isVisible() && nameOf(widget) == name)
            return widget;
    }
    return nullptr;
}

bool SoundUnit::bringIntoView(QWidget* control)
{
    if (liesOpen(window(), control))
        return true;
    const auto bars = window()->findChildren<QScrollBar*>();
    for (QScrollBar* bar : bars) {
        if (!bar->isVisible() || bar->maximum() == bar->minimum())
            continue;
        const QPoint top = bar->mapTo(window(), QPoint(bar->width() / 2, 1));
        if (touch::press(window(), top) != bar)
            continue;
        bool open = false;
        for (int y = 0; y < bar->height() && !open; y += 2) {
            touch::move(window(), top + QPoint(0, y));
            open = liesOpen(window(), control);
        }
        touch::release(window(), top);
        if (open)
            return true;
    }
    return false;
}

QPoint SoundUnit::place(const Touch& touch)
{
    QWidget* const control = find(QLatin1String(touch.control));
    return control && liesOpen(window(), control) ? touch::middle(window(), control) : QPoint(-1, -1);
}

QPoint SoundUnit::endOf(const Touch& touch)
{
    QWidget* const control = find(QLatin1String(touch.control));
    return control ? endOf(touch, control) : QPoint(-1, -1);
}

QPoint SoundUnit::endOf(const Touch& touch, QWidget* control) const
{
    const QPointF end(touch.to.x() * (control->width() - 1), touch.to.y() * (control->height() - 1));
    return control->mapTo(window(), end.toPoint());
}

bool SoundUnit::fail(const QString& text)
{
    m_error = text;
    return false;
}

bool SoundUnit::touch(const Touch& touch)
{
    const QString name = QLatin1String(touch.control);
    if (name == QLatin1String(standAlonePage)) {
        m_hub->hide();
        AudioServiceHost::setFilterTables(AudioServiceHost::FilterTables::MainAudio);
        m_alone = std::make_unique<audiosetting::m5qx_eq_crossover_setting_page>();
        m_alone->show();
        return true;
    }
    QWidget* const control = find(name);
    if (!control)
        return fail(name + QStringLiteral(" is not shown"));
    if (!bringIntoView(control))
        return fail(name + QStringLiteral(" can't be reached"));
    const QPoint middle = touch::middle(window(), control);
    for (int tap = 0; tap < touch.taps; ++tap) {
        if (!control->isEnabled())
            return fail(QStringLiteral("%1 is disabled at tap %2").arg(name).arg(tap + 1));
        touch::click(window(), middle);
    }
    if (touch.taps == 0) {
        touch::press(window(), middle);
        constexpr int steps = 8;
        const QPoint target = endOf(touch, control);
        for (int step = 1; step <= steps; ++step)
            touch::move(window(), middle + (target - middle) * step / steps);
        touch::release(window(), target);
    }
    QCoreApplication::processEvents();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    return true;
}

void SoundUnit::cyclePower()
{
    AudioServiceHost::powerOff();
    AudioServiceHost::powerOn();
}

sound::Speakers SoundUnit::play(int input, const sound::Signal& signal)
{
    sound::Speakers out;
    for (sound::Signal& speaker : out)
        speaker.resize(signal.size());
    constexpr int blockFrames = 512;
    for (int done = 0; done < int(signal.size()); done += blockFrames) {
        const std::size_t at = std::size_t(done);
        hvaudio::dsp::Block block;
        block.frames = std::min(blockFrames, int(signal.size()) - done);
        if (input == programme)
            block.programme[0] = block.programme[1] = &signal[at];
        else
            block.prompt[input][0] = &signal[at];
        for (int speaker = 0; speaker < sound::speakerCount; ++speaker)
            block.out[speaker] = &out[std::size_t(speaker)][at];
        m_engine.process(block);
    }
    return out;
}

sound::Speakers SoundUnit::hear(int input)
{
    // Twice: for a change of source that fades out, waits and fades in, and for the beep of the last key.
    play(input, sound::silence(2 * halfASecond));
    sound::Signal impulse = sound::silence(halfASecond);
    impulse[0] = level;
    return play(input, impulse);
}

float SoundUnit::loudestOfItsOwn()
{
    const sound::Speakers heard = play(programme, sound::silence(halfASecond));
    float loudest = 0;
    for (const sound::Signal& speaker : heard)
        loudest = std::max(loudest, sound::peak(speaker));
    return loudest;
}
