#pragma once

#include "common/export.h"

#include <QObject>

/// EQ types. 6 and 7 are the two user curves; 8 has no preset tile and no built-in curve and is flat.
enum AudioEQType : int {
    EQ_Type_Flat = 0,
    EQ_Type_RB = 1,
    EQ_Type_Rock = 2,
    EQ_Type_Pop = 3,
    EQ_Type_HipHop = 4,
    EQ_Type_Jazz = 5,
    EQ_Type_User1 = 6,
    EQ_Type_User2 = 7,
    EQ_Type_Custom = 8,
};

/// Audio sources that have an input gain.
enum HVAudio_source_id_e : int {
    HVAudio_source_Carplay = 0,
    HVAudio_source_AndroidAuto = 1,
    HVAudio_source_BtAudio = 5,
    HVAudio_source_Usb = 6,
    HVAudio_source_AvIn = 7,
    HVAudio_source_Radio = 18,
    HVAudio_source_Dab = 19,
};

namespace hvaudio {

class AudioServicePrivate;

/// Drives the sound processor and keeps what the listener has set across power cycles. Every call applies at
/// once. A value outside the range given here is logged and the call changes nothing, except where a sentence
/// says otherwise. Thread: GUI.
///
/// Channels of volumes: 0 main, 1 ring, 2 call, 4 voice, 5 navigation (3 has no place on a page).
/// Speaker bits: 1 front left, 2 front right, 4 rear left, 8 rear right, 32 subwoofer.
///
/// Indexes of filters' frequencies count one of two sets of lists (crossovers.h), whichever the unit's host
/// has chosen: the speaker groups', which is the one list groupCrossoverHz for all filters and stands unless
/// the host says otherwise, or the main audio's, which are mainHighPass, mainLowPass and mainSubwoofer. Each
/// set's filters are kept apart, and choosing a set brings back its own.
class HVAUDIOSERVICE_EXPORT AudioService : public QObject
{
    Q_OBJECT
public:
    /// Never null; the first call makes it. It belongs to the host, which may end it; the next call makes
    /// another one then.
    static AudioService* instance();

    /// Sounds the key beep. tone: 0; any other is logged and sounds as 0, since a key must not stay silent.
    void doBeep(int tone);

    /// The type that sounds, 0..8.
    AudioEQType getCurrEQType();
    /// type 0..8. save: keep it across power cycles. mem::SettingsUtil::EQType tells of another type than
    /// before, when getCurrEQType() says so already.
    void setEQType(AudioEQType type, bool save);

    /// Value -10..10 (dB) of a band 0..12 of the current type's curve; 0 for any other band, which is logged.
    int getCustomEq(int band);
    /// Edits the current type's curve; one that isn't a user curve counts as out of range. value -10..10
    /// (dB), band 0..12. save: keep it across power cycles.
    void setCustomEq(int value, int band, bool save);
    /// Edits user curve 1 (type 6) likewise, whatever the current type.
    void setCustomEq1(int value, int band, bool save);
    /// Edits user curve 2 (type 7) likewise.
    void setCustomEq2(int value, int band, bool save);

    /// Loudness is kept whatever the flag: the page reads it back from the store whenever it is shown.
    void setCustomLoudness(bool on, bool save);

    /// Fills both, -15..15; balance is positive to the right, fader to the front.
    void getBalanceFader(int& balance, int& fader);
    /// Both -15..15; one of them out of range, and neither changes. save: keep them across power cycles.
    void setBalanceFader(int balance, int fader, bool save);

    /// High-pass of one speaker. frequency: the low 7 bits are an index, 0..8 or, on the main audio's lists,
    /// 0..5, where 0 is off; bit 7 marks the rear pair and may be set or not. attenuation: 0..127 dB; more
    /// than 12 is logged, kept and sounds as 12. A speaker's high-pass and low-pass cut 12 dB together at
    /// most, one that is off cuts nothing, and on the main audio's lists, whose page has no level, none does.
    /// speaker: one bit of 1, 2, 4, 8. slope: index 0..3 into crossoverSlopes. Kept across power cycles.
    void setHPFFilter(int frequency, int attenuation, int speaker, int slope);
    /// Low-pass of one speaker, arguments as above.
    void setLPFFilter(int frequency, int attenuation, int speaker, int slope);
    /// Subwoofer low-pass. frequency: 0 silent, 1 no filter, 2..9 entry n - 1 of groupCrossoverHz or entry n
    /// of mainSubwoofer. attenuation: 0..127 dB; more than 12 is logged, kept and sounds as 12. On the main
    /// audio's lists it is a level 0..127 instead: 14 and more is the loudest, each step below is 1 dB.
    /// slope: 1..3 as above; 0 takes the one that the crossover page has stored. Kept across power cycles.
    /// While it and a high-pass of the cabin are on, the polarity follows their slopes (subwooferTurned) and
    /// the page's phase switch turns it round.
    void setSubFilter(int frequency, int attenuation, int slope);

    /// speaker: one speaker bit, 32 for the subwoofer; delay: 0..10 ms, rounded to 0.001 ms. Kept across
    /// power cycles.
    void setSurroundDelay(int speaker, float delay);

    /// level 0..50: 0 is silence, 50 is 0 dB, each step is 1.2 dB; channel as above. Kept until the next
    /// power-on, which begins with the start-up volumes.
    void setVolumeLevel(int level, int channel);
    /// gain 0..15 stands for -5..+10 dB. The page that sends it keeps it.
    void setSourceOffsetGain(HVAudio_source_id_e source, int gain);

signals:
    /// A volume is another than before. muted: always false, the service doesn't mute; level 0..50, channel
    /// as above. The store holds the new level already.
    void audioVolumeChanged(bool muted, int level, int channel);

private:
    AudioService();
    ~AudioService() override;
    friend class AudioServicePrivate;
    AudioServicePrivate* d;
    Q_DISABLE_COPY(AudioService)
};

} // namespace hvaudio
