#include "headunit/inspector/responseplot.h"

#include <QCoreApplication>
#include <QDir>
#include <QLibrary>

#include <cmath>

namespace headunit {

ResponsePlot* ResponsePlot::create(QWidget* parent)
{
    const QDir here(QCoreApplication::applicationDirPath());
    QLibrary library;
    // Where it is installed, and where it is built.
    for (const char* folder : {"../" HEADUNIT_LIBRARY_FOLDER, "../lib"}) {
        library.setFileName(here.filePath(QLatin1String(folder) + QLatin1String("/libresponseplot")));
        if (const auto make = reinterpret_cast<MakeResponsePlot>(library.resolve("makeResponsePlot")))
            return make(parent);
    }
    qWarning("responses can't be drawn: %s", qPrintable(library.errorString()));
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
