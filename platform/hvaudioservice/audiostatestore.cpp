#include "platform/hvaudioservice/audiostatestore.h"

#include "platform/common/settings/settingsstore.h"

#include <QDebug>
#include <QStringList>

namespace hvaudio::audiostatestore {

using Tables = AudioServiceHost::FilterTables;

namespace {

constexpr mem::Setting userCurveSettings[] = {mem::settingOf("eq1%1"), mem::settingOf("eq2%1")};
constexpr mem::Setting volumeSetting = mem::settingOf("volume%1");
constexpr mem::Setting delaySetting = mem::settingOf("AudioService_DelayUs_%1");
static_assert(userCurveSettings[0].count == eqBandCount && delaySetting.count == speakers,
              "one number a band, one a speaker");

QVariant stored(const mem::Setting& setting, int number = 0)
{
    return mem::SettingsStore::instance()->valueOr(mem::keyOf(setting, number), mem::defaultOf(setting));
}

bool isInRange(const mem::Setting& setting, int value)
{
    return value >= setting.smallest && value <= setting.largest;
}

/// Says that a stored number isn't used, and what is instead.
void sayOutOfRange(const mem::Setting& setting, const QString& key, int value, const QString& instead)
{
    qWarning().noquote().nospace() << "AudioService: stored " << key << " is " << value << ", outside "
                                   << setting.smallest << ".." << setting.largest << "; " << instead;
}

int storedInRange(const mem::Setting& setting, int number = 0)
{
    const QString key = mem::keyOf(setting, number);
    const int value = stored(setting, number).toInt();
    const int used = qBound(setting.smallest, value, setting.largest);
    if (used != value)
        sayOutOfRange(setting, key, value, QStringLiteral("%1 is used").arg(used));
    return used;
}

/// Whether text is a filter that could have been applied; only then filter is set.
bool parseFilter(const QString& text, int lastFrequency, Filter* filter)
{
    const QStringList parts = text.split(QLatin1Char(';'));
    constexpr int count = 3; // of numbers
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
    const QString text = mem::SettingsStore::instance()->valueOr(key, filterText(defaultFilter)).toString();
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

    void number(int& place, const mem::Setting& setting, int number = 0)
    {
        if (wants(mem::keyOf(setting, number)))
            place = storedInRange(setting, number);
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

constexpr mem::Setting subwooferOn = mem::settingOf("subwooferOnOff");
constexpr mem::Setting subwooferFrequency = mem::settingOf("subwooferFreq");
constexpr mem::Setting subwooferLevel = mem::settingOf("subwooferLevel");
static_assert(subwooferFrequency.largest == lastSubwooferFrequency, "the table ends where the lists do");

/// The subwoofer as its pages show it while none of them has touched it yet.
Filter untouchedSubwoofer()
{
    Filter filter;
    if (stored(subwooferOn).toBool())
        filter.frequency = storedInRange(subwooferFrequency);
    filter.attenuation = stored(subwooferLevel).toInt() & mem::subwooferLevelBits;
    return filter;
}

/// Without a filter of its own the subwoofer's is made of the pages' values.
bool isSubwooferValue(const QString& key, Tables tables)
{
    return (key == mem::keyOf(subwooferOn) || key == mem::keyOf(subwooferFrequency) ||
            key == mem::keyOf(subwooferLevel)) &&
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
    reader.number(state.eqType, eqTypeSetting);
    for (int curve = 0; curve < int(std::size(userCurveSettings)); ++curve) {
        for (int band = 0; band < eqBandCount; ++band)
            reader.number(state.userCurve[static_cast<std::size_t>(curve)][static_cast<std::size_t>(band)],
                          userCurveSettings[curve], band);
    }
    if (reader.wants(mem::keyOf(loudnessSetting)))
        state.loudness = stored(loudnessSetting).toBool();
    reader.number(state.balance, balanceSetting);
    reader.number(state.fader, faderSetting);
    for (int speaker = 0; speaker < speakers; ++speaker)
        reader.number(state.delayUs[static_cast<std::size_t>(speaker)], delaySetting, speaker);
    for (std::size_t row = 0; row < std::size(audioSources); ++row)
        reader.number(state.gain[row], audioSources[row].gain);
}

/// A channel's level for power-on.
int startVolume(const mem::Setting& setting)
{
    const QString key = mem::keyOf(setting);
    const int level = stored(setting).toInt();
    if (isInRange(setting, level))
        return level;
    sayOutOfRange(setting, key, level, QStringLiteral("%1 is used").arg(setting.defaultValue));
    return setting.defaultValue;
}

/// The level that a channel has now; without one it is the level for power-on. One out of range changes
/// nothing: a damaged number must not be heard at full level.
void readVolume(int& volume, const StartVolume& row)
{
    const QString key = volumeKey(row.channel);
    if (!mem::SettingsStore::instance()->value(key).isValid()) {
        volume = startVolume(row.setting);
        return;
    }
    const int level = mem::SettingsStore::instance()->valueOr(key, volume).toInt();
    if (isInRange(volumeSetting, level))
        volume = level;
    else
        sayOutOfRange(volumeSetting, key, level, QStringLiteral("the channel stays at %1").arg(volume));
}

} // namespace

QString userBandKey(int curve, int band)
{
    return mem::keyOf(userCurveSettings[curve], band);
}

QString volumeKey(int channel)
{
    return mem::keyOf(volumeSetting, channel);
}

QString delayKey(int speaker)
{
    return mem::keyOf(delaySetting, speaker);
}

QString highPassKey(Tables tables, int speaker)
{
    return mem::keyOf(tables == Tables::MainAudio ? mem::settingOf("AudioService_MainHPF_%1")
                                                  : mem::settingOf("AudioService_HPF_%1"),
                      speaker);
}

QString lowPassKey(Tables tables, int speaker)
{
    return mem::keyOf(tables == Tables::MainAudio ? mem::settingOf("AudioService_MainLPF_%1")
                                                  : mem::settingOf("AudioService_LPF_%1"),
                      speaker);
}

QString subwooferKey(Tables tables)
{
    return mem::keyOf(tables == Tables::MainAudio ? mem::settingOf("AudioService_MainSub")
                                                  : mem::settingOf("AudioService_Sub"));
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
        levels[static_cast<std::size_t>(row.channel)] = startVolume(row.setting);
    return levels;
}

int storedSubwooferSlope()
{
    return storedInRange(subwooferSlopeSetting);
}

bool storedSubwooferPhase()
{
    return stored(subwooferPhaseSetting).toBool();
}

} // namespace hvaudio::audiostatestore
