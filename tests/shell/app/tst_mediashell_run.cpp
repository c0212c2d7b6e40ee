// The real program, run as the user would run it: scripted, on an X server of the
// test's own (Xvfb), over a demo library made by vireoctl and the local trailer feed
// service (vireo-feedd). Every run is bounded; a run that hangs loses its whole
// process group.
#include "FeeddProcess.h"

#include <gtest/gtest.h>

#include <QColor>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QImage>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>

#include <csignal>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr int kRunLimitMS = 90'000;

// The child gets a process group of its own, so that a hung run can be killed whole,
// and is killed should the test program die first.
void start(QProcess& process, const QString& program, const QStringList& arguments)
{
    process.setChildProcessModifier([] {
        ::setpgid(0, 0);
        ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    });
    process.start(program, arguments);
}

void killGroup(QProcess& process)
{
    if (process.state() != QProcess::NotRunning && process.processId() > 0)
        ::kill(-pid_t(process.processId()), SIGKILL);
    process.waitForFinished(5000);
}

QStringList strings(const QJsonObject& screen, const char* list, const char* field = nullptr)
{
    QStringList strings;
    for (const QJsonValue& value : screen.value(QLatin1String(list)).toArray())
        strings.append(
            field ? value.toObject().value(QLatin1String(field)).toString() : value.toString());
    return strings;
}

QStringList titles(const QJsonObject& screen)
{
    return strings(screen, "rows", "title");
}

QJsonObject player(const QJsonObject& screen)
{
    return screen.value("player").toObject();
}

