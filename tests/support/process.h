#pragma once

#include <QtTest>

#include <csignal>

/// Sends a signal to a process that runs, and to nothing else: one that did not start has an id that stands
/// for whole groups of processes. False when nothing was sent.
inline bool sendSignal(const QProcess& process, int signal)
{
    const qint64 id = process.processId();
    return id > 1 && ::kill(pid_t(id), signal) == 0;
}

/// A program of its own, ended with the object at the latest, its output kept as it comes.
class Process
{
public:
    explicit Process(const QProcessEnvironment& environment) { m_process.setProcessEnvironment(environment); }
    ~Process()
    {
        if (m_process.state() == QProcess::NotRunning)
            return;
        m_process.kill();
        m_process.waitForFinished();
    }
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;

    void start(const QString& program, const QStringList& arguments)
    {
        m_out.clear();
        m_err.clear();
        m_process.start(program, arguments);
    }
    /// Waits until standard output has these words from a position on; false after 20 s or when the process
    /// has ended without them.
    bool says(const QByteArray& words, int from = 0)
    {
        QElapsedTimer waited;
        waited.start();
        while (!output().mid(from).contains(words)) {
            if (m_process.state() == QProcess::NotRunning || waited.elapsed() > 20000)
                return output().mid(from).contains(words);
            m_process.waitForReadyRead(200);
        }
        return true;
    }
    const QByteArray& output()
    {
        m_out += m_process.readAllStandardOutput();
        return m_out;
    }
    const QByteArray& errors()
    {
        m_err += m_process.readAllStandardError();
        return m_err;
    }
    /// Exit code, or -1 when it didn't end by itself within 20 s or crashed.
    int exitCode()
    {
        if (!m_process.waitForFinished(20000) && m_process.state() != QProcess::NotRunning)
            return -1;
        return m_process.exitStatus() == QProcess::NormalExit ? m_process.exitCode() : -1;
    }
    bool isRunning()
    {
        m_process.waitForFinished(0);
        return m_process.state() == QProcess::Running;
    }
    /// 0 when it doesn't run.
    qint64 id() const { return m_process.processId(); }
    void raise(int signal) { sendSignal(m_process, signal); }
    /// Paths of the files that it has mapped, its libraries among them; one a line, with what else the kernel
    /// says of them.
    QByteArray mappedFiles() const
    {
        QFile maps(QStringLiteral("/proc/%1/maps").arg(m_process.processId()));
        return maps.open(QIODevice::ReadOnly) ? maps.readAll() : QByteArray();
    }

private:
    QProcess m_process;
    QByteArray m_out, m_err;
};

/// Runs a tool to its end. Its standard output; a null array when it is missing or failed.
inline QByteArray runTool(const QString& tool, const QStringList& arguments,
                          const QProcessEnvironment& environment = QProcessEnvironment::systemEnvironment())
{
    const QString path = QStandardPaths::findExecutable(tool);
    if (path.isEmpty()) {
        qWarning("%s is missing; packaging/packages.txt has its package", qPrintable(tool));
        return QByteArray();
    }
    QProcess process;
    process.setProcessEnvironment(environment);
    process.start(path, arguments);
    if (!process.waitForFinished(20000) || process.exitCode() != 0) {
        qWarning("%s failed: %s", qPrintable(tool), process.readAllStandardError().constData());
        return QByteArray();
    }
    return process.readAllStandardOutput() + ""; // never null, even when the tool said nothing
}
