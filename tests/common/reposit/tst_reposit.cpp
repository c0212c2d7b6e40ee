#include "reposit/QtLockedFile.h"
#include "reposit/ROptions.h"
#include "reposit/RRepositObject.h"

#include <QCoreApplication>
#include <QProcess>
#include <QSettings>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <future>
#include <memory>

namespace {

QStringList g_warnings;

TEST(RuntimeClass, DerivationWalksBaseRecordsByIdentityAndFactoriesMayFail)
{
    const RRuntimeClass* const root = &RObject::classRObject;
    const RRuntimeClass* const repo = &RRepositObject::classRRepositObject;
    const RRuntimeClass lookalike = { "RObject", nullptr, nullptr, 0 };
    EXPECT_TRUE(repo->IsDerivedFrom(repo) && repo->IsDerivedFrom(root));
    EXPECT_FALSE(root->IsDerivedFrom(repo) || repo->IsDerivedFrom(nullptr));
    EXPECT_FALSE(repo->IsDerivedFrom(&lookalike)) << "same name, other record";
    EXPECT_EQ(root->CreateObject(), nullptr);
    EXPECT_TRUE(std::unique_ptr<RObject>(repo->CreateObject())->IsKindOf(repo));
    const RRuntimeClass throwing = { "Throwing", []() -> RObject* { throw 1; }, nullptr, 0 };
    EXPECT_EQ(throwing.CreateObject(), nullptr);
}

TEST(Guards, EachSlotHasExactlyOneRegistration)
{
    auto gone = std::make_unique<RRepositObject>();
    RRepositObject a, b;
    RObject* const goneAddress = gone.get();
    RObject *first = goneAddress, *second = goneAddress;
    RRepositObject::addGuard(&first);
    RRepositObject::addGuard(&second);
    gone.reset();
    EXPECT_EQ(first, nullptr);
    EXPECT_EQ(second, nullptr);

    RObject *removed = &a, *kept = &a, *moved = nullptr, *dropped = nullptr;
    RRepositObject::addGuard(&removed);
    RRepositObject::addGuard(&kept);
    RRepositObject::removeGuard(&removed);
    RRepositObject::changeGuard(&moved, &a);
    RRepositObject::changeGuard(&moved, &b);
    RRepositObject::changeGuard(&dropped, &a);
    RRepositObject::changeGuard(&dropped, nullptr);
    EXPECT_EQ(dropped, nullptr);
    dropped = first = second = &a; // none of these slots is registered any more

    RRepositObject::clearGuards(goneAddress); // a stale entry would strike here
    RRepositObject::clearGuards(&a);
    EXPECT_EQ(first, &a);
    EXPECT_EQ(second, &a);
    EXPECT_EQ(kept, nullptr);
    EXPECT_EQ(removed, &a);
    EXPECT_EQ(moved, &b);
    EXPECT_EQ(dropped, &a);
    RRepositObject::clearGuards(&b);
    EXPECT_EQ(moved, nullptr);
}

// A parent that hands out its children, or claims to have none.
struct Parent : RRepositObject {
    QList<RRepositObject*> children;
    bool answer = true;
    bool getAllChildObjects(QList<RRepositObject*>& out) override
    {
        out = children;
        return answer;
    }
};

TEST(RRepositObject, ColumnsAndVersionsKeepChangesDuringASaveApartAndReachTheChildren)
{
    for (const auto& [col, inRange] :
        { std::pair { 0u, false }, { 1u, true }, { 64u, true }, { 65u, false } }) {
        RRepositObject object;
        object.setCol(col);
        EXPECT_EQ(object.isColSet(col) && object.hasModifiedCols(false), inRange) << col;
    }
    EXPECT_TRUE(RRepositObject::isColSet(64, 1ull << 63));

    Parent parent;
    RRepositObject child;
    parent.children = { &child };
    parent.setModified();
    parent.setCol(2);
    parent.clearCol(2);
    EXPECT_TRUE(parent.isColDirty(2) && !parent.isColSet(2));
    parent.setSaved(); // no save under way: nothing to do
    EXPECT_TRUE(parent.checkIfModified());
    child.setCol(3);
    parent.setSaving(true);
    EXPECT_TRUE(parent.isColSaving(2) && !parent.hasModifiedCols(false));
    EXPECT_TRUE(parent.hasSavingCols(true)) << "the child's column";
    parent.setModified(); // a change during the save
    parent.setCol(7);
    parent.clearAllModifiedCols(false); // refused while modified
    parent.setSaved();
    parent.setSaved(); // nothing left to finish: must not roll the saved versions back
    EXPECT_FALSE(parent.isSaving() || parent.isColDirty(2) || child.isModified());
    EXPECT_TRUE(parent.isColModified(7) && parent.isModified());
    parent.clearModifiedCol(7);
    EXPECT_FALSE(parent.checkIfModified()) << "modified without a modified column";
    EXPECT_FALSE(parent.isModified());

    child.setCol(5);
    EXPECT_TRUE(parent.hasModifiedCols(true) && !parent.hasModifiedCols(false));
    parent.clearAllCols(true);
    EXPECT_FALSE(child.isColSet(5));
    parent.answer = false; // "no children", whatever the list holds
    EXPECT_FALSE(parent.hasModifiedCols(true));
}

// The settings store lives in a temporary folder, never in ~/.config.
TEST(ROptions, ForeignHostsAndUnusablePortsFallBackToDefaultsAndDownloadsAreStoredOnlyWhenOff)
{
    QTemporaryDir dir;
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, dir.path());
    QString builtIn;
    int port = 0;
    ROptions::getServerName(builtIn, port);
    ASSERT_TRUE(builtIn.contains(ROptions::settingsDomain()));
    EXPECT_EQ(port, 80);
    // Each row stores "host", and its port as both "port" and "sport".
    const struct {
        const char *host, *url;
        QVariant port;
    } rows[] = {
        { "media.VIREOMOVIES.net", "http://media.VIREOMOVIES.net:8080", 8080 },
        { "cdn.vireo-media.com", "http://cdn.vireo-media.com:80", 0 },
        { "media.vireomovies.net", "http://media.vireomovies.net:80", "eighty" },
        { "vireomovies.evil.example", nullptr, 8080 },
    };
    for (const auto& row : rows) {
        QSettings server(QSettings::UserScope, ROptions::settingsDomain(), "server");
        server.setValue("host", row.host);
        server.setValue("port", row.port);
        server.setValue("sport", row.port);
        server.sync();
        QString host;
        ROptions::getXMLRPCServerName(host, port);
        EXPECT_EQ(port, 443) << row.host;
        EXPECT_EQ(ROptions::getServerURL(), row.url ? row.url : "http://" + builtIn + ":8080");
    }

