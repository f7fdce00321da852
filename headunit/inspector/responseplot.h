#pragma once

#include "headunit/inspector/speakerlooks.h"

#include <QSize>
#include <QString>

#include <vector>

class QWidget;

namespace headunit {

/// Level over frequency of the five speakers: what the running coefficients say as lines, and over it what
/// was measured as dots; and of the speakers' sum at the seat, as a broken line. Logarithmic axis of 20 Hz to
/// 20 kHz, -60 to +20 dB; what lies below the field is drawn at its lower edge's foot, so that a silent
/// speaker has no line. Thread: GUI.
class ResponsePlot
{
public:
    static constexpr double lowestHz = 20, highestHz = 20000;

    /// Made by libresponseplot, which is loaded with the first: what it draws with comes with libraries that
    /// a unit has no need of until somebody looks inside. Null, logged, when that can't be loaded. The plot
    /// is the parent's, or without one the caller's.
    static ResponsePlot* create(QWidget* parent);
    virtual ~ResponsePlot() = default;

    /// Frequencies that suit the axis, in Hz, evenly spread over it.
    static std::vector<double> frequencies(int count);
    /// The same for a speaker's dots: each speaker's lie beside the other ones', so that those of equal
    /// speakers are all seen. One that would lie beyond the axis is left out.
    static std::vector<double> frequenciesOf(Speaker speaker, int count);

    /// What is seen; the same object.
    virtual QWidget* widget() = 0;
    virtual void setTitle(const QString& title) = 0;

    /// Both as factors (1 = 0 dB) at `hz`; an empty vector takes the curve away. Shown at the next replot().
    virtual void setComputed(Speaker speaker, const std::vector<double>& hz,
                             const std::vector<double>& factors) = 0;
    virtual void setMeasured(Speaker speaker, const std::vector<double>& hz,
                             const std::vector<double>& factors) = 0;
    /// The same for the sum of what was computed.
    virtual void setSum(const std::vector<double>& hz, const std::vector<double>& factors) = 0;
    virtual void replot() = 0;

    /// Writes what is shown, size in pixels; false when the file can't be written, or is a device, a pipe or
    /// a folder.
    virtual bool savePng(const QString& path, QSize size = QSize(1280, 720)) = 0;

protected:
    ResponsePlot() = default;

private:
    Q_DISABLE_COPY(ResponsePlot)
};

/// The library's one function, under its own name: ResponsePlot::create().
using MakeResponsePlot = ResponsePlot* (*)(QWidget* parent);

} // namespace headunit
