#pragma once

// What the tests that run the real mediashell share: runs bounded in time whose whole
// process group is killed if they hang, one X server (Xvfb) per test program, and
// readers for the dump lines. Header-only: the run tests of this folder include it.

#include <gtest/gtest.h>

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>

#include <csignal>
#include <memory>
#include <sys/prctl.h>
#include <unistd.h>

namespace runsupport {

inline constexpr int kRunLimitMS = 60'000;

// Puts the child in a process group of its own, so a hung run can be killed whole,
// and has it killed should the test program die first.
inline void ownProcessGroup(QProcess& process)
{
    process.setChildProcessModifier([] {
        ::setpgid(0, 0);
        ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    });
}

inline void killGroup(QProcess& process)
{
    if (process.state() != QProcess::NotRunning && process.processId() > 0)
        ::kill(-pid_t(process.processId()), SIGKILL);
    process.waitForFinished(5000);
}

inline QStringList titles(const QJsonObject& screen)
{
    QStringList titles;
    for (const QJsonValue& row : screen.value("rows").toArray())
        titles.append(row.toObject().value("title").toString());
    return titles;
}

inline QStringList stack(const QJsonObject& screen)
{
    QStringList labels;
    for (const QJsonValue& label : screen.value("stack").toArray())
        labels.append(label.toString());
    return labels;
}

inline QJsonObject player(const QJsonObject& screen)
{
    return screen.value("player").toObject();
}

// One run of mediashell: its input can be fed as it goes, its dump lines read as
// they come.
class ShellRun {
public:
    ShellRun(const QStringList& arguments, const QProcessEnvironment& environment)
    {
        m_process.setProgram(QStringLiteral(MEDIASHELL_BIN));
        m_process.setArguments(arguments);
        m_process.setProcessEnvironment(environment);
        ownProcessGroup(m_process);
        m_process.start();
        m_clock.start();
    }
    ~ShellRun() { killGroup(m_process); }
    ShellRun(const ShellRun&) = delete;
    ShellRun& operator=(const ShellRun&) = delete;

