#pragma once

#include <QLoggingCategory>

// Every log category of the appliance toolkit. Turn them on with
// QT_LOGGING_RULES="vireo.*.debug=true".

// Pushes, pops and remote actions of the controller stack.
Q_DECLARE_LOGGING_CATEGORY(lcStack)
// Loading appliance plugins and their bundles.
Q_DECLARE_LOGGING_CATEGORY(lcPlugins)
// The video player controller: prompt, playback, bookmarks, errors.
Q_DECLARE_LOGGING_CATEGORY(lcPlayer)
