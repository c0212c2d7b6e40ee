#include "vtvplugin/media/MetadataReader.h"

#include "foundation/BoundedFile.h"
#include "foundation/FileSystem.h"
#include "vtvplugin/platform/BoundedText.h"
#include "vtvplugin/platform/TextNumber.h"
#include "vtvplugin/platform/VtvLog.h"

#include <algorithm>
#include <limits>

namespace {

const QString kName = QStringLiteral("name");
const QString kGenre = QStringLiteral("genre");

} // namespace

MovieMetadata MetadataReader::readFile(const QString& path)
{
    MovieMetadata metadata;
    if (!FileSystem::entryExists(path))
        return metadata;
    const std::optional<QByteArray> document
        = BoundedFile::read(path, BoundedFile::kMaxMetadataBytes);
    QString error;
    if (!document) {
        qCDebug(lcAsset).noquote() << "Failed to parse XML file:" << path;
    } else if (!parse(*document, metadata, &error)) {
        qCDebug(lcAsset).noquote() << "XML Parser error:" << error;
        qCDebug(lcAsset).noquote() << "Failed to parse XML file:" << path;
    }
    return metadata;
}

bool MetadataReader::parse(const QByteArray& document, MovieMetadata& metadata, QString* error)
{
    MetadataReader reader(metadata);
    ExpatParser parser(reader);
    return parser.parse(document, error);
}

void MetadataReader::startElement(const QString& name)
{
    if (name == kName || name == kGenre)
        return;
    _currentItem = name;
    _currentData = QString();
}

void MetadataReader::characters(const QString& text)
{
    m_documentChars += text.size();
    if (m_documentChars > kMaxDocumentChars) {
        stopParsing(QStringLiteral("metadata longer than %1 characters").arg(kMaxDocumentChars));
        return;
    }
    if (_currentItem.isEmpty())
        return;
    if (_currentData.isNull())
        _currentData.reserve(60);
    BoundedText::append(_currentData, text);
}

void MetadataReader::endElement(const QString& name)
{
    if (name == kGenre || _currentItem.isEmpty() || _currentData.isEmpty())
        return;
    const QString trimmed = _currentData.trimmed();
    const bool listItem = _currentItem == QLatin1String("cast")
        || _currentItem == QLatin1String("directors") || _currentItem == QLatin1String("producers");
    // A blank list entry leaves the parse state as it is.
    if (listItem && trimmed.isEmpty())
        return;
    storeCurrentItem(trimmed);
    if (name != kName)
        _currentItem = QString();
    _currentData = QString();
}

void MetadataReader::storeCurrentItem(const QString& trimmed)
{
    const QString& item = _currentItem;
    MovieMetadata& m = m_metadata;
    const qint32 number = TextNumber::leadingInt(_currentData);
    if (item == QLatin1String("title"))
        appendTrimmed(m.title, trimmed);
    else if (item == QLatin1String("description"))
        BoundedText::append(m.description, _currentData);
    else if (item == QLatin1String("cast"))
        appendEntry(m.cast, m_castChars, trimmed);
    else if (item == QLatin1String("directors"))
        appendEntry(m.directors, m_directorsChars, trimmed);
    else if (item == QLatin1String("producers"))
        appendEntry(m.producers, m_producersChars, trimmed);
    else if (item == QLatin1String("duration") && number > 0)
        m.duration = number;
    else if (item == QLatin1String("sversion"))
        appendTrimmed(m.xmlVersion, trimmed);
    else if (item == QLatin1String("ccontentid"))
        appendTrimmed(m.clientContentId, trimmed);
    else if (item == QLatin1String("vcontentid"))
        appendTrimmed(m.vireoContentId, trimmed);
    else if (item == QLatin1String("cversion") && number > 0)
        m.cVersion = number;
}

// The pieces are trimmed, so only a cut at the field's bound can leave white space at
// the end; that cut is trimmed too, so a trimmed field stays trimmed.
void MetadataReader::appendTrimmed(QString& field, const QString& piece)
{
    const qsizetype before = field.size();
    BoundedText::append(field, piece);
    if (field.size() - before < piece.size()) {
        while (!field.isEmpty() && field.back().isSpace())
            field.chop(1);
    }
}

void MetadataReader::appendEntry(QStringList& list, qsizetype& listChars, const QString& entry)
{
    const qsizetype length
        = BoundedText::fittingLength(entry, BoundedText::kMaxFieldChars - listChars - 1);
    if (length <= 0)
        return;
    // The list's bound is spent either way; an entry cut to white space is no name.
    listChars += length + 1;
    const QString kept = entry.left(length).trimmed();
    if (!kept.isEmpty())
        list.append(kept);
}