    bool started() { return m_process.waitForStarted(10'000); }
    qint64 pid() const { return m_process.processId(); }
    void write(const QByteArray& lines)
    {
        m_process.write(lines);
        m_process.waitForBytesWritten(5000);
    }
    void closeInput() { m_process.closeWriteChannel(); }

    // The next dump line; an empty object when the program ends or the time is up.
    QJsonObject nextLine()
    {
        for (;;) {
            const qsizetype newline = m_out.indexOf('\n');
            if (newline >= 0) {
                const QByteArray line = m_out.left(newline);
                m_out.remove(0, newline + 1);
                return QJsonDocument::fromJson(line).object();
            }
            const qint64 left = kRunLimitMS - m_clock.elapsed();
            if (left <= 0 || m_process.state() == QProcess::NotRunning)
                return {};
            m_process.waitForReadyRead(int(std::min<qint64>(left, 1000)));
            m_out += m_process.readAllStandardOutput();
            m_err += m_process.readAllStandardError();
        }
    }

    // Waits for the end (killing the group past the limit); the exit status, -1 when
    // it had to be killed or crashed.
    int finish()
    {
        const qint64 left = std::max<qint64>(1, kRunLimitMS - m_clock.elapsed());
        if (!m_process.waitForFinished(int(left))) {
            killGroup(m_process);
            m_timedOut = true;
        }
        m_out += m_process.readAllStandardOutput();
        m_err += m_process.readAllStandardError();
        if (m_timedOut || m_process.exitStatus() != QProcess::NormalExit)
            return -1;
        return m_process.exitCode();
    }

    // Every line not read with nextLine() yet, once finished.
    QList<QJsonObject> remainingLines()
    {
        QList<QJsonObject> lines;
        for (const QByteArray& line : m_out.split('\n')) {
            if (!line.isEmpty())
                lines.append(QJsonDocument::fromJson(line).object());
        }
        m_out.clear();
        return lines;
    }
    QString err() const { return QString::fromUtf8(m_err); }
    bool timedOut() const { return m_timedOut; }

private:
    QProcess m_process;
    QElapsedTimer m_clock;
    QByteArray m_out;
    QByteArray m_err;
    bool m_timedOut = false;
};

// A test of runs: one X server for the test program, and a fresh home, configuration
// and runtime folder for each test.
class XvfbRunTest : public ::testing::Test {
protected:
    static void SetUpTestSuite()
    {
        s_xvfb = new QProcess;
        s_xvfb->setProgram(QStringLiteral("Xvfb"));
        s_xvfb->setArguments(
            { "-displayfd", "1", "-screen", "0", "1280x720x24", "-nolisten", "tcp" });
        ownProcessGroup(*s_xvfb);
        s_xvfb->start();
        if (!s_xvfb->waitForStarted(10'000)) {
            s_error = "Xvfb did not start (scripts/install-deps installs xvfb): "
                + s_xvfb->errorString();
            return;
        }
        QByteArray number;
        QElapsedTimer clock;
        clock.start();
        while (!number.contains('\n') && clock.elapsed() < 20'000
            && s_xvfb->state() == QProcess::Running) {
            s_xvfb->waitForReadyRead(500);
            number += s_xvfb->readAllStandardOutput();
        }
        if (!number.contains('\n')) {
            s_error = "Xvfb gave no display number: "
                + QString::fromUtf8(s_xvfb->readAllStandardError());
            return;
        }
        s_display = QStringLiteral(":") + QString::fromLatin1(number.trimmed());
    }
    static void TearDownTestSuite()
    {
        if (s_xvfb) {
            if (s_xvfb->state() != QProcess::NotRunning)
                ::kill(-pid_t(s_xvfb->processId()), SIGTERM);
            if (!s_xvfb->waitForFinished(5000))
                killGroup(*s_xvfb);
            delete s_xvfb;
            s_xvfb = nullptr;
        }
    }

    void SetUp() override
    {
        ASSERT_TRUE(s_error.isEmpty()) << qPrintable(s_error);
        ASSERT_TRUE(m_dir.isValid());
        for (const char* folder : { "home", "user", "config", "runtime", "shots" })
            ASSERT_TRUE(QDir(m_dir.path()).mkpath(QLatin1String(folder)));
        QFile::setPermissions(path("runtime"),
            QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
    }

    QString path(const QString& name) const { return m_dir.filePath(name); }
    QString home() const { return path("home"); }

    QProcessEnvironment environment(bool withDisplay = true) const
    {
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        for (const char* name : { "QT_QPA_PLATFORM", "QT_LOGGING_RULES", "MEDIASHELL_VIDEO",
                 "WAYLAND_DISPLAY", "DISPLAY", "XAUTHORITY", "VIREO_TRAILER_ENDPOINT" })
            env.remove(QLatin1String(name));
        if (withDisplay) {
            env.insert("DISPLAY", s_display);
            env.insert("QT_QPA_PLATFORM", "xcb");
        }
        // Under AddressSanitizer the X11, D-Bus and Mesa libraries behind the window
        // leak a few bytes of their own (some from drivers unloaded by the exit, so
        // no suppression can name them); the shell's own teardown is leak-checked
        // in process by tst_shellmenu, tst_shellview and tst_rowsmodel.
        const QString asan = env.value("ASAN_OPTIONS");
        env.insert("ASAN_OPTIONS", asan.isEmpty() ? "detect_leaks=0" : asan + ":detect_leaks=0");
        // The simulated player: these runs check the shell, not libmpv.
        env.insert("MEDIASHELL_VIDEO", "simulated");
        // The user's own home is another, empty folder: the library the shell and its
        // plugins show can only come from --home.
        env.insert("HOME", path("user"));
        env.insert("XDG_CONFIG_HOME", path("config"));
        env.insert("XDG_RUNTIME_DIR", path("runtime"));
        return env;
    }

    QStringList shellArguments(const QStringList& more) const
    {
        return QStringList { "--windowed", "--home", home() } + more;
    }

    // Feeds one step and returns its dump line, which must be step `number`.
    static QJsonObject step(ShellRun& run, const QByteArray& line, int number)
    {
        run.write(line + '\n');
        const QJsonObject screen = run.nextLine();
        EXPECT_EQ(screen.value("step").toInt(-1), number)
            << line.constData() << " " << qPrintable(run.err());
        return screen;
    }

    QTemporaryDir m_dir;
    static inline QProcess* s_xvfb = nullptr;
    static inline QString s_display;
    static inline QString s_error;
};

} // namespace runsupport
