#pragma once

#include "headunit/sound/responsemeter.h"
#include "headunit/sound/speakerresponses.h"

#include <QTimer>
#include <QVector>
#include <QWidget>

#include <array>

class QLabel;

namespace headunit {

class LevelMeter;
class ResponsePlot;
class SoundControl;

/// What the speakers get: the response of each as the running coefficients say and, over it, as it is
/// measured from what plays; levels; the limiter's work; what became of the subwoofer's settings. Looks at
/// the sound only while it is seen. Thread: GUI.
class SoundPanel : public QWidget
{
    Q_OBJECT
public:
    /// sound: outlives the panel. plot: becomes the panel's.
    SoundPanel(SoundControl* sound, ResponsePlot* plot, QWidget* parent);
    ~SoundPanel() override;

    ResponsePlot* plot() const { return m_plot; }
    LevelMeter* level(Speaker speaker) const { return m_levels[speaker]; }
    LevelMeter* limiter() const { return m_limiter; }

public slots:
    /// Writes the plot as PNG and says so; a path without an ending gets one. False, with the reason shown,
    /// when it can't be written.
    bool savePicture(const QString& path);

protected:
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    void askForPicture();
    void tick();
    void followSettings();
    void measure();
    void drawMeasured();
    void showSubwoofer();

    SoundControl* const m_sound;
    ResponsePlot* m_plot;
    std::array<LevelMeter*, speakerCount> m_levels;
    LevelMeter* m_limiter;
    QLabel* m_subwoofer;
    QLabel* m_status;
    QLabel* m_saved;
    QTimer m_timer;

    ResponseMeter m_meter;
    std::vector<HeardFrame> m_heard;
    /// What the computed curves were drawn from; nothing at first.
    SpeakerResponses m_responses;
    int m_pieces = -1; ///< of the meter, when the measured curves were drawn
};

} // namespace headunit
