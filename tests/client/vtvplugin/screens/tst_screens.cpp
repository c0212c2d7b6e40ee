// The appliance's screens, driven through the toolkit's stack as the remote drives
// them over real library folders, and read from what they report they show.
#include "../LibraryFixture.h"

#include "foundation/FileSystem.h"
#include "toolkit/menus/MenuItem.h"
#include "toolkit/scene/Scene.h"
#include "toolkit/scene/Theme.h"
#include "toolkit/stack/ControllerStack.h"
#include "vtvplugin/appliance/VireoAppliance.h"
#include "vtvplugin/appliance/VireoTrailersAppliance.h"
#include "vtvplugin/library/DiskInfo.h"
#include "vtvplugin/library/JUtils.h"
#include "vtvplugin/library/VireoPairInfo.h"
#include "vtvplugin/media/VTVMediaAsset.h"
#include "vtvplugin/screens/VireoAboutController.h"
#include "vtvplugin/screens/VireoApplianceController.h"
#include "vtvplugin/screens/VireoConfigController.h"
#include "vtvplugin/screens/VireoSyncingController.h"
#include "vtvplugin/store/LibraryPaths.h"
#include "vtvplugin/store/PlaybackPositionCache.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QJsonArray>
#include <QLocale>
#include <QRegularExpression>

#include <cstdio>
#include <set>

using shell::RemoteAction;

class ScreensTest : public LibraryFixture {
protected:
    VireoApplianceController* menu() const
    {
        return qobject_cast<VireoApplianceController*>(m_stack.topController());
    }
    VireoApplianceController* enter()
    {
        m_stack.pushController(m_appliance.applianceControllerWithScene(m_scene));
        return menu();
    }
    void press(RemoteAction action) { m_stack.handleAction(action); }
    QJsonObject top() const { return m_stack.describeTop(); }
    QStringList strings(const char* list, const char* key, const char* kind = nullptr) const
    {
        QStringList found;
        for (const QJsonValue& item : top().value(QLatin1String(list)).toArray()) {
            if (!kind || item[u"kind"_s].toString() == QLatin1String(kind))
                found.append(item[QLatin1String(key)].toString());
        }
        return found;
    }
    QStringList rows() const { return strings("rows", "title"); }
    // The texts of the top screen's text controls, in the order they are drawn.
    QStringList texts() const { return strings("controls", "text", "text"); }
    // Moves the focus to the row titled `title` as the remote would.
    void focus(const QString& title)
    {
        const long target = rows().indexOf(title);
        ASSERT_GE(target, 0) << qPrintable(title);
        while (top().value(u"focus"_s).toInt() != target)
            press(top().value(u"focus"_s).toInt() < target ? RemoteAction::Down : RemoteAction::Up);
    }
    void choose(const QString& title)
    {
        focus(title);
        press(RemoteAction::Select);
    }

    shell::Scene m_scene;
    shell::ControllerStack m_stack;
    VireoAppliance m_appliance;
};

TEST_F(ScreensTest, EachApplianceHasItsOwnNameIconAndFreshFirstScreen)
{
    VireoTrailersAppliance trailers;
    const struct {
        shell::Appliance& appliance;
        QString english, german;
    } rows[] = { { m_appliance, u"Vireo Movies"_s, u"Vireo Filme"_s },
        { trailers, u"Vireo Trailers"_s, u"Vireo Trailer"_s } };
    for (const auto& row : rows) {
        QLocale::setDefault(QLocale(QLocale::German));
        EXPECT_EQ(row.appliance.moduleName(), row.german);
        QLocale::setDefault(QLocale(QLocale::Japanese)); // no table: the English name
        EXPECT_EQ(row.appliance.moduleName(), row.english);
        const auto first = row.appliance.applianceControllerWithScene(m_scene);
        EXPECT_NE(first.get(), row.appliance.applianceControllerWithScene(m_scene).get());
        EXPECT_EQ(first->describe().value(u"title"_s).toString(), row.english);
    }
    QLocale::setDefault(QLocale(QLocale::English));
    EXPECT_NE(m_appliance.bundle().imageForResource(u"ApplianceIcon"_s, u"png"_s),
        trailers.bundle().imageForResource(u"ApplianceIcon"_s, u"png"_s));
}

