// From the finger to the loudspeaker's wire: another program plays into the unit, the curve is drawn on the
// equalizer page, and what the unit plays to the device has that curve.

#include "tests/support/unitonpipewire.h"
#include "tests/system/soundunit.h"

#include "platform/hvaudio/player.h"
#include "platform/hvaudioservice/audioservicehost.h"

#include <QtTest>

using namespace unitonpipewire;
using hvaudio::AudioServiceHost;
using hvaudio::Player;

class TestTouchToPipeWire : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase() { SoundUnit::hushLog(); }
    void curveTouchedOnThePageIsHeardAtTheDevice();
};

void TestTouchToPipeWire::curveTouchedOnThePageIsHeardAtTheDevice()
{
    PrivatePipeWire server(QStringLiteral(TEST_SUPPORT) + "/pipewire");
    QVERIFY(server.start());
    SoundUnit unit;
    Player player;
    AudioServiceHost::setSink(
        [&player](const hvaudio::dsp::Settings& settings) { player.setSettings(settings); });
    QVERIFY(player.setSource(HVAudio_source_Radio, hvaudio::SourceKind::Input));
    QVERIFY(player.start("pipewire"));

    // Full volume from the next power-on.
    QVERIFY(unit.touch({"key_audio_level"}));
    QVERIFY(unit.touch({"widget_default_main:slider", 0, QPointF(1, 0.5)}));
    unit.cyclePower();

    const int curve[hvaudio::dsp::bandCount] = {6, 0, -4, 0, 3, 8, 0, -6, 0, 5, 0, -3, 2};
    QVERIFY(unit.touch({"key_EQ_setting"}));
    for (int band = 0; band < hvaudio::dsp::bandCount; ++band) {
        const QByteArray bar = "eq_band_widget" + QByteArray::number(band + 1);
        // 21 equal heights, one for each value.
        QVERIFY2(unit.touch({bar, 0, QPointF(0.5, (10 - curve[band] + 0.5) / 21)}), qPrintable(unit.error()));
    }
    QVERIFY(linkUnitTo("out-sink", five));
    QVERIFY(PrivatePipeWire::waitFor([&] { return player.status() == "PipeWire, 48000 Hz, 5.1"; }));

    const Heard heard = hearTones(server, "out-sink", five);
    AudioServiceHost::setSink(nullptr);

    // The four speakers of the cabin; the subwoofer's filter leaves little of the tones there.
    QVERIFY(heard.start > 0);
    for (int channel = 0; channel < 4; ++channel) {
        for (int band = 0; band < hvaudio::dsp::bandCount; ++band) {
            const double hz = hvaudio::dsp::bandHz[std::size_t(band)];
            const double amplitude =
                amplitudeAt(heard.channels[std::size_t(channel)], heard.start, pieceLength, hz, rate) /
                toneLevel;
            const double db = 20 * std::log10(amplitude);
            QVERIFY2(std::abs(db - curve[band]) < 0.6, qPrintable(QString("%1, %2 Hz: %3 dB instead of %4")
                                                                      .arg(five[channel])
                                                                      .arg(hz)
                                                                      .arg(db)
                                                                      .arg(curve[band])));
        }
    }
}

QTEST_MAIN(TestTouchToPipeWire)
#include "tst_touchtopipewire.moc"
