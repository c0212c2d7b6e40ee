// Any bytes as a movie's metadata file, whatever encoding or entities it declares.
// Besides surviving the parse, what was read must keep the reader's promises: list
// entries are trimmed and never blank, the trimmed texts stay trimmed, numbers are only
// kept when positive, and a failed parse says why.
#include "vtvplugin/media/MetadataReader.h"
#include "vtvplugin/media/MovieMetadata.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>

namespace {

[[noreturn]] void fail(const char* what)
{
    std::fprintf(stderr, "metadata reader broke its promise: %s\n", what);
    __builtin_trap();
}

void checkTrimmed(const QString& text, const char* what)
{
    if (text != text.trimmed())
        fail(what);
}

void checkNames(const QStringList& names, const char* what)
{
    for (const QString& name : names) {
        if (name.isEmpty() || name != name.trimmed())
            fail(what);
    }
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

    checkNames(metadata.cast, "blank or untrimmed cast entry");
    checkNames(metadata.directors, "blank or untrimmed directors entry");
    checkNames(metadata.producers, "blank or untrimmed producers entry");
    if (metadata.duration < 0)
        fail("negative duration");
    if (metadata.cVersion < 0)
        fail("negative cversion");

    // The single texts are built from trimmed pieces only.
    checkTrimmed(metadata.title, "untrimmed title");
    checkTrimmed(metadata.xmlVersion, "untrimmed sversion");
    checkTrimmed(metadata.vireoContentId, "untrimmed vcontentid");
    checkTrimmed(metadata.clientContentId, "untrimmed ccontentid");

    // The description is kept raw; reading it through a volatile keeps it from being
    // optimised away, so the sanitizers see every byte of it.
    volatile qsizetype sink = 0;
    for (const QChar c : metadata.description)
        sink = sink + c.unicode();
    return 0;
}
