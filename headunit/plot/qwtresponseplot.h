#pragma once

#include "headunit/inspector/responseplot.h"

#include <array>

#include <qwt_plot.h>

class QPen;
class QwtPlotCurve;

namespace headunit {

/// The plot as libresponseplot draws it. Thread: GUI.
class QwtResponsePlot final : public QwtPlot, public ResponsePlot
{
    Q_OBJECT
public:
    explicit QwtResponsePlot(QWidget* parent);

    QWidget* widget() override { return this; }
    void setTitle(const QString& title) override { QwtPlot::setTitle(title); }
    void setComputed(Speaker speaker, const std::vector<double>& hz,
                     const std::vector<double>& factors) override;
    void setMeasured(Speaker speaker, const std::vector<double>& hz,
                     const std::vector<double>& factors) override;
    void setSum(const std::vector<double>& hz, const std::vector<double>& factors) override;
    void replot() override { QwtPlot::replot(); }
    bool savePng(const QString& path, QSize size) override;

private:
    QwtPlotCurve* addLine(const QString& name, const QPen& pen);

    std::array<QwtPlotCurve*, speakerCount> m_computed, m_measured; // the plot's
    QwtPlotCurve* m_sum;                                            // the plot's
};

} // namespace headunit
