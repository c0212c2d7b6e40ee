#pragma once

#include "LogCapture.h"

#include <gtest/gtest.h>

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

// A test whose library home is a fresh temporary folder: root() is the temporary
// folder, home() lies inside it (so root() holds files "outside the library"), and
// the library's home folder points at home() for the length of the test. The log of
// the "vireo.*" categories is captured.
class TempHome : public ::testing::Test {
protected:
    void SetUp() override;
    void TearDown() override;

    QString root() const { return m_dir.path(); }
    QString home() const { return m_dir.path() + QStringLiteral("/home"); }
    // HOME + "/Movies/", with its trailing "/".
    QString movies() const { return home() + QStringLiteral("/Movies/"); }
    QString pairDir(const QString& pairID) const
    {
        return home() + QStringLiteral("/Vireo/") + pairID;
    }

    // Makes the parent folders as needed.
    static void writeFile(const QString& path, const QByteArray& content = "movie");
    static QByteArray readFile(const QString& path);
    static void makeLink(const QString& target, const QString& link);
    static void makeFifo(const QString& path);

    // "a b c" as a list, for short expectations of folder contents.
    static QStringList words(const char* text);
    // The entries of one folder, sorted, hidden ones included.
    static QStringList names(const QString& folder);
    // Every entry below `folder` (full paths, sorted), links not followed.
    static QStringList tree(const QString& folder);
    // Every entry below `folder` with its kind, link target or content digest, links
    // not followed: equal snapshots mean nothing was created, removed, moved or
    // rewritten.
    static QStringList snapshot(const QString& folder);

private:
    QTemporaryDir m_dir;
    std::unique_ptr<LogCapture> m_log;
};
