#pragma once

#include "tests/platform/hvaudio/dsp/sound.h"

#include "hvaudio/audioservice.h"

#include <QPointF>
#include <QString>

#include <memory>

class QWidget;

namespace audiosetting {
class m5qx_eq_crossover_setting_page;
class m5qx_mainwidget;
} // namespace audiosetting

/// One thing that a finger does.
struct Touch
{
    const char* control; ///< SoundUnit::nameOf()
    int taps = 1;        ///< 0: a drag from the control's middle
    QPointF to = {}; ///< where the drag ends: 0, 0 is the control's upper left corner, 1, 1 the lower right
};

/// A touch that opens the page which no tab leads to.
constexpr const char* standAlonePage = "stand-alone page";

/// The whole unit in one process: the pages on the reference platform, driven by touches, and below the audio
/// service a sound processor at 48 kHz that is heard by its impulse response. Factory settings, powered on.
class SoundUnit
{
public:
    static constexpr double rate = 48000;
    /// What is played into for hear(): the programme, else a prompt's channel (sound::Prompt).
    static constexpr int programme = -1;

    SoundUnit();
    ~SoundUnit();
    SoundUnit(const SoundUnit&) = delete;
    SoundUnit& operator=(const SoundUnit&) = delete;

    /// False, and error() tells why, when that can't be touched.
    bool touch(const Touch& touch);
    QString error() const { return m_error; }

    /// Where on the unit's screen that begins and ends; -1, -1 for what isn't shown without scrolling.
    QPoint place(const Touch& touch);
    QPoint endOf(const Touch& touch);

    /// Drops what the pages say while they are touched, thousands of lines that would hide a test's report.
    /// From initTestCase() on, since the test framework installs its own handler before.
    static void hushLog();

    /// Switches the unit off and on again.
    void cyclePower();

    /// The five speakers' answer to an impulse, once all glides have ended.
    sound::Speakers hear(int input = programme);
    /// Loudest sample of the next half second without any input.
    float loudestOfItsOwn();

    /// What a page's control is called in a Touch: object names, "pad", and "<row>:slider" for the sliders
    /// that pages make themselves.
    static QString nameOf(const QWidget* control);
    /// All controls of the page that is shown, tab keys left out.
    QList<QWidget*> controls() const;

private:
    QWidget* window() const;
    QWidget* find(const QString& name) const;
    QPoint endOf(const Touch& touch, QWidget* control) const;
    /// Drags the scroll bar until the control's middle can be touched.
    bool bringIntoView(QWidget* control);
    bool fail(const QString& text);
    sound::Speakers play(int input, const sound::Signal& signal);

    hvaudio::dsp::Engine m_engine;
    std::unique_ptr<audiosetting::m5qx_mainwidget> m_hub;
    std::unique_ptr<audiosetting::m5qx_eq_crossover_setting_page> m_alone;
    QString m_error;
};
