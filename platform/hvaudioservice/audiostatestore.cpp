#include "platform/hvaudioservice/audiostatestore.h"

#include "platform/common/settings/settingsstore.h"

#include <QDebug>
#include <QStringList>

namespace hvaudio::audiostatestore {

using Tables = AudioServiceHost::FilterTables;

namespace {

template <typename T>
T stored(const QString& key, const T& defaultValue)
{
    return mem::SettingsStore::instance()->valueOr(key, QVariant(defaultValue)).template value<T>();
}

int storedInRange(const QString& key, int defaultValue, int minimum, int maximum)
{
    const int value = stored(key, defaultValue);
    const int used = qBound(minimum, value, maximum);
    if (used != value)
        qWarning().noquote().nospace() << "AudioService: stored " << key << " is " << value << ", outside "
                                       << minimum << ".." << maximum << "; " << used << " is used";
    return used;
}

QString filterKey(const char* filter, Tables tables, const QString& speaker)
{
    const QString set = tables == Tables::MainAudio ? QStringLiteral("Main") : QString();
    return QStringLiteral("AudioService_") + set + QLatin1String(filter) + speaker;
}

/// Whether text is a filter that could have been applied; only then filter is set.
bool parseFilter(const QString& text, int lastFrequency, Filter* filter)
{
    const QStringList parts = text.split(QLatin1Char(';'));
    constexpr int count = 3;
    const int maximum[count] = {lastFrequency, maximumLevelSent, maximumSlope};
    int values[count] = {};
    if (parts.size() != count)
        return false;
    for (int i = 0; i < count; ++i) {
        bool number = false;
        values[i] = parts.at(i).toInt(&number);
        if (!number || values[i] < 0 || values[i] > maximum[i])
            return false;
    }
    *filter = {values[0], values[1], values[2]};
    return true;
}

Filter storedFilter(const QString& key, int lastFrequency, const Filter& defaultFilter)
{
    Filter filter = defaultFilter;
    const QString text = stored(key, filterText(defaultFilter));
    if (!parseFilter(text, lastFrequency, &filter))
        qWarning().noquote().nospace() << "AudioService: stored " << key << " is \"" << text.left(40)
                                       << "\", no filter; " << filterText(defaultFilter) << " is used";
    return filter;
}

/// Puts stored values in their places: all of them, or the one under one key.
class Reader
{
public:
    Reader() = default;
    /// key: not empty.
    explicit Reader(const QString& key)
        : m_key(key)
    {
    }

    bool wants(const QString& key)
    {
        const bool wanted = m_key.isEmpty() || m_key == key;
        m_read = m_read || wanted;
        return wanted;
    }
    /// Whether anything was read.
    bool hasRead() const { return m_read; }

    void number(int& place, const QString& key, int defaultValue, int minimum, int maximum)
    {
        if (wants(key))
            place = storedInRange(key, defaultValue, minimum, maximum);
    }

