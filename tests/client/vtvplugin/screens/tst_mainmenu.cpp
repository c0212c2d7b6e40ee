#include "../LibraryFixture.h"

#include "foundation/FileSystem.h"
#include "toolkit/appliance/ApplianceLoader.h"
#include "toolkit/appliance/NotificationCenter.h"
#include "toolkit/media/MediaPreviewController.h"
#include "toolkit/media/MetadataPreviewController.h"
#include "toolkit/menus/MenuItem.h"
#include "toolkit/player/SimulatedVideoPlayer.h"
#include "toolkit/player/VideoPlayerController.h"
#include "toolkit/scene/Scene.h"
#include "toolkit/stack/ControllerStack.h"
#include "toolkit/stack/Sentinel.h"
#include "vtvplugin/appliance/ApplianceConfig.h"
#include "vtvplugin/appliance/VireoAppliance.h"
#include "vtvplugin/library/JUtils.h"
#include "vtvplugin/media/VTVMediaAsset.h"
#include "vtvplugin/screens/VireoApplianceController.h"
#include "vtvplugin/store/LibraryPaths.h"
#include "vtvplugin/store/PlaybackPositionCache.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QJsonArray>
#include <QLocale>
#include <QLoggingCategory>

#include <climits>
#include <cstdio>
#include <set>

using shell::RemoteAction;

namespace {

// A movie of ten minutes, so that a resume point a minute in is kept.
const QByteArray kTenMinutes = "<movie><title>Heat</title><duration>600</duration></movie>";

} // namespace

class MainMenuTest : public LibraryFixture {
protected:
    void SetUp() override
    {
        LibraryFixture::SetUp();
        QLoggingCategory::setFilterRules(u"vireo.*.debug=true"_s);
        m_stack = std::make_unique<shell::ControllerStack>();
        m_appliance = std::make_unique<VireoAppliance>();
    }
    // The stack goes first: a player torn down with it still writes its resume point,
    // and that must land in the temporary home.
    void TearDown() override
    {
        m_stack.reset();
        m_appliance.reset();
        LibraryFixture::TearDown();
    }

    VireoApplianceController* menu() const
    {
        return qobject_cast<VireoApplianceController*>(m_stack->topController());
    }
    VireoApplianceController* enter()
    {
        m_stack->pushController(m_appliance->applianceControllerWithScene(m_scene));
        return menu();
    }
    void press(RemoteAction action, long times = 1)
    {
        for (long i = 0; i < times; ++i)
            m_stack->handleAction(action);
    }
    // Down from the top row, as the remote would, then Select.
    void select(long row)
    {
        press(RemoteAction::Down, row);
        press(RemoteAction::Select);
    }
    shell::VideoPlayerController* player() const
    {
        return qobject_cast<shell::VideoPlayerController*>(m_stack->topController());
    }

    static QStringList titles(VireoApplianceController& menu)
    {
        QStringList rows;
        for (long row = 0; row < menu.itemCount(); ++row)
            rows.append(menu.titleForRow(row));
        return rows;
    }
    // The titles (name -> title) in the order the file system lists the names: the
    // order the menu must keep, whatever it is.
    static QStringList inListingOrder(const QString& folder, const QMap<QString, QString>& titles)
    {
        QStringList ordered;
        for (const QString& name : FileSystem::entryNames(folder)) {
            if (titles.contains(name))
                ordered.append(titles.value(name));
        }
        return ordered;
    }
    static void makeFolder(const QString& path) { ASSERT_TRUE(QDir().mkpath(path)); }

    shell::Scene m_scene;
    std::unique_ptr<shell::ControllerStack> m_stack;
    std::unique_ptr<VireoAppliance> m_appliance;
};

TEST_F(MainMenuTest, EveryEntryBuildsAFreshTopMenuNamedFromTheBundle)
{
    const auto first = m_appliance->applianceControllerWithScene(m_scene);
    const auto second = m_appliance->applianceControllerWithScene(m_scene);
    EXPECT_NE(first.get(), second.get());
    for (const auto* controller : { first.get(), second.get() }) {
        const auto* top = qobject_cast<const VireoApplianceController*>(controller);
        ASSERT_NE(top, nullptr);
        EXPECT_EQ(top->directory(), home() + u"/Movies"_s);
        EXPECT_EQ(top->list().title(), u"Vireo Movies"_s);
    }

    const struct {
        QLocale::Language language;
        QString moduleName;
    } names[] = { { QLocale::English, u"Vireo Movies"_s }, { QLocale::German, u"Vireo Filme"_s },
        { QLocale::French, u"Vireo Films"_s }, { QLocale::Japanese, u"Vireo Movies"_s } };
    const QLocale previous;
    for (const auto& c : names) {
        QLocale::setDefault(QLocale(c.language));
        EXPECT_EQ(m_appliance->moduleName(), c.moduleName) << c.language;
    }
    QLocale::setDefault(previous);

    const QImage icon(m_appliance->bundle().resourceRoot() + u'/' + m_appliance->moduleIconName());
    EXPECT_GE(icon.width(), 256);
    EXPECT_EQ(icon.width(), icon.height());
}

