#pragma once

// A temporary home for driving vireoctl in process, with helpers to make source
// files and to snapshot the whole tree. Header-only, shared by the vireoctl tests.

#include "TempHome.h"
#include "VireoCtl.h"

#include <gtest/gtest.h>

#include <QBuffer>
#include <QByteArray>

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QStringList>

struct CtlOutcome {
    int status = -1;
    QString out;
    QString err;

    QJsonDocument json() const { return QJsonDocument::fromJson(out.toUtf8()); }
};

class VireoCtlFixture : public TempHome {
protected:
    static inline const QString kPairA = QStringLiteral("0123456789abcdef0123456789ABCDEF");
    static inline const QString kPairB = QStringLiteral("FEDCBA9876543210fedcba9876543210");

    void SetUp() override
    {
        TempHome::SetUp();
        ASSERT_TRUE(QDir().mkpath(sources()));
    }

    // Where the test keeps the files it adds, outside the library.
    QString sources() const { return root() + QStringLiteral("/src"); }
    QString movies() const { return home() + QStringLiteral("/Movies/"); }
    QString pairDir(const QString& pairID) const
    {
        return home() + QStringLiteral("/Vireo/") + pairID;
    }

    CtlOutcome ctl(QStringList args) const
    {
        args.prepend(home());
        args.prepend(QStringLiteral("--home"));
        return runRaw(args);
    }

    static CtlOutcome runRaw(const QStringList& args)
    {
        QByteArray outBytes;
        QByteArray errBytes;
        QBuffer out(&outBytes);
        QBuffer err(&errBytes);
        out.open(QIODevice::WriteOnly);
        err.open(QIODevice::WriteOnly);
        const int status = VireoCtl::run(args, out, err);
        return { status, QString::fromUtf8(outBytes), QString::fromUtf8(errBytes) };
    }

    QString source(
        const QString& name, const QByteArray& content = QByteArrayLiteral("frames")) const
    {
        const QString path = sources() + QLatin1Char('/') + name;
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly)) << path.toStdString();
        file.write(content);
        return path;
    }

    QString metadata(const QString& name, const QString& title) const
    {
        return source(name,
            QByteArrayLiteral("<movie><title>") + title.toUtf8()
                + QByteArrayLiteral("</title><duration>120</duration></movie>"));
    }

    QString cover(const QString& name) const
    {
        // The eight bytes every PNG starts with, then a few bytes of body.
        return source(name, QByteArray::fromHex("89504e470d0a1a0a0000000d49484452"));
    }

    void pair(const QString& pairID, const QString& name) const
    {
        const CtlOutcome o = ctl({ QStringLiteral("pair"), pairID, QStringLiteral("--name"), name,
            QStringLiteral("--time"), QStringLiteral("1200000000") });
        ASSERT_EQ(o.status, 0) << o.err.toStdString();
    }

    // Adds and answers the final title.
    QString add(const QString& pairID, QStringList args) const
    {
        args.prepend(pairID);
        args.prepend(QStringLiteral("add"));
        const CtlOutcome o = ctl(args);
        EXPECT_EQ(o.status, 0) << o.err.toStdString();
        return o.out.trimmed();
    }

    static QString linkTarget(const QString& path) { return QFileInfo(path).symLinkTarget(); }
};
