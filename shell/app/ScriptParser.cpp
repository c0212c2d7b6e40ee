#include "ScriptParser.h"

#include <QRegularExpression>

namespace mediashell {

ScriptParser::ScriptParser(bool hasScreenshotFolder)
    : m_hasScreenshotFolder(hasScreenshotFolder)
{
}

ScriptParser::Result ScriptParser::error(const QString& message) const
{
    Result result;
    result.outcome = Outcome::Error;
    result.error = QStringLiteral("script line %1: %2").arg(m_lines).arg(message);
    return result;
}

ScriptParser::Result ScriptParser::parseLine(const QString& rawLine)
{
    ++m_lines;
    const QString line = rawLine.trimmed();
    if (line.isEmpty() || line.startsWith(u'#'))
        return {};

    static const QRegularExpression blanks(QStringLiteral("\\s+"));
    const QStringList words = line.split(blanks, Qt::SkipEmptyParts);
    const QString& verb = words.first();

    ScriptStep step;
    step.line = m_lines;
    step.text = line;
    if (const auto action = shell::remoteActionFromName(verb); action && words.size() == 1) {
        step.kind = ScriptStep::Kind::Action;
        step.action = *action;
    } else if (verb == u"quit" && words.size() == 1) {
        step.kind = ScriptStep::Kind::Quit;
    } else if (verb == u"wait") {
        bool ok = words.size() == 2;
        const qint64 ms = ok ? words.at(1).toLongLong(&ok) : 0;
        if (!ok || ms < 0 || ms > kLongestWaitMS)
            return error(QStringLiteral("\"%1\": wait takes milliseconds, 0 to %2")
                             .arg(line)
                             .arg(kLongestWaitMS));
        step.kind = ScriptStep::Kind::Wait;
        step.waitMS = int(ms);
    } else if (verb == u"shot") {
        static const QRegularExpression name(QStringLiteral("^[A-Za-z0-9_-][A-Za-z0-9._-]{0,99}$"));
        if (words.size() != 2 || !name.match(words.at(1)).hasMatch())
            return error(QStringLiteral("\"%1\": shot takes a file name (letters, digits, "
                                        "'.', '_', '-') without \".png\"")
                             .arg(line));
        if (!m_hasScreenshotFolder)
            return error(QStringLiteral("\"%1\" needs --screenshots DIR").arg(line));
        step.kind = ScriptStep::Kind::Shot;
        step.shotName = words.at(1);
        if (step.shotName.endsWith(u".png", Qt::CaseInsensitive))
            step.shotName.chop(4);
    } else {
        return error(QStringLiteral("unknown step \"%1\"").arg(line));
    }
    step.number = ++m_steps;
    Result result;
    result.outcome = Outcome::Step;
    result.step = step;
    return result;
}

bool ScriptParser::parseAll(
    const QString& text, bool hasScreenshotFolder, QList<ScriptStep>* steps, QString* error)
{
    ScriptParser parser(hasScreenshotFolder);
    QStringList lines = text.split(u'\n');
    // A final newline ends the last line; it starts no empty one.
    if (!lines.isEmpty() && lines.last().isEmpty())
        lines.removeLast();
    for (const QString& line : lines) {
        const Result result = parser.parseLine(line);
        if (result.outcome == Outcome::Error) {
            if (error)
                *error = result.error;
            return false;
        }
        if (result.outcome == Outcome::Step && steps)
            steps->append(result.step);
    }
    return true;
}

} // namespace mediashell
