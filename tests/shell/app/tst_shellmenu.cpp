#include "LogCapture.h"
#include "PacedSimulatedPlayer.h"
#include "Shell.h"
#include "ShellMenu.h"

#include "toolkit/appliance/Appliance.h"
#include "toolkit/appliance/NotificationCenter.h"
#include "toolkit/media/XmlMediaAsset.h"
#include "toolkit/menus/MenuItem.h"
#include "toolkit/player/VideoPlayerFactory.h"
#include "toolkit/scene/Scene.h"
#include "toolkit/stack/ControllerStack.h"
#include "toolkit/stack/Sentinel.h"
#include "video/MpvVideoPlayer.h"

#include <gtest/gtest.h>

#include <QElapsedTimer>
#include <QJsonArray>
#include <QTemporaryDir>
#include <QTest>

using mediashell::Shell;
using mediashell::ShellMenu;
using mediashell::ShellOptions;
using shell::RemoteAction;

namespace {

// An appliance made in the test, for orders the fixture plugins do not cover.
class TestAppliance : public shell::Appliance {
public:
    explicit TestAppliance(const QString& name)
        : m_name(name)
        , m_bundle(QStringLiteral(":/no-such-bundle"))
    {
    }
    QString moduleName() const override { return m_name; }
    QString moduleKey() const override { return QStringLiteral("test.") + m_name; }
    QString moduleIconName() const override { return QStringLiteral("Icon.png"); }
    const shell::Bundle& bundle() const override { return m_bundle; }
    std::unique_ptr<shell::LayerController> applianceControllerWithScene(
        shell::Scene& scene) override
    {
        ++entered;
        return std::make_unique<shell::LayerController>(scene);
    }
    int entered = 0;

private:
    QString m_name;
    shell::Bundle m_bundle;
};

class ShellMenuTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_TRUE(m_home.isValid());
        // Vireo Movies reads the library under the home folder: an empty one.
        m_savedHome = qgetenv("HOME");
        qputenv("HOME", m_home.path().toLocal8Bit());
        LogCapture::lines().clear();
    }
    void TearDown() override { qputenv("HOME", m_savedHome); }

    static ShellOptions fixtureOptions()
    {
        ShellOptions options;
        options.applianceDirs = { QStringLiteral(FIXTURE_PLUGIN_DIR) };
        return options;
    }
    static QStringList titles(ShellMenu& menu)
    {
        QStringList titles;
        for (long row = 0; row < menu.itemCount(); ++row)
            titles.append(menu.titleForRow(row));
        return titles;
    }

    QTemporaryDir m_home;
    QByteArray m_savedHome;
    LogCapture m_log;
};

} // namespace

TEST_F(ShellMenuTest, RowsComeFromTheLoadedPluginsInSortOrder)
{
    Shell shell(fixtureOptions());
    shell.loadAppliances();
    ShellMenu* menu = shell.topMenu();
    ASSERT_NE(menu, nullptr);
    // Zulu (1), Alpha and Beta (2, by name), then Vireo Movies (10) and Vireo Trailers
    // (20) from the build tree.
    EXPECT_EQ(
        titles(*menu), QStringList({ "Zulu", "Alpha", "Beta", "Vireo Movies", "Vireo Trailers" }));
    for (long row = 0; row < menu->itemCount(); ++row) {
        const auto item = menu->itemForRow(row);
        ASSERT_NE(item, nullptr);
        EXPECT_EQ(item->kind(), shell::MenuItem::Kind::Folder);
        EXPECT_TRUE(item->hasArrow());
    }
    EXPECT_EQ(menu->itemForRow(5), nullptr);
    EXPECT_EQ(menu->rowForTitle("Beta"), 2);

    const QJsonObject described = shell.stack()->describeTop();
    EXPECT_EQ(described.value("label").toString(), "ShellMenu");
    EXPECT_EQ(described.value("kind").toString(), "menu");
    EXPECT_EQ(described.value("stack").toArray(), QJsonArray({ "ShellMenu" }));
    EXPECT_EQ(described.value("focus").toInt(), 0);
    for (const QJsonValue& row : described.value("rows").toArray())
        EXPECT_EQ(row.toObject().value("kind").toString(), "folder");

    // Each Vireo appliance brings its own icon, for the row and the preview.
    EXPECT_TRUE(menu->iconForRow(0).isNull());
    EXPECT_FALSE(menu->iconForRow(3).isNull());
    EXPECT_FALSE(menu->iconForRow(4).isNull());
    EXPECT_NE(menu->iconForRow(3), menu->iconForRow(4));
    const struct {
        long row;
        const char* title;
        const char* image;
    } vireo[] = { { 3, "Vireo Movies", ":/vireo-movies/ApplianceIcon.png" },
        { 4, "Vireo Trailers", ":/vireo-trailers/ApplianceIcon.png" } };
    for (const auto& c : vireo) {
        menu->setFocusedRow(c.row);
        const QJsonObject preview = menu->describe().value("preview").toObject();
        EXPECT_EQ(preview.value("title").toString(), c.title);
        EXPECT_EQ(preview.value("image").toString(), c.image);
    }
}

