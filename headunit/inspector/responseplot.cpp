#include "headunit/inspector/responseplot.h"

#include "headunit/parts/partlibrary.h"

#include <cmath>

namespace headunit {

ResponsePlot* ResponsePlot::create(QWidget* parent)
{
    QString error;
    if (const auto make =
            reinterpret_cast<MakeResponsePlot>(functionOf("responseplot", "makeResponsePlot", &error)))
        return make(parent);
    qWarning("responses can't be drawn: %s", qPrintable(error));
    return nullptr;
}

std::vector<double> ResponsePlot::frequencies(int count)
{
    std::vector<double> hz;
    for (int i = 0; i < count; ++i)
        hz.push_back(lowestHz * std::pow(highestHz / lowestHz, double(i) / std::max(1, count - 1)));
    return hz;
}

std::vector<double> ResponsePlot::frequenciesOf(Speaker speaker, int count)
{
    std::vector<double> hz = frequencies(count);
    const double distance = std::pow(highestHz / lowestHz, 1.0 / std::max(1, count - 1));
    for (double& at : hz)
        at *= std::pow(distance, double(speaker) / speakerCount);
    while (!hz.empty() && hz.back() > 1.0001 * highestHz)
        hz.pop_back();
    return hz;
}

} // namespace headunit
