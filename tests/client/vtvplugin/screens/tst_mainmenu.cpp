#include "../LibraryFixture.h"

#include "foundation/FileSystem.h"
#include "toolkit/appliance/ApplianceLoader.h"
#include "toolkit/media/MediaPreviewController.h"
#include "toolkit/media/MetadataPreviewController.h"
#include "toolkit/menus/MenuItem.h"
#include "toolkit/scene/Scene.h"
#include "toolkit/stack/ControllerStack.h"
#include "vtvplugin/appliance/ApplianceConfig.h"
#include "vtvplugin/appliance/VireoAppliance.h"
#include "vtvplugin/library/JUtils.h"
#include "vtvplugin/media/VTVMediaAsset.h"
#include "vtvplugin/screens/VireoApplianceController.h"
#include "vtvplugin/store/LibraryPaths.h"
#include "vtvplugin/store/PlaybackPositionCache.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QLocale>

#include <climits>
#include <cstdio>
#include <set>

using shell::RemoteAction;

class MainMenuTest : public LibraryFixture {
protected:
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
    static QStringList titles(VireoApplianceController& menu)
    {
        QStringList rows;
        for (long row = 0; row < menu.itemCount(); ++row)
            rows.append(menu.titleForRow(row));
        return rows;
    }

    shell::Scene m_scene;
    std::unique_ptr<shell::ControllerStack> m_stack = std::make_unique<shell::ControllerStack>();
    std::unique_ptr<VireoAppliance> m_appliance = std::make_unique<VireoAppliance>();
};

TEST_F(MainMenuTest, BothPluginsLoadAsTheShellLoadsThem)
{
    shell::ApplianceLoader loader;
    loader.loadFolder(QStringLiteral(VIREO_APPLIANCE_DIR));
    EXPECT_TRUE(loader.failures().empty());
    const struct {
        QString fileName, name, key, german, french;
    } rows[] = {
        { u"vireo-movies.so"_s, u"Vireo Movies"_s, ApplianceConfig::moduleKey(), u"Vireo Filme"_s,
            u"Vireo Films"_s },
        { u"vireo-trailers.so"_s, u"Vireo Trailers"_s, ApplianceConfig::trailersModuleKey(),
            u"Vireo Trailer"_s, u"Vireo Bandes-annonces"_s },
    };
    ASSERT_EQ(loader.appliances().size(), std::size(rows));
    const QLocale previous;
    QList<QImage> icons;
    for (std::size_t i = 0; i < std::size(rows); ++i) {
        SCOPED_TRACE(qPrintable(rows[i].fileName));
        const auto& entry = loader.appliances()[i];
        EXPECT_EQ(QStringList({ entry.fileName, entry.name, entry.key }),
            QStringList({ rows[i].fileName, rows[i].name, rows[i].key }));
        ASSERT_NE(entry.appliance, nullptr);
        shell::Appliance& appliance = *entry.appliance;
        EXPECT_EQ(appliance.moduleKey(), entry.key);
        for (const auto& [language, name] :
            { std::pair(QLocale::English, rows[i].name), std::pair(QLocale::German, rows[i].german),
                std::pair(QLocale::French, rows[i].french),
                std::pair(QLocale::Japanese, rows[i].name) }) {
            QLocale::setDefault(QLocale(language));
            EXPECT_EQ(appliance.moduleName(), name) << language;
        }
        QLocale::setDefault(previous);
        icons.append(QImage(appliance.bundle().resourceRoot() + u'/' + appliance.moduleIconName()));
        EXPECT_GE(icons.last().width(), 256);
        EXPECT_EQ(icons.last().width(), icons.last().height());
        // Each entry builds a fresh first screen, titled with the appliance's name.
        const auto first = appliance.applianceControllerWithScene(m_scene);
        EXPECT_NE(first.get(), appliance.applianceControllerWithScene(m_scene).get());
        EXPECT_EQ(first->describe().value(u"title"_s).toString(), rows[i].name);
    }
    EXPECT_NE(icons[0], icons[1]) << "each appliance draws its own icon";
}

TEST_F(MainMenuTest, TopMenuRowsKeepTheListingOrder)
{
    const struct {
        const char* name;
        QStringList folders, files;
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
        QDir().mkpath(movies());
        for (const QString& folder : c.folders)
            QDir().mkpath(movies() + folder);
        for (const QString& file : c.files)
            writeFile(movies() + file);
        // Folders, then movies, each in the order the file system lists them.
        QStringList expected;
        for (const bool folders : { true, false }) {
            for (const QString& name : FileSystem::entryNames(movies())) {
                if (folders ? c.folders.contains(name) : c.movies.contains(name))
                    expected.append(folders ? name : c.movies.value(name));
            }
        }
        expected.append(u"Settings"_s);

        VireoApplianceController* top = enter();
        ASSERT_NE(top, nullptr);
        EXPECT_EQ(titles(*top), expected);
        EXPECT_EQ(top->list().count(), expected.size());
        EXPECT_EQ(
            top->list().dividers(), c.divider ? std::set<long> { c.divider } : std::set<long> {});
        for (long row = 0; row < top->itemCount(); ++row) {
            const bool folderRow = row < c.folders.size() || row == top->itemCount() - 1;
            EXPECT_EQ(top->itemForRow(row)->kind(),
                folderRow ? shell::MenuItem::Kind::Folder : shell::MenuItem::Kind::Adorned);
        }
        m_stack->popController();
    }
}

