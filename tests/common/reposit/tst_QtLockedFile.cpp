#include "reposit/QtLockedFile.h"

#include <QCoreApplication>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <fcntl.h>
#include <future>
#include <unistd.h>

namespace {

QStringList g_warnings;

TEST(QtLockedFile, LocksAreSharedAndWaitedForAcrossProcessesAndAHeldModeIsNotAskedAgain)
{
    QTemporaryDir dir;
    const QString path = dir.filePath("shared.db");
    QtLockedFile file(path);
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
    EXPECT_EQ(ask("unlock"), "ok");

    // Through a read-only descriptor every write-lock request fails: the mode already held
    // is answered without one.
    ASSERT_TRUE(file.lock(QtLockedFile::WriteLock));
    const int readOnly = ::open(QFile::encodeName(path).constData(), O_RDONLY);
    ASSERT_EQ(::dup2(readOnly, file.handle()), file.handle());
    ::close(readOnly);
    EXPECT_TRUE(file.lock(QtLockedFile::WriteLock));
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