TEST_F(ScreensTest, TopMenuRowsKeepTheListingOrder)
{
    // Folders, then files; a "*" marks the files listed as movies.
    const struct {
        const char *name, *folders, *files;
        long divider;
    } cases[] = {
        { "empty folder", "", "", 0 },
        { "two folders, three movies", "Alice Bob", "Up.m4v* Up.xml Up.png Heat.avi* Alien.mkv*",
            5 },
        { "case of the extension", "", "Loud.MOV Quiet.mov* notes.txt", 1 },
        { "dotted and hidden names", "", "a.b.mp4* .secret.ts* noext", 2 },
        { "folder named like a movie", "Box.m4v*", "", 2 },
        // The first of two rows of one title answers for it.
        { "a folder and a movie of one title", "Dup", "Dup.m4v*", 2 },
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        QDir(movies()).removeRecursively();
        QDir().mkpath(movies());
        const QStringList folders = words(c.folders), files = words(c.files);
        for (const QString& folder : folders)
            QDir().mkpath(movies() + folder.chopped(folder.endsWith(u'*')));
        for (const QString& file : files)
            writeFile(movies() + file.chopped(file.endsWith(u'*')));
        // Folders, then movies without their extension, each in the order the file
        // system lists them.
        QStringList expected;
        for (const bool folderPass : { true, false }) {
            for (const QString& name : FileSystem::entryNames(movies())) {
                if (folderPass && (folders.contains(name) || folders.contains(name + u'*')))
                    expected.append(name);
                else if (!folderPass && (folders + files).contains(name + u'*'))
                    expected.append(name.left(name.lastIndexOf(u'.')));
            }
        }
        expected.append(u"Settings"_s);

        VireoApplianceController* top = enter();
        ASSERT_NE(top, nullptr);
        EXPECT_EQ(rows(), expected);
        EXPECT_EQ(top->list().count(), expected.size());
        EXPECT_EQ(
            top->list().dividers(), c.divider ? std::set<long> { c.divider } : std::set<long> {});
        EXPECT_EQ(top->itemForRow(top->itemCount() - 1)->kind(), shell::MenuItem::Kind::Folder);
        EXPECT_EQ(top->rowForTitle(expected.first()), 0);
        // Only an empty library's "Settings" tells how movies arrive; only an empty
        // sub-folder says it is empty.
        EXPECT_EQ(top->previewControllerForItem(top->itemCount() - 1)->describe()[u"description"_s],
            c.divider
                ? QJsonValue()
                : u"No movies yet: they arrive from a paired Vireo Player, or with vireoctl add."_s);
        m_stack.pushController(std::make_unique<VireoApplianceController>(m_scene, movies(), true));
        EXPECT_EQ(
            m_stack.describeTop()[u"preview"_s][u"description"_s] == u"This folder is empty."_s,
            !c.divider);
        m_stack.popController();
        m_stack.popController();
    }
}

