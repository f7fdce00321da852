#pragma once

#include <QSlider>

/// Inert layer under the balance/fader pad, of the pad's size. It is a slider only to be a widget that takes
/// touches: it keeps a touch that gets past the pad from reaching the page, and draws nothing. Thread: GUI.
class k41_audio_root_bf : public QSlider
{
    Q_OBJECT
public:
    explicit k41_audio_root_bf(QWidget* parent);

protected:
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
};
