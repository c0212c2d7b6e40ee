#pragma once

namespace shell {

// The kinds of media the shell knows how to present. The previews and the default
// artwork are chosen by it.
enum class MediaType {
    movie,
    movieTrailer,
    tvShow,
    musicVideo,
    song,
    photo,
};

} // namespace shell
