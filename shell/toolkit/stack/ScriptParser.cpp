#include "toolkit/stack/ScriptParser.h"

#include <QRegularExpression>
#include <QStringList>

namespace shell {

ScriptParser::ScriptParser(QString shotRefusal)
    : m_shotRefusal(std::move(shotRefusal))
{
}

std::optional<ScriptStep> ScriptParser::refuse(const QString& why, QString* error) const
{
    if (error)
        *error = why;
    return std::nullopt;
}

std::optional<ScriptStep> ScriptParser::parseLine(const QString& rawLine, QString* error)
{
    ++m_lines;
    const QString line = rawLine.trimmed();
    if (line.isEmpty() || line.startsWith(u'#'))
        return std::nullopt;

    static const QRegularExpression blanks(QStringLiteral("\\s+"));
    const QStringList words = line.split(blanks, Qt::SkipEmptyParts);
    const QString& verb = words.first();

    ScriptStep step;
    step.line = m_lines;
    step.text = line;
    if (const auto action = remoteActionFromName(verb); action && words.size() == 1) {
        step.kind = ScriptStep::Kind::Action;
        step.action = *action;
    } else if (verb == u"quit" && words.size() == 1) {
        step.kind = ScriptStep::Kind::Quit;
    } else if (verb == u"wait") {
        bool ok = words.size() == 2;
        const qint64 ms = ok ? words.at(1).toLongLong(&ok) : 0;
        if (!ok || ms < 0 || ms > kLongestWaitMS)
            return refuse(QStringLiteral("\"%1\": wait takes milliseconds, 0 to %2")
                              .arg(line)
                              .arg(kLongestWaitMS),
                error);
        step.kind = ScriptStep::Kind::Wait;
        step.waitMS = int(ms);
    } else if (verb == u"shot") {
        static const QRegularExpression name(QStringLiteral("^[A-Za-z0-9_-][A-Za-z0-9._-]{0,99}$"));
        if (words.size() != 2 || !name.match(words.at(1)).hasMatch())
            return refuse(QStringLiteral("\"%1\": shot takes a file name (letters, digits, "
                                         "'.', '_', '-') without \".png\"")
                              .arg(line),
                error);
        if (!m_shotRefusal.isEmpty())
            return refuse(QStringLiteral("\"%1\" %2").arg(line, m_shotRefusal), error);
        step.kind = ScriptStep::Kind::Shot;
        step.shotName = words.at(1);
        if (step.shotName.endsWith(u".png", Qt::CaseInsensitive))
            step.shotName.chop(4);
    } else {
        return refuse(QStringLiteral("unknown step \"%1\"").arg(line), error);
    }
    step.number = ++m_steps;
    return step;
}

} // namespace shell
