#pragma once

#include "input/CecAdapter.h"
#include "input/RemoteButtonMap.h"

#include "toolkit/stack/RemoteAction.h"

#include <QElapsedTimer>
#include <QObject>

#include <atomic>
#include <memory>
#include <thread>

namespace mediashell {

// The TV's remote over HDMI-CEC. start() looks for an adapter, opens the first one and
// makes the box the TV's active source, on a thread of its own (opening waits on the
// bus). With no library or no adapter it logs one line and the shell goes on without.
// The remote's buttons arrive on the library's thread and are queued to this object's;
// each becomes a remote action through the code table. A button the TV reports again
// while it is held repeats only for the directions, as a held arrow key does. The
// adapter is released when this object goes.
class CecInput : public QObject {
    Q_OBJECT
public:
    CecInput(std::unique_ptr<CecAdapter> adapter, RemoteButtonMap codes, QObject* parent = nullptr);
    ~CecInput() override;

    void start();

    // The default table: arrows, Select and Enter, Exit, Return and the root menu for
    // "menu", Stop too, the play and pause buttons, and Display Information for "info".
    static RemoteButtonMap defaultCodes();
    // A code as the table keys it ("0x35"), from hex ("0x35") or decimal ("53") text;
    // empty when it is no code.
    static QString codeName(const QString& text);

signals:
    void actionTriggered(shell::RemoteAction action);
    // start() is done: the adapter is open (and asked to be the active source) or not.
    void started(bool open);

private:
    void openAdapter();
    void report(QtMsgType type, const QString& line, bool open);
    void handleKey(int code, unsigned heldMS);

    std::unique_ptr<CecAdapter> m_adapter;
    const RemoteButtonMap m_codes;
    std::thread m_opening;
    std::atomic<bool> m_open = false;
    int m_heldCode = -1;
    QElapsedTimer m_sinceHeldCode;
};

} // namespace mediashell