    void filter(Filter& place, const QString& key, int lastFrequency)
    {
        if (wants(key))
            place = storedFilter(key, lastFrequency, Filter());
    }

private:
    const QString m_key; ///< empty: all
    bool m_read = false;
};

/// The subwoofer as its pages show it while none of them has touched it yet.
Filter untouchedSubwoofer()
{
    constexpr int levelMask = 0x7F;
    Filter filter;
    if (stored(QStringLiteral("subwooferOnOff"), true))
        filter.frequency = storedInRange(QStringLiteral("subwooferFreq"), 7, 0, lastSubwooferFrequency);
    filter.attenuation = stored(QStringLiteral("subwooferLevel"), 11) & levelMask;
    return filter;
}

/// Without a filter of its own the subwoofer's is made of the pages' values.
bool isSubwooferValue(const QString& key, Tables tables)
{
    return (key == QLatin1String("subwooferOnOff") || key == QLatin1String("subwooferFreq") ||
            key == QLatin1String("subwooferLevel")) &&
           !mem::SettingsStore::instance()->value(subwooferKey(tables)).isValid();
}

void readFilters(AudioState& state, Reader& reader)
{
    for (int speaker = 0; speaker < cabinSpeakers; ++speaker) {
        const auto index = static_cast<std::size_t>(speaker);
        reader.filter(state.highPass[index], highPassKey(state.tables, speaker),
                      lastCabinFrequency(state.tables));
        reader.filter(state.lowPass[index], lowPassKey(state.tables, speaker),
                      lastCabinFrequency(state.tables));
    }
    const QString subwoofer = subwooferKey(state.tables);
    if (reader.wants(subwoofer))
        state.subwoofer = storedFilter(subwoofer, lastSubwooferFrequency, untouchedSubwoofer());
}

void readButFilters(AudioState& state, Reader& reader)
{
    reader.number(state.eqType, QLatin1String(eqTypeKey), EQ_Type_Flat, 0, lastEqType);
    for (int curve = 0; curve < 2; ++curve) {
        for (int band = 0; band < eqBandCount; ++band)
            reader.number(state.userCurve[static_cast<std::size_t>(curve)][static_cast<std::size_t>(band)],
                          userBandKey(curve, band), 0, -maximumBandValue, maximumBandValue);
    }
    if (reader.wants(QLatin1String(loudnessKey)))
        state.loudness = stored(QLatin1String(loudnessKey), false);
    reader.number(state.balance, QLatin1String(balanceKey), 0, -maximumBalance, maximumBalance);
    reader.number(state.fader, QLatin1String(faderKey), 0, -maximumBalance, maximumBalance);
    for (int speaker = 0; speaker < speakers; ++speaker)
        reader.number(state.delayUs[static_cast<std::size_t>(speaker)], delayKey(speaker), 0, 0,
                      maximumDelayUs);
    constexpr int neutralGain = 5;
    for (int row = 0; row < sourceCount; ++row)
        reader.number(state.gain[static_cast<std::size_t>(row)], QLatin1String(sourceGains[row].key),
                      neutralGain, 0, maximumGain);
}

/// A channel's level for power-on.
int startVolume(const StartVolume& row)
{
    const QString key = QLatin1String(row.key);
    const int level = stored(key, row.level);
    if (level >= 0 && level <= maximumVolume)
        return level;
    qWarning().noquote().nospace() << "AudioService: stored " << key << " is " << level << ", outside 0.."
                                   << maximumVolume << "; " << row.level << " is used";
    return row.level;
}

/// The level that a channel has now; without one it is the level for power-on. One out of range changes
/// nothing: a damaged number must not be heard at full level.
void readVolume(int& volume, const StartVolume& row)
{
    const QString key = volumeKey(row.channel);
    if (!mem::SettingsStore::instance()->value(key).isValid()) {
        volume = startVolume(row);
        return;
    }
    const int level = stored(key, volume);
    if (level >= 0 && level <= maximumVolume)
        volume = level;
    else
        qWarning().noquote().nospace() << "AudioService: stored " << key << " is " << level << ", outside 0.."
                                       << maximumVolume << "; the channel stays at " << volume;
}

} // namespace

QString userBandKey(int curve, int band)
{
    return QStringLiteral("eq%1%2").arg(curve + 1).arg(band);
}

QString volumeKey(int channel)
{
    return QStringLiteral("volume%1").arg(channel);
}

QString delayKey(int speaker)
{
    return QStringLiteral("AudioService_DelayUs_%1").arg(speaker);
}

QString highPassKey(Tables tables, int speaker)
{
    return filterKey("HPF_", tables, QString::number(speaker));
}

QString lowPassKey(Tables tables, int speaker)
{
    return filterKey("LPF_", tables, QString::number(speaker));
}

QString subwooferKey(Tables tables)
{
    return filterKey("Sub", tables, QString());
}

QString filterText(const Filter& filter)
{
    return QStringLiteral("%1;%2;%3").arg(filter.frequency).arg(filter.attenuation).arg(filter.slope);
}

void restore(AudioState& state)
{
    Reader reader;
    readButFilters(state, reader);
    restoreFilters(state);
}

void restoreFilters(AudioState& state)
{
    Reader reader;
    readFilters(state, reader);
    state.subwooferSlope = storedSubwooferSlope();
    state.subwooferInverted = storedSubwooferPhase();
}

bool restoreKey(AudioState& state, const QString& key)
{
    for (const StartVolume& row : startVolumes) {
        if (key == volumeKey(row.channel)) {
            readVolume(state.volume[static_cast<std::size_t>(row.channel)], row);
            return true;
        }
    }
    Reader reader(isSubwooferValue(key, state.tables) ? subwooferKey(state.tables) : key);
    readButFilters(state, reader);
    readFilters(state, reader);
    return reader.hasRead();
}

std::array<int, channels> storedStartVolumes()
{
    std::array<int, channels> levels = {};
    for (const StartVolume& row : startVolumes)
        levels[static_cast<std::size_t>(row.channel)] = startVolume(row);
    return levels;
}

int storedSubwooferSlope()
{
    return storedInRange(QLatin1String(subwooferSlopeKey), 0, 0, maximumSlope);
}

bool storedSubwooferPhase()
{
    return stored(QLatin1String(subwooferPhaseKey), false);
}

} // namespace hvaudio::audiostatestore
