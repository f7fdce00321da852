#pragma once

#include <QColor>
#include <QElapsedTimer>
#include <QWidget>

namespace headunit {

/// A bar of a level in dB with the number behind it. It jumps up and falls slowly, so that a peak is seen,
/// and keeps a mark of the highest for a while. Thread: GUI.
class LevelMeter : public QWidget
{
    Q_OBJECT
public:
    enum Kind {
        Level,     ///< peaks of samples, -60..0 dB, from the left
        Reduction, ///< what a limiter takes away, 0..12 dB, from the right
    };
    LevelMeter(Kind kind, const QColor& colour, QWidget* parent);

    /// factor: 0..1, the largest since the last call (Reduction: the smallest); beyond counts as its end.
    void setFactor(double factor);
    /// Back to rest at once.
    void reset();
    /// What the number says, in dB; at rest the scale's quiet end.
    double shownDb() const { return m_db; }
    /// The number: "-∞ dB" for silence alone, "< -60 dB" for what is only too soft for the bar.
    QString text() const;
    /// Room for the number behind the bar, in pixels.
    static constexpr int numberWidth = 64;

    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    /// 0..1 of the bar's length.
    double lengthOf(double db) const;

    const Kind m_kind;
    const QColor m_colour;
    double m_db = 0;      ///< the bar
    double m_holdDb = 0;  ///< the mark
    bool m_silent = true; ///< the last factor was nothing at all
    QElapsedTimer m_sinceShown, m_sinceHeld;
};

} // namespace headunit