// Where each movie would resume, from the one read of the cache at the scan (the file
// is gone by the time the previews are made); its length once its preview read it.
TEST_F(ScreensTest, PartlyWatchedMoviesShowWhereTheyResume)
{
    writeFile(movies() + u"Up.xml"_s, "<movie><title>Up</title><duration>102</duration></movie>");
    for (const QString& name : { u"Up.m4v"_s, u"Heat.m4v"_s, u"Alien.m4v"_s }) {
        writeFile(movies() + name);
        if (name != u"Alien.m4v"_s)
            PlaybackPositionCache::save(VTVMediaAsset::assetIdForFileName(name), 18'999);
    }
    enter();
    ASSERT_TRUE(QFile::remove(LibraryPaths::cachePath()));
    const struct {
        QString title;
        QJsonValue row, preview;
    } cases[] = {
        { u"Up"_s, QJsonObject { { u"position"_s, 18'999 }, { u"duration"_s, 102'000 } },
            u"Resume from 0:18 of 1:42"_s },
        { u"Heat"_s, QJsonObject { { u"position"_s, 18'999 }, { u"duration"_s, 0 } },
            u"Resume from 0:18"_s },
        { u"Alien"_s, QJsonValue::Undefined, QJsonValue::Null },
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(qPrintable(c.title));
        focus(c.title);
        EXPECT_EQ(top()[u"rows"_s][rows().indexOf(c.title)][u"resume"_s], c.row);
        EXPECT_EQ(top()[u"preview"_s][u"resume"_s], c.preview);
    }
}

// A movie, its metadata and its cover saved under a Latin-1 name (the byte 0xE9, not
// UTF-8): the movie's URL and the cover's path name those very bytes.
TEST_F(ScreensTest, AMovieNamedInLatin1KeepsTheBytesOfItsName)
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
TEST_F(ScreensTest, MenusRescanAfterASyncOrWhenPushedAgain)
{
    makePair(kPairA, u"Alice's Desk"_s, 100, 1000);
    makeMovie(kPairA, u"Heat"_s);
    makeLink(pairDir(kPairA), movies() + u"Alice"_s);
    enter();
    writeFile(movies() + u"Late.m4v"_s);
    for (const bool synced : { false, true }) {
        press(RemoteAction::Select);
        EXPECT_EQ(top().value(u"title"_s).toString(), u"Alice"_s);
        EXPECT_EQ(rows(), QStringList { u"Heat"_s }) << "no Settings in a folder";
        EXPECT_TRUE(!synced || JUtils::updatePairStats(kPairA, u"desk.local"_s));
        press(RemoteAction::Menu);
        EXPECT_EQ(rows().contains(u"Late"_s), synced);
    }
    std::unique_ptr<shell::LayerController> taken = m_stack.takeTopController();
    writeFile(movies() + u"Later.m4v"_s);
    m_stack.pushController(std::move(taken));
    EXPECT_TRUE(rows().contains(u"Later"_s));
}

TEST_F(ScreensTest, OldResumePointsGoSoonAfterTheApplianceIsLoaded)
{
    const QString fresh = QString::number(QDateTime::currentSecsSinceEpoch()) + u"_5000"_s;
    writePlist(LibraryPaths::cachePath(),
        { { u"playback_pos/1"_s, u"1000_5000"_s }, { u"playback_pos/2"_s, fresh } });
    const QDeadlineTimer deadline(3 * VireoAppliance::kFirstCleanupDelay);
    while (PlaybackPositionCache::entries().size() == 2 && !deadline.hasExpired())
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 100);
    EXPECT_EQ(PlaybackPositionCache::entries().keys(), QStringList { u"2"_s });
}

TEST_F(ScreensTest, OnlyRowsZeroAndOneOfTheSettingsMenuPush)
{
    // Made for the syncing type, the menu is titled so and has no rows.
    EXPECT_EQ(VireoConfigController(m_scene, 2).list().title(), u"Syncing"_s);
    EXPECT_EQ(VireoConfigController(m_scene, 2).list().count(), 0);
    m_stack.pushController(std::make_unique<VireoConfigController>(m_scene));
    EXPECT_EQ(rows(), QStringList({ u"About"_s, u"Syncing"_s }));
    const QStringList screens { u"VireoAboutController"_s, u"VireoSyncingController"_s };
    for (long row = 0; row < 2; ++row) {
        choose(rows().at(row));
        EXPECT_EQ(m_stack.labels(), (QStringList { u"VireoConfigController"_s, screens.at(row) }));
        press(RemoteAction::Menu);
    }
    for (const long row : { -1L, 2L, 100L }) {
        qobject_cast<VireoConfigController*>(m_stack.topController())->itemSelected(row);
        EXPECT_EQ(m_stack.count(), 1) << row;
    }
}

TEST_F(ScreensTest, AboutRowsCountPairsAndShowTheDiskFacts)
{
    const std::tuple<const char*, QString, QString> rows[] = {
        { "no pair", {}, u"0 Vireo Players"_s },
        { "one pair", kPairA, u"1 Vireo Player"_s },
        { "two pairs", kPairB, u"2 Vireo Players"_s },
    };
    for (const auto& [name, pairAdded, players] : rows) {
        SCOPED_TRACE(name);
        if (!pairAdded.isNull())
            makePair(pairAdded, u"Desk"_s);
        QString capacity, used;
        getDiskSpaceInfo(&capacity, nullptr, &used, nullptr, nullptr);
        m_stack.pushController(std::make_unique<VireoAboutController>(m_scene));
        QStringList shown = texts();
        // Free space changes whenever another process writes: only its form is stable.
        ASSERT_EQ(shown.size(), 12);
        EXPECT_TRUE(QRegularExpression(u"^\\d+\\.\\d\\d \\w*$"_s).match(shown[5]).hasMatch());
        shown[5] = QString();
        // Not the expected hardware here: the serial row is still drawn, with no text.
        EXPECT_EQ(shown,
            QStringList({ u"Syncing"_s, players, u"Capacity"_s, capacity, u"Available"_s, QString(),
                u"Used by Vireo"_s, used, u"Serial Number"_s, u""_s, u"Vireo Software Version"_s,
                u"0.96.16.118"_s }));
        m_stack.popController();
    }
}

// Each fact's value ends at the panel's right edge and never reaches over its label: a
// value too long for the room left is cut to it.
TEST_F(ScreensTest, SyncingFactsKeepTheirValuesBesideTheirLabels)
{
    const QRectF safe = shell::Theme::shared().titleSafeFrame();
    for (const QString& name : { u"Den"_s, u"The Family's Upstairs Living Room Mac Pro"_s }) {
        SCOPED_TRACE(qPrintable(name));
        QDir(pairDir(kPairA)).removeRecursively();
        makePair(kPairA, name, 100'000, 2'000'000, u"10.0.0.7"_s);
        m_stack.pushController(std::make_unique<VireoSyncingController>(m_scene));
        const QJsonArray controls = top().value(u"controls"_s).toArray();
        ASSERT_EQ(controls.size(), 10); // the icon, the help text, then label and value four times
        for (qsizetype i = 2; i < controls.size(); i += 2) {
            const auto frame = [&](qsizetype at) {
                const QJsonArray f = controls[at][u"frame"_s].toArray();
                return QRectF(f[0].toDouble(), f[1].toDouble(), f[2].toDouble(), f[3].toDouble());
            };
            EXPECT_LT(frame(i).right(), frame(i + 1).left()) << i;
            EXPECT_DOUBLE_EQ(frame(i + 1).right(), safe.right()) << i;
        }
        m_stack.popController();
    }
}

// The user's way through Syncing over a library of two players laid out the way the
// sync side does it: Den synced last, Office never did.
TEST_F(ScreensTest, SyncingShowsThePairsAndUnpairsOnlyOnYes)
{
    makePair(kPairA, u"Den"_s, 100'000, 2'000'000, u"10.0.0.7"_s);
    makePair(kPairB, u"Office"_s, 200'000);
    for (const auto& [pairID, folder, title] : { std::tuple(kPairA, u"Den/"_s, u"Alien"_s),
             std::tuple(kPairB, u"Office/"_s, u"Heat"_s) }) {
        for (const QString& suffix : { u".m4v"_s, u".xml"_s }) {
            writeFile(file(pairID, title + suffix));
            QDir().mkpath(movies() + folder);
            makeLink(file(pairID, title + suffix), movies() + folder + title + suffix);
        }
    }
    VireoPlayerPairList list;
    int count = 0;
    ASSERT_TRUE(getAllPairInfos(&list, &count));
    ASSERT_EQ(count, 2);
    const auto facts = [&](long row) {
        const VireoPlayerPair& pair = list[std::size_t(row)];
        return pair.pairID == kPairA
            ? QStringList { u"Name"_s, pair.clientName, u"Paired On"_s, pair.pairedOn,
                  u"Last Sync Time"_s, pair.lastSync, u"Last Peer Address"_s, u"10.0.0.7"_s }
            : QStringList { u"Name"_s, pair.clientName, u"Paired On"_s, pair.pairedOn, u""_s, u""_s,
                  u""_s, u""_s };
    };
    const QStringList players { list[0].clientName, list[1].clientName };

    m_stack.pushController(std::make_unique<VireoApplianceController>(m_scene));
    choose(u"Settings"_s);
    choose(u"Syncing"_s);
    EXPECT_EQ(rows(), players);
    EXPECT_EQ(texts().mid(1), facts(0));
    // The panel is filled again only when the focus lands on another row.
    const int redraws = m_scene.redrawCount();
    for (const auto& [move, shown, redrawn] : { std::tuple(RemoteAction::Down, 1, 1),
             std::tuple(RemoteAction::Down, 1, 1), std::tuple(RemoteAction::Up, 0, 2) }) {
        press(move);
        EXPECT_EQ(texts().mid(1), facts(shown));
        EXPECT_EQ(m_scene.redrawCount(), redraws + redrawn);
    }

    // "No" leaves the library alone and comes back to the same rows.
    const QStringList library = snapshot(root());
    choose(u"Office"_s);
    EXPECT_EQ(top().value(u"title"_s).toString(), u"Turn Off Syncing"_s);
    choose(u"No, leave Syncing turned ON"_s);
    EXPECT_EQ(rows(), players);
    EXPECT_EQ(snapshot(root()), library);

    // "Yes" unpairs Office, which never synced: its folder and links go, and the list
    // drops it at once.
    choose(u"Office"_s);
    choose(u"Yes, Turn off Syncing from this Vireo Player"_s);
    EXPECT_EQ(rows(), QStringList { u"Den"_s });
    EXPECT_FALSE(QFileInfo::exists(pairDir(kPairB)));
    EXPECT_EQ(names(movies()), words("Alien.m4v Alien.xml"));
    releasePairInfoList(list, count);

    // The latest sync time is still Den's, but the pairs changed: the top menu lists the
    // library anew, its focus still on "Settings".
    press(RemoteAction::Menu);
    press(RemoteAction::Menu);
    EXPECT_EQ(rows(), (QStringList { u"Alien"_s, u"Settings"_s }));
    EXPECT_EQ(top().value(u"focus"_s), 1);
}
