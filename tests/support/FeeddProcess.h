#pragma once

// The local trailer feed service, vireo-feedd, run by a test over a demo library in a
// temporary folder (or over a library of the test's own) on a free loopback port. Its whole process
// group is killed when the test is done with it, and should the test program die first. Making the
// demo's clips takes seconds: a test program starts one service for all its tests. Header-only.

#include <QElapsedTimer>
#include <QHostAddress>
#include <QProcess>
#include <QRegularExpression>
#include <QTcpServer>
#include <QTemporaryDir>

#include <csignal>
#include <sys/prctl.h>
#include <unistd.h>

class FeeddProcess {
public:
    // The demo's clips are made by ffmpeg on first start.
    static constexpr int kStartLimitMS = 60'000;

    // `program`: the path of vireo-feedd. Without a `library` folder the service makes
    // its demo library in a temporary folder of its own.
    explicit FeeddProcess(const QString& program, const QString& library = {})
    {
        QStringList arguments { QStringLiteral("--listen"), QStringLiteral("127.0.0.1:0"),
            QStringLiteral("--library") };
        if (library.isEmpty())
            arguments << m_demoLibrary.path() << QStringLiteral("--demo");
        else
            arguments << library;
        m_process.setProgram(program);
        m_process.setArguments(arguments);
        m_process.setProcessChannelMode(QProcess::MergedChannels);
        m_process.setChildProcessModifier([] {
            ::setpgid(0, 0);
            ::prctl(PR_SET_PDEATHSIG, SIGKILL);
        });
        m_process.start();
    }
    ~FeeddProcess()
    {
        if (m_process.state() != QProcess::NotRunning && m_process.processId() > 0)
            ::kill(-pid_t(m_process.processId()), SIGKILL);
        m_process.waitForFinished(5000);
    }
    FeeddProcess(const FeeddProcess&) = delete;
    FeeddProcess& operator=(const FeeddProcess&) = delete;

    // "http://127.0.0.1:PORT" once the service says where it listens; null when it
    // does not within the limit.
    QString waitForBase()
    {
        static const QRegularExpression bound(QStringLiteral("127\\.0\\.0\\.1:(\\d+)"));
        QElapsedTimer clock;
        clock.start();
        while (clock.elapsed() < kStartLimitMS && m_process.state() != QProcess::NotRunning) {
            m_process.waitForReadyRead(200);
            m_output += m_process.readAll();
            const QRegularExpressionMatch match = bound.match(QString::fromUtf8(m_output));
            if (match.hasMatch() && match.captured(1) != QStringLiteral("0"))
                return QStringLiteral("http://127.0.0.1:") + match.captured(1);
        }
        return {};
    }
    // Stops the service with SIGTERM: its exit code, or -1 when it did not end normally.
    int terminate()
    {
        ::kill(pid_t(m_process.processId()), SIGTERM);
        const bool ended = m_process.waitForFinished(5000);
        m_output += m_process.readAll();
        return ended && m_process.exitStatus() == QProcess::NormalExit ? m_process.exitCode() : -1;
    }
    QString output() const { return QString::fromUtf8(m_output); }
    // The folder the demo library is written to (when no library was given).
    QString demoLibrary() const { return m_demoLibrary.path(); }

    // A loopback base URL that nothing listens on any more: connections are refused.
    static QString closedBase()
    {
        QTcpServer server;
        if (!server.listen(QHostAddress::LocalHost, 0))
            return {};
        return QStringLiteral("http://127.0.0.1:") + QString::number(server.serverPort());
    }

private:
    QTemporaryDir m_demoLibrary;
    QProcess m_process;
    QByteArray m_output;
};
