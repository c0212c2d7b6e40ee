#pragma once

#include <QString>
#include <QStringList>

#include <functional>
#include <optional>

namespace mediashell {

// The seam around an HDMI-CEC library: what the shell asks of it, so that the key
// handling and the active-source logic run against a fake adapter in tests. The calls
// may block on the bus for seconds: CecInput makes them off the GUI thread, one at a
// time, and close() only after the others have returned.
class CecAdapter {
public:
    // A user-control code from the TV's remote, on the library's own thread: `heldMS` is
    // 0 while the button is down (again for each repeat) and the time it was held when
    // it is released.
    using KeyHandler = std::function<void(int code, unsigned heldMS)>;

    virtual ~CecAdapter() = default;

    // The ports of the adapters present, maybe none; nothing (and why) when the library
    // cannot be used at all.
    virtual std::optional<QStringList> detect(QString* error) = 0;
    // Opens the adapter on `port`; its keys go to `keys` from then on.
    virtual bool open(const QString& port, KeyHandler keys, QString* error) = 0;
    // Asks the TV to switch its input to the box.
    virtual bool setActiveSource() = 0;
    // Releases the adapter; no key arrives after it returns.
    virtual void close() = 0;
};

} // namespace mediashell
