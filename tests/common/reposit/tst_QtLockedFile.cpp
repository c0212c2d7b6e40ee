#include "reposit/QtLockedFile.h"

#include <QCoreApplication>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <fcntl.h>
#include <future>
#include <unistd.h>

namespace {

QStringList g_warnings; // collected for the whole run, emptied by each test

class LockedFileTest : public testing::Test {
protected:
    void SetUp() override { g_warnings.clear(); }
    // Sends a command (if any) to the other process and waits for its one-line answer.
    QByteArray ask(const char* command)
    {
        if (command)
            m_helper.write(QByteArray(command) + '\n');
        while (!m_helper.canReadLine() && m_helper.waitForReadyRead(10000)) { }
        return m_helper.readLine().trimmed();
    }

    QTemporaryDir m_dir;
    const QString m_path = m_dir.filePath(QStringLiteral("shared.db"));
    QtLockedFile m_file { m_path };
    QProcess m_helper;
};

TEST_F(LockedFileTest, FailuresWarnAndHeldModeIsAnsweredWithoutAskingTheSystem)
{
    EXPECT_FALSE(m_file.lock(QtLockedFile::WriteLock));
    EXPECT_FALSE(m_file.unlock());
    ASSERT_TRUE(m_file.open(QIODevice::ReadWrite));
    ASSERT_TRUE(m_file.lock(QtLockedFile::WriteLock));
    // Swap in a read-only descriptor: any write-lock request through it now fails.
    const int readOnly = ::open(QFile::encodeName(m_path).constData(), O_RDONLY);
    ASSERT_EQ(::dup2(readOnly, m_file.handle()), m_file.handle());
    ::close(readOnly);
    EXPECT_TRUE(m_file.lock(QtLockedFile::WriteLock));
    EXPECT_TRUE(m_file.lock(QtLockedFile::NoLock));
    EXPECT_FALSE(m_file.lock(QtLockedFile::WriteLock, false));
    EXPECT_EQ(g_warnings.join(u'|').toStdString(),
        "QtLockedFile::lock(): file is not opened|QtLockedFile::unlock(): file is not opened|"
        "QtLockedFile::lock(): fcntl: Bad file descriptor");
}

TEST_F(LockedFileTest, SharesAndWaitsWithAnotherProcess)
{
    ASSERT_TRUE(m_file.open(QIODevice::ReadWrite));
    m_helper.start(QStringLiteral(LOCK_HELPER_PATH), { m_path });
    ASSERT_EQ(ask(nullptr), "ready");
    ASSERT_EQ(ask("write"), "ok");
    EXPECT_FALSE(m_file.lock(QtLockedFile::ReadLock, false));
    EXPECT_EQ(m_file.lockMode(), QtLockedFile::NoLock);

    auto locked
        = std::async(std::launch::async, [this] { return m_file.lock(QtLockedFile::WriteLock); });
    EXPECT_EQ(locked.wait_for(std::chrono::milliseconds(200)), std::future_status::timeout);
    EXPECT_EQ(ask("unlock"), "ok");
    EXPECT_TRUE(locked.get());
    EXPECT_EQ(ask("read"), "busy");

    EXPECT_TRUE(m_file.unlock());
    EXPECT_EQ(ask("read"), "ok");
    EXPECT_TRUE(m_file.lock(QtLockedFile::ReadLock, false)) << "readers share";
    // The other reader blocks the write lock; an in-place upgrade would keep our read lock.
    EXPECT_FALSE(m_file.lock(QtLockedFile::WriteLock, false));
    EXPECT_EQ(m_file.lockMode(), QtLockedFile::NoLock);
    EXPECT_EQ(ask("write"), "ok") << "the other process takes the file in between";

    EXPECT_TRUE(g_warnings.isEmpty()) << "a lock held elsewhere is no error";
    m_helper.closeWriteChannel();
    EXPECT_TRUE(m_helper.waitForFinished(5000));
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
