// Any bytes as a movie's metadata file, whatever encoding or entities it declares.
// Besides surviving the parse, what was read must keep the reader's promises: list
// entries are trimmed and never blank, the trimmed texts stay trimmed, numbers are only
// kept when positive, every field (a list joined with one separator per entry) stays
// within its bound and never ends in half a surrogate pair, and a failed parse says why.
#include "vtvplugin/media/MetadataReader.h"
#include "vtvplugin/media/MovieMetadata.h"
#include "vtvplugin/platform/BoundedText.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>

namespace {

[[noreturn]] void fail(const char* what)
{
    std::fprintf(stderr, "metadata reader broke its promise: %s\n", what);
    __builtin_trap();
}

void checkBounded(const QString& text, const char* what)
{
    if (text.size() > BoundedText::kMaxFieldChars
        || (!text.isEmpty() && text.back().isHighSurrogate()))
        fail(what);
}

void checkTrimmed(const QString& text, const char* what)
{
    if (text != text.trimmed())
        fail(what);
    checkBounded(text, what);
}

void checkNames(const QStringList& names, const char* what)
{
    qsizetype length = 0;
    for (const QString& name : names) {
        if (name.isEmpty() || name != name.trimmed())
            fail(what);
        checkBounded(name, what);
        length += name.size() + 1;
    }
    if (length > BoundedText::kMaxFieldChars)
        fail(what);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const QByteArray document(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    MovieMetadata metadata;
    QString error;
    const bool ok = MetadataReader::parse(document, metadata, &error);
    if (!ok && error.isEmpty())
        fail("a failed parse left no error text");

    checkNames(metadata.cast, "cast: a blank or untrimmed entry, or past its bound");
    checkNames(metadata.directors, "directors: a blank or untrimmed entry, or past its bound");
    checkNames(metadata.producers, "producers: a blank or untrimmed entry, or past its bound");
    if (metadata.duration < 0)
        fail("negative duration");
    if (metadata.cVersion < 0)
        fail("negative cversion");

    // The single texts are built from trimmed pieces only.
    checkTrimmed(metadata.title, "title: untrimmed or past its bound");
    checkTrimmed(metadata.xmlVersion, "sversion: untrimmed or past its bound");
    checkTrimmed(metadata.vireoContentId, "vcontentid: untrimmed or past its bound");
    checkTrimmed(metadata.clientContentId, "ccontentid: untrimmed or past its bound");

    // The description is kept raw; reading it through a volatile keeps it from being
    // optimised away, so the sanitizers see every byte of it.
    checkBounded(metadata.description, "description past its bound");
    volatile qsizetype sink = 0;
    for (const QChar c : metadata.description)
        sink = sink + c.unicode();
    return 0;
}