// One X server and one feed service for the test program; a fresh home, configuration
// and runtime folder for each test, and one run of mediashell at a time: its input
// fed as it goes, its dump lines read as they come.
class MediashellRun : public ::testing::Test {
protected:
    static void SetUpTestSuite()
    {
        s_feed = new FeeddProcess(QStringLiteral(VIREO_FEEDD_BIN));
        s_xvfb = new QProcess;
        start(*s_xvfb, "Xvfb",
            { "-displayfd", "1", "-screen", "0", "1280x720x24", "-nolisten", "tcp" });
        QByteArray number;
        while (!number.contains('\n') && s_xvfb->waitForReadyRead(20'000))
            number += s_xvfb->readAllStandardOutput();
        s_display = ":" + QString::fromLatin1(number.trimmed());
        s_base = s_feed->waitForBase();
    }
    static void TearDownTestSuite()
    {
        killGroup(*s_xvfb);
        delete s_xvfb;
        delete s_feed;
    }
    void SetUp() override
    {
        ASSERT_NE(s_display, ":") << "Xvfb did not start (scripts/install-deps installs xvfb)";
        for (const char* folder : { "home/Movies", "user", "config", "runtime" })
            ASSERT_TRUE(QDir(m_dir.path()).mkpath(QLatin1String(folder)));
        QFile::setPermissions(path("runtime"),
            QFileDevice::ExeOwner | QFileDevice::ReadOwner | QFileDevice::WriteOwner);
    }
    void TearDown() override { killGroup(m_shell); }

    QString path(const QString& name) const { return m_dir.filePath(name); }

    // Starts mediashell on the test's home, on the X server.
    void run(const QStringList& more)
    {
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        for (const char* name :
            { "QT_LOGGING_RULES", "MEDIASHELL_VIDEO", "WAYLAND_DISPLAY", "XAUTHORITY" })
            env.remove(QLatin1String(name));
        env.insert("DISPLAY", s_display);
        env.insert("QT_QPA_PLATFORM", "xcb");
        // Under AddressSanitizer the X11, D-Bus and Mesa libraries behind the window leak
        // a few bytes of their own; the shell's own teardown is leak-checked in process.
        env.insert("ASAN_OPTIONS", env.value("ASAN_OPTIONS") + ":detect_leaks=0");
        // The user's own home is another, empty folder: the library the shell and its
        // plugins show can only come from --home.
        env.insert("HOME", path("user"));
        env.insert("XDG_CONFIG_HOME", path("config"));
        env.insert("XDG_RUNTIME_DIR", path("runtime"));
        env.insert("VIREO_TRAILER_ENDPOINT", s_base);
        m_shell.setProcessEnvironment(env);
        start(m_shell, MEDIASHELL_BIN, QStringList { "--windowed", "--home", path("home") } + more);
        m_clock.start();
    }
    // The next dump line; an empty object when the program ends or the time is up.
    QJsonObject nextLine()
    {
        while (!(m_out += m_shell.readAllStandardOutput()).contains('\n')) {
            if (m_clock.elapsed() > kRunLimitMS || m_shell.state() == QProcess::NotRunning)
                return {};
            m_shell.waitForReadyRead(1000);
        }
        const QByteArray line = m_out.left(m_out.indexOf('\n'));
        m_out.remove(0, line.size() + 1);
        return QJsonDocument::fromJson(line).object();
    }
    // Feeds one step and returns its dump line, which must be the next step's.
    QJsonObject step(const QByteArray& line)
    {
        m_shell.write(line + '\n');
        const QJsonObject screen = nextLine();
        EXPECT_EQ(screen.value("step").toInt(-1), ++m_steps) << line.constData() << " " << err();
        return screen;
    }
    // Moves the focus of `screen`'s list to the row titled `title`; the last dump line.
    QJsonObject focusOn(QJsonObject screen, const QString& title)
    {
        const qsizetype row = titles(screen).indexOf(title);
        EXPECT_GE(row, 0) << qPrintable(title);
        while (row >= 0 && screen.value("focus").toInt(-1) != row && !HasFailure())
            screen = step(screen.value("focus").toInt() < row ? "down" : "up");
        return screen;
    }
    // Steps "wait 250" until `done` holds for the dump line, for at most `ms`.
    template <typename Predicate> QJsonObject waitFor(int ms, Predicate done)
    {
        QJsonObject screen;
        for (int waited = 0; waited < ms && !done(screen); waited += 250)
            screen = step("wait 250");
        return screen;
    }
    // The exit status once the program ends; -1 when the run had to be killed.
    int finish()
    {
        if (!m_shell.waitForFinished(int(std::max<qint64>(1, kRunLimitMS - m_clock.elapsed()))))
            killGroup(m_shell);
        return m_shell.exitStatus() == QProcess::NormalExit ? m_shell.exitCode() : -1;
    }
    std::string err() { return (m_err += m_shell.readAllStandardError()).toStdString(); }
    QByteArray vireoctl(const QStringList& arguments) const
    {
        QProcess process;
        process.start(VIREOCTL_BIN, QStringList { "--home", path("home") } + arguments);
        process.waitForFinished(kRunLimitMS);
        EXPECT_EQ(process.exitCode(), 0) << process.readAllStandardError().toStdString();
        return process.readAllStandardOutput();
    }

    QTemporaryDir m_dir;
    QProcess m_shell;
    QElapsedTimer m_clock;
    QByteArray m_out;
    QByteArray m_err;
    int m_steps = 0;
    static inline QProcess* s_xvfb = nullptr;
    static inline FeeddProcess* s_feed = nullptr;
    static inline QString s_display;
    static inline QString s_base;
};

// libmpv and its libraries are mapped into the running program.
bool mapsLibmpv(qint64 pid)
{
    QFile maps(QStringLiteral("/proc/%1/maps").arg(pid));
    return maps.open(QIODevice::ReadOnly) && maps.readAll().contains("/libmpv.so");
}

// Pixels of strong, bright colour in the left half of a shot, where the preview stands:
// the feed's thumbnails are test patterns, the rest of the preview grey text on a dark
// background (a few hundred such pixels, from the text's smoothing).
int colouredPixelsOfThePreview(const QImage& shot)
{
    int coloured = 0;
    for (int i = 0; i < shot.width() * shot.height() / 2; i += 2) {
        const QColor colour(shot.pixel(i % (shot.width() / 2), i / (shot.width() / 2)));
        coloured += colour.hsvSaturation() > 128 && colour.value() > 96 ? 1 : 0;
    }
    return coloured;
}

// Both appliances, one step at a time: each line is fed once the previous step's dump
// line is out. Vireo Trailers shows a ranked list from the feed service and plays a
// trailer; Vireo Movies previews the demo library, plays a real clip through libmpv,
// stops, offers to resume there, and keeps the resume point when the shell is told to
// quit.
TEST_F(MediashellRun, BothAppliancesFromTheTopMenuToPlaybackAndBack)
{
    ASSERT_FALSE(s_base.isEmpty()) << "vireo-feedd said: " << qPrintable(s_feed->output());
    vireoctl({ "demo" });
    // A third player that never synced, so that two player folders stay after an unpair.
    QFile(path("Dusk.m4v")).open(QIODevice::WriteOnly);
    vireoctl({ "pair", "0123456789ABCDEF0123456789ABCDEF", "--name", "Den" });
    vireoctl({ "add", "0123456789ABCDEF0123456789ABCDEF", path("Dusk.m4v") });
    // The demo's Night Ferry (40 s) as a real clip, red over blue, written through its link.
    QProcess ffmpeg;
    ffmpeg.start("ffmpeg",
        { "-v", "error", "-y", "-f", "lavfi", "-i", "color=c=red:size=160x120:rate=15:duration=40",
            "-vf", "drawbox=y=60:h=60:color=blue:t=fill", "-c:v", "libx264", "-preset", "ultrafast",
            "-pix_fmt", "yuv420p", "-f", "mp4", path("home/Movies/Studio iMac/Night Ferry.m4v") });
    ASSERT_TRUE(ffmpeg.waitForFinished(kRunLimitMS) && ffmpeg.exitCode() == 0);
    // A movie whose cover is a FIFO, which a plain read would wait on for ever.
    QFile(path("home/Movies/Fifo.m4v")).open(QIODevice::WriteOnly);
    ASSERT_EQ(::mkfifo(QFile::encodeName(path("home/Movies/Fifo.png")).constData(), 0600), 0);
    run({ "--size", "960x540", "--script", "-", "--dump", "--screenshots", path("shots") });

    const QJsonObject top = nextLine();
    ASSERT_EQ(top.value("step").toInt(-1), 0) << err();
    EXPECT_EQ(titles(top), QStringList({ "Vireo Movies", "Vireo Trailers" }));
    EXPECT_EQ(strings(top, "rows", "kind"), QStringList({ "folder", "folder" }));
    EXPECT_EQ(top.value("preview").toObject().value("image"), ":/vireo-movies/ApplianceIcon.png");
    EXPECT_FALSE(mapsLibmpv(m_shell.processId())) << "libmpv is not loaded before the first frame";
    EXPECT_EQ(strings(step("menu"), "stack"), QStringList({ "ShellMenu" }))
        << "menu at the top does nothing";
    // ... but it is opened soon after, while the menu sits idle.
    waitFor(10'000, [&](const QJsonObject&) { return mapsLibmpv(m_shell.processId()); });
    EXPECT_TRUE(mapsLibmpv(m_shell.processId()));

    const QJsonObject trailers = step("down");
    EXPECT_EQ(
        trailers.value("preview").toObject().value("image"), ":/vireo-trailers/ApplianceIcon.png");
    const QJsonObject lists = step("select");
    EXPECT_EQ(lists.value("label"), "VireoTrailerListsController");
    EXPECT_EQ(titles(lists).value(2), "Top Rated");
    step("down");
    step("down");
    step("select");
    const QJsonObject list = waitFor(10'000, [](const QJsonObject& screen) {
        return screen.value("label") == "VireoTrailerController";
    });
    ASSERT_EQ(list.value("label"), "VireoTrailerController") << err();
    EXPECT_EQ(list.value("title"), "Top Rated");
    const QStringList rows = titles(list);
    ASSERT_GE(rows.size(), 10);
    EXPECT_TRUE(rows.at(9).startsWith("10  ")) << qPrintable(rows.at(9));
    EXPECT_TRUE(
        list.value("preview").toObject().value("image").toString().startsWith(s_base + "/"));
    step("wait 1000");
    step("shot list");
    const QImage shot(path("shots/list.png"));
    EXPECT_EQ(shot.size(), QSize(960, 540));
    EXPECT_GE(colouredPixelsOfThePreview(shot), 3000) << "the thumbnail is shown";
    const QJsonObject trailer = step("select");
    EXPECT_EQ(player(trailer).value("state"), "playing") << err();
    EXPECT_FALSE(player(trailer).value("allowsResume").toBool(true));
    EXPECT_TRUE(player(trailer).value("url").toString().endsWith("x.flv"));
    step("menu");
    step("menu");
    const QJsonObject back = step("menu");
    EXPECT_EQ(strings(back, "stack"), QStringList({ "ShellMenu" }));
    EXPECT_EQ(back.value("focus"), 1) << "the focus stays on the appliance left";

    // Vireo Movies lists in the file system's order.
    step("up");
    const QJsonObject movies = step("select");
    QStringList entries = titles(movies);
    entries.sort();
    EXPECT_EQ(
        entries, QStringList({ "Den", "Fifo", "Living Room Mac", "Settings", "Studio iMac" }));
    // Unpairing the player that did not sync last leaves the latest sync time as it was;
    // the top menu is listed anew all the same, its focus still on "Settings".
    focusOn(movies, "Settings");
    focusOn(step("select"), "Syncing");
    focusOn(step("select"), "Living Room Mac");
    focusOn(step("select"), "Yes, Turn off Syncing from this Vireo Player");
    step("select");
    step("menu");
    const QJsonObject relisted = step("menu");
    entries = titles(relisted);
    entries.sort();
    EXPECT_EQ(entries, QStringList({ "Den", "Fifo", "Settings", "Studio iMac" }));
    EXPECT_EQ(titles(relisted).value(relisted.value("focus").toInt()), "Settings");
    const QJsonObject fifo = focusOn(relisted, "Fifo");
    EXPECT_TRUE(fifo.value("preview").toObject().value("image").toString().endsWith("Fifo.png"));
    step("wait 500");
    focusOn(fifo, "Studio iMac");
    QJsonObject folder = step("select");
    EXPECT_EQ(folder.value("title"), "Studio iMac");
    folder = focusOn(folder, "Night Ferry");
    const QJsonObject preview = folder.value("preview").toObject();
    EXPECT_EQ(preview.value("title"), "Night Ferry");
    EXPECT_TRUE(preview.value("image").toString().endsWith("Night Ferry.png"));
    EXPECT_FALSE(preview.value("cast").toArray().isEmpty());

    const QJsonObject playing = step("select");
    EXPECT_EQ(playing.value("kind"), "player");
    EXPECT_TRUE(player(playing).value("url").toString().endsWith("Night%20Ferry.m4v"))
        << qPrintable(player(playing).value("url").toString());
    step("right");
    const QJsonObject later = waitFor(15'000, [](const QJsonObject& screen) {
        return player(screen).value("positionMS").toInteger() >= 12'000;
    });
    ASSERT_EQ(player(later).value("state"), "playing") << err();
    step("shot playing");
    // The clip through libmpv into the window: its top half red, its bottom half blue.
    const QImage frame(path("shots/playing.png"));
    EXPECT_GT(frame.pixelColor(480, 100).red() - frame.pixelColor(480, 100).blue(), 150);
    EXPECT_GT(frame.pixelColor(480, 440).blue() - frame.pixelColor(480, 440).red(), 150);
    EXPECT_EQ(player(step("playpause")).value("state"), "paused");
    const qint64 stoppedAt = player(later).value("positionMS").toInteger();
    // Back in the folder, the movie's row and preview say where it would resume.
    const QJsonObject stopped = step("menu");
    EXPECT_EQ(strings(stopped, "stack").size(), 3);
    const QJsonObject resume = stopped.value("rows")[titles(stopped).indexOf("Night Ferry")]
                                   .toObject()
                                   .value("resume")
                                   .toObject();
    const qint64 resumeAt = resume.value("position").toInteger();
    EXPECT_NEAR(resumeAt, stoppedAt, 1000);
    EXPECT_EQ(resume.value("duration"), 40'000);
    EXPECT_EQ(stopped.value("preview")["resume"],
        QString("Resume from 0:%1 of 0:40").arg(resumeAt / 1000, 2, 10, QChar('0')));
    const QJsonObject prompt = step("select");
    EXPECT_EQ(player(prompt).value("state"), "prompt");
    EXPECT_EQ(titles(prompt), QStringList({ "Resume Playing", "Start from Beginning" }));
    const QJsonObject resumed = step("select");
    EXPECT_GE(player(resumed).value("positionMS").toInteger(), stoppedAt - 500);

    // Told to quit while playing, the shell hands the resume point over first.
    const QJsonObject quitting = step("right");
    ::kill(pid_t(m_shell.processId()), SIGTERM);
    EXPECT_EQ(finish(), 0) << err();
    const qint64 kept = QJsonDocument::fromJson(
        vireoctl({ "--json", "asset", path("home/Movies/Studio iMac/Night Ferry.m4v") }))
                            .object()
                            .value("bookmarkMS")
                            .toInteger(-1);
    EXPECT_NEAR(kept, player(quitting).value("positionMS").toInteger(), 1500);
}

} // namespace