TEST_F(MainMenuTest, TopMenuRowsKeepTheListingOrder)
{
    const struct {
        const char* name;
        QStringList folders;
        QStringList files;
        QMap<QString, QString> movies; // file name -> row title
        long divider;
    } cases[] = {
        { "empty folder", {}, {}, {}, 0 },
        { "two folders, three movies", { u"Alice"_s, u"Bob"_s },
            { u"Up.m4v"_s, u"Up.xml"_s, u"Up.png"_s, u"Heat.avi"_s, u"Alien.mkv"_s },
            { { u"Up.m4v"_s, u"Up"_s }, { u"Heat.avi"_s, u"Heat"_s },
                { u"Alien.mkv"_s, u"Alien"_s } },
            5 },
        { "case of the extension", {}, { u"Loud.MOV"_s, u"Quiet.mov"_s, u"notes.txt"_s },
            { { u"Quiet.mov"_s, u"Quiet"_s } }, 1 },
        { "dotted and hidden names", {}, { u"a.b.mp4"_s, u".secret.ts"_s, u"noext"_s },
            { { u"a.b.mp4"_s, u"a.b"_s }, { u".secret.ts"_s, u".secret"_s } }, 2 },
        { "folder named like a movie", { u"Box.m4v"_s }, {}, { { u"Box.m4v"_s, u"Box"_s } }, 2 },
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        QDir(movies()).removeRecursively();
        makeFolder(movies());
        QMap<QString, QString> folders;
        for (const QString& folder : c.folders) {
            makeFolder(movies() + folder);
            folders.insert(folder, folder);
        }
        for (const QString& file : c.files)
            writeFile(movies() + file);

        VireoApplianceController* top = enter();
        ASSERT_NE(top, nullptr);
        const QStringList expected = inListingOrder(movies(), folders)
            + inListingOrder(movies(), c.movies) + QStringList { u"Settings"_s };
        EXPECT_EQ(titles(*top), expected);
        EXPECT_EQ(top->list().count(), expected.size());
        EXPECT_EQ(
            top->list().dividers(), c.divider ? std::set<long> { c.divider } : std::set<long> {});
        for (long row = 0; row < top->itemCount(); ++row) {
            const auto item = top->itemForRow(row);
            const bool folderRow = row < c.folders.size() || row == top->itemCount() - 1;
            EXPECT_EQ(item->kind(),
                folderRow ? shell::MenuItem::Kind::Folder : shell::MenuItem::Kind::Adorned);
            EXPECT_EQ(item->textItem().title(), expected.at(row));
        }
        m_stack->popController();
    }
}

TEST_F(MainMenuTest, DanglingLinkTakesTheVerdictOfTheEntryBeforeIt)
{
    makeFolder(movies() + u"Real"_s);
    makeLink(root() + u"/nowhere"_s, movies() + u"Gone"_s);
    const QStringList listed
        = inListingOrder(movies(), { { u"Real"_s, u"Real"_s }, { u"Gone"_s, u"Gone"_s } });
    VireoApplianceController* top = enter();
    ASSERT_NE(top, nullptr);
    const QStringList folders = listed.first() == u"Real"_s ? listed : QStringList { u"Real"_s };
    EXPECT_EQ(titles(*top), folders + QStringList { u"Settings"_s });

    makeFolder(root() + u"/lone"_s);
    makeLink(root() + u"/nowhere"_s, root() + u"/lone/Gone"_s);
    VireoApplianceController lone(m_scene, root() + u"/lone"_s, true);
    EXPECT_EQ(lone.itemCount(), 0);
}