    const QString options = dir.filePath(ROptions::settingsDomain() + "/options.conf");
    EXPECT_TRUE(ROptions::remoteDownloadsEnabled());
    ROptions::setRemoteDownloadsEnabled(false);
    EXPECT_FALSE(ROptions::remoteDownloadsEnabled());
    EXPECT_EQ(
        QSettings(options, QSettings::IniFormat).allKeys(), QStringList { "remote_downloads" });
    ROptions::setRemoteDownloadsEnabled(true);
    EXPECT_TRUE(QSettings(options, QSettings::IniFormat).allKeys().isEmpty());
}

TEST(QtLockedFile, LocksAreSharedAndWaitedForAcrossProcesses)
{
    QTemporaryDir dir;
    const QString path = dir.filePath("shared.db");
    QtLockedFile file(path);
    g_warnings.clear();
    EXPECT_FALSE(file.lock(QtLockedFile::WriteLock));
    ASSERT_TRUE(file.open(QIODevice::ReadWrite));
    // The other process takes fcntl locks on command and answers each with one line.
    QProcess helper;
    const auto ask = [&helper](const char* command) {
        if (command)
            helper.write(QByteArray(command) + '\n');
        while (!helper.canReadLine() && helper.waitForReadyRead(10000)) { }
        return helper.readLine().trimmed();
    };
    helper.start(QStringLiteral(LOCK_HELPER_PATH), { path });
    ASSERT_EQ(ask(nullptr), "ready");
    ASSERT_EQ(ask("write"), "ok");
    EXPECT_FALSE(file.lock(QtLockedFile::ReadLock, false));
    auto locked
        = std::async(std::launch::async, [&] { return file.lock(QtLockedFile::WriteLock); });
    EXPECT_EQ(locked.wait_for(std::chrono::milliseconds(200)), std::future_status::timeout);
    EXPECT_EQ(ask("unlock"), "ok");
    EXPECT_TRUE(locked.get());
    EXPECT_EQ(ask("read"), "busy");
    EXPECT_TRUE(file.unlock());
    EXPECT_EQ(ask("read"), "ok");
    EXPECT_TRUE(file.lock(QtLockedFile::ReadLock, false)) << "readers share";
    // The other reader blocks the write lock; an in-place upgrade would keep our read lock.
    EXPECT_FALSE(file.lock(QtLockedFile::WriteLock, false));
    EXPECT_EQ(file.lockMode(), QtLockedFile::NoLock);
    EXPECT_EQ(ask("write"), "ok") << "the other process takes the file in between";
    EXPECT_EQ(g_warnings, QStringList { "QtLockedFile::lock(): file is not opened" })
        << "a lock held elsewhere is no error";
    helper.closeWriteChannel();
    EXPECT_TRUE(helper.waitForFinished(5000));
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    qInstallMessageHandler([](QtMsgType type, const QMessageLogContext&, const QString& text) {
        if (type == QtWarningMsg)
            g_warnings << text;
    });
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
