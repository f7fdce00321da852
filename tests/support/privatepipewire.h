#pragma once

#include "tests/support/process.h"

#include <QFile>
#include <QProcess>
#include <QProcessEnvironment>
#include <QTemporaryDir>
#include <QTest>

#include <cmath>
#include <csignal>
#include <cstring>
#include <functional>
#include <vector>

/// Starts a program that ends with this process, however that ends.
inline void startTied(QProcess& process, const QString& program, const QStringList& arguments)
{
    process.start(QStringLiteral("setpriv"),
                  QStringList{QStringLiteral("--pdeathsig"), QStringLiteral("TERM"), program} + arguments);
}

/// A PipeWire daemon of the test's own: runtime folder, configuration and graph are private, and no session
/// bus takes part. Without a session manager links are made by name, and there is a stereo sink "test-sink"
/// and one of five channels, "out-sink". With one the devices are `Device`s. While it lives the environment
/// of this process points to it.
class PrivatePipeWire
{
public:
    /// Frames of one cycle of the graph. Long, so that a busy machine keeps up.
    static constexpr int quantum = 2048;

    enum Session {
        Unmanaged,
        Managed, ///< by WirePlumber, configured as it comes but for this machine's hardware
    };
    explicit PrivatePipeWire(const QString& configuration, Session session = Unmanaged)
        : m_session(session)
    {
        if (session == Unmanaged)
            qputenv("PIPEWIRE_PROPS", "{ adapter.auto-port-config = { mode = dsp } }");
        else
            qunsetenv("PIPEWIRE_PROPS");
        qputenv("XDG_RUNTIME_DIR", QFile::encodeName(m_folder.path()));
        qputenv("PIPEWIRE_CONFIG_DIR", QFile::encodeName(configuration));
        qunsetenv("DBUS_SESSION_BUS_ADDRESS");
        qputenv("PIPEWIRE_LATENCY", QByteArray::number(quantum) + "/48000");
        qunsetenv("PIPEWIRE_REMOTE");
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("XDG_CONFIG_HOME"), configuration);
        environment.insert(QStringLiteral("XDG_STATE_HOME"), m_folder.filePath("state"));
        environment.remove(QStringLiteral("PIPEWIRE_LATENCY"));
        m_manager.setProcessEnvironment(environment);
        QFile::setPermissions(m_folder.path(), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    }
    ~PrivatePipeWire()
    {
        end(m_manager, SIGTERM);
        end(SIGTERM);
    }

    /// True when the daemon's own sinks are there, or the session manager is.
    bool start()
    {
        m_daemon.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        if (m_session == Unmanaged) {
            startTied(m_daemon, QStringLiteral("pipewire"), {});
            return m_daemon.waitForStarted() &&
                   waitForPorts({"out-sink:playback_LFE", "test-sink:playback_FR"});
        }
        startTied(m_daemon, QStringLiteral("pipewire"), {"-c", "session.conf"});
        return m_daemon.waitForStarted() && waitFor([this] { return QFile::exists(path("pipewire-0")); }) &&
               startManager();
    }
    bool startManager()
    {
        m_manager.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        startTied(m_manager, QStringLiteral("wireplumber"), {});
        return m_manager.waitForStarted() && waitFor([] {
                   return output(QStringLiteral("pw-cli"), {"ls", "Metadata"}).contains("\"default\"");
               });
    }
    /// Any signal; waits for the end.
    void end(int signal) { end(m_daemon, signal); }
    void endManager(int signal) { end(m_manager, signal); }

    QString path(const QString& name) const { return m_folder.filePath(name); }

    static QString output(const QString& program, const QStringList& arguments)
    {
        QProcess process;
        process.start(program, arguments);
        if (!process.waitForFinished(10000)) {
            sendSignal(process, SIGKILL);
            process.waitForFinished();
        }
        return QString::fromUtf8(process.readAllStandardOutput());
    }
    /// All ports, or all links as "from -> to", one a line.
    static QStringList ports()
    {
        return output(QStringLiteral("pw-link"), {QStringLiteral("-io")}).split('\n');
    }
    static QStringList links()
    {
        QStringList result;
        QString from;
        for (const QString& line : output(QStringLiteral("pw-link"), {QStringLiteral("-l")}).split('\n')) {
            if (line.startsWith(QLatin1String("  |-> ")))
                result << from + QLatin1String(" -> ") + line.mid(6);
            else if (!line.startsWith(' '))
                from = line;
        }
        return result;
    }

    static bool waitFor(const std::function<bool()>& condition, int ms = 10000)
    {
        return QTest::qWaitFor(condition, ms);
    }
    static bool waitForPorts(const QStringList& names, int ms = 10000)
    {
        return waitFor(
            [&] {
                const QStringList all = ports();
                return std::all_of(names.begin(), names.end(),
                                   [&](const QString& name) { return all.contains(name); });
            },
            ms);
    }
    /// Makes the link and waits until it stands.
    static bool link(const QString& from, const QString& to)
    {
        const QString wanted = from + QLatin1String(" -> ") + to;
        return waitFor([&] {
            if (links().contains(wanted))
                return true;
            output(QStringLiteral("pw-link"), {from, to});
            return false;
        });
    }

private:
    static void end(QProcess& process, int signal)
    {
        if (process.state() == QProcess::NotRunning)
            return;
        sendSignal(process, signal);
        process.waitForFinished(5000);
    }