TEST_F(MainMenuTest, RowForTitleAndRowsPastTheEnd)
{
    makeFolder(movies() + u"Dup"_s);
    writeFile(movies() + u"Dup.m4v"_s);
    VireoApplianceController* top = enter();
    ASSERT_NE(top, nullptr);
    EXPECT_EQ(top->rowForTitle(u"Dup"_s), 0);
    EXPECT_EQ(top->rowForTitle(u"Settings"_s), 2);
    EXPECT_EQ(top->rowForTitle(u"dup"_s), -1);

    for (const long row : { -1L, LONG_MIN, 3L, long(INT_MAX) + 1 }) {
        SCOPED_TRACE(row);
        EXPECT_TRUE(top->titleForRow(row).isNull());
        EXPECT_EQ(top->itemForRow(row), nullptr);
        EXPECT_EQ(top->previewControllerForItem(row), nullptr);
        top->itemSelected(row);
        EXPECT_EQ(m_stack->count(), 1);
    }
}

TEST_F(MainMenuTest, ABookmarkFromThePlayerIsOfferedNextTime)
{
    writeFile(movies() + u"Heat.m4v"_s);
    writeFile(movies() + u"Heat.xml"_s, kTenMinutes);
    VireoApplianceController* top = enter();
    ASSERT_NE(top, nullptr);
    select(0);
    ASSERT_NE(player(), nullptr);
    EXPECT_TRUE(player()->allowsResume());
    EXPECT_EQ(player()->videoPlayer()->media(), top->assetForFile(0));
    EXPECT_EQ(player()->state(), shell::VideoPlayerController::State::Playing);
    static_cast<shell::SimulatedVideoPlayer*>(player()->videoPlayer())->advance(65'000);
    press(RemoteAction::Menu);
    m_stack->popController();

    const struct {
        const char* name;
        long downs;
        qint64 startedAt;
    } cases[] = { { "Resume Playing", 0, 65'000 }, { "Start from Beginning", 1, 0 } };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        ASSERT_NE(enter(), nullptr);
        select(0);
        ASSERT_NE(player(), nullptr);
        ASSERT_EQ(player()->state(), shell::VideoPlayerController::State::Prompt);
        const QJsonArray rows = player()->describe().value(u"rows"_s).toArray();
        ASSERT_EQ(rows.size(), 2);
        EXPECT_EQ(rows.at(0)[u"title"_s].toString(), u"Resume Playing"_s);
        EXPECT_EQ(rows.at(1)[u"title"_s].toString(), u"Start from Beginning"_s);
        select(c.downs);
        const auto* simulated = static_cast<shell::SimulatedVideoPlayer*>(player()->videoPlayer());
        EXPECT_EQ(simulated->startedAtMS(), c.startedAt);
        press(RemoteAction::Menu);
        m_stack->popController();
    }
}

// A movie, its metadata and its cover saved under a Latin-1 name (the byte 0xE9, not
// UTF-8): the movie's URL and the cover's path name those very bytes.
TEST_F(MainMenuTest, AMovieNamedInLatin1KeepsTheBytesOfItsName)
{
    QImage cover(8, 4, QImage::Format_RGB32);
    cover.fill(Qt::red);
    ASSERT_TRUE(cover.save(movies() + u"cover.png"_s, "PNG"));
    writeFile(movies() + u"movie.m4v"_s);
    writeFile(movies() + u"movie.xml"_s, "<movie><title>Caf\xC3\xA9</title></movie>");
    const QByteArray stem = QFile::encodeName(movies()) + "Caf\xE9";
    for (const auto& [from, to] :
        { std::pair { "cover.png", ".png" }, { "movie.m4v", ".m4v" }, { "movie.xml", ".xml" } })
        ASSERT_EQ(std::rename(QFile::encodeName(movies() + QLatin1String(from)).constData(),
                      (stem + to).constData()),
            0);

    VireoApplianceController* top = enter();
    ASSERT_NE(top, nullptr);
    const auto asset = top->assetForFile(0);
    ASSERT_NE(asset, nullptr);
    EXPECT_EQ(asset->title(), u"Caf\u00e9"_s);
    EXPECT_TRUE(asset->mediaURL().endsWith(u"/Caf%E9.m4v"_s)) << qPrintable(asset->mediaURL());
    EXPECT_EQ(FileSystem::encodeName(asset->previewURL()), stem + ".png");
    EXPECT_EQ(asset->coverArt().size(), QSize(8, 4));
}

// The player folder is a link to the pair's folder, as the sync side lays it out.
TEST_F(MainMenuTest, WalksIntoAPlayerFolderAndRescansOnReturnWhenSynced)
{
    makePair(kPairA, u"Alice's Desk"_s, 100, 1000);
    makeMovie(kPairA, u"Heat"_s);
    makeLink(pairDir(kPairA), movies() + u"Alice"_s);
    for (const bool synced : { false, true }) {
        SCOPED_TRACE(synced ? "synced" : "not synced");
        ASSERT_NE(enter(), nullptr);
        select(0);
        VireoApplianceController* folder = menu();
        ASSERT_NE(folder, nullptr);
        EXPECT_EQ(folder->list().title(), u"Alice"_s);
        EXPECT_EQ(folder->directory(), movies() + u"Alice"_s);
        EXPECT_EQ(titles(*folder), QStringList { u"Heat"_s });
        EXPECT_TRUE(folder->list().dividers().empty());

        writeFile(movies() + u"Late.m4v"_s);
        if (synced) {
            ASSERT_TRUE(JUtils::updatePairStats(kPairA, u"desk.local"_s));
        }
        press(RemoteAction::Menu);
        ASSERT_EQ(m_stack->count(), 1);
        EXPECT_EQ(menu()->rowForTitle(u"Late"_s) >= 0, synced);
        EXPECT_EQ(menu()->list().count(), menu()->itemCount());
        m_stack->popController();
        QFile::remove(movies() + u"Late.m4v"_s);
    }
}

TEST_F(MainMenuTest, APoppedMenuRescansWhenPushedAgain)
{
    writeFile(movies() + u"Alice/One.m4v"_s);
    ASSERT_NE(enter(), nullptr);
    select(0);
    std::unique_ptr<shell::LayerController> folder = m_stack->takeTopController();
    writeFile(movies() + u"Alice/Two.m4v"_s);
    m_stack->pushController(std::move(folder));

    ASSERT_NE(menu(), nullptr);
    EXPECT_EQ(titles(*menu()).size(), 2);
    EXPECT_GE(menu()->rowForTitle(u"Two"_s), 0);
    EXPECT_EQ(menu()->list().count(), 2);
}

TEST_F(MainMenuTest, AssetCacheGrowsByDoublingFromSixteenSlots)
{
    const QString folder = root() + u"/many"_s;
    for (int i = 0; i <= 40; ++i)
        writeFile(folder + u"/m"_s + QString::number(i) + u".m4v"_s);
    const struct {
        long index;
        int slotCount;
    } cases[] = { { 0, 16 }, { 15, 16 }, { 16, 32 }, { 40, 64 } };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.index);
        VireoApplianceController menu(m_scene, folder, true);
        EXPECT_EQ(menu.assetsMade(), 0);
        const auto early = menu.assetForFile(3);
        const auto asset = menu.assetForFile(c.index);
        ASSERT_NE(asset, nullptr);
        EXPECT_EQ(menu.assetListSize(), c.slotCount);
        EXPECT_EQ(menu.assetForFile(c.index), asset);
        EXPECT_EQ(menu.assetForFile(3), early);
        EXPECT_EQ(menu.assetForFile(41), nullptr);
        EXPECT_EQ(menu.assetForFile(-1), nullptr);
        EXPECT_EQ(menu.assetListSize(), c.slotCount);
    }
}

