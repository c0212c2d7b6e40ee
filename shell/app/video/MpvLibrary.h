#pragma once

#include <mpv/client.h>
#include <mpv/render.h>

#include <QString>

namespace mediashell {

// libmpv, opened on first use instead of linked. It brings some two hundred shared
// libraries (FFmpeg and everything FFmpeg links), and relocating them at start-up would
// double the time to the shell's first frame, for an evening that may never play a
// movie. Opened once, never unloaded; the table is read-only and safe on any thread.
//
// The members mirror libmpv's functions without their "mpv_" prefix, so that each call
// reads like the C API it is.
class MpvLibrary {
public:
    // The library, or null with the reason in `error`. The first call opens it; every
    // later call answers the same.
    static const MpvLibrary* get(QString* error = nullptr);
    // Opens it on a pool thread, so that the first movie need not wait for it on the
    // GUI thread; get() meanwhile waits for that opening to finish.
    static void openInBackground();

    // MEDIASHELL_LIBMPV when set (another build of libmpv), else the libmpv whose major
    // version the shell was built against.
    static QString fileName();

    decltype(&::mpv_client_api_version) client_api_version = nullptr;
    decltype(&::mpv_error_string) error_string = nullptr;
    decltype(&::mpv_create) create = nullptr;
    decltype(&::mpv_initialize) initialize = nullptr;
    decltype(&::mpv_terminate_destroy) terminate_destroy = nullptr;
    decltype(&::mpv_set_option_string) set_option_string = nullptr;
    decltype(&::mpv_command_async) command_async = nullptr;
    decltype(&::mpv_command_node_async) command_node_async = nullptr;
    decltype(&::mpv_set_property_async) set_property_async = nullptr;
    decltype(&::mpv_get_property) get_property = nullptr;
    decltype(&::mpv_observe_property) observe_property = nullptr;
    decltype(&::mpv_request_log_messages) request_log_messages = nullptr;
    decltype(&::mpv_wait_event) wait_event = nullptr;
    decltype(&::mpv_wakeup) wakeup = nullptr;
    decltype(&::mpv_render_context_create) render_context_create = nullptr;
    decltype(&::mpv_render_context_set_update_callback) render_context_set_update_callback
        = nullptr;
    decltype(&::mpv_render_context_render) render_context_render = nullptr;
    decltype(&::mpv_render_context_free) render_context_free = nullptr;

private:
    MpvLibrary() = default;
    static const MpvLibrary* open(QString* error);
};

} // namespace mediashell
