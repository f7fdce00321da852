#include "headunit/sound/unitsound.h"

#include "headunit/sound/soundnames.h"

#include "platform/common/framework/journal.h"
#include "platform/hvaudioservice/audioservicehost.h"

#include <QFile>

namespace headunit {

using namespace hvaudio;

namespace {

/// From the player's threads, too; Qt's logging takes that.
void log(LogLevel level, const std::string& text)
{
    if (level == LogLevel::Warning)
        qWarning("%s", text.c_str());
    else
        qInfo("%s", text.c_str());
}

void report(const QString& operation)
{
    cm::Journal::instance()->record(QStringLiteral("Sound"), operation);
}

} // namespace

UnitSound::UnitSound()
    : m_player(log)
{
    for (const UnitSource& source : unitSources)
        m_player.setSource(source.id, SourceKind::Input);
    // Where the service begins, too; it tells once it is there.
    dsp::Settings off;
    off.source = HVAudio_source_Radio;
    m_player.setSettings(off);
    AudioServiceHost::setSink([this](const dsp::Settings& settings) { m_player.setSettings(settings); });
    AudioServiceHost::setBeeper([this] { m_player.beep(); });
}

UnitSound::~UnitSound()
{
    AudioServiceHost::setBeeper({});
    AudioServiceHost::setSink({});
}

bool UnitSound::start(const QString& output)
{
    return m_player.start(QFile::encodeName(output).toStdString());
}

bool UnitSound::setSource(HVAudio_source_id_e id, const SourceChoice& choice, QString* error)
{
    const bool isFile = choice.kind == SourceKind::File;
    report(QStringLiteral("setSource(%1, %2%3)")
               .arg(int(id))
               .arg(nameOf(choice.kind), isFile ? QStringLiteral(", \"%1\"").arg(choice.path) : QString()));
    std::string why;
    const bool done = m_player.setSource(id, choice.kind, QFile::encodeName(choice.path).toStdString(), &why);
    if (!done && error)
        *error = QFile::decodeName(why.c_str());
    return done;
}

SourceChoice UnitSound::source(HVAudio_source_id_e id) const
{
    return {m_player.sourceKind(id), QFile::decodeName(m_player.sourcePath(id).c_str())};
}

void UnitSound::play(HVAudio_source_id_e id)
{
    report(QStringLiteral("play(%1)").arg(int(id)));
    AudioServiceHost::setActiveSource(id);
}

void UnitSound::prompt(Prompt which, bool repeated)
{
    report(
        QStringLiteral("prompt(%1, %2)").arg(int(which)).arg(QLatin1String(repeated ? "repeated" : "once")));
    if (engine().settings().power) // else it would be heard when the unit is switched on, and surprise
        m_player.prompt(which, repeated);
}

void UnitSound::endPrompt(Prompt which)
{
    report(QStringLiteral("endPrompt(%1)").arg(int(which)));
    m_player.endPrompt(which);
}

bool UnitSound::promptSounds(Prompt which) const
{
    return m_player.promptSounds(which);
}

Meters UnitSound::takeMeters()
{
    return m_player.takeMeters();
}

void UnitSound::listen(bool on)
{
    m_player.listen(on);
}

int UnitSound::fetchHeard(HeardFrame* frames, int count, bool* gap)
{
    return m_player.fetchHeard(frames, count, gap);
}

QString UnitSound::status() const
{
    return QFile::decodeName(m_player.status().c_str());
}

const dsp::Engine& UnitSound::engine() const
{
    return m_player.engine();
}

} // namespace headunit