TEST_F(MainMenuTest, TenThousandMoviesMakeAnAssetOnlyForTheFocusedRow)
{
    for (int i = 0; i < 10'000; ++i)
        writeFile(movies() + u"Film"_s + QString::number(i) + u".m4v"_s, {});
    VireoApplianceController* top = enter();
    ASSERT_NE(top, nullptr);
    EXPECT_EQ(top->itemCount(), 10'001);
    EXPECT_EQ(top->list().dividers(), std::set<long> { 10'000 });
    EXPECT_EQ(top->assetsMade(), 1);

    press(RemoteAction::Down);
    EXPECT_EQ(top->assetsMade(), 2);
    ASSERT_NE(top->preview(), nullptr);
    EXPECT_EQ(top->preview()->asset(), top->assetForFile(1));
    EXPECT_EQ(top->assetsMade(), 2);
}

TEST_F(MainMenuTest, PreviewsOfFolderMovieAndSettingsRows)
{
    makeFolder(movies() + u"Alice"_s);
    writeFile(movies() + u"Heat.m4v"_s);
    writeFile(movies() + u"Heat.xml"_s, kTenMinutes);
    VireoApplianceController* top = enter();
    ASSERT_NE(top, nullptr);
    EXPECT_EQ(top->preview(), nullptr);

    press(RemoteAction::Down);
    const auto* movie = dynamic_cast<shell::MediaPreviewController*>(top->preview());
    ASSERT_NE(movie, nullptr);
    EXPECT_EQ(movie->asset(), top->assetForFile(0));
    EXPECT_EQ(movie->asset()->title(), u"Heat"_s);
    EXPECT_TRUE(movie->showsMetadata());
    EXPECT_FALSE(movie->showsMetadataImmediately());
    EXPECT_FALSE(movie->missingMediaType().has_value());

    press(RemoteAction::Down);
    const auto* settings = dynamic_cast<shell::MetadataPreviewController*>(top->preview());
    ASSERT_NE(settings, nullptr);
    EXPECT_TRUE(settings->showsMetadataImmediately());
    const auto asset = settings->asset();
    EXPECT_EQ(asset->mediaURL(), u"qrc:/vireo-movies/ApplianceIcon.png"_s);
    EXPECT_EQ(asset->previewURL(), asset->mediaURL());
    EXPECT_EQ(asset->mediaType(), shell::MediaType::photo);
    EXPECT_EQ(asset->copyright(), VTVMediaAsset::copyrightLine());
}

TEST_F(MainMenuTest, PluginLoadsFromTheAppliancesFolder)
{
    shell::ApplianceLoader loader;
    loader.loadFolder(QStringLiteral(VIREO_APPLIANCE_DIR));
    for (const auto& failure : loader.failures())
        EXPECT_NE(failure.fileName, u"vireo-movies.so"_s) << qPrintable(failure.reason);
    const auto& entries = loader.appliances();
    const auto entry = std::find_if(entries.begin(), entries.end(),
        [](const auto& e) { return e.fileName == u"vireo-movies.so"_s; });
    ASSERT_NE(entry, entries.end());
    EXPECT_EQ(entry->name, u"Vireo Movies"_s);
    EXPECT_EQ(entry->key, ApplianceConfig::moduleKey());
    EXPECT_EQ(entry->sortOrder, 10);
    ASSERT_NE(entry->appliance, nullptr);
    EXPECT_EQ(entry->appliance->moduleKey(), entry->key);
    EXPECT_EQ(entry->appliance->moduleIconName(), u"ApplianceIcon.png"_s);
    EXPECT_FALSE(
        entry->appliance->bundle().imageForResource(u"ApplianceIcon"_s, u"png"_s).isNull());
}

TEST_F(MainMenuTest, OldResumePointsGoSoonAfterTheApplianceIsLoaded)
{
    const QString fresh = QString::number(QDateTime::currentSecsSinceEpoch()) + u"_5000"_s;
    PlistHelpers::write(LibraryPaths::cachePath(),
        { { u"playback_pos/1"_s, u"1000_5000"_s }, { u"playback_pos/2"_s, fresh } });
    const QDeadlineTimer deadline(3 * VireoAppliance::kFirstCleanupDelay);
    while (PlaybackPositionCache::entries().size() == 2 && !deadline.hasExpired())
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 100);
    EXPECT_EQ(PlaybackPositionCache::entries().keys(), QStringList { u"2"_s });
}

TEST_F(MainMenuTest, AppStoppingReachesTheDeepestMainMenu)
{
    makeFolder(movies() + u"Alice"_s);
    ASSERT_NE(enter(), nullptr);
    select(0);
    for (const bool registered : { true, false }) {
        SCOPED_TRACE(registered ? "stack in the sentinel" : "no stack");
        if (registered)
            shell::Sentinel::shared().setObjectForKey(m_stack.get(), u"controllerStack"_s);
        LogCapture::lines().clear();
        shell::NotificationCenter::defaultCenter().postNotification(
            shell::NotificationCenter::applicationWillTerminate());
        shell::Sentinel::shared().removeObjectForKey(u"controllerStack"_s);
        EXPECT_EQ(LogCapture::containing(u"cancelDownloads"_s),
            registered ? QStringList { u"cancelDownloads "_s + home() + u"/Movies"_s }
                       : QStringList {});
        EXPECT_EQ(LogCapture::containing(u"clearAllDownloads"_s).size(), 1);
    }

    m_appliance.reset();
    LogCapture::lines().clear();
    shell::NotificationCenter::defaultCenter().postNotification(
        shell::NotificationCenter::applicationWillTerminate());
    EXPECT_TRUE(LogCapture::containing(u"clearAllDownloads"_s).isEmpty());
}
