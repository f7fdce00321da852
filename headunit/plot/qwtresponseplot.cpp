#include "headunit/plot/qwtresponseplot.h"

#include <QFileInfo>
#include <QImage>
#include <QPainter>
#include <QPen>
#include <QSaveFile>

#include <cmath>

#include <qwt_legend.h>
#include <qwt_plot_canvas.h>
#include <qwt_plot_curve.h>
#include <qwt_plot_grid.h>
#include <qwt_scale_engine.h>
#include <qwt_scale_widget.h>
#include <qwt_symbol.h>
#include <qwt_text.h>

namespace headunit {

namespace {

constexpr double lowestDb = -60, highestDb = 20;
constexpr int dotSize = 5; ///< pixels
const QColor fieldColour(0x0b, 0x0e, 0x13), textColour(0xe6, 0xe9, 0xee);
/// Pixels. Below what Qwt asks for by itself, which is more than the unit is high; its axes drop labels.
constexpr int leastWidth = 320, leastHeight = 160;

QVector<QPointF> pointsOf(const std::vector<double>& hz, const std::vector<double>& factors)
{
    QVector<QPointF> points;
    for (std::size_t i = 0; i < std::min(hz.size(), factors.size()); ++i)
        points << QPointF(hz[i], std::max(20 * std::log10(std::max(factors[i], 1e-9)), lowestDb - 10));
    return points;
}

} // namespace

QwtResponsePlot::QwtResponsePlot(QWidget* parent)
    : QwtPlot(parent)
{
    QPalette dark = palette();
    dark.setColor(QPalette::Window, QColor(0x12, 0x16, 0x1c));
    dark.setColor(QPalette::WindowText, textColour);
    dark.setColor(QPalette::Text, textColour);
    setPalette(dark);
    setAutoFillBackground(true);
    setMinimumSize(leastWidth, leastHeight);
    auto* const field = new QwtPlotCanvas;
    field->setFrameStyle(QFrame::NoFrame);
    setCanvas(field);
    setCanvasBackground(fieldColour);

    setAxisScaleEngine(xBottom, new QwtLogScaleEngine);
    setAxisScale(xBottom, lowestHz, highestHz);
    setAxisScale(yLeft, lowestDb, highestDb, 10);
    setAxisTitle(xBottom, QStringLiteral("Hz"));
    setAxisTitle(yLeft, QStringLiteral("dB"));
    auto* const grid = new QwtPlotGrid;
    grid->enableXMin(true);
    grid->setMajorPen(QColor(0x3a, 0x42, 0x4e), 0);
    grid->setMinorPen(QColor(0x22, 0x28, 0x31), 0);
    grid->attach(this);
    insertLegend(new QwtLegend, QwtPlot::BottomLegend);

    for (const SpeakerLook& look : speakerLooks) {
        // The later a speaker is drawn the thinner, so that those of equal speakers are all seen.
        QwtPlotCurve* const line =
            addLine(tr(look.name), QPen(QColor(look.colour), 1.5 * (speakerCount - look.speaker)));
        m_computed[look.speaker] = line;

        auto* const dots = new QwtPlotCurve;
        dots->setStyle(QwtPlotCurve::NoCurve);
        // Dark around, so that a dot is seen on the line of its own colour.
        dots->setSymbol(new QwtSymbol(QwtSymbol::Ellipse, QColor(look.colour), QPen(fieldColour, 1),
                                      QSize(dotSize, dotSize)));
        dots->setItemAttribute(QwtPlotItem::Legend, false);
        dots->setRenderHint(QwtPlotItem::RenderAntialiased);
        dots->setZ(line->z() + 1);
        dots->attach(this);
        m_measured[look.speaker] = dots;
    }
    m_sum = addLine(tr("Sum at the seat"), QPen(textColour, 1.5, Qt::DashLine));
    m_sum->setZ(m_sum->z() + 0.5); // over the lines, under the dots
}

QwtPlotCurve* QwtResponsePlot::addLine(const QString& name, const QPen& pen)
{
    QwtText title(name);
    title.setColor(textColour);
    auto* const line = new QwtPlotCurve(title);
    line->setPen(pen);
    line->setLegendIconSize(QSize(24, 8));
    line->setRenderHint(QwtPlotItem::RenderAntialiased);
    line->setLegendAttribute(QwtPlotCurve::LegendShowLine);
    line->attach(this);
    return line;
}

void QwtResponsePlot::setComputed(Speaker speaker, const std::vector<double>& hz,
                                  const std::vector<double>& factors)
{
    m_computed[speaker]->setSamples(pointsOf(hz, factors));
}

void QwtResponsePlot::setMeasured(Speaker speaker, const std::vector<double>& hz,
                                  const std::vector<double>& factors)
{
    m_measured[speaker]->setSamples(pointsOf(hz, factors));
}

void QwtResponsePlot::setSum(const std::vector<double>& hz, const std::vector<double>& factors)
{
    m_sum->setSamples(pointsOf(hz, factors));
}

bool QwtResponsePlot::savePng(const QString& path, QSize pixels)
{
    // A device or a pipe would be replaced by the file.
    if (QFileInfo::exists(path) && !QFileInfo(path).isFile())
        return false;
    const QSize before = size();
    resize(pixels);
    replot();
    QImage picture(pixels, QImage::Format_RGB32);
    picture.fill(palette().color(QPalette::Window));
    render(&picture);
    resize(before);
    QSaveFile file(path);
    return file.open(QIODevice::WriteOnly) && picture.save(&file, "PNG") && file.commit();
}

} // namespace headunit

extern "C" Q_DECL_EXPORT headunit::ResponsePlot* makeResponsePlot(QWidget* parent)
{
    return new headunit::QwtResponsePlot(parent);
}
