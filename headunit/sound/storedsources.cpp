#include "headunit/sound/storedsources.h"

#include "headunit/sound/soundcontrol.h"
#include "headunit/sound/soundnames.h"

#include "common/settingstable.h"
#include "platform/common/settings/settingsstore.h"

#include <QDebug>

namespace headunit {

namespace {

constexpr mem::Setting playingSetting = mem::settingOf("Headunit_Playing");

QString textOf(const SourceChoice& choice)
{
    for (const SourceKindName& row : sourceKinds) {
        if (row.kind == choice.kind)
            return QLatin1String(row.word) +
                   (choice.kind == SourceKind::File ? QLatin1Char(':') + choice.path : QString());
    }
    return QString();
}

/// False when that is no choice.
bool parse(const QString& text, SourceChoice* choice)
{
    for (const SourceKindName& row : sourceKinds) {
        SourceChoice of{row.kind, QString()};
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
QString kept(const mem::Setting& setting)
{
    return mem::SettingsStore::instance()->valueOr(mem::keyOf(setting), mem::defaultOf(setting)).toString();
}

void keep(const mem::Setting& setting, const QString& text)
{
    mem::SettingsStore::instance()->setValue(mem::keyOf(setting), text, true);
}

void sayNoChoice(const mem::Setting& setting, const QString& used)
{
    qWarning().noquote().nospace() << "stored " << setting.key << " is \"" << kept(setting).left(80)
                                   << "\", no choice; " << used << " is used";
}

SourceChoice keptChoice(const UnitSource& source)
{
    SourceChoice choice;
    const QString text = kept(source.choice);
    if (!text.isEmpty() && !parse(text, &choice))
        sayNoChoice(source.choice, textOf(choice));
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

void restore(SoundControl* sound, const UnitSource& source, const FileWatch& watch)
{
    const SourceChoice choice = keptChoice(source);
    if (sound->source(source.id) == choice)
        return;
    const bool watched = choice.kind == SourceKind::File && watch.mayOpen;
    bool done = false;
    if (!watched || watch.mayOpen(source)) {
        done = sound->setSource(source.id, choice); // why it refuses a file is said by the sound
        if (watched)
            watch.opened();
    }
    if (done)
        return;
    qWarning().noquote().nospace() << "source " << source.word << " is silent, '" << choice.path
                                   << "' stays kept";
    sound->setSource(source.id, {SourceKind::Silence, QString()});
}

} // namespace

void keepSource(HVAudio_source_id_e id, const SourceChoice& choice)
{
    for (const UnitSource& source : unitSources) {
        if (source.id == id)
            keep(source.choice, textOf(choice));
    }
}

void keepPlayingSource(HVAudio_source_id_e id)
{
    for (const UnitSource& source : unitSources) {
        if (source.id == id)
            keep(playingSetting, QLatin1String(source.word));
    }
}

void restoreSources(SoundControl* sound, const QString& key, const FileWatch& watch)
{
    for (const UnitSource& source : unitSources) {
        if (key.isEmpty() || key == mem::keyOf(source.choice))
            restore(sound, source, watch);
    }
    if (!key.isEmpty() && key != mem::keyOf(playingSetting))
        return;
    const HVAudio_source_id_e playing = keptPlaying();
    if (playing != sound->playing())
        sound->play(playing);
}

QStringList sourceComplaints(const SoundControl& sound)
{
    QStringList complaints;
    for (const UnitSource& source : unitSources) {
        SourceChoice choice;
        if (parse(kept(source.choice), &choice) && choice.kind == SourceKind::File &&
            !(sound.source(source.id) == choice))
            complaints.append(QStringLiteral("%1: '%2' can't be played").arg(nameOf(source), choice.path));
    }
    return complaints;
}

} // namespace headunit