TEST_F(ShellMenuTest, PluginsThatFailAreNamedAndSkipped)
{
    Shell shell(fixtureOptions());
    shell.loadAppliances();
    const QStringList failures = shell.failures();
    for (const char* broken : { "libappliance_empty.so", "libappliance_foreign.so",
             "libappliance_nameless.so", "libappliance_fractional.so", "libappliance_unresolved.so",
             "libappliance_plainlib.so", "libappliance_text.so" }) {
        const QString path = QStringLiteral(FIXTURE_PLUGIN_DIR "/") + QLatin1String(broken);
        EXPECT_EQ(failures.filter(path).size(), 1) << broken;
        EXPECT_EQ(LogCapture::containing("Skipping the appliance plugin " + path).size(), 1)
            << broken;
    }
    EXPECT_EQ(shell.topMenu()->itemCount(), 5);
}

TEST_F(ShellMenuTest, FoldersComeInOrderAndEachOnce)
{
    ShellOptions options = fixtureOptions();
    options.applianceDirs.append(QStringLiteral(FIXTURE_PLUGIN_DIR "/../plugins"));
    const QStringList folders = Shell::applianceFolders(options);
    ASSERT_GE(folders.size(), 3);
    EXPECT_EQ(folders.at(0), QStringLiteral(FIXTURE_PLUGIN_DIR));
    EXPECT_EQ(folders.at(1), QStringLiteral(BUILD_APPLIANCE_DIR));
    EXPECT_TRUE(folders.last().endsWith("/lib/mediashell/appliances"))
        << qPrintable(folders.last());
    EXPECT_EQ(folders.filter("plugins").size(), 1);
}

TEST_F(ShellMenuTest, SelectEntersTheApplianceAndMenuComesBack)
{
    Shell shell(fixtureOptions());
    shell.loadAppliances();
    shell::ControllerStack& stack = *shell.stack();
    EXPECT_EQ(shell::Sentinel::shared().objectForKey("controllerStack"), &stack);

    for (int i = 0; i < 3; ++i)
        shell.performAction(RemoteAction::Down);
    EXPECT_EQ(shell.topMenu()->focusedRow(), 3);
    shell.performAction(RemoteAction::Select);
    EXPECT_EQ(stack.labels(), QStringList({ "ShellMenu", "VireoApplianceController" }));
    shell.performAction(RemoteAction::Menu);
    EXPECT_EQ(stack.labels(), QStringList({ "ShellMenu" }));
    EXPECT_EQ(shell.topMenu()->focusedRow(), 3) << "the focus stays on the appliance left";

    shell.performAction(RemoteAction::Up);
    shell.performAction(RemoteAction::Up);
    shell.performAction(RemoteAction::Up);
    shell.performAction(RemoteAction::Select);
    EXPECT_EQ(stack.labels(), QStringList({ "ShellMenu", "LayerController" })) << "Zulu's screen";
}

TEST_F(ShellMenuTest, MenuAtTheTopDoesNothing)
{
    Shell shell(fixtureOptions());
    shell.loadAppliances();
    shell::ControllerStack& stack = *shell.stack();
    shell.performAction(RemoteAction::Down);
    const QJsonObject before = stack.describeTop();
    EXPECT_TRUE(stack.handleAction(RemoteAction::Menu));
    shell.performAction(RemoteAction::Menu);
    EXPECT_EQ(stack.count(), 1);
    EXPECT_EQ(stack.topController(), shell.topMenu());
    EXPECT_EQ(stack.describeTop(), before);
}

