#include "video/MpvHandle.h"

#include "video/MpvLog.h"

#include <clocale>
#include <vector>

namespace mediashell {

std::shared_ptr<MpvHandle> MpvHandle::create()
{
    // libmpv refuses to start under a locale that writes decimal commas, and Qt has
    // set the user's locale by now; Qt's own number formatting does not use it.
    std::setlocale(LC_NUMERIC, "C");
    mpv_handle* const handle = mpv_create();
    if (!handle) {
        qCWarning(lcMpv) << "libmpv could not create a player";
        return nullptr;
    }
    return std::shared_ptr<MpvHandle>(new MpvHandle(handle));
}

MpvHandle::MpvHandle(mpv_handle* handle)
    : m_handle(handle)
{
}

MpvHandle::~MpvHandle()
{
    mpv_terminate_destroy(m_handle);
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
    return check(mpv_set_option_string(m_handle, name, value), "Setting option", name);
}

bool MpvHandle::initialize()
{
    return check(mpv_initialize(m_handle), "Starting", "mpv");
}

bool MpvHandle::commandAsync(quint64 id, const char* what, mpv_node command)
{
    return check(mpv_command_node_async(m_handle, id, &command), "Command", what);
}

bool MpvHandle::commandAsync(quint64 id, std::initializer_list<const char*> arguments)
{
    std::vector<const char*> argv(arguments);
    argv.push_back(nullptr);
    return check(mpv_command_async(m_handle, id, argv.data()), "Command", argv.front());
}

bool MpvHandle::setFlagAsync(quint64 id, const char* name, bool on)
{
    int flag = on ? 1 : 0;
    return check(
        mpv_set_property_async(m_handle, id, name, MPV_FORMAT_FLAG, &flag), "Setting", name);
}

bool MpvHandle::observe(const char* name, mpv_format format)
{
    return check(mpv_observe_property(m_handle, 0, name, format), "Observing", name);
}

QString MpvHandle::errorText(int error)
{
    return QString::fromUtf8(mpv_error_string(error));
}

} // namespace mediashell
