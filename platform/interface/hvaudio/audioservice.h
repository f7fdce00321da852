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
/// once. A value outside its range is logged and changes nothing. Thread: GUI.
///
/// Channels of volumes: 0 main, 1 ring, 2 call, 4 voice, 5 navigation (3 has no place on a page).
/// Speaker bits: 1 front left, 2 front right, 4 rear left, 8 rear right, 32 subwoofer.
class HVAUDIOSERVICE_EXPORT AudioService : public QObject
{
    Q_OBJECT
public:
    static AudioService* instance();

    /// Sounds the key beep. tone: 0.
    void doBeep(int tone);

    AudioEQType getCurrEQType();
    /// type 0..8; save: keep it across power cycles.
    void setEQType(AudioEQType type, bool save);

    /// Value -10..10 (dB) of band 0..12 of the current type's curve.
    int getCustomEq(int band);
    /// Edits the current type's curve when that is a user curve, else logs. value -10..10 (dB), band 0..12.
    void setCustomEq(int value, int band, bool save);
    /// Edits user curve 1 (type 6).
    void setCustomEq1(int value, int band, bool save);
    /// Edits user curve 2 (type 7).
    void setCustomEq2(int value, int band, bool save);

    /// Loudness is kept whatever the flag: the page reads it back from the store whenever it is shown.
    void setCustomLoudness(bool on, bool save);

    /// Fills both, -15..15; balance is positive to the right, fader to the front.
    void getBalanceFader(int& balance, int& fader);
    void setBalanceFader(int balance, int fader, bool save);

    /// High-pass of one speaker. frequency: low 7 bits an index into off, 30, 40, 60, 80, 100, 120, 160, 250
    /// Hz, bit 7 marks the rear pair; attenuation: 0..12 dB; speaker: one bit of 1, 2, 4, 8; slope: index of
    /// 6, 12, 18, 24 dB/octave.
    void setHPFFilter(int frequency, int attenuation, int speaker, int slope);
    /// Low-pass of one speaker, arguments as above.
    void setLPFFilter(int frequency, int attenuation, int speaker, int slope);
    /// Subwoofer low-pass. frequency: 0 silent, 1 no filter, n = entry n - 1 of the list above; attenuation:
    /// 0..12 dB; slope: as above, 0 keeps the stored one.
    void setSubFilter(int frequency, int attenuation, int slope);

    /// speaker: one speaker bit, 32 for the subwoofer; delay: 0..10 ms.
    void setSurroundDelay(int speaker, float delay);

    /// level 0..50; channel as above.
    void setVolumeLevel(int level, int channel);
    /// gain 0..15 stands for -5..+10 dB.
    void setSourceOffsetGain(HVAudio_source_id_e source, int gain);

signals:
    /// A volume has changed. muted, level 0..50, channel as above.
    void audioVolumeChanged(bool muted, int level, int channel);

private:
    AudioService();
    ~AudioService() override;
    friend class AudioServicePrivate;
    AudioServicePrivate* d;
    Q_DISABLE_COPY(AudioService)
};

} // namespace hvaudio
