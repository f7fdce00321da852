#include "headunit/inspector/soundpanel.h"

#include "headunit/inspector/filedialog.h"
#include "headunit/inspector/levelmeter.h"
#include "headunit/inspector/responseplot.h"
#include "headunit/sound/soundcontrol.h"

#include "common/settingstable.h"
#include "hvaudio/crossovers.h"
#include "platform/common/widgets/palette.h"

#include <QFileInfo>
#include <QGridLayout>
#include <QLabel>
#include <QPushButton>

namespace headunit {

namespace {

constexpr int tickMs = 50;
constexpr int linePoints = 240;
constexpr int dotPoints = 61;          ///< six an octave
constexpr double dotOctaves = 1.0 / 6; ///< one joins on to the next, so that no tone falls between them
constexpr int heardAtOnce = 4096;

/// What the crossover page's slope means until a key of it is touched. Not what most would choose.
constexpr int deliveredSlope = hvaudio::crossoverSlopes[mem::settingOf("subwooferslope").defaultValue];

} // namespace

SoundPanel::SoundPanel(SoundControl* sound, ResponsePlot* plot, QWidget* parent)
    : QWidget(parent)
    , m_sound(sound)
    , m_plot(plot)
    , m_limiter(new LevelMeter(LevelMeter::Reduction, QColor(cm::palette::accentBright), this))
    , m_subwoofer(new QLabel(this))
    , m_status(new QLabel(this))
    , m_saved(new QLabel(this))
    , m_heard(heardAtOnce)
{
    m_plot->widget()->setObjectName(QStringLiteral("response_plot"));
    m_limiter->setObjectName(QStringLiteral("limiter"));
    m_subwoofer->setObjectName(QStringLiteral("subwoofer_filter"));
    m_subwoofer->setWordWrap(true);
    m_status->setObjectName(QStringLiteral("sound_status"));
    m_status->setTextFormat(Qt::PlainText);
    m_saved->setObjectName(QStringLiteral("picture_saved"));
    m_saved->setTextFormat(Qt::PlainText);
    m_saved->setWordWrap(true);
    auto* hint = new QLabel(
        tr("Lines: the running coefficients; broken: their sum at the seat. Dots: measured from what plays; "
           "noise or a sweep shows all."),
        this);
    hint->setWordWrap(true);
    auto* save = new QPushButton(tr("Save as PNG"), this);
    save->setObjectName(QStringLiteral("save_picture"));
    connect(save, &QPushButton::clicked, this, &SoundPanel::askForPicture);

    auto* meters = new QGridLayout;
    meters->setVerticalSpacing(2);
    meters->setColumnStretch(1, 1);
    for (int i = 0; i < speakerCount; ++i) {
        m_levels[i] = new LevelMeter(LevelMeter::Level, QColor(speakerLooks[i].colour), this);
        m_levels[i]->setObjectName(QStringLiteral("level_%1").arg(i));
        meters->addWidget(new QLabel(tr(speakerLooks[i].name), this), i, 0);
        meters->addWidget(m_levels[i], i, 1);
    }
    meters->addWidget(new QLabel(tr("Limiter"), this), speakerCount, 0);
    meters->addWidget(m_limiter, speakerCount, 1);

    auto* bottom = new QHBoxLayout;
    bottom->addWidget(m_saved, 1);
    bottom->addWidget(save);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(m_plot->widget(), 1);
    layout->addWidget(hint);
    layout->addWidget(m_subwoofer);
    layout->addLayout(meters);
    layout->addWidget(m_status);
    layout->addLayout(bottom);

    m_timer.setInterval(tickMs);
    connect(&m_timer, &QTimer::timeout, this, &SoundPanel::tick);
}

SoundPanel::~SoundPanel()
{
    if (m_timer.isActive())
        m_sound->listen(false);
}

void SoundPanel::showEvent(QShowEvent* event)
{
    // Both collect while nobody looks; what they have is old.
    m_sound->takeMeters();
    for (LevelMeter* meter : m_levels)
        meter->reset();
    m_limiter->reset();
    m_sound->listen(true);
    m_responses = {}; // the curves are drawn anew
    tick();
    m_timer.start();
    QWidget::showEvent(event);
}

void SoundPanel::hideEvent(QHideEvent* event)
{
    if (m_timer.isActive())
        m_sound->listen(false);
    m_timer.stop();
    QWidget::hideEvent(event);
}

void SoundPanel::tick()
{
    const Meters meters = m_sound->takeMeters();
    for (int i = 0; i < speakerCount; ++i)
        m_levels[i]->setFactor(double(meters.peak[std::size_t(i)]));
    m_limiter->setFactor(double(meters.gain));
    followSettings();
    measure();
    m_status->setText(tr("%1; processor %2 ms")
                          .arg(m_sound->status())
                          .arg(1000 * m_sound->latencyFrames() / m_sound->rate(), 0, 'f', 2));
}

void SoundPanel::followSettings()
{
    const SpeakerResponses now = m_sound->responses();
    if (now == m_responses)
        return;
    m_responses = now;
    m_meter.restart(now.rate(), m_sound->latencyFrames());
    m_pieces = -1;

    const std::vector<double> hz = ResponsePlot::frequencies(linePoints);
    for (int i = 0; i < speakerCount; ++i) {
        std::vector<double> factors;
        for (const double at : hz)
            factors.push_back(now.factor(Speaker(i), at));
        m_plot->setComputed(Speaker(i), hz, factors);
    }
    std::vector<double> sum;
    for (const double at : hz)
        sum.push_back(now.sum(at));
    m_plot->setSum(hz, sum);
    drawMeasured();
    showSubwoofer();
}

void SoundPanel::measure()
{
    for (int count = heardAtOnce; count == heardAtOnce;) {
        bool gap = false;
        count = m_sound->fetchHeard(m_heard.data(), heardAtOnce, &gap);
        if (gap)
            m_meter.gap();
        m_meter.add(m_heard.data(), count);
    }
    if (m_meter.pieces() != m_pieces)
        drawMeasured();
}

void SoundPanel::drawMeasured()
{
    m_pieces = m_meter.pieces();
    for (int i = 0; i < speakerCount; ++i) {
        const std::vector<double> hz = ResponsePlot::frequenciesOf(Speaker(i), dotPoints);
        const ResponseMeter::Curve curve = m_meter.curve(Speaker(i), hz, dotOctaves);
        m_plot->setMeasured(Speaker(i), curve.hz, curve.factors);
    }
    m_plot->replot();
}

void SoundPanel::showSubwoofer()
{
    const SubwooferSettings subwoofer = m_sound->subwoofer();
    QString text = tr("Subwoofer: plays everything");
    if (subwoofer.silent)
        text = tr("Subwoofer: silent");
    else if (subwoofer.lowPass.hz > 0)
        text = tr("Subwoofer: below %1 Hz, %2 dB/octave (%3 as delivered)")
                   .arg(subwoofer.lowPass.hz)
                   .arg(hvaudio::dbAnOrder * subwoofer.lowPass.order)
                   .arg(deliveredSlope);
    m_subwoofer->setText(subwoofer.inverted ? tr("%1, turned round").arg(text) : text);
}

void SoundPanel::askForPicture()
{
    auto* dialog = newFileDialog(this, tr("Save the responses"));
    dialog->setAcceptMode(QFileDialog::AcceptSave);
    dialog->setDefaultSuffix(QStringLiteral("png"));
    dialog->setNameFilter(tr("Pictures (*.png)"));
    dialog->selectFile(QStringLiteral("responses.png"));
    connect(dialog, &QFileDialog::fileSelected, this, &SoundPanel::savePicture);
    dialog->open();
}

bool SoundPanel::savePicture(const QString& path)
{
    const QString file = QFileInfo(path).suffix().isEmpty() ? path + QLatin1String(".png") : path;
    const bool saved = m_plot->savePng(file);
    m_saved->setText((saved ? tr("Saved: %1") : tr("%1 can't be written")).arg(file));
    if (!saved)
        qWarning("%s can't be written", qPrintable(file));
    return saved;
}

} // namespace headunit
