#pragma once

#include <QString>

// Stateless helpers over the library folder tree under the box user's home.
class JUtils {
public:
    JUtils() = delete;

    // The box user's home folder, without a trailing "/". A home that the platform
    // reports as 4 characters or fewer is not trusted; the media box's own user
    // folder is used instead.
    static QString homePath();
};
