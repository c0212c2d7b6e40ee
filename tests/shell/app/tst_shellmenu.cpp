#include "LogCapture.h"
#include "PacedSimulatedPlayer.h"
#include "Shell.h"
#include "ShellMenu.h"

#include "toolkit/player/VideoPlayerFactory.h"
#include "video/MpvVideoPlayer.h"

#include <gtest/gtest.h>

#include <QTemporaryDir>

using mediashell::Shell;
using mediashell::ShellMenu;
using mediashell::ShellOptions;

namespace {

QStringList titles(ShellMenu& menu)
{
    QStringList titles;
    for (long row = 0; row < menu.itemCount(); ++row)
        titles.append(menu.titleForRow(row));
    return titles;
}

class ShellMenuTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        // Vireo Movies reads the library under the home folder: an empty one.
        qputenv("HOME", m_home.path().toLocal8Bit());
        m_options.applianceDirs = { QStringLiteral(FIXTURE_PLUGIN_DIR) };
    }
    void TearDown() override { qputenv("HOME", m_savedHome); }

    QByteArray m_savedHome = qgetenv("HOME");
    QTemporaryDir m_home;
    ShellOptions m_options;
    LogCapture m_log;
};

TEST_F(ShellMenuTest, RowsComeFromThePluginsThatLoadInSortOrderAndTheRestAreNamed)
{
    Shell shell(m_options);
    shell.loadAppliances();
    ShellMenu& menu = *shell.topMenu();
    // Zulu (1), Alpha and Beta (2, by name), then Vireo Movies (10) and Vireo Trailers
    // (20) from the build tree; "Power" after them all.
    EXPECT_EQ(titles(menu),
        QStringList({ "Zulu", "Alpha", "Beta", "Vireo Movies", "Vireo Trailers", "Power" }));
    // Each Vireo appliance brings its own icon.
    EXPECT_TRUE(menu.iconForRow(0).isNull());
    EXPECT_FALSE(menu.iconForRow(3).isNull());
    EXPECT_NE(menu.iconForRow(3), menu.iconForRow(4));

    for (const char* broken :
        { "empty", "foreign", "nameless", "fractional", "unresolved", "plainlib", "text" }) {
        const QString path = QStringLiteral(FIXTURE_PLUGIN_DIR "/libappliance_%1.so").arg(broken);
        EXPECT_EQ(shell.failures().filter(path).size(), 1) << broken;
        EXPECT_EQ(LogCapture::containing("Skipping the appliance plugin " + path).size(), 1);
    }
}

TEST_F(ShellMenuTest, FoldersComeInOrderAndEachOnce)
{
    m_options.applianceDirs.append(QStringLiteral(FIXTURE_PLUGIN_DIR "/../plugins"));
    const QStringList folders = Shell::applianceFolders(m_options);
    ASSERT_GE(folders.size(), 3);
    EXPECT_EQ(folders.at(0), QStringLiteral(FIXTURE_PLUGIN_DIR));
    EXPECT_EQ(folders.at(1), QStringLiteral(BUILD_APPLIANCE_DIR));
    EXPECT_TRUE(folders.last().endsWith("/lib/mediashell/appliances"))
        << qPrintable(folders.last());
    EXPECT_EQ(folders.filter("plugins").size(), 1);
}

TEST_F(ShellMenuTest, ThePlayerIsMpvWhenItCanStartElseTheSimulatedOne)
{
    Shell::installVideoPlayer();
    const auto player = shell::VideoPlayerFactory::create();
    if (mediashell::MpvVideoPlayer::isAvailable())
        EXPECT_TRUE(qobject_cast<mediashell::MpvVideoPlayer*>(player.get()));
    else
        EXPECT_EQ(LogCapture::containing("playing with the simulated player").size(), 1);
    qputenv("MEDIASHELL_VIDEO", "simulated");
    Shell::installVideoPlayer();
    qunsetenv("MEDIASHELL_VIDEO");
    EXPECT_TRUE(
        qobject_cast<mediashell::PacedSimulatedPlayer*>(shell::VideoPlayerFactory::create().get()));
    shell::VideoPlayerFactory::setCreator({});
}

} // namespace
