#pragma once

#include "headunit/sound/soundtypes.h"

#include <QColor>
#include <QPen>
#include <QSize>

#include <array>
#include <vector>

#include <qwt_plot.h>

class QwtPlotCurve;

namespace headunit {

/// Level over frequency of the five speakers: what the running coefficients say as lines, and over it what
/// was measured as dots; and of the speakers' sum at the seat, as a broken line. Logarithmic axis of 20 Hz to
/// 20 kHz, -60 to +20 dB; what lies below the field is drawn at its lower edge's foot, so that a silent
/// speaker has no line.
class ResponsePlot : public QwtPlot
{
    Q_OBJECT
public:
    explicit ResponsePlot(QWidget* parent = nullptr);

    /// Frequencies that suit the axis, in Hz, evenly spread over it.
    static std::vector<double> frequencies(int count);
    /// The same for a speaker's dots: each speaker's lie beside the other ones', so that those of equal
    /// speakers are all seen. One that would lie beyond the axis is left out.
    static std::vector<double> frequenciesOf(Speaker speaker, int count);
    static QColor colour(Speaker speaker);
    static QString name(Speaker speaker);

    /// Both as factors (1 = 0 dB) at `hz`; an empty vector takes the curve away. Shown at the next replot().
    void setComputed(Speaker speaker, const std::vector<double>& hz, const std::vector<double>& factors);
    void setMeasured(Speaker speaker, const std::vector<double>& hz, const std::vector<double>& factors);

    /// The same for the sum of what was computed.
    void setSum(const std::vector<double>& hz, const std::vector<double>& factors);

    /// Writes what is shown, size in pixels; false when the file can't be written, or is a device, a pipe or
    /// a folder.
    bool savePng(const QString& path, QSize size = QSize(1280, 720));

private:
    QwtPlotCurve* addLine(const QString& name, const QPen& pen);

    std::array<QwtPlotCurve*, speakerCount> m_computed, m_measured; // the plot's
    QwtPlotCurve* m_sum;                                            // the plot's
};

} // namespace headunit
