#include "reposit/sxp/XMLEscape.h"

#include <array>

namespace SXP {

QString XMLEscape(const QString& text)
{
    QString out;
    out.reserve(text.size() + text.size() / 10);
    for (const QChar ch : text) {
        switch (ch.unicode()) {
        case '<':
            out += QLatin1String("&lt;");
            break;
        case '>':
            out += QLatin1String("&gt;");
            break;
        case '&':
            out += QLatin1String("&amp;");
            break;
        case '\'':
            out += QLatin1String("&apos;");
            break;
        case '"':
            out += QLatin1String("&quot;");
            break;
        default:
            out += ch;
            break;
        }
    }
    return out;
}

namespace {

    constexpr qsizetype kEntityBufferChars = 9;

    struct Entity {
        QLatin1String text;
        QChar character;
    };

    const std::array<Entity, 5> kEntities { {
        { QLatin1String("&lt;"), QLatin1Char('<') },
        { QLatin1String("&gt;"), QLatin1Char('>') },
        { QLatin1String("&amp;"), QLatin1Char('&') },
        { QLatin1String("&apos;"), QLatin1Char('\'') },
        { QLatin1String("&quot;"), QLatin1Char('"') },
    } };

    // Writes ch at position pos, growing the buffer only when it is too short.
    void put(QString& buffer, qsizetype pos, QChar ch)
    {
        if (pos < buffer.size())
            buffer[pos] = ch;
        else
            buffer.append(ch);
    }

} // namespace

QString XMLUnEscape(const QString& text)
{
    QString out;
    out.reserve(text.size());
    QString buffer; // never shortened: it keeps its length from one entity to the next
    qsizetype used = 0;
    bool inEntity = false;

    for (const QChar ch : text) {
        if (!inEntity) {
            if (ch == QLatin1Char('&')) {
                inEntity = true;
                used = 0;
                put(buffer, used++, ch);
            } else {
                out += ch;
            }
            continue;
        }
        put(buffer, used++, ch);
        if (ch != QLatin1Char(';')) {
            if (used >= kEntityBufferChars) {
                out += QStringView(buffer).left(used);
                inEntity = false;
            }
            continue;
        }
        put(buffer, used, QChar(0));
        const Entity* match = nullptr;
        for (const Entity& entity : kEntities) {
            if (buffer == entity.text)
                match = &entity;
        }
        if (match)
            out += match->character;
        else
            out += QStringView(buffer).left(used);
        inEntity = false;
    }
    if (inEntity)
        out += QStringView(buffer).left(used);
    return out;
}

} // namespace SXP
