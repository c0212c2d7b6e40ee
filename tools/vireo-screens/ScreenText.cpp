#include "ScreenText.h"

#include <QJsonArray>

namespace {

QString text(const QJsonValue& value)
{
    return value.isString() ? value.toString() : QString();
}

QString joined(const QJsonValue& list)
{
    QStringList texts;
    for (const QJsonValue& value : list.toArray())
        texts.append(value.toString());
    return texts.join(QStringLiteral(", "));
}

} // namespace

QString ScreenText::render(const QJsonObject& screen)
{
    if (screen.isEmpty())
        return QStringLiteral("(no screen)\n");
    QString out = QStringLiteral("[%1] %2\n")
                      .arg(screen.value(u"label").toString(), text(screen.value(u"title")));
    for (const char* key : { "primaryText", "secondaryText" }) {
        const QString shown = text(screen.value(QLatin1String(key)));
        if (!shown.isEmpty())
            out += QStringLiteral("  %1\n").arg(shown);
    }
    out += renderRows(screen);
    out += renderControls(screen);
    if (screen.value(u"preview").isObject())
        out += renderPreview(screen.value(u"preview").toObject());
    if (screen.value(u"player").isObject())
        out += renderPlayer(screen.value(u"player").toObject());
    return out;
}

QString ScreenText::renderRows(const QJsonObject& screen)
{
    QString out;
    const QJsonArray rows = screen.value(u"rows").toArray();
    const int focus = screen.value(u"focus").toInt(-1);
    for (int i = 0; i < rows.size(); ++i) {
        const QJsonObject row = rows.at(i).toObject();
        if (row.value(u"dividerAbove").toBool())
            out += QStringLiteral("    ----\n");
        const bool folder = row.value(u"kind").toString() == u"folder";
        out += QStringLiteral("  %1 %2%3\n")
                   .arg(i == focus ? QStringLiteral(">") : QStringLiteral(" "),
                       text(row.value(u"title")), folder ? QStringLiteral("  >") : QString());
    }
    return out;
}

QString ScreenText::renderPreview(const QJsonObject& preview)
{
    QString out = QStringLiteral("  preview: %1").arg(text(preview.value(u"title")));
    const int seconds = preview.value(u"duration").toInt();
    if (seconds > 0)
        out += QStringLiteral(" (%1)").arg(clock(qint64(seconds) * 1000));
    out += u'\n';
    for (const char* key : { "description", "copyright" }) {
        const QString shown = text(preview.value(QLatin1String(key)));
        if (!shown.isEmpty())
            out += QStringLiteral("    %1\n").arg(shown);
    }
    for (const char* key : { "cast", "directors", "producers" }) {
        const QString names = joined(preview.value(QLatin1String(key)));
        if (!names.isEmpty())
            out += QStringLiteral("    %1: %2\n").arg(QLatin1String(key), names);
    }
    return out;
}

QString ScreenText::renderControls(const QJsonObject& screen)
{
    // Label and value controls come in pairs on one line of the screen: print the
    // texts of one height together, the way they are read.
    QString out;
    double lineY = -1;
    for (const QJsonValue& value : screen.value(u"controls").toArray()) {
        const QJsonObject control = value.toObject();
        const QString shown = text(control.value(u"text")).trimmed();
        if (shown.isEmpty())
            continue;
        const double y = control.value(u"frame").toArray().at(1).toDouble();
        if (y == lineY) {
            out += QStringLiteral("  ") + shown;
        } else {
            if (!out.isEmpty())
                out += u'\n';
            out += QStringLiteral("  | ") + shown;
        }
        lineY = y;
    }
    return out.isEmpty() ? out : out + u'\n';
}

QString ScreenText::renderPlayer(const QJsonObject& player)
{
    QString out = QStringLiteral("  player: %1 %2 / %3  %4\n")
                      .arg(player.value(u"state").toString(),
                          clock(qint64(player.value(u"positionMS").toDouble())),
                          clock(qint64(player.value(u"durationMS").toDouble())),
                          text(player.value(u"url")));
    const QString error = text(player.value(u"error"));
    if (!error.isEmpty())
        out += QStringLiteral("  error: %1\n").arg(error);
    return out;
}

QString ScreenText::clock(qint64 ms)
{
    const qint64 seconds = ms / 1000;
    return QStringLiteral("%1:%2:%3")
        .arg(seconds / 3600)
        .arg(seconds / 60 % 60, 2, 10, QLatin1Char('0'))
        .arg(seconds % 60, 2, 10, QLatin1Char('0'));
}
