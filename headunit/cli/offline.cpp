#include "headunit/cli/offline.h"

#include "headunit/cli/stopsignals.h"
#include "headunit/inspector/responseplot.h"
#include "headunit/sound/speakerresponses.h"
#include "headunit/sound/storedsettings.h"

#include "platform/hvaudio/dsp/engine.h"
#include "platform/hvaudio/files/render.h"
#include "platform/hvaudio/measure/measureresponses.h"

#include <QFile>

#include <cmath>
#include <memory>

namespace headunit {

using namespace hvaudio::dsp;

bool renderFile(const Options& options, QString* message)
{
    hvaudio::RenderJob job;
    job.in = QFile::encodeName(options.render).toStdString();
    job.out = QFile::encodeName(options.renderTo).toStdString();
    job.stereo = options.stereo;
    job.stopped = [] { return StopSignals::received() != 0; };
    if (!readStoredSettings(options.settings, &job.settings, message))
        return false;
    hvaudio::RenderReport report;
    std::string error;
    if (!hvaudio::render(job, report, error)) {
        *message = QString::fromLocal8Bit(error.c_str());
        return false;
    }
    const double seconds = double(report.frames) / report.rate;
    *message = QStringLiteral("%1: %2 s of %3, 32 bit float, %4 Hz, in %5 s (%6 times as fast as it plays)")
                   .arg(options.renderTo)
                   .arg(seconds, 0, 'f', 1)
                   .arg(options.stereo ? QStringLiteral("stereo") : QStringLiteral("FL FR LFE BL BR"))
                   .arg(report.rate)
                   .arg(report.elapsed, 0, 'f', 2)
                   .arg(std::floor(seconds / std::max(report.elapsed, 1e-3)));
    if (!report.remark.empty())
        *message += QStringLiteral("; ") + QString::fromLocal8Bit(report.remark.c_str());
    return true;
}

bool plotResponses(const Options& options, QString* message)
{
    constexpr double rate = 48000;
    Settings settings;
    if (!readStoredSettings(options.settings, &settings, message))
        return false;
    settings.power = true;
    settings.mute = false;
    Engine engine;
    engine.prepare(rate);
    engine.set(settings);

    const std::unique_ptr<ResponsePlot> plot(ResponsePlot::create(nullptr));
    if (!plot) {
        *message = QStringLiteral("can't draw '%1': libresponseplot can't be loaded").arg(options.plot);
        return false;
    }
    const std::vector<double> lineHz = ResponsePlot::frequencies(600);
    hvaudio::dsp::OfEachSpeaker dotHz;
    for (int i = 0; i < speakerCount; ++i)
        dotHz[std::size_t(i)] = ResponsePlot::frequenciesOf(Speaker(i), 61);
    const hvaudio::dsp::OfEachSpeaker measured = measureResponses(settings, rate, dotHz);
    const SpeakerResponses responses(engine.snapshot(), rate);
    std::vector<double> sum;
    for (const double hz : lineHz)
        sum.push_back(responses.sum(hz));
    plot->setSum(lineHz, sum);
    for (int i = 0; i < speakerCount; ++i) {
        std::vector<double> computed;
        for (const double hz : lineHz)
            computed.push_back(responses.factor(Speaker(i), hz));
        plot->setComputed(Speaker(i), lineHz, computed);
        plot->setMeasured(Speaker(i), dotHz[std::size_t(i)], measured[std::size_t(i)]);
    }
    if (StopSignals::received()) {
        *message = QStringLiteral("can't draw '%1': stopped").arg(options.plot);
        return false;
    }
    plot->setTitle(
        QStringLiteral("Response of each speaker: computed (lines; broken: their sum) and measured (dots)"));
    if (!plot->savePng(options.plot)) {
        *message = QStringLiteral("can't write '%1'").arg(options.plot);
        return false;
    }
    *message = options.plot;
    return true;
}

} // namespace headunit