TEST_F(MainMenuTest, RowForTitleAndRowsPastTheEnd)
{
    QDir().mkpath(movies() + u"Dup"_s);
    writeFile(movies() + u"Dup.m4v"_s);
    VireoApplianceController* top = enter();
    ASSERT_NE(top, nullptr);
    EXPECT_EQ(top->rowForTitle(u"Dup"_s), 0);
    EXPECT_EQ(top->rowForTitle(u"Settings"_s), 2);
    EXPECT_EQ(top->rowForTitle(u"dup"_s), -1);
    for (const long row : { -1L, LONG_MIN, 3L, long(INT_MAX) + 1 }) {
        EXPECT_TRUE(top->titleForRow(row).isNull()) << row;
        EXPECT_EQ(top->itemForRow(row), nullptr) << row;
        EXPECT_EQ(top->previewControllerForItem(row), nullptr) << row;
        top->itemSelected(row);
        EXPECT_EQ(m_stack->count(), 1) << row;
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

// The player folder is a link to the pair's folder, as the sync side lays it out. A
// menu is listed again when it comes back after a sync, or is pushed anew.
TEST_F(MainMenuTest, MenusRescanAfterASyncOrWhenPushedAgain)
{
    makePair(kPairA, u"Alice's Desk"_s, 100, 1000);
    makeMovie(kPairA, u"Heat"_s);
    makeLink(pairDir(kPairA), movies() + u"Alice"_s);
    for (const bool synced : { false, true }) {
        SCOPED_TRACE(synced ? "synced" : "not synced");
        ASSERT_NE(enter(), nullptr);
        press(RemoteAction::Select);
        VireoApplianceController* folder = menu();
        ASSERT_NE(folder, nullptr);
        EXPECT_EQ(folder->list().title(), u"Alice"_s);
        EXPECT_EQ(titles(*folder), QStringList { u"Heat"_s });
        EXPECT_TRUE(folder->list().dividers().empty());

        writeFile(movies() + u"Late.m4v"_s);
        EXPECT_TRUE(!synced || JUtils::updatePairStats(kPairA, u"desk.local"_s));
        press(RemoteAction::Menu);
        EXPECT_EQ(menu()->rowForTitle(u"Late"_s) >= 0, synced);
        m_stack->popController();
        QFile::remove(movies() + u"Late.m4v"_s);
    }

    ASSERT_NE(enter(), nullptr);
    press(RemoteAction::Select);
    std::unique_ptr<shell::LayerController> folder = m_stack->takeTopController();
    makeMovie(kPairA, u"Two"_s);
    m_stack->pushController(std::move(folder));
    EXPECT_GE(menu()->rowForTitle(u"Two"_s), 0);
    EXPECT_EQ(menu()->list().count(), 2);
}

TEST_F(MainMenuTest, TenThousandMoviesMakeAnAssetOnlyForTheFocusedRow)
{
    for (int i = 0; i < 10'000; ++i)
        writeFile(movies() + u"Film"_s + QString::number(i) + u".m4v"_s, {});
    VireoApplianceController* top = enter();
    ASSERT_NE(top, nullptr);
    EXPECT_EQ(top->itemCount(), 10'001);
    EXPECT_EQ(top->assetsMade(), 1);
    press(RemoteAction::Down);
    ASSERT_NE(top->preview(), nullptr);
    EXPECT_EQ(top->preview()->asset(), top->assetForFile(1));
    EXPECT_EQ(top->assetsMade(), 2);
}

TEST_F(MainMenuTest, PreviewsOfFolderMovieAndSettingsRows)
{
    QDir().mkpath(movies() + u"Alice"_s);
    writeFile(movies() + u"Heat.m4v"_s);
    writeFile(movies() + u"Heat.xml"_s, "<movie><title>Heat</title></movie>");
    VireoApplianceController* top = enter();
    ASSERT_NE(top, nullptr);
    EXPECT_EQ(top->preview(), nullptr);

    press(RemoteAction::Down);
    const auto* movie = dynamic_cast<shell::MediaPreviewController*>(top->preview());
    ASSERT_NE(movie, nullptr);
    EXPECT_EQ(movie->asset()->title(), u"Heat"_s);
    EXPECT_TRUE(movie->showsMetadata());
    EXPECT_FALSE(movie->showsMetadataImmediately());

    press(RemoteAction::Down);
    const auto* settings = dynamic_cast<shell::MetadataPreviewController*>(top->preview());
    ASSERT_NE(settings, nullptr);
    EXPECT_TRUE(settings->showsMetadataImmediately());
    EXPECT_EQ(settings->asset()->mediaURL(), u"qrc:/vireo-movies/ApplianceIcon.png"_s);
    EXPECT_EQ(settings->asset()->mediaType(), shell::MediaType::photo);
    EXPECT_EQ(settings->asset()->copyright(), VTVMediaAsset::copyrightLine());
}

TEST_F(MainMenuTest, OldResumePointsGoSoonAfterTheApplianceIsLoaded)
{
    const QString fresh = QString::number(QDateTime::currentSecsSinceEpoch()) + u"_5000"_s;
    writePlist(LibraryPaths::cachePath(),
        { { u"playback_pos/1"_s, u"1000_5000"_s }, { u"playback_pos/2"_s, fresh } });
    const QDeadlineTimer deadline(3 * VireoAppliance::kFirstCleanupDelay);
    while (PlaybackPositionCache::entries().size() == 2 && !deadline.hasExpired())
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 100);
    EXPECT_EQ(PlaybackPositionCache::entries().keys(), QStringList { u"2"_s });
}
