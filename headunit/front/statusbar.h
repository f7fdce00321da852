#pragma once

#include <QTimer>
#include <QWidget>

namespace headunit {

class MasterVolume;

/// The strip along the top of the screen: volume on the left, clock on the right. Thread: GUI.
class StatusBar : public QWidget
{
    Q_OBJECT
public:
    static constexpr int barHeight = 56;

    /// volume: outlives the bar.
    StatusBar(const MasterVolume* volume, QWidget* parent);
    ~StatusBar() override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    void onMinute();

    const MasterVolume* const m_volume;
    QTimer m_minute; ///< fires when the displayed minute ends
    Q_DISABLE_COPY(StatusBar)
};

} // namespace headunit
