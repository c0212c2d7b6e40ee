#pragma once

#include <QCommandLineParser>
#include <QString>
#include <QStringList>

// The command line of vireoctl: one command word, its arguments, and options that
// may stand anywhere. Knows which options belong to which command, so that a
// misplaced option is a usage error rather than silently ignored.
class CommandLine {
public:
    CommandLine();

    // `args` without the program name. False with the reason for a usage error.
    bool parse(const QStringList& args, QString* error);

    bool helpRequested() const;
    bool json() const;
    QString command() const { return m_command; }
    // The arguments after the command word.
    QStringList arguments() const { return m_arguments; }
    bool isSet(const QString& option) const;
    QString value(const QString& option) const;

    static QString usage();

private:
    bool checkCommand(QString* error) const;

    QCommandLineParser m_parser;
    QString m_command;
    QStringList m_arguments;
};
