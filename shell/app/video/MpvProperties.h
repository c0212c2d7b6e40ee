#pragma once

// The names of the mpv options, properties and commands the shell uses, kept in one
// place so that a rename in a newer mpv is a one-line change.
namespace mediashell::mpv {

namespace option {
    // Nothing of the user's mpv set-up may change how the shell behaves.
    inline constexpr char config[] = "config";
    inline constexpr char loadScripts[] = "load-scripts";
    inline constexpr char terminal[] = "terminal";
    inline constexpr char inputDefaultBindings[] = "input-default-bindings";
    inline constexpr char inputVoKeyboard[] = "input-vo-keyboard";
    inline constexpr char osc[] = "osc";
    inline constexpr char osdLevel[] = "osd-level";
    inline constexpr char osdOnSeek[] = "osd-on-seek";
    inline constexpr char ytdl[] = "ytdl";
    // mpv's own overlays, each a Lua script on a thread of its own with its own
    // interpreter: the shell never shows them, so they would only hold memory.
    inline constexpr char loadStatsOverlay[] = "load-stats-overlay";
    inline constexpr char loadOsdConsole[] = "load-osd-console";
    inline constexpr char loadAutoProfiles[] = "load-auto-profiles";
    inline constexpr char audioDisplay[] = "audio-display";
    // Stay on the last frame at the end, so the end is an observable state.
    inline constexpr char keepOpen[] = "keep-open";
    inline constexpr char idle[] = "idle";
    inline constexpr char vo[] = "vo";
    inline constexpr char ao[] = "ao";
    inline constexpr char hwdec[] = "hwdec";
    inline constexpr char gpuHwdecInterop[] = "gpu-hwdec-interop";
    // Without it mpv_render_context_render() waits for each frame's display time on
    // Qt's render thread.
    inline constexpr char videoTimingOffset[] = "video-timing-offset";
    // Subtitle files beside the movie with its base name (Movie.srt, Movie.ass).
    inline constexpr char subAuto[] = "sub-auto";
    // Per file, given with loadfile.
    inline constexpr char start[] = "start";
} // namespace option

namespace property {
    inline constexpr char timePos[] = "time-pos";
    inline constexpr char duration[] = "duration";
    inline constexpr char eofReached[] = "eof-reached";
    inline constexpr char idleActive[] = "idle-active";
    inline constexpr char pause[] = "pause";
    // Every track with its "selected" flag; it changes when a track is switched too.
    inline constexpr char trackList[] = "track-list";
    // The audio and subtitle track playing: its id, or "no". Also options, so that a
    // file's own "auto" set with loadfile ends a choice made during that file.
    inline constexpr char aid[] = "aid";
    inline constexpr char sid[] = "sid";
} // namespace property

// The fields of one entry of "track-list" the shell reads.
namespace track {
    inline constexpr char type[] = "type";
    inline constexpr char id[] = "id";
    inline constexpr char title[] = "title";
    inline constexpr char lang[] = "lang";
    inline constexpr char external[] = "external";
    inline constexpr char selected[] = "selected";
    inline constexpr char audio[] = "audio";
    inline constexpr char sub[] = "sub";
} // namespace track

namespace command {
    inline constexpr char loadfile[] = "loadfile";
    inline constexpr char seek[] = "seek";
    inline constexpr char stop[] = "stop";
    // Flags and argument names of the commands above.
    inline constexpr char replace[] = "replace";
    inline constexpr char absoluteExact[] = "absolute+exact";
    inline constexpr char name[] = "name";
    inline constexpr char url[] = "url";
    inline constexpr char flags[] = "flags";
    inline constexpr char options[] = "options";
} // namespace command

namespace value {
    inline constexpr char yes[] = "yes";
    inline constexpr char no[] = "no";
    inline constexpr char libmpv[] = "libmpv";
    inline constexpr char null[] = "null";
    inline constexpr char autoSelect[] = "auto";
    inline constexpr char exact[] = "exact";
} // namespace value

// Least severe libmpv message that reaches the log.
inline constexpr char logLevel[] = "warn";

} // namespace mediashell::mpv
