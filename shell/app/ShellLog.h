#pragma once

#include <QLoggingCategory>

// The front end's log categories. `mediashell --verbose` turns on the debug output of
// every "vireo.*" category, these and the toolkit's and appliances' alike.

// Start, appliance folders, the player chosen, termination.
Q_DECLARE_LOGGING_CATEGORY(lcShell)
// The key map: where it came from, keys that map to nothing.
Q_DECLARE_LOGGING_CATEGORY(lcKeys)
// Scripted runs: steps as they run, screenshots.
Q_DECLARE_LOGGING_CATEGORY(lcScript)
