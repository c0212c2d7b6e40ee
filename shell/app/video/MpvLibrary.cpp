#include "video/MpvLibrary.h"

#include "video/MpvLog.h"

#include <QCoreApplication>
#include <QLibrary>
#include <QThreadPool>

namespace mediashell {

namespace {

    constexpr unsigned long kBuiltMajor = MPV_CLIENT_API_VERSION >> 16;

    template <typename Function>
    void resolve(QLibrary& library, Function& slot, const char* symbol, QStringList& missing)
    {
        slot = reinterpret_cast<Function>(library.resolve(symbol));
        if (!slot)
            missing.append(QString::fromLatin1(symbol));
    }

    QString tr(const char* text)
    {
        return QCoreApplication::translate("MpvLibrary", text);
    }

} // namespace

QString MpvLibrary::fileName()
{
    const QString chosen = qEnvironmentVariable("MEDIASHELL_LIBMPV");
    if (!chosen.isEmpty())
        return chosen;
    return QStringLiteral("libmpv.so.%1").arg(kBuiltMajor);
}

const MpvLibrary* MpvLibrary::get(QString* error)
{
    struct Opened {
        const MpvLibrary* library = nullptr;
        QString error;
    };
    static const Opened opened = [] {
        Opened result;
        result.library = open(&result.error);
        return result;
    }();
    if (error && !opened.library)
        *error = opened.error;
    return opened.library;
}

void MpvLibrary::openInBackground()
{
    QThreadPool::globalInstance()->start([] { get(); });
}

const MpvLibrary* MpvLibrary::open(QString* error)
{
    // Never unloaded: mpv's threads and FFmpeg's static state outlive any one player.
    QLibrary library(fileName());
    QString why;
    if (!library.load()) {
        why = tr("libmpv cannot be opened: %1").arg(library.errorString());
        qCWarning(lcMpv).noquote() << why;
        if (error)
            *error = why;
        return nullptr;
    }
    auto* const mpv = new MpvLibrary;
    QStringList missing;
#define VIREO_MPV_RESOLVE(name) resolve(library, mpv->name, "mpv_" #name, missing)
    VIREO_MPV_RESOLVE(client_api_version);
    VIREO_MPV_RESOLVE(error_string);
    VIREO_MPV_RESOLVE(create);
    VIREO_MPV_RESOLVE(initialize);
    VIREO_MPV_RESOLVE(terminate_destroy);
    VIREO_MPV_RESOLVE(set_option_string);
    VIREO_MPV_RESOLVE(command_async);
    VIREO_MPV_RESOLVE(command_node_async);
    VIREO_MPV_RESOLVE(set_property_async);
    VIREO_MPV_RESOLVE(get_property);
    VIREO_MPV_RESOLVE(observe_property);
    VIREO_MPV_RESOLVE(request_log_messages);
    VIREO_MPV_RESOLVE(wait_event);
    VIREO_MPV_RESOLVE(wakeup);
    VIREO_MPV_RESOLVE(render_context_create);
    VIREO_MPV_RESOLVE(render_context_set_update_callback);
    VIREO_MPV_RESOLVE(render_context_render);
    VIREO_MPV_RESOLVE(render_context_free);
#undef VIREO_MPV_RESOLVE
    if (!missing.isEmpty()) {
        why = tr("%1 lacks %2").arg(library.fileName(), missing.join(QStringLiteral(", ")));
    } else if (const unsigned long major = mpv->client_api_version() >> 16; major != kBuiltMajor) {
        why = tr("%1 has client API %2, the shell was built for %3")
                  .arg(library.fileName())
                  .arg(major)
                  .arg(kBuiltMajor);
    } else {
        qCDebug(lcMpv).noquote() << "Opened" << library.fileName();
        return mpv;
    }
    qCWarning(lcMpv).noquote() << why;
    if (error)
        *error = why;
    delete mpv;
    return nullptr;
}

} // namespace mediashell
