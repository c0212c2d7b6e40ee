#include "../LibraryFixture.h"

#include "toolkit/scene/Scene.h"
#include "toolkit/stack/ControllerStack.h"
#include "vtvplugin/library/DiskInfo.h"
#include "vtvplugin/library/JUtils.h"
#include "vtvplugin/library/VireoPairInfo.h"
#include "vtvplugin/screens/VireoApplianceController.h"

#include <QFileInfo>
#include <QJsonArray>

using shell::RemoteAction;

// The user's way through Settings with the remote, over a library of two players laid
// out the way the sync side does it, checked on what the screens report they show.
class ScreenWalkTest : public LibraryFixture {
protected:
    void SetUp() override
    {
        LibraryFixture::SetUp();
        // Den synced last: unpairing it lowers the latest sync time the top menu watches.
        makePair(kPairA, u"Den"_s, 100'000, 2'000'000, u"10.0.0.7"_s);
        addMovie(kPairA, u"a1"_s, u"Alien"_s);
        makePair(kPairB, u"Office"_s, 200'000, 1'000'000, u"10.0.0.9"_s);
        addMovie(kPairB, u"b1"_s, u"Heat"_s);
        ASSERT_TRUE(JUtils::checkAndFixLinks());
        ASSERT_EQ(names(movies()), words("Den Office"));
        m_stack.pushController(std::make_unique<VireoApplianceController>(m_scene));
    }

    void addMovie(const QString& pairID, const QString& id, QString title) const
    {
        makeMovie(pairID, id);
        ASSERT_TRUE(JUtils::makeTitleUnique(pairID, id + u".m4v"_s, title));
        ASSERT_TRUE(JUtils::setupLinks(pairID, id + u".m4v"_s, title));
    }

    QJsonObject top() const { return m_stack.describeTop(); }
    QString topLabel() const { return top().value(u"label"_s).toString(); }
    QStringList rows() const
    {
        QStringList titles;
        for (const QJsonValue& row : top().value(u"rows"_s).toArray())
            titles.append(row[u"title"_s].toString());
        return titles;
    }
    // The texts of the top screen's text controls, in the order they are drawn.
    QStringList texts() const
    {
        QStringList shown;
        for (const QJsonValue& control : top().value(u"controls"_s).toArray()) {
            if (control[u"kind"_s].toString() == u"text"_s)
                shown.append(control[u"text"_s].toString());
        }
        return shown;
    }
    // What the syncing screen's facts panel shows: its eight texts after the help text.
    QStringList panel() const { return texts().mid(1); }

    void press(RemoteAction action) { m_stack.handleAction(action); }
    // Moves the focus to the row titled `title` as the remote would, then selects it.
    void choose(const QString& title)
    {
        const long target = rows().indexOf(title);
        ASSERT_GE(target, 0) << qPrintable(title);
        while (top().value(u"focus"_s).toInt() < target)
            press(RemoteAction::Down);
        while (top().value(u"focus"_s).toInt() > target)
            press(RemoteAction::Up);
        press(RemoteAction::Select);
    }

    // The pairs' records, in the order the syncing screen lists them.
    static QList<VireoPlayerPair> pairs()
    {
        VireoPlayerPairList list;
        int count = 0;
        getAllPairInfos(&list, &count);
        QList<VireoPlayerPair> copies(list.get(), list.get() + count);
        releasePairInfoList(list, count);
        return copies;
    }
    static QStringList facts(const VireoPlayerPair& pair)
    {
        return { u"Name"_s, pair.clientName, u"Paired On"_s, pair.pairedOn, u"Last Sync Time"_s,
            pair.lastSync, u"Last Peer Address"_s, pair.lastSyncPeer };
    }

    shell::Scene m_scene;
    shell::ControllerStack m_stack;
};

TEST_F(ScreenWalkTest, AboutShowsThePlayersAndTheDiskAndGoesBack)
{
    ASSERT_EQ(rows().last(), u"Settings"_s);
    choose(u"Settings"_s);
    ASSERT_EQ(topLabel(), u"VireoConfigController"_s);
    EXPECT_EQ(top().value(u"title"_s).toString(), u"Settings"_s);
    EXPECT_EQ(rows(), (QStringList { u"About"_s, u"Syncing"_s }));
    EXPECT_EQ(top()[u"preview"_s][u"kind"_s].toString(), u"metadata"_s);

    QString capacity, available, used, serial;
    getDiskSpaceInfo(&capacity, &available, &used, &serial, nullptr);
    choose(u"About"_s);
    ASSERT_EQ(topLabel(), u"VireoAboutController"_s);
    EXPECT_EQ(texts(),
        (QStringList { u"Syncing"_s, u"2 Vireo Players"_s, u"Capacity"_s, capacity, u"Available"_s,
            available, u"Used by Vireo"_s, used, u"Serial Number"_s, serial,
            u"Vireo Software Version"_s, u"0.96.16.118"_s }));

    press(RemoteAction::Menu);
    EXPECT_EQ(m_stack.labels(),
        (QStringList { u"VireoApplianceController"_s, u"VireoConfigController"_s }));
    EXPECT_EQ(top().value(u"focus"_s).toInt(), 0);
}

TEST_F(ScreenWalkTest, SyncingShowsPairsAndUnpairsOnlyOnYes)
{
    const QList<VireoPlayerPair> players = pairs();
    ASSERT_EQ(players.size(), 2);
    choose(u"Settings"_s);
    choose(u"Syncing"_s);
    ASSERT_EQ(topLabel(), u"VireoSyncingController"_s);
    EXPECT_EQ(top().value(u"title"_s).toString(), u"Syncing"_s);
    EXPECT_EQ(rows(), (QStringList { players[0].clientName, players[1].clientName }));
    EXPECT_EQ(panel(), facts(players[0]));

    // The panel is filled again only when the focus lands on another row.
    const int redraws = m_scene.redrawCount();
    press(RemoteAction::Down);
    EXPECT_EQ(panel(), facts(players[1]));
    EXPECT_EQ(m_scene.redrawCount(), redraws + 1);
    press(RemoteAction::Down);
    EXPECT_EQ(m_scene.redrawCount(), redraws + 1);
    press(RemoteAction::Up);
    EXPECT_EQ(panel(), facts(players[0]));
    EXPECT_EQ(m_scene.redrawCount(), redraws + 2);

    // "No" leaves the library alone and comes back to the same rows.
    const QStringList library = snapshot(root());
    choose(u"Office"_s);
    ASSERT_EQ(topLabel(), u"VireoPairController"_s);
    choose(u"No, leave Syncing turned ON"_s);
    ASSERT_EQ(topLabel(), u"VireoSyncingController"_s);
    EXPECT_EQ(rows(), (QStringList { players[0].clientName, players[1].clientName }));
    EXPECT_EQ(snapshot(root()), library);

    // "Yes" unpairs Den: its folder and links go, and the list drops it at once.
    choose(u"Den"_s);
    ASSERT_EQ(topLabel(), u"VireoPairController"_s);
    choose(u"Yes, Turn off Syncing from this Vireo Player"_s);
    ASSERT_EQ(topLabel(), u"VireoSyncingController"_s);
    EXPECT_EQ(rows(), QStringList { u"Office"_s });
    EXPECT_EQ(panel().mid(0, 2), (QStringList { u"Name"_s, u"Office"_s }));
    EXPECT_FALSE(QFileInfo::exists(pairDir(kPairA)));
    EXPECT_EQ(names(movies()), words("Heat.m4v Heat.xml"));

    // The latest sync time went down with Den, so the top menu lists the library anew.
    press(RemoteAction::Menu);
    press(RemoteAction::Menu);
    ASSERT_EQ(topLabel(), u"VireoApplianceController"_s);
    EXPECT_EQ(rows(), (QStringList { u"Heat"_s, u"Settings"_s }));
}
