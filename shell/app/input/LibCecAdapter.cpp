#include "input/LibCecAdapter.h"

#include <libcec/cec.h>

#include <array>
#include <cstring>

namespace mediashell {

namespace {

    // The name the TV shows for the box's input (at most 14 bytes on the bus).
    constexpr char kDeviceName[] = "Vireo Movies";
    // A living-room box answers on the bus within this, or it is not there.
    constexpr uint32_t kOpenTimeoutMS = 5'000;
    constexpr int kMostAdapters = 8;

} // namespace

LibCecAdapter::LibCecAdapter()
    : m_library(fileName())
    , m_callbacks(std::make_unique<CEC::ICECCallbacks>())
    , m_configuration(std::make_unique<CEC::libcec_configuration>())
{
}

LibCecAdapter::~LibCecAdapter()
{
    close();
    if (m_cec && m_destroy)
        m_destroy(m_cec);
    // The library stays loaded: its threads are gone, and unloading buys nothing.
}

QString LibCecAdapter::fileName()
{
    return QStringLiteral("libcec.so." CEC_LIB_VERSION_MAJOR_STR);
}

bool LibCecAdapter::initialise(QString* error)
{
    if (m_cec)
        return true;
    const auto fail = [error](const QString& why) {
        if (error)
            *error = why;
        return false;
    };
    if (!m_library.load())
        return fail(m_library.errorString());
    const auto create
        = reinterpret_cast<decltype(&::CECInitialise)>(m_library.resolve("CECInitialise"));
    m_destroy = reinterpret_cast<decltype(&::CECDestroy)>(m_library.resolve("CECDestroy"));
    if (!create || !m_destroy)
        return fail(QStringLiteral("%1 lacks CECInitialise or CECDestroy").arg(fileName()));

    m_callbacks->keyPress = &LibCecAdapter::keyPressed;
    CEC::libcec_configuration& configuration = *m_configuration;
    configuration.clientVersion = CEC::LIBCEC_VERSION_CURRENT;
    std::strncpy(configuration.strDeviceName, kDeviceName, sizeof configuration.strDeviceName - 1);
    configuration.deviceTypes.Add(CEC::CEC_DEVICE_TYPE_PLAYBACK_DEVICE);
    // The shell asks to be the active source itself, once the adapter is open.
    configuration.bActivateSource = 0;
    // Stop is a button of its own, not the start of a key combination.
    configuration.comboKey = CEC::CEC_USER_CONTROL_CODE_UNKNOWN;
    configuration.callbackParam = this;
    configuration.callbacks = m_callbacks.get();
    m_cec = create(&configuration);
    if (!m_cec)
        return fail(QStringLiteral("libcec refused its configuration"));
    // What libcec's own client does first; a no-op but on hosts whose video stack
    // libcec must start itself.
    m_cec->InitVideoStandalone();
    return true;
}

std::optional<QStringList> LibCecAdapter::detect(QString* error)
{
    if (!initialise(error))
        return std::nullopt;
    std::array<CEC::cec_adapter_descriptor, kMostAdapters> found {};
    const int8_t count = m_cec->DetectAdapters(found.data(), uint8_t(found.size()), nullptr, true);
    QStringList ports;
    for (int i = 0; i < count && i < kMostAdapters; ++i)
        ports.append(QString::fromLocal8Bit(found[size_t(i)].strComName));
    return ports;
}

bool LibCecAdapter::open(const QString& port, KeyHandler keys, QString* error)
{
    if (!m_cec) {
        if (error)
            *error = QStringLiteral("libcec is not initialised");
        return false;
    }
    m_keys = std::move(keys);
    if (!m_cec->Open(port.toLocal8Bit().constData(), kOpenTimeoutMS)) {
        if (error)
            *error = QStringLiteral("the adapter did not answer");
        return false;
    }
    return true;
}

bool LibCecAdapter::setActiveSource()
{
    return m_cec && m_cec->SetActiveSource();
}

void LibCecAdapter::close()
{
    // Closing an adapter that never opened is harmless for libcec.
    if (m_cec && m_keys) {
        m_cec->Close();
        m_keys = nullptr;
    }
}

void LibCecAdapter::keyPressed(void* self, const CEC::cec_keypress* key)
{
    const auto* adapter = static_cast<LibCecAdapter*>(self);
    if (key && adapter->m_keys)
        adapter->m_keys(int(key->keycode), key->duration);
}

} // namespace mediashell
