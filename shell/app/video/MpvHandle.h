#pragma once

#include "video/MpvLibrary.h"

#include <QString>

#include <memory>

namespace mediashell {

// Owns one mpv core (mpv_create .. mpv_terminate_destroy). Shared: a render context
// keeps the handle it renders for alive, so the core is always destroyed after it.
// libmpv's client API is thread-safe; the handle is used from the main thread and the
// event thread alike.
class MpvHandle {
public:
    // A fresh, uninitialised core; null (and the reason in `error`) when libmpv cannot
    // be opened or cannot create one.
    static std::shared_ptr<MpvHandle> create(QString* error = nullptr);
    ~MpvHandle();
    MpvHandle(const MpvHandle&) = delete;
    MpvHandle& operator=(const MpvHandle&) = delete;

    mpv_handle* get() const { return m_handle; }
    const MpvLibrary& mpv() const { return m_mpv; }

    // Before initialize(); false (and a log line) for an option this mpv rejects.
    bool setOption(const char* name, const char* value);
    bool initialize();

    // Queued in the core; the reply comes as MPV_EVENT_COMMAND_REPLY with `id`.
    // `command` is a node map of named arguments; `what` names it in the log.
    bool commandAsync(quint64 id, const char* what, mpv_node command);
    bool commandAsync(quint64 id, std::initializer_list<const char*> arguments);
    bool setFlagAsync(quint64 id, const char* name, bool on);
    bool setStringAsync(quint64 id, const char* name, const char* value);
    bool observe(const char* name, mpv_format format);

    QString errorText(int error) const;

private:
    MpvHandle(const MpvLibrary& mpv, mpv_handle* handle);
    bool check(int result, const char* what, const char* name) const;

    const MpvLibrary& m_mpv;
    mpv_handle* const m_handle;
};

} // namespace mediashell