    const Session m_session;
    QTemporaryDir m_folder;
    QProcess m_daemon, m_manager;
};

/// A null sink in a managed graph, plugged in as long as the object lives.
class Device
{
public:
    Device(const QString& name, const QStringList& channels)
        : m_name(name)
        , m_channels(channels)
    {
        plug();
    }
    ~Device() { unplug(); }
    /// True when it has its ports, which the session manager gives it.
    bool plug()
    {
        QStringList ports;
        for (const QString& channel : m_channels)
            ports << m_name + QLatin1String(":playback_") + channel;
        // The tool sometimes hangs before it sends.
        for (int attempt = 0; attempt < 3; ++attempt) {
            unplug();
            startTied(m_process, QStringLiteral("pw-cli"), {});
            m_process.write(QStringLiteral("create-node adapter { factory.name = support.null-audio-sink "
                                           "node.name = %1 media.class = Audio/Sink "
                                           "audio.position = [ %2 ] monitor.channel-volumes = true }\n")
                                .arg(m_name, m_channels.join(' '))
                                .toUtf8());
            if (m_process.waitForStarted() && PrivatePipeWire::waitForPorts(ports, 5000))
                return true;
        }
        return false;
    }
    void unplug()
    {
        sendSignal(m_process, SIGKILL);
        m_process.waitForFinished(5000);
    }
    bool makeDefault() const { return makeDefault(m_name); }
    static bool makeDefault(const QString& name)
    {
        return PrivatePipeWire::waitFor([&] {
            PrivatePipeWire::output(QStringLiteral("pw-metadata"),
                                    {"0", "default.configured.audio.sink",
                                     QStringLiteral("{ \"name\": \"%1\" }").arg(name), "Spa:String:JSON"});
            return PrivatePipeWire::output(QStringLiteral("pw-metadata"), {"0", "default.audio.sink"})
                .contains('"' + name + '"');
        });
    }

private:
    const QString m_name;
    const QStringList m_channels;
    QProcess m_process;
};

/// pw-cat that records as the node "rec" until it is stopped; ends by itself after a minute.
class Recording
{
public:
    Recording(const QString& path, const QStringList& channels)
        : m_path(path)
        , m_channels(channels)
    {
        startTied(m_process, QStringLiteral("timeout"),
                  {"--signal=INT", "60", "pw-cat", "-r", "--target", "0", "--latency", "256", "--channels",
                   QString::number(channels.size()), "--channel-map", channels.join(','), "--rate", "48000",
                   "--format", "f32", "-P", "{ node.name = rec }", path});
        QStringList ports;
        for (const QString& channel : channels)
            ports << QLatin1String("rec:input_") + channel;
        m_ready = PrivatePipeWire::waitForPorts(ports);
    }
    ~Recording() { stop(); }
    bool ready() const { return m_ready; }

    /// Ends the recording; its samples, channel by channel.
    std::vector<std::vector<float>> stop()
    {
        if (m_process.state() != QProcess::NotRunning) {
            sendSignal(m_process, SIGINT);
            m_process.waitForFinished(10000);
        }
        // RIFF chunks; pw-cat writes 32 bit floats here.
        std::vector<std::vector<float>> samples(std::size_t(m_channels.size()));
        QFile file(m_path);
        if (!file.open(QIODevice::ReadOnly))
            return samples;
        const QByteArray all = file.readAll();
        for (int at = 12; at + 8 <= all.size();) {
            quint32 size = 0;
            std::memcpy(&size, all.constData() + at + 4, 4);
            if (all.mid(at, 4) == "data") {
                const int frames = int(qMin<qint64>(size, all.size() - at - 8) / 4 / m_channels.size());
                for (int c = 0; c < m_channels.size(); ++c) {
                    samples[std::size_t(c)].resize(std::size_t(frames));
                    for (int n = 0; n < frames; ++n)
                        std::memcpy(&samples[std::size_t(c)][std::size_t(n)],
                                    all.constData() + at + 8 + 4 * (n * m_channels.size() + c), 4);
                }
                break;
            }
            at += 8 + int(size) + int(size % 2);
        }
        return samples;
    }

private:
    const QString m_path;
    const QStringList m_channels;
    QProcess m_process;
    bool m_ready = false;
};

/// Amplitude of a sine of `hz` in a piece of a signal, by correlation under a Hann window.
inline double amplitudeAt(const std::vector<float>& signal, std::size_t start, std::size_t count, double hz,
                          double rate)
{
    constexpr double turn = 2 * 3.14159265358979323846;
    double re = 0, im = 0, sum = 0;
    for (std::size_t n = 0; n < count && start + n < signal.size(); ++n) {
        const double window = 0.5 - 0.5 * std::cos(turn * double(n) / double(count));
        re += window * double(signal[start + n]) * std::cos(turn * hz * double(n) / rate);
        im += window * double(signal[start + n]) * std::sin(turn * hz * double(n) / rate);
        sum += window;
    }
    return 2 * std::hypot(re, im) / sum;
}
