// The real program, run as the user would run it: scripted, on an X server of the
// test's own (Xvfb), over a demo library made by vireoctl and the local trailer feed
// service (vireo-feedd). Every run is bounded; a run that hangs loses its whole
// process group.
#include "FeeddProcess.h"

#include <gtest/gtest.h>

#include <QColor>
#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QImage>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLocalServer>
#include <QLocalSocket>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>
#include <QWebSocket>

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
        // No system bus: in kiosk mode logind cannot be asked, and allows nothing.
        env.insert("DBUS_SYSTEM_BUS_ADDRESS", "unix:path=" + path("runtime/no-bus"));
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

// Debian's chromium without a window, as root, on a profile of its own, driven over the
// DevTools protocol: Runtime.evaluate reads and fills the page, Input events press its
// buttons as a finger would.
class Chromium {
public:
    explicit Chromium(const QString& url)
    {
        start(m_process, "chromium",
            { "--headless=new", "--no-sandbox", "--disable-gpu", "--no-first-run",
                "--disable-background-networking", "--disable-component-update", "--disable-sync",
                "--user-data-dir=" + m_profile.path(), "--remote-debugging-port=0", url });
    }
    ~Chromium() { killGroup(m_process); }

    // Connects to the page's DevTools socket; false when it is not there in time.
    bool attach()
    {
        QByteArray port;
        for (int waited = 0; port.isEmpty() && waited < 30'000; waited += 100) {
            QFile file(m_profile.filePath("DevToolsActivePort"));
            if (file.open(QIODevice::ReadOnly))
                port = file.readLine().trimmed();
            QTest::qWait(100);
        }
        QNetworkAccessManager network;
        for (int tries = 0; !port.isEmpty() && m_page.isEmpty() && tries < 50; ++tries) {
            std::unique_ptr<QNetworkReply> reply(
                network.get(QNetworkRequest(QUrl("http://127.0.0.1:" + port + "/json/list"))));
            (void)QTest::qWaitFor([&] { return reply->isFinished(); }, 5000);
            for (const QJsonValue target : QJsonDocument::fromJson(reply->readAll()).array()) {
                const QJsonObject page = target.toObject();
                if (page["type"] == "page" && page["url"].toString().startsWith("http:"))
                    m_page = page["webSocketDebuggerUrl"].toString();
            }
            QTest::qWait(100);
        }
        QObject::connect(&m_socket, &QWebSocket::textMessageReceived, [this](const QString& text) {
            const QJsonObject message = QJsonDocument::fromJson(text.toUtf8()).object();
            if (message.contains("id"))
                m_replies.insert(message["id"].toInt(), message);
        });
        m_socket.open(QUrl(m_page));
        return QTest::qWaitFor(
            [this] { return m_socket.state() == QAbstractSocket::ConnectedState; }, 10'000);
    }
    // The value of `expression` in the page.
    QJsonValue evaluate(const QString& expression)
    {
        return call("Runtime.evaluate", { { "expression", expression }, { "returnByValue", true } })
            .value("result")
            .toObject()
            .value("value");
    }
    // The value of `expression`, once it is `expected` (or at the time limit).
    QJsonValue waitFor(const QString& expression, const QJsonValue& expected)
    {
        QJsonValue value = evaluate(expression);
        for (int waited = 0; waited < 15'000 && value != expected; waited += 100) {
            QTest::qWait(100);
            value = evaluate(expression);
        }
        return value;
    }
    // Presses and releases the mouse on the page's element `selector`.
    void press(const QString& selector)
    {
        const QJsonValue at = evaluate(QStringLiteral(
            "(() => { const r = document.querySelector('%1').getBoundingClientRect();"
            " return [r.x + r.width / 2, r.y + r.height / 2]; })()")
                                           .arg(selector));
        for (const char* type : { "mousePressed", "mouseReleased" })
            call("Input.dispatchMouseEvent",
                { { "type", type }, { "x", at[0] }, { "y", at[1] }, { "button", "left" },
                    { "clickCount", 1 } });
    }

private:
    QJsonObject call(const QString& method, const QJsonObject& params)
    {
        const int id = ++m_calls;
        m_socket.sendTextMessage(
            QJsonDocument(QJsonObject { { "id", id }, { "method", method }, { "params", params } })
                .toJson(QJsonDocument::Compact));
        (void)QTest::qWaitFor([&] { return m_replies.contains(id); }, 10'000);
        return m_replies.take(id).value("result").toObject();
    }

    QTemporaryDir m_profile;
    QProcess m_process;
    QString m_page;
    QWebSocket m_socket;
    QHash<int, QJsonObject> m_replies;
    int m_calls = 0;
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
    QFile subtitles(path("home/Movies/Studio iMac/Night Ferry.srt"));
    ASSERT_TRUE(subtitles.open(QIODevice::WriteOnly));
    subtitles.write("1\n00:00:00,000 --> 00:00:40,000\nFerry\n\n");
    subtitles.close();
    // A movie whose cover is a FIFO, which a plain read would wait on for ever.
    QFile(path("home/Movies/Fifo.m4v")).open(QIODevice::WriteOnly);
    ASSERT_EQ(::mkfifo(QFile::encodeName(path("home/Movies/Fifo.png")).constData(), 0600), 0);
    // A lircd of the test's own, whose red button the keys file binds to "down", beside
    // an HDMI-CEC section that is no table.
    QLocalServer lircd;
    ASSERT_TRUE(lircd.listen(path("lircd")) && QDir().mkpath(path("config/mediashell")));
    for (const auto& [name, content] :
        { std::pair { "mediashell.conf", "[lirc]\nsocket=" + path("lircd") },
            std::pair {
                "keys.json", QStringLiteral(R"({"lirc": {"KEY_RED": "down"}, "cec": 5})") } }) {
        QFile file(path("config/mediashell/") + name);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.write(content.toUtf8()) > 0);
    }
    run({ "--size", "960x540", "--script", "-", "--dump", "--screenshots", path("shots") });

    const QJsonObject top = nextLine();
    ASSERT_EQ(top.value("step").toInt(-1), 0) << err();
    EXPECT_EQ(titles(top), QStringList({ "Vireo Movies", "Vireo Trailers", "Power" }));
    EXPECT_EQ(strings(top, "rows", "kind"), QStringList({ "folder", "folder", "folder" }));
    EXPECT_EQ(top.value("preview").toObject().value("image"), ":/vireo-movies/ApplianceIcon.png");
    EXPECT_FALSE(mapsLibmpv(m_shell.processId())) << "libmpv is not loaded before the first frame";
    EXPECT_EQ(strings(step("menu"), "stack"), QStringList({ "ShellMenu" }))
        << "menu at the top does nothing";
    // ... but it is opened soon after, while the menu sits idle.
    waitFor(10'000, [&](const QJsonObject&) { return mapsLibmpv(m_shell.processId()); });
    EXPECT_TRUE(mapsLibmpv(m_shell.processId()));
    // On a desktop the way out is Quit alone.
    focusOn(top, "Power");
    EXPECT_EQ(titles(step("select")), QStringList { "Quit" });
    step("menu");
    step("up");
    step("up");

    ASSERT_TRUE(lircd.waitForNewConnection(10'000));
    QLocalSocket* remote = lircd.nextPendingConnection();
    remote->write("0000000000000001 00 KEY_RED devinput\n");
    remote->waitForBytesWritten(1000);
    const QJsonObject trailers = waitFor(
        5'000, [](const QJsonObject& screen) { return screen.value("focus").toInt() == 1; });
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

    // The overlay, then its track menu once mpv has listed the tracks: the subtitles
    // beside the movie, turned off.
    QJsonObject menu = step("info");
    EXPECT_EQ(player(menu).value("overlay"), "full");
    for (int tries = 0; tries < 20 && player(menu).value("trackMenu").isNull(); ++tries) {
        step("wait 250");
        menu = step("select");
    }
    step("down");
    step("select");
    const auto offChosen = [](const QJsonObject& screen) {
        const QJsonObject tracks = player(screen).value("trackMenu").toObject();
        return strings(tracks, "rows", "title") == QStringList({ "Night Ferry.srt", "Off" })
            && tracks.value("rows").toArray().at(1).toObject().value("selected").toBool();
    };
    EXPECT_TRUE(offChosen(waitFor(5'000, offChosen))) << err();
    step("menu");

    // Told to quit while playing, the shell hands the resume point over first.
    const QJsonObject quitting = step("right");
    ::kill(pid_t(m_shell.processId()), SIGTERM);
    EXPECT_EQ(finish(), 0) << err();
    // No HDMI-CEC here: one line, and the shell went on.
    EXPECT_NE(err().find("HDMI-CEC"), std::string::npos);
    EXPECT_NE(err().find("ignoring the \"cec\" section"), std::string::npos);
    const qint64 kept = QJsonDocument::fromJson(
        vireoctl({ "--json", "asset", path("home/Movies/Studio iMac/Night Ferry.m4v") }))
                            .object()
                            .value("bookmarkMS")
                            .toInteger(-1);
    EXPECT_NEAR(kept, player(quitting).value("positionMS").toInteger(), 1500);
}

// An idle menu dims to the clock (the top menu's rows have icons, not covers); the key
// that wakes it moves nothing.
TEST_F(MediashellRun, AnIdleMenuDimsAndTheFirstKeyOnlyWakesIt)
{
    ASSERT_TRUE(QDir(path("config")).mkpath("mediashell"));
    QFile settings(path("config/mediashell/mediashell.conf"));
    ASSERT_TRUE(settings.open(QIODevice::WriteOnly));
    settings.write("[screensaver]\nidleSeconds=1\n");
    settings.close();
    run({ "--script", "-", "--dump" });
    ASSERT_EQ(nextLine().value("screensaver").toObject().value("dimmed"), false) << err();
    step("down");
    const QJsonObject dimmed = waitFor(10'000, [](const QJsonObject& screen) {
        return screen.value("screensaver").toObject().value("dimmed").toBool();
    });
    EXPECT_EQ(dimmed.value("screensaver").toObject().value("shows"), "clock") << err();
    const QJsonObject woken = step("up");
    EXPECT_EQ(woken.value("focus"), 1);
    EXPECT_EQ(woken.value("screensaver").toObject().value("dimmed"), false);
    EXPECT_EQ(step("up").value("focus"), 0);
    m_shell.write("quit\n");
    EXPECT_EQ(finish(), 0) << err();
}

// The phone remote's page in a real browser: it pairs with the code the TV shows,
// presses buttons that move the shell's focus and open an appliance, and follows the
// screen; "Pair a New Phone" in the top menu makes it pair again.
TEST_F(MediashellRun, PhoneRemotePairsInChromiumAndDrivesTheShell)
{
    if (QStandardPaths::findExecutable("chromium").isEmpty())
        GTEST_SKIP() << "chromium is not installed (scripts/install-deps installs it)";
    int argc = 1;
    char name[] = "tst_mediashell_run";
    char* argv[] = { name, nullptr };
    QCoreApplication app(argc, argv);
    run({ "--remote-port", "0", "--script", "-", "--dump" });
    const QJsonObject top = nextLine();
    ASSERT_EQ(top.value("step").toInt(-1), 0) << err();
    EXPECT_EQ(
        titles(top), QStringList({ "Vireo Movies", "Vireo Trailers", "Phone Remote", "Power" }));
    const auto remote = [](const QJsonObject& screen) { return screen["remote"].toObject(); };
    EXPECT_EQ(remote(top)["pairingCode"], QJsonValue()) << "no browser waits yet";

    Chromium chromium(QStringLiteral("http://127.0.0.1:%1/").arg(remote(top)["port"].toInt()));
    ASSERT_TRUE(chromium.attach());
    const QString code = remote(waitFor(20'000,
        [&](const QJsonObject& screen) {
            return remote(screen)["pairingCode"].isString();
        }))["pairingCode"]
                             .toString();
    ASSERT_EQ(code.size(), 4) << err();
    chromium.evaluate("document.getElementById('code').value = '" + code
        + "'; document.getElementById('pairing').requestSubmit()");
    EXPECT_EQ(chromium.waitFor("document.getElementById('focused').textContent", "Vireo Movies"),
        "Vireo Movies");
    const QJsonObject paired = remote(step("wait 100"));
    EXPECT_EQ(paired["paired"], 1);
    EXPECT_EQ(paired["pairingCode"], QJsonValue()) << "the code is used up";

    chromium.press("[data-action=down]");
    EXPECT_EQ(waitFor(5000, [](const QJsonObject& s) { return s["focus"] == 1; })["focus"], 1);
    EXPECT_EQ(chromium.waitFor("document.getElementById('focused').textContent", "Vireo Trailers"),
        "Vireo Trailers");
    chromium.press("[data-action=up]");
    chromium.press("[data-action=select]");
    const QJsonObject movies
        = waitFor(5000, [](const QJsonObject& s) { return strings(s, "stack").size() == 2; });
    EXPECT_EQ(movies["label"], "VireoApplianceController") << err();

    focusOn(step("menu"), "Phone Remote");
    EXPECT_EQ(step("select")["title"], "Phone Remote");
    const QJsonObject again = step("select");
    EXPECT_EQ(remote(again)["paired"], 0);
    EXPECT_TRUE(remote(again)["pairingCode"].isString());
    EXPECT_EQ(chromium.waitFor("document.getElementById('pairing').hidden", false), false);
    m_shell.write("quit\n");
    EXPECT_EQ(finish(), 0) << err();
}

// On a box, "Restart Shell" starts the program again in the same process, which goes
// on reading the script; with no logind to allow more, Quit is the other row.
TEST_F(MediashellRun, KioskRestartsTheShellAndQuits)
{
    run({ "--kiosk", "--script", "-", "--dump" });
    const QJsonObject top = nextLine();
    ASSERT_EQ(top.value("step").toInt(-1), 0) << err();
    focusOn(top, "Power");
    EXPECT_EQ(titles(step("select")), QStringList({ "Restart Shell", "Quit" }));
    m_shell.write("select\n");
    const QJsonObject again = nextLine();
    EXPECT_EQ(again.value("step").toInt(-1), 0) << err();
    m_steps = 0;
    focusOn(again, "Power");
    step("select");
    step("down");
    m_shell.write("select\n");
    EXPECT_EQ(finish(), 0) << err();
}

} // namespace
