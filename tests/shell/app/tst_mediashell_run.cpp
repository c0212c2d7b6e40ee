// The real program, run as the user would run it: scripted, on an X server of the
// test's own (Xvfb), over a demo library made by vireoctl. Every run is bounded; a
// run that hangs loses its whole process group.
#include <gtest/gtest.h>

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QImage>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QSet>
#include <QTemporaryDir>
#include <QUrl>

#include <csignal>
#include <memory>
#include <sys/prctl.h>
#include <unistd.h>

namespace {

constexpr int kRunLimitMS = 60'000;

// Puts the child in a process group of its own, so a hung run can be killed whole,
// and has it killed should the test program die first.
void ownProcessGroup(QProcess& process)
{
    process.setChildProcessModifier([] {
        ::setpgid(0, 0);
        ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    });
}

void killGroup(QProcess& process)
{
    if (process.state() != QProcess::NotRunning && process.processId() > 0)
        ::kill(-pid_t(process.processId()), SIGKILL);
    process.waitForFinished(5000);
}

QStringList titles(const QJsonObject& screen)
{
    QStringList titles;
    for (const QJsonValue& row : screen.value("rows").toArray())
        titles.append(row.toObject().value("title").toString());
    return titles;
}

QStringList stack(const QJsonObject& screen)
{
    QStringList labels;
    for (const QJsonValue& label : screen.value("stack").toArray())
        labels.append(label.toString());
    return labels;
}

QJsonObject player(const QJsonObject& screen)
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
                m_lines.append(line);
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
    QList<QByteArray> m_lines;
    bool m_timedOut = false;
};

class MediashellRun : public ::testing::Test {
protected:
    // One X server for the test program.
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
        for (const char* folder : { "home", "config", "runtime", "shots" })
            ASSERT_TRUE(QDir(m_dir.path()).mkpath(QLatin1String(folder)));
        QFile::setPermissions(path("runtime"),
            QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
    }

    QString path(const QString& name) const { return m_dir.filePath(name); }
    QString home() const { return path("home"); }

    void makeDemoLibrary()
    {
        QProcess vireoctl;
        vireoctl.start(QStringLiteral(VIREOCTL_BIN), { "--home", home(), "demo" });
        ASSERT_TRUE(vireoctl.waitForFinished(kRunLimitMS));
        ASSERT_EQ(vireoctl.exitCode(), 0) << vireoctl.readAllStandardError().toStdString();
    }

    // A 40 s clip with its metadata straight in Movies, made by ffmpeg; false when
    // ffmpeg is missing or fails.
    bool makeClip(const QString& name)
    {
        QProcess ffmpeg;
        ffmpeg.start("ffmpeg",
            { "-v", "error", "-y", "-f", "lavfi", "-i", "testsrc=duration=40:size=160x120:rate=15",
                "-f", "lavfi", "-i", "sine=duration=40", "-c:v", "libx264", "-preset", "ultrafast",
                "-c:a", "aac", "-shortest", home() + "/Movies/" + name + ".m4v" });
        if (!QDir(home()).mkpath("Movies") || !ffmpeg.waitForFinished(kRunLimitMS)
            || ffmpeg.exitCode() != 0)
            return false;
        QFile metadata(home() + "/Movies/" + name + ".xml");
        return metadata.open(QIODevice::WriteOnly)
            && metadata.write(
                   "<movie><title>" + name.toUtf8() + "</title><duration>40</duration></movie>")
            > 0;
    }

    // The resume point the library holds for a movie in Movies, in ms.
    qint64 storedBookmark(const QString& name) const
    {
        QProcess vireoctl;
        vireoctl.start(QStringLiteral(VIREOCTL_BIN),
            { "--home", home(), "--json", "asset", home() + "/Movies/" + name + ".m4v" });
        vireoctl.waitForFinished(kRunLimitMS);
        return QJsonDocument::fromJson(vireoctl.readAllStandardOutput())
            .object()
            .value("bookmarkMS")
            .toInteger(-1);
    }

    // Steps until the player reports at least `ms`; the last dump line.
    static QJsonObject playUntil(ShellRun& run, qint64 ms, int& number)
    {
        QJsonObject screen;
        for (int i = 0; i < 60; ++i) {
            screen = step(run, "wait 500", ++number);
            if (player(screen).value("positionMS").toInteger() >= ms)
                break;
        }
        return screen;
    }