TEST_F(ShellMenuTest, OrdersBySortOrderThenNameAndFallsBackToTheMetadataName)
{
    TestAppliance b("b-second"), a("A-first"), z("z-top"), unnamed("");
    shell::Scene scene;
    shell::ControllerStack stack;
    auto owned = std::make_unique<ShellMenu>(scene,
        std::vector<ShellMenu::Entry> { { &b, "b-second", 5 }, { &unnamed, "From Metadata", 7 },
            { &a, "A-first", 5 }, { &z, "z-top", -1 }, { nullptr, "dropped", 0 } });
    ShellMenu* menu = owned.get();
    stack.pushController(std::move(owned));
    EXPECT_EQ(titles(*menu), QStringList({ "z-top", "A-first", "b-second", "From Metadata" }));
    EXPECT_EQ(menu->applianceAt(1), &a);
    EXPECT_EQ(menu->applianceAt(4), nullptr);

    stack.handleAction(RemoteAction::Down);
    stack.handleAction(RemoteAction::Select);
    EXPECT_EQ(a.entered, 1);
    EXPECT_EQ(stack.count(), 2);
    // No icon in the bundle: the preview falls back to the asset's cover art.
    stack.popController();
    EXPECT_TRUE(menu->iconForRow(1).isNull());
    EXPECT_EQ(menu->describe().value("preview").toObject().value("title").toString(), "A-first");
}

TEST_F(ShellMenuTest, TerminationPostsTheNoticeBeforeTheStackGoes)
{
    Shell shell(fixtureOptions());
    shell.loadAppliances();
    int notices = 0;
    int stackDepthAtNotice = -1;
    const int marker = 0;
    shell::NotificationCenter::defaultCenter().addObserver(&marker,
        shell::NotificationCenter::applicationWillTerminate(), [&](const QString&, QObject*) {
            ++notices;
            const auto* stack = qobject_cast<shell::ControllerStack*>(
                shell::Sentinel::shared().objectForKey("controllerStack"));
            stackDepthAtNotice = stack ? stack->count() : -1;
        });
    shell.performAction(RemoteAction::Select);
    shell.terminate();
    shell.terminate();
    shell::NotificationCenter::defaultCenter().removeObserver(&marker);
    EXPECT_EQ(notices, 1);
    EXPECT_EQ(stackDepthAtNotice, 2);
    EXPECT_EQ(shell.stack(), nullptr);
    EXPECT_EQ(shell::Sentinel::shared().objectForKey("controllerStack"), nullptr);
}

TEST_F(ShellMenuTest, ThePlayerIsMpvWhenItCanStartElseTheSimulatedOne)
{
    qputenv("MEDIASHELL_VIDEO", "simulated");
    Shell::installVideoPlayer();
    std::unique_ptr<shell::VideoPlayer> player = shell::VideoPlayerFactory::create();
    EXPECT_NE(qobject_cast<mediashell::PacedSimulatedPlayer*>(player.get()), nullptr);

    qunsetenv("MEDIASHELL_VIDEO");
    Shell::installVideoPlayer();
    player = shell::VideoPlayerFactory::create();
    if (mediashell::MpvVideoPlayer::isAvailable()) {
        EXPECT_NE(qobject_cast<mediashell::MpvVideoPlayer*>(player.get()), nullptr);
    } else {
        EXPECT_NE(qobject_cast<mediashell::PacedSimulatedPlayer*>(player.get()), nullptr);
        EXPECT_EQ(LogCapture::containing("playing with the simulated player").size(), 1);
    }
    shell::VideoPlayerFactory::setCreator({});
}

TEST_F(ShellMenuTest, TheSimulatedPlayerKeepsTimeWhilePlaying)
{
    mediashell::PacedSimulatedPlayer player;
    auto asset = std::make_shared<shell::XmlMediaAsset>();
    asset->setValue("duration", 600);
    asset->setValue("mediaURL", "file:///nowhere/movie.m4v");
    ASSERT_TRUE(player.setMedia(asset, nullptr));
    player.play();
    QElapsedTimer clock;
    clock.start();
    QTest::qWait(700);
    const qint64 elapsed = clock.elapsed();
    EXPECT_GE(player.positionMS(), 250);
    EXPECT_LE(player.positionMS(), elapsed + 50);
    player.pause();
    const qint64 paused = player.positionMS();
    QTest::qWait(400);
    EXPECT_EQ(player.positionMS(), paused);
}
