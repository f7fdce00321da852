#include "headunit/sound/storedsources.h"

#include "headunit/sound/soundcontrol.h"
#include "headunit/sound/soundnames.h"

#include "common/settings.h"
#include "platform/common/settings/settingsstore.h"

#include <QDebug>

namespace headunit {

using hvaudio::SourceKind;

namespace {

const QLatin1String playingSetting("Headunit_Playing");

struct Choice
{
    SourceKind kind = SourceKind::Input;
    QString path; ///< of a file
};

QString settingOf(const UnitSource& source)
{
    return QStringLiteral("Headunit_Source_") + QLatin1String(source.word);
}

QString textOf(const Choice& choice)
{
    for (const SourceKindName& row : sourceKinds) {
        if (row.kind == choice.kind)
            return QLatin1String(row.word) +
                   (choice.kind == SourceKind::File ? QLatin1Char(':') + choice.path : QString());
    }
    return QString();
}

/// False when that is no choice.
bool parse(const QString& text, Choice* choice)
{
    for (const SourceKindName& row : sourceKinds) {
        Choice of{row.kind, QString()};
        if (row.kind == SourceKind::File)
            of.path = text.section(QLatin1Char(':'), 1);
        if (text == textOf(of) && of.path.isEmpty() == (row.kind != SourceKind::File)) {
            *choice = of;
            return true;
        }
    }
    return false;
}

/// Empty when nothing is kept.
QString kept(const QString& key)
{
    return mem::SettingsStore::instance()->valueOr(key, QString()).toString();
}

void sayNoChoice(const QString& key, const QString& used)
{
    qWarning().noquote().nospace() << "stored " << key << " is \"" << kept(key).left(80) << "\", no choice; "
                                   << used << " is used";
}

Choice keptChoice(const UnitSource& source)
{
    Choice choice;
    const QString key = settingOf(source);
    const QString text = kept(key);
    if (!text.isEmpty() && !parse(text, &choice))
        sayNoChoice(key, textOf(choice));
    return choice;
}

HVAudio_source_id_e keptPlaying()
{
    const QString word = kept(playingSetting);
    for (const UnitSource& source : unitSources) {
        if (word == QLatin1String(source.word))
            return source.id;
    }
    if (!word.isEmpty())
        sayNoChoice(playingSetting, QStringLiteral("the radio"));
    return HVAudio_source_Radio;
}

bool plays(const SoundControl& sound, const UnitSource& source, const Choice& choice)
{
    return sound.sourceKind(source.id) == choice.kind && sound.sourcePath(source.id) == choice.path;
}

void restore(SoundControl* sound, const UnitSource& source)
{
    const Choice choice = keptChoice(source);
    QString why; // said by the sound
    if (plays(*sound, source, choice) || sound->setSource(source.id, choice.kind, choice.path, &why))
        return;
    qWarning().noquote().nospace() << "source " << source.word << " is silent, '" << choice.path
                                   << "' stays kept";
    sound->setSource(source.id, SourceKind::Silence, QString(), &why);
}

} // namespace

void keepSource(HVAudio_source_id_e id, SourceKind kind, const QString& path)
{
    for (const UnitSource& source : unitSources) {
        if (source.id == id)
            mem::SettingsStore::instance()->setValue(settingOf(source), textOf({kind, path}), true);
    }
}

void keepPlayingSource(HVAudio_source_id_e id)
{
    for (const UnitSource& source : unitSources) {
        if (source.id == id)
            mem::SettingsStore::instance()->setValue(playingSetting, QString::fromLatin1(source.word), true);
    }
}

void restoreSources(SoundControl* sound, const QString& key)
{
    for (const UnitSource& source : unitSources) {
        if (key.isEmpty() || key == settingOf(source))
            restore(sound, source);
    }
    if (!key.isEmpty() && key != playingSetting)
        return;
    const HVAudio_source_id_e playing = keptPlaying();
    if (playing != sound->playing())
        sound->play(playing);
}

QStringList sourceComplaints(const SoundControl& sound)
{
    QStringList complaints;
    for (const UnitSource& source : unitSources) {
        Choice choice;
        if (parse(kept(settingOf(source)), &choice) && choice.kind == SourceKind::File &&
            !plays(sound, source, choice))
            complaints.append(QStringLiteral("%1: '%2' can't be played").arg(nameOf(source), choice.path));
    }
    return complaints;
}

} // namespace headunit
