#pragma once

#include "RemoteLimits.h"

#include <QObject>
#include <QString>
#include <QStringList>
#include <QTimer>

namespace mediashell {

// Who may press the phone remote's buttons: the four-digit code shown on the TV while
// a browser waits to pair, the tokens of the browsers that entered it, and the wrong
// codes that pause pairing for a while. Codes and tokens come from the system's
// random source and live in memory only: restarting the shell, or forgetAll(), makes
// every phone pair again.
class RemotePairing : public QObject {
    Q_OBJECT
public:
    enum class Verdict { Paired, Wrong, CoolingDown };
    struct Attempt {
        Verdict verdict = Verdict::Wrong;
        QString token; // Paired: the browser's new token
        int triesLeft = 0; // Wrong: before the cool-down
        int secondsLeft = 0; // CoolingDown: until codes are taken again
    };

    explicit RemotePairing(const RemoteLimits& limits = {}, QObject* parent = nullptr);

    // The code on screen, empty when none is shown.
    QString code() const { return m_code; }
    // A browser waits (true) or none does: shows a code, unless cooling down, or
    // takes it off the screen. A code stays the same until it is used or given up.
    void setWaiting(bool waiting);
    bool isCoolingDown() const { return m_coolDownEnd.isActive(); }

    // A browser's guess. The right code pairs it and is used up; each wrong one counts,
    // and the last allowed gives up the code and starts the cool-down.
    Attempt tryCode(const QString& code);
    bool knows(const QString& token) const;
    // Every token goes: each phone must enter a code again.
    void forgetAll();

signals:
    // The code shown changed (or went), or the cool-down ended.
    void changed();

private:
    void setCode(const QString& code);
    int secondsLeft() const;

    const RemoteLimits m_limits;
    QString m_code;
    bool m_waiting = false;
    int m_wrong = 0;
    QTimer m_coolDownEnd;
    QStringList m_tokens; // oldest first
};

} // namespace mediashell
