#pragma once

// The local trailer feed service, vireo-feedd, run by a test over a demo library in a
// temporary folder on a free loopback port. Its whole process group is killed when the
// test is done with it, and should the test program die first. Header-only.

#include <QElapsedTimer>
#include <QHostAddress>
#include <QProcess>
#include <QRegularExpression>
#include <QTcpServer>
#include <QTemporaryDir>

#include <csignal>
#include <sys/prctl.h>
#include <unistd.h>

class FeedService {
public:
    static constexpr int kStartLimitMS = 10'000;

    // `program`: the path of vireo-feedd.
    explicit FeedService(const QString& program)
    {
        m_process.setProgram(program);
        m_process.setArguments({ QStringLiteral("--demo"), QStringLiteral("--library"),
            m_library.path(), QStringLiteral("--listen"), QStringLiteral("127.0.0.1:0") });
        m_process.setProcessChannelMode(QProcess::MergedChannels);
        m_process.setChildProcessModifier([] {
            ::setpgid(0, 0);
            ::prctl(PR_SET_PDEATHSIG, SIGKILL);
        });
        m_process.start();
    }
    ~FeedService()
    {
        if (m_process.state() != QProcess::NotRunning && m_process.processId() > 0)
            ::kill(-pid_t(m_process.processId()), SIGKILL);
        m_process.waitForFinished(5000);
    }
    FeedService(const FeedService&) = delete;
    FeedService& operator=(const FeedService&) = delete;

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
    QString output() const { return QString::fromUtf8(m_output); }

    // A loopback base URL that nothing listens on any more: connections are refused.
    static QString closedBase()
    {
        QTcpServer server;
        if (!server.listen(QHostAddress::LocalHost, 0))
            return {};
        return QStringLiteral("http://127.0.0.1:") + QString::number(server.serverPort());
    }

private:
    QTemporaryDir m_library;
    QProcess m_process;
    QByteArray m_output;
};
