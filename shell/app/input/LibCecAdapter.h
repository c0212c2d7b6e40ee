#pragma once

#include "input/CecAdapter.h"

#include <QLibrary>

#include <memory>

namespace CEC {
class ICECAdapter;
struct ICECCallbacks;
struct libcec_configuration;
struct cec_keypress;
}

namespace mediashell {

// HDMI-CEC through libcec, opened at run time like libmpv: a box without the library
// still starts. The shell shows itself on the bus as a playback device named
// "Vireo Movies".
//
// libcec's own loader header would do the opening, but it prints dlerror() on standard
// output, where --dump writes its lines, and keeps a stale handle after unloading; the
// two entry points are resolved here instead.
class LibCecAdapter : public CecAdapter {
public:
    LibCecAdapter();
    ~LibCecAdapter() override;
    LibCecAdapter(const LibCecAdapter&) = delete;
    LibCecAdapter& operator=(const LibCecAdapter&) = delete;

    std::optional<QStringList> detect(QString* error) override;
    bool open(const QString& port, KeyHandler keys, QString* error) override;
    bool setActiveSource() override;
    void close() override;

    // The libcec whose major version the shell was built against.
    static QString fileName();

private:
    bool initialise(QString* error);
    static void keyPressed(void* self, const CEC::cec_keypress* key);

    QLibrary m_library;
    std::unique_ptr<CEC::ICECCallbacks> m_callbacks;
    std::unique_ptr<CEC::libcec_configuration> m_configuration;
    CEC::ICECAdapter* m_cec = nullptr;
    void (*m_destroy)(CEC::ICECAdapter*) = nullptr;
    KeyHandler m_keys;
};

} // namespace mediashell