    QProcessEnvironment environment(bool withDisplay = true) const
    {
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        for (const char* name : { "QT_QPA_PLATFORM", "QT_LOGGING_RULES", "MEDIASHELL_VIDEO",
                 "WAYLAND_DISPLAY", "DISPLAY", "XAUTHORITY" })
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
        env.insert("HOME", home());
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
    static QProcess* s_xvfb;
    static QString s_display;
    static QString s_error;
};

QProcess* MediashellRun::s_xvfb = nullptr;
QString MediashellRun::s_display;
QString MediashellRun::s_error;

} // namespace

// Rows, focus, previews, the player and the stack after pops, one step at a time:
// each line is fed only once the previous step's dump line is out, so the shell
// runs standard input as it arrives.
TEST_F(MediashellRun, DumpLinesFollowAWalkThroughTheDemoLibrary)
{
    makeDemoLibrary();
    ShellRun run(shellArguments({ "--script", "-", "--dump" }), environment());
    ASSERT_TRUE(run.started());

    const QJsonObject top = run.nextLine();
    ASSERT_EQ(top.value("step").toInt(-1), 0) << qPrintable(run.err());
    EXPECT_EQ(top.value("label").toString(), "ShellMenu");
    EXPECT_EQ(top.value("kind").toString(), "menu");
    EXPECT_EQ(titles(top), QStringList({ "Vireo Movies" }));
    EXPECT_EQ(top.value("rows").toArray().at(0).toObject().value("kind").toString(), "folder");
    EXPECT_EQ(top.value("focus").toInt(-1), 0);
    EXPECT_EQ(stack(top), QStringList({ "ShellMenu" }));
    EXPECT_EQ(top.value("preview").toObject().value("image").toString(),
        ":/vireo-movies/ApplianceIcon.png");

    const QJsonObject stays = step(run, "menu", 1);
    EXPECT_EQ(stack(stays), QStringList({ "ShellMenu" })) << "menu at the top does nothing";

    const QJsonObject appliance = step(run, "select", 2);
    EXPECT_EQ(appliance.value("label").toString(), "VireoApplianceController");
    EXPECT_EQ(stack(appliance), QStringList({ "ShellMenu", "VireoApplianceController" }));
    EXPECT_EQ(titles(appliance), QStringList({ "Living Room Mac", "Studio iMac", "Settings" }));
    EXPECT_TRUE(appliance.value("rows").toArray().at(2).toObject().value("dividerAbove").toBool());
    EXPECT_EQ(appliance.value("focus").toInt(-1), 0);

    EXPECT_EQ(step(run, "down", 3).value("focus").toInt(-1), 1);
    const QJsonObject folder = step(run, "select", 4);
    EXPECT_EQ(folder.value("title").toString(), "Studio iMac");
    const QStringList movies = titles(folder);
    ASSERT_GE(movies.size(), 2) << qPrintable(movies.join(", "));
    const QJsonObject first = folder.value("preview").toObject();
    EXPECT_EQ(first.value("kind").toString(), "media");
    EXPECT_EQ(first.value("title").toString(), movies.at(0));
    EXPECT_TRUE(first.value("image").toString().endsWith(movies.at(0) + ".png"))
        << qPrintable(first.value("image").toString());
    EXPECT_FALSE(first.value("cast").toArray().isEmpty());
    EXPECT_FALSE(first.value("directors").toArray().isEmpty());
    EXPECT_GT(first.value("duration").toInt(), 0);

    const QJsonObject second = step(run, "down", 5);
    EXPECT_EQ(second.value("focus").toInt(-1), 1);
    EXPECT_EQ(second.value("preview").toObject().value("title").toString(), movies.at(1));

    const QJsonObject playing = step(run, "select", 6);
    EXPECT_EQ(playing.value("kind").toString(), "player");
    EXPECT_EQ(stack(playing).last(), "VideoPlayerController");
    EXPECT_EQ(player(playing).value("state").toString(), "playing");
    EXPECT_TRUE(
        QUrl(player(playing).value("url").toString()).toLocalFile().endsWith(movies.at(1) + ".m4v"))
        << qPrintable(player(playing).value("url").toString());

    const QJsonObject later = step(run, "wait 1500", 7);
    EXPECT_GE(player(later).value("positionMS").toInteger(), 1000)
        << "the simulated player keeps time";
    // A seek: 10 s on, past where a movie starts to keep a resume point.
    const QJsonObject seeked = step(run, "right", 8);
    EXPECT_GE(player(seeked).value("positionMS").toInteger(), 11'000);
    const QJsonObject paused = step(run, "playpause", 9);
    EXPECT_EQ(player(paused).value("state").toString(), "paused");

    const QJsonObject back = step(run, "menu", 10);
    EXPECT_EQ(stack(back),
        QStringList({ "ShellMenu", "VireoApplianceController", "VireoApplianceController" }));
    EXPECT_EQ(back.value("focus").toInt(-1), 1);

    const QJsonObject prompt = step(run, "select", 11);
    EXPECT_EQ(player(prompt).value("state").toString(), "prompt");
    EXPECT_TRUE(player(prompt).value("resumeOffered").toBool());
    EXPECT_EQ(titles(prompt), QStringList({ "Resume Playing", "Start from Beginning" }));
    EXPECT_EQ(prompt.value("focus").toInt(-1), 0);
    EXPECT_EQ(step(run, "down", 12).value("focus").toInt(-1), 1);

    EXPECT_EQ(stack(step(run, "menu", 13)).size(), 3);
    EXPECT_EQ(stack(step(run, "menu", 14)).size(), 2);
    EXPECT_EQ(stack(step(run, "menu", 15)), QStringList({ "ShellMenu" }));
    EXPECT_EQ(stack(step(run, "menu", 16)), QStringList({ "ShellMenu" }));

    // Comments and blank lines are no steps; the end of the input ends the run.
    run.write("# done\n\n");
    run.closeInput();
    EXPECT_EQ(run.finish(), 0) << qPrintable(run.err());
    EXPECT_TRUE(run.remainingLines().isEmpty());
}

TEST_F(MediashellRun, AScreenshotIsTheWindowAtItsSize)
{
    QFile script(path("shots.txt"));
    ASSERT_TRUE(script.open(QIODevice::WriteOnly));
    script.write("# the top menu, then the library\nshot top\nselect\nshot library\nquit\ndown\n");
    script.close();
    ShellRun run(shellArguments({ "--size", "960x540", "--script", script.fileName(), "--dump",
                     "--screenshots", path("shots") }),
        environment());
    ASSERT_TRUE(run.started());
    ASSERT_EQ(run.finish(), 0) << qPrintable(run.err());
    const QList<QJsonObject> lines = run.remainingLines();
    // Step 0, the two shots and the select; "quit" prints nothing and ends the run.
    ASSERT_EQ(lines.size(), 4);
    for (int i = 0; i < 4; ++i)
        EXPECT_EQ(lines[i].value("step").toInt(-1), i);
    EXPECT_EQ(stack(lines[3]), QStringList({ "ShellMenu", "VireoApplianceController" }));

    for (const char* name : { "top", "library" }) {
        const QImage shot(path("shots") + "/" + name + ".png");
        ASSERT_FALSE(shot.isNull()) << name;
        EXPECT_EQ(shot.size(), QSize(960, 540)) << name;
        QSet<QRgb> colours;
        for (int y = 0; y < shot.height(); y += 3) {
            for (int x = 0; x < shot.width(); x += 3)
                colours.insert(shot.pixel(x, y));
        }
        EXPECT_GE(colours.size(), 2) << name;
        EXPECT_GE(colours.size(), 16) << name << ": text, icon and highlight";
    }
}

TEST_F(MediashellRun, AnUnknownStepStopsTheRunWithStatus2)
{
    ShellRun run(shellArguments({ "--script", "-", "--dump" }), environment());
    ASSERT_TRUE(run.started());
    run.write("down\n\n# next is wrong\nsideways\nselect\n");
    EXPECT_EQ(run.finish(), 2) << qPrintable(run.err());
    EXPECT_TRUE(run.err().contains("script line 4: unknown step \"sideways\""))
        << qPrintable(run.err());
    const QList<QJsonObject> lines = run.remainingLines();
    ASSERT_EQ(lines.size(), 2) << "step 0 and down, nothing after the bad line";
    EXPECT_EQ(lines[1].value("step").toInt(-1), 1);
    EXPECT_EQ(stack(lines[1]), QStringList({ "ShellMenu" }));
}

TEST_F(MediashellRun, AShotWithoutAFolderIsAnErrorAtStart)
{
    QFile script(path("shot.txt"));
    ASSERT_TRUE(script.open(QIODevice::WriteOnly));
    script.write("down\nshot top\n");
    script.close();
    ShellRun run(shellArguments({ "--script", script.fileName(), "--dump" }), environment());
    ASSERT_TRUE(run.started());
    EXPECT_EQ(run.finish(), 2);
    EXPECT_TRUE(run.err().contains("script line 2: \"shot top\" needs --screenshots DIR"))
        << qPrintable(run.err());
    EXPECT_TRUE(run.remainingLines().isEmpty()) << "nothing ran";
}

// SIGTERM while a movie plays: the shell posts the termination notice, the player
// hands over its resume point, and the next run offers to resume.
TEST_F(MediashellRun, TerminatingKeepsTheResumePoint)
{
    makeDemoLibrary();
    {
        ShellRun run(shellArguments({ "--script", "-", "--dump" }), environment());
        ASSERT_TRUE(run.started());
        ASSERT_EQ(run.nextLine().value("step").toInt(-1), 0) << qPrintable(run.err());
        step(run, "select", 1);
        step(run, "down", 2);
        step(run, "select", 3);
        const QJsonObject playing = step(run, "select", 4);
        ASSERT_EQ(player(playing).value("state").toString(), "playing") << qPrintable(run.err());
        step(run, "wait 500", 5);
        const QJsonObject seeked = step(run, "right", 6);
        ASSERT_GE(player(seeked).value("positionMS").toInteger(), 10'000);
        ::kill(pid_t(run.pid()), SIGTERM);
        EXPECT_EQ(run.finish(), 0) << qPrintable(run.err());
    }
    ShellRun again(shellArguments({ "--script", "-", "--dump" }), environment());
    ASSERT_TRUE(again.started());
    again.write("select\ndown\nselect\nselect\n");
    again.closeInput();
    EXPECT_EQ(again.finish(), 0) << qPrintable(again.err());
    const QList<QJsonObject> lines = again.remainingLines();
    ASSERT_EQ(lines.size(), 5);
    EXPECT_EQ(player(lines[4]).value("state").toString(), "prompt");
    EXPECT_EQ(titles(lines[4]), QStringList({ "Resume Playing", "Start from Beginning" }));
}

// Real video through libmpv: a stop at about 15 s lands in the cache and a new shell
// offers to resume there; a kill -9 at about 25 s loses at most 10 s. The clip runs 40 s:
// the asset keeps no resume point in a movie's last 10 s, so in a 30 s clip a kill at
// 25 s would rightly leave none.
TEST_F(MediashellRun, RealPlaybackKeepsItsResumePointThroughAStopAndAKill)
{
    if (!makeClip("Clip"))
        GTEST_SKIP() << "ffmpeg cannot make the clip";
    QProcessEnvironment env = environment();
    env.remove("MEDIASHELL_VIDEO");
    {
        ShellRun run(shellArguments({ "--script", "-", "--dump" }), env);
        ASSERT_TRUE(run.started());
        ASSERT_EQ(run.nextLine().value("step").toInt(-1), 0) << qPrintable(run.err());
        int number = 0;
        step(run, "select", ++number);
        step(run, "select", ++number);
        step(run, "right", ++number);
        const QJsonObject at15 = playUntil(run, 15'000, number);
        ASSERT_EQ(player(at15).value("state").toString(), "playing") << qPrintable(run.err());
        const qint64 stoppedAt = player(at15).value("positionMS").toInteger();
        const QJsonObject back = step(run, "menu", ++number);
        EXPECT_EQ(back.value("label").toString(), "VireoApplianceController");
        run.closeInput();
        EXPECT_EQ(run.finish(), 0) << qPrintable(run.err());
        EXPECT_NEAR(storedBookmark("Clip"), stoppedAt, 1500);
    }
    {
        ShellRun run(shellArguments({ "--script", "-", "--dump" }), env);
        ASSERT_TRUE(run.started());
        ASSERT_EQ(run.nextLine().value("step").toInt(-1), 0) << qPrintable(run.err());
        int number = 0;
        step(run, "select", ++number);
        const QJsonObject prompt = step(run, "select", ++number);
        ASSERT_EQ(player(prompt).value("state").toString(), "prompt") << qPrintable(run.err());
        EXPECT_EQ(titles(prompt), QStringList({ "Resume Playing", "Start from Beginning" }));
        const QJsonObject resumed = step(run, "select", ++number);
        EXPECT_GE(player(resumed).value("positionMS").toInteger(), 13'000);
        step(run, "right", ++number);
        const QJsonObject at25 = playUntil(run, 25'000, number);
        ASSERT_EQ(player(at25).value("state").toString(), "playing") << qPrintable(run.err());
        const qint64 killedAt = player(at25).value("positionMS").toInteger();
        ::kill(-pid_t(run.pid()), SIGKILL);
        run.finish();
        const qint64 kept = storedBookmark("Clip");
        EXPECT_LE(kept, killedAt);
        EXPECT_GE(kept, killedAt - 10'000);
    }
}

// A movie file mpv cannot play shows the error, and the next key is back in the menu.
TEST_F(MediashellRun, ABrokenMovieShowsTheErrorAndReturnsToTheMenu)
{
    ASSERT_TRUE(QDir(home()).mkpath("Movies"));
    QFile broken(home() + "/Movies/Broken.m4v");
    ASSERT_TRUE(broken.open(QIODevice::WriteOnly));
    broken.write(QByteArray(64 * 1024, '\x5a'));
    broken.close();
    QProcessEnvironment env = environment();
    env.remove("MEDIASHELL_VIDEO");
    ShellRun run(shellArguments({ "--script", "-", "--dump" }), env);
    ASSERT_TRUE(run.started());
    ASSERT_EQ(run.nextLine().value("step").toInt(-1), 0) << qPrintable(run.err());
    int number = 0;
    step(run, "select", ++number);
    step(run, "select", ++number);
    QJsonObject screen;
    for (int i = 0; i < 20 && player(screen).value("state").toString() != "error"; ++i)
        screen = step(run, "wait 250", ++number);
    ASSERT_EQ(player(screen).value("state").toString(), "error") << qPrintable(run.err());
    EXPECT_FALSE(player(screen).value("error").toString().isEmpty());
    const QJsonObject back = step(run, "down", ++number);
    EXPECT_EQ(back.value("label").toString(), "VireoApplianceController");
    EXPECT_EQ(titles(back), QStringList({ "Broken", "Settings" }));
    run.closeInput();
    EXPECT_EQ(run.finish(), 0) << qPrintable(run.err());
}

// A plugin that does not load is named and skipped; SIGINT ends a run still waiting
// for input.
TEST_F(MediashellRun, ABrokenPluginIsNamedAndTheShellGoesOn)
{
    ASSERT_TRUE(QDir(m_dir.path()).mkpath("plugins"));
    QFile broken(path("plugins/libbroken.so"));
    ASSERT_TRUE(broken.open(QIODevice::WriteOnly));
    broken.write("not a library\n");
    broken.close();
    ShellRun run(shellArguments({ "--appliances", path("plugins"), "--script", "-", "--dump" }),
        environment());
    ASSERT_TRUE(run.started());
    const QJsonObject top = run.nextLine();
    ASSERT_EQ(top.value("step").toInt(-1), 0) << qPrintable(run.err());
    EXPECT_EQ(titles(top), QStringList({ "Vireo Movies" }));
    ::kill(pid_t(run.pid()), SIGINT);
    EXPECT_EQ(run.finish(), 0) << qPrintable(run.err());
    EXPECT_TRUE(run.err().contains(path("plugins/libbroken.so"))) << qPrintable(run.err());
}

TEST_F(MediashellRun, VersionHelpAndBadOptionsNeedNoDisplay)
{
    ShellRun version({ "--version" }, environment(false));
    EXPECT_EQ(version.finish(), 0);
    ShellRun help({ "--help" }, environment(false));
    EXPECT_EQ(help.finish(), 0);
    ShellRun bad({ "--no-such-option" }, environment(false));
    EXPECT_EQ(bad.finish(), 2);
    EXPECT_TRUE(bad.err().contains("unknown option --no-such-option")) << qPrintable(bad.err());
}
