#include "video/MpvController.h"

#include "video/MpvHandle.h"
#include "video/MpvLog.h"
#include "video/MpvProperties.h"

#include <QThread>

#include <cmath>
#include <cstring>
#include <vector>

namespace mediashell {

namespace {

    qint64 toMS(double seconds)
    {
        return std::llround(seconds * 1000.0);
    }

    QByteArray toSeconds(qint64 ms)
    {
        return QByteArray::number(double(ms) / 1000.0, 'f', 3);
    }

    mpv_node stringNode(const char* text)
    {
        mpv_node node {};
        node.format = MPV_FORMAT_STRING;
        node.u.string = const_cast<char*>(text);
        return node;
    }

    // An mpv_node map over borrowed keys and values, alive as long as this object.
    class NodeMap {
    public:
        NodeMap(std::initializer_list<std::pair<const char*, mpv_node>> entries)
        {
            for (const auto& [key, value] : entries) {
                m_keys.push_back(const_cast<char*>(key));
                m_values.push_back(value);
            }
            m_list = { int(m_values.size()), m_values.data(), m_keys.data() };
        }
        mpv_node node()
        {
            mpv_node map {};
            map.format = MPV_FORMAT_NODE_MAP;
            map.u.list = &m_list;
            return map;
        }

    private:
        std::vector<char*> m_keys;
        std::vector<mpv_node> m_values;
        mpv_node_list m_list {};
    };

    // The value of `key` in a node map, null when it has none.
    const mpv_node* field(const mpv_node& map, const char* key)
    {
        if (map.format != MPV_FORMAT_NODE_MAP)
            return nullptr;
        for (int i = 0; i < map.u.list->num; ++i) {
            if (std::strcmp(map.u.list->keys[i], key) == 0)
                return &map.u.list->values[i];
        }
        return nullptr;
    }

    QString textField(const mpv_node& map, const char* key)
    {
        const mpv_node* value = field(map, key);
        return value && value->format == MPV_FORMAT_STRING ? QString::fromUtf8(value->u.string)
                                                           : QString();
    }

    bool flagField(const mpv_node& map, const char* key)
    {
        const mpv_node* value = field(map, key);
        return value && value->format == MPV_FORMAT_FLAG && value->u.flag;
    }

    // The audio and subtitle entries of mpv's "track-list".
    QList<shell::MediaTrack> tracksOf(const mpv_node& list)
    {
        QList<shell::MediaTrack> tracks;
        if (list.format != MPV_FORMAT_NODE_ARRAY)
            return tracks;
        for (int i = 0; i < list.u.list->num; ++i) {
            const mpv_node& entry = list.u.list->values[i];
            const QString type = textField(entry, mpv::track::type);
            const bool audio = type == QLatin1String(mpv::track::audio);
            const mpv_node* id = field(entry, mpv::track::id);
            if ((!audio && type != QLatin1String(mpv::track::sub)) || !id
                || id->format != MPV_FORMAT_INT64)
                continue;
            tracks.append(
                { audio ? shell::MediaTrack::Type::Audio : shell::MediaTrack::Type::Subtitle,
                    int(id->u.int64), textField(entry, mpv::track::title),
                    textField(entry, mpv::track::lang), flagField(entry, mpv::track::external),
                    flagField(entry, mpv::track::selected) });
        }
        return tracks;
    }

