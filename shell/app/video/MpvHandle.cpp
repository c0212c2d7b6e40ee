#include "video/MpvHandle.h"

#include "video/MpvLog.h"

#include <clocale>
#include <malloc.h>
#include <vector>

namespace mediashell {

std::shared_ptr<MpvHandle> MpvHandle::create(QString* error)
{
    QString reason;
    const MpvLibrary* const mpv = MpvLibrary::get(&reason);
    if (!mpv) {
        if (error)
            *error = reason;
        return nullptr;
    }
    // libmpv refuses to start under a locale that writes decimal commas, and Qt has
    // set the user's locale by now; Qt's own number formatting does not use it.
    std::setlocale(LC_NUMERIC, "C");
    mpv_handle* const handle = mpv->create();
    if (!handle) {
        const QString failure = QStringLiteral("libmpv could not create a player");
        qCWarning(lcMpv).noquote() << failure;
        if (error)
            *error = failure;
        return nullptr;
    }
    return std::shared_ptr<MpvHandle>(new MpvHandle(*mpv, handle));
}

MpvHandle::MpvHandle(const MpvLibrary& mpv, mpv_handle* handle)
    : m_mpv(mpv)
    , m_handle(handle)
{
}

MpvHandle::~MpvHandle()
{
    m_mpv.terminate_destroy(m_handle);
    // The decoder's frames and the demuxer's packets were tens of megabytes of small
    // blocks: give the pages back now rather than when the heap happens to shrink.
    malloc_trim(0);
}

bool MpvHandle::check(int result, const char* what, const char* name) const
{
    if (result >= 0)
        return true;
    qCWarning(lcMpv).noquote() << what << name << "failed:" << errorText(result);
    return false;
}

bool MpvHandle::setOption(const char* name, const char* value)
{
    return check(m_mpv.set_option_string(m_handle, name, value), "Setting option", name);
}

bool MpvHandle::initialize()
{
    return check(m_mpv.initialize(m_handle), "Starting", "mpv");
}

bool MpvHandle::commandAsync(quint64 id, const char* what, mpv_node command)
{
    return check(m_mpv.command_node_async(m_handle, id, &command), "Command", what);
}

bool MpvHandle::commandAsync(quint64 id, std::initializer_list<const char*> arguments)
{
    std::vector<const char*> argv(arguments);
    argv.push_back(nullptr);
    return check(m_mpv.command_async(m_handle, id, argv.data()), "Command", argv.front());
}

bool MpvHandle::setFlagAsync(quint64 id, const char* name, bool on)
{
    int flag = on ? 1 : 0;
    return check(
        m_mpv.set_property_async(m_handle, id, name, MPV_FORMAT_FLAG, &flag), "Setting", name);
}

bool MpvHandle::setStringAsync(quint64 id, const char* name, const char* value)
{
    const char* text = value;
    return check(
        m_mpv.set_property_async(m_handle, id, name, MPV_FORMAT_STRING, &text), "Setting", name);
}

bool MpvHandle::observe(const char* name, mpv_format format)
{
    return check(m_mpv.observe_property(m_handle, 0, name, format), "Observing", name);
}

QString MpvHandle::errorText(int error) const
{
    return QString::fromUtf8(m_mpv.error_string(error));
}

} // namespace mediashell
