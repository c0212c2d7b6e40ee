// The real program, run as the user would run it: scripted, on an X server of the
// test's own (Xvfb), over a demo library made by vireoctl. Every run is bounded; a
// run that hangs loses its whole process group.
#include "MediashellRunSupport.h"

#include <QImage>
#include <QSet>
#include <QUrl>

#include <sys/stat.h>

using namespace runsupport;

namespace {

class MediashellRun : public XvfbRunTest {
protected:
    void makeDemoLibrary()
    {
        QProcess vireoctl;
        vireoctl.start(QStringLiteral(VIREOCTL_BIN), { "--home", home(), "demo" });
        ASSERT_TRUE(vireoctl.waitForFinished(kRunLimitMS));
        ASSERT_EQ(vireoctl.exitCode(), 0) << vireoctl.readAllStandardError().toStdString();
    }

    // A 40 s clip straight in Movies, made by ffmpeg, without metadata, as users copy
    // movies by hand: its running time is only what the player finds. False when
    // ffmpeg is missing or fails.
    bool makeClip(const QString& name)
    {
        if (!QDir(home()).mkpath("Movies"))
            return false;
        QProcess ffmpeg;
        ffmpeg.start("ffmpeg",
            { "-v", "error", "-y", "-f", "lavfi", "-i", "testsrc=duration=40:size=160x120:rate=15",
                "-f", "lavfi", "-i", "sine=duration=40", "-c:v", "libx264", "-preset", "ultrafast",
                "-c:a", "aac", "-shortest", home() + "/Movies/" + name + ".m4v" });
        return ffmpeg.waitForFinished(kRunLimitMS) && ffmpeg.exitCode() == 0;
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

    // libmpv and its libraries are mapped into the running program.
    static bool mapsLibmpv(qint64 pid)
    {
        QFile maps(QStringLiteral("/proc/%1/maps").arg(pid));
        return maps.open(QIODevice::ReadOnly) && maps.readAll().contains("/libmpv.so");
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
};

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
    EXPECT_EQ(titles(top), QStringList({ "Vireo Movies", "Vireo Trailers" }));
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

// Real video through libmpv, of a clip without metadata: a stop at about 15 s lands in
// the cache and a new shell offers to resume there; a kill -9 at about 25 s loses at
// most 10 s. The clip runs 40 s:
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
        EXPECT_FALSE(mapsLibmpv(run.pid())) << "libmpv is not loaded before the first frame";
        int number = 0;
        // ... but it is opened soon after, while the menu sits idle.
        for (int tries = 0; tries < 20 && !mapsLibmpv(run.pid()); ++tries)
            step(run, "wait 500", ++number);
        EXPECT_TRUE(mapsLibmpv(run.pid()));
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

// A cover that is a FIFO would make a plain file read wait for a writer for ever.
TEST_F(MediashellRun, ACoverThatIsAFifoLeavesTheShellAnswering)
{
    ASSERT_TRUE(QDir(home()).mkpath("Movies"));
    for (const QString name : { "First", "Second" }) {
        QFile movie(home() + "/Movies/" + name + ".m4v");
        ASSERT_TRUE(movie.open(QIODevice::WriteOnly));
        const QString cover = home() + "/Movies/" + name + ".png";
        ASSERT_EQ(::mkfifo(QFile::encodeName(cover).constData(), 0600), 0);
    }
    ShellRun run(shellArguments({ "--script", "-", "--dump" }), environment());
    ASSERT_TRUE(run.started());
    ASSERT_EQ(run.nextLine().value("step").toInt(-1), 0) << qPrintable(run.err());
    const QJsonObject first = step(run, "select", 1);
    EXPECT_TRUE(first.value("preview").toObject().value("image").toString().endsWith(".png"));
    EXPECT_EQ(step(run, "down", 2).value("focus").toInt(-1), 1);
    EXPECT_EQ(step(run, "up", 3).value("focus").toInt(-1), 0);
    run.closeInput();
    EXPECT_EQ(run.finish(), 0) << qPrintable(run.err());
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
    EXPECT_EQ(titles(top), QStringList({ "Vireo Movies", "Vireo Trailers" }));
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
    EXPECT_TRUE(bad.err().contains("Unknown option 'no-such-option'.")) << qPrintable(bad.err());
}
