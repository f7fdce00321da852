#pragma once

#include <QTimer>
#include <QWidget>

namespace headunit {

class MasterVolume;

/// The strip along the top of the screen: volume on the left, clock on the right, and between them a mark
/// while the settings store can't keep what is set. Thread: GUI.
class StatusBar : public QWidget
{
    Q_OBJECT
public:
    static constexpr int barHeight = 56;
    /// Of the translator: "settings won't be kept".
    static constexpr int notKeptText = 1260;

    /// volume: outlives the bar.
    StatusBar(const MasterVolume* volume, QWidget* parent);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    void onMinute();
    /// Sign and words, in the middle between volume and clock.
    void paintMark(QPainter& painter) const;

    const MasterVolume* const m_volume;
    QTimer m_minute; ///< fires when the displayed minute ends
};

} // namespace headunit