    void logMessage(const mpv_event_log_message& message, const MpvOutput& output)
    {
        const QString text = QString::fromUtf8(message.prefix) + QStringLiteral(": ")
            + QString::fromUtf8(message.text).trimmed();
        if (output.isDecoderProbe(message.prefix, message.text))
            qCDebug(lcMpv).noquote() << text;
        else if (message.log_level <= MPV_LOG_LEVEL_ERROR)
            qCWarning(lcMpv).noquote() << text;
        else if (message.log_level <= MPV_LOG_LEVEL_WARN)
            qCInfo(lcMpv).noquote() << text;
        else
            qCDebug(lcMpv).noquote() << text;
    }

} // namespace

std::unique_ptr<MpvController> MpvController::create(const MpvOutput& output, QString* error)
{
    std::shared_ptr<MpvHandle> handle = MpvHandle::create(error);
    if (!handle)
        return nullptr;
    std::unique_ptr<MpvController> controller(new MpvController(std::move(handle), output));
    if (!controller->configure()) {
        if (error)
            *error = tr("libmpv did not start.");
        return nullptr;
    }
    controller->m_events.reset(QThread::create([raw = controller.get()] { raw->readEvents(); }));
    controller->m_events->setObjectName(QStringLiteral("mpv events"));
    controller->m_events->start();
    return controller;
}

MpvController::MpvController(std::shared_ptr<MpvHandle> handle, const MpvOutput& output)
    : m_handle(std::move(handle))
    , m_output(output)
    , m_outputReady(!output.video)
{
    m_renderWait.setSingleShot(true);
    m_renderWait.setInterval(kRenderWaitMS);
    connect(&m_renderWait, &QTimer::timeout, this, [this] {
        m_pendingLoad.reset();
        emit failed(tr("There is nowhere to show the video."));
    });
}

MpvController::~MpvController()
{
    if (m_events) {
        // A render context may keep the core alive a little longer: it must not go on
        // playing meanwhile.
        m_handle->commandAsync(kUntracked, { mpv::command::stop });
        m_quitting = true;
        m_handle->mpv().wakeup(m_handle->get());
        m_events->wait();
    }
}

bool MpvController::configure()
{
    using namespace mpv::option;
    using namespace mpv::value;
    const struct {
        const char* name;
        const char* value;
    } options[] = {
        { config, no },
        { loadScripts, no },
        { osc, no },
        { terminal, no },
        { inputDefaultBindings, no },
        { inputVoKeyboard, no },
        { osdLevel, "0" },
        { osdOnSeek, no },
        { ytdl, no },
        { loadStatsOverlay, no },
        { loadOsdConsole, no },
        { loadAutoProfiles, no },
        { audioDisplay, no },
        { keepOpen, yes },
        { idle, yes },
        { vo, m_output.video ? libmpv : null },
        { hwdec, m_output.hwdec.constData() },
        { gpuHwdecInterop, no },
        { videoTimingOffset, "0" },
        { subAuto, exact },
    };
    for (const auto& option : options)
        m_handle->setOption(option.name, option.value);
    if (!m_output.audio)
        m_handle->setOption(ao, null);
    m_handle->mpv().request_log_messages(m_handle->get(), mpv::logLevel);
    if (!m_handle->initialize())
        return false;
    return m_handle->observe(mpv::property::timePos, MPV_FORMAT_DOUBLE)
        && m_handle->observe(mpv::property::duration, MPV_FORMAT_DOUBLE)
        && m_handle->observe(mpv::property::eofReached, MPV_FORMAT_FLAG)
        && m_handle->observe(mpv::property::idleActive, MPV_FORMAT_FLAG)
        && m_handle->observe(mpv::property::trackList, MPV_FORMAT_NODE);
}

quint64 MpvController::nextRequest(bool isLoad)
{
    m_lastRequest += 2;
    return m_lastRequest | (isLoad ? 1 : 0);
}

quint64 MpvController::load(const QByteArray& target, qint64 startMS)
{
    m_pendingLoad = PendingLoad { target, startMS, nextRequest(true) };
    const quint64 request = m_pendingLoad->request;
    if (m_outputReady) {
        issueLoad();
    } else if (!m_outputError.isNull()) {
        m_pendingLoad.reset();
        failLater(m_outputError);
    } else {
        qCDebug(lcMpv).noquote() << "Waiting for a render context before opening" << target;
        m_renderWait.start();
    }
    return request;
}

void MpvController::issueLoad()
{
    m_renderWait.stop();
    const PendingLoad load = *std::exchange(m_pendingLoad, std::nullopt);
    const QByteArray start = toSeconds(load.startMS);
    qCDebug(lcMpv).noquote() << "Opening" << load.target << "at" << start << "s";
    // Named arguments, with the start as an option of this file only; so are the
    // tracks, so that a choice made during this file ends with it.
    NodeMap options({ { mpv::option::start, stringNode(start.constData()) },
        { mpv::property::aid, stringNode(mpv::value::autoSelect) },
        { mpv::property::sid, stringNode(mpv::value::autoSelect) } });
    NodeMap command({ { mpv::command::name, stringNode(mpv::command::loadfile) },
        { mpv::command::url, stringNode(load.target.constData()) },
        { mpv::command::flags, stringNode(mpv::command::replace) },
        { mpv::command::options, options.node() } });
    if (!m_handle->commandAsync(load.request, mpv::command::loadfile, command.node()))
        failLater(tr("The video cannot be opened."));
}

void MpvController::setPaused(bool paused)
{
    m_handle->setFlagAsync(kUntracked, mpv::property::pause, paused);
}

quint64 MpvController::seek(qint64 ms)
{
    const quint64 request = nextRequest(false);
    if (!m_handle->commandAsync(request,
            { mpv::command::seek, toSeconds(ms).constData(), mpv::command::absoluteExact }))
        QMetaObject::invokeMethod(
            this, [this, request] { emit settled(request, -1); }, Qt::QueuedConnection);
    return request;
}

void MpvController::stop()
{
    m_pendingLoad.reset();
    m_renderWait.stop();
    m_handle->commandAsync(kUntracked, { mpv::command::stop });
}

void MpvController::selectTrack(shell::MediaTrack::Type type, int id)
{
    const QByteArray value = id > 0 ? QByteArray::number(id) : QByteArray(mpv::value::no);
    m_handle->setStringAsync(kUntracked,
        type == shell::MediaTrack::Type::Audio ? mpv::property::aid : mpv::property::sid,
        value.constData());
}

void MpvController::failLater(const QString& reason)
{
    QMetaObject::invokeMethod(
        this, [this, reason] { emit failed(reason); }, Qt::QueuedConnection);
}

void MpvController::renderOutputFailed(const QString& reason)
{
    m_outputError = reason;
    if (m_pendingLoad) {
        m_pendingLoad.reset();
        m_renderWait.stop();
        emit failed(reason);
    }
}

void MpvController::renderOutputReady()
{
    m_outputError.clear();
    m_outputReady = true;
    if (m_pendingLoad)
        issueLoad();
}

void MpvController::readEvents()
{
    while (!m_quitting) {
        const mpv_event* const event = m_handle->mpv().wait_event(m_handle->get(), -1);
        if (event->event_id == MPV_EVENT_SHUTDOWN)
            break;
        dispatch(*event);
    }
}

void MpvController::dispatch(const mpv_event& event)
{
    switch (event.event_id) {
    case MPV_EVENT_PROPERTY_CHANGE:
        onPropertyChange(event);
        break;
    case MPV_EVENT_END_FILE:
        onEndFile(event);
        break;
    case MPV_EVENT_COMMAND_REPLY:
    case MPV_EVENT_SET_PROPERTY_REPLY:
        onCommandReply(event);
        break;
    case MPV_EVENT_FILE_LOADED:
        emit fileLoaded();
        break;
    case MPV_EVENT_PLAYBACK_RESTART:
        onPlaybackRestart();
        break;
    case MPV_EVENT_LOG_MESSAGE:
        logMessage(*static_cast<const mpv_event_log_message*>(event.data), m_output);
        break;
    default:
        break;
    }
}

void MpvController::onPropertyChange(const mpv_event& event)
{
    const auto& property = *static_cast<const mpv_event_property*>(event.data);
    if (property.format == MPV_FORMAT_NONE)
        return;
    if (property.format == MPV_FORMAT_NODE) {
        if (std::strcmp(property.name, mpv::property::trackList) == 0)
            emit tracksChanged(tracksOf(*static_cast<const mpv_node*>(property.data)));
    } else if (property.format == MPV_FORMAT_DOUBLE) {
        const qint64 ms = toMS(*static_cast<const double*>(property.data));
        if (std::strcmp(property.name, mpv::property::timePos) == 0)
            emit positionChanged(ms);
        else if (std::strcmp(property.name, mpv::property::duration) == 0)
            emit durationChanged(ms);
    } else if (property.format == MPV_FORMAT_FLAG && *static_cast<const int*>(property.data)) {
        // Both mean the end; idle only comes without keep-open (or after a stop, which
        // the receiver knows about).
        emit endReached();
    }
}

void MpvController::onEndFile(const mpv_event& event)
{
    const auto& end = *static_cast<const mpv_event_end_file*>(event.data);
    // The end of one entry of a playlist is no end of playback; the last one is kept
    // open and reported by eof-reached.
    if (end.reason == MPV_END_FILE_REASON_ERROR)
        emit failed(tr("The video cannot be played: %1.").arg(m_handle->errorText(end.error)));
}

void MpvController::onCommandReply(const mpv_event& event)
{
    const quint64 request = event.reply_userdata;
    if (event.error >= 0) {
        if (request != kUntracked)
            m_accepted = request;
        return;
    }
    const QString reason = m_handle->errorText(event.error);
    qCWarning(lcMpv).noquote() << "mpv refused a request:" << reason;
    if (request & 1)
        emit failed(tr("The video cannot be opened: %1.").arg(reason));
    else if (request != kUntracked)
        emit settled(request, -1);
}

void MpvController::onPlaybackRestart()
{
    if (m_accepted == kUntracked)
        return;
    double seconds = 0;
    const bool known = m_handle->mpv().get_property(
                           m_handle->get(), mpv::property::timePos, MPV_FORMAT_DOUBLE, &seconds)
        >= 0;
    emit settled(std::exchange(m_accepted, kUntracked), known ? toMS(seconds) : -1);
}

} // namespace mediashell
