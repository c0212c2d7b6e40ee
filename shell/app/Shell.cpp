#include "Shell.h"

#include "ImageFileProvider.h"
#include "ImageStore.h"
#include "ImageUrlProvider.h"
#include "Logind.h"
#include "PacedSimulatedPlayer.h"
#include "PowerMenu.h"
#include "ScreenSaverInhibitor.h"
#include "Screensaver.h"
#include "ScriptRunner.h"
#include "ShellLog.h"
#include "ShellMenu.h"
#include "UnixSignals.h"

#include "input/RemoteInputs.h"
#include "remote/PhoneRemote.h"
#include "video/MpvLibrary.h"
#include "video/MpvVideoPlayer.h"
#include "views/PairingView.h"
#include "views/ShellView.h"

#include "foundation/HomeFolder.h"
#include "toolkit/appliance/ApplianceLoader.h"
#include "toolkit/appliance/NotificationCenter.h"
#include "toolkit/player/VideoPlayerController.h"
#include "toolkit/player/VideoPlayerFactory.h"
#include "toolkit/scene/Scene.h"
#include "toolkit/stack/ControllerStack.h"
#include "toolkit/stack/Sentinel.h"

#include <QDBusConnection>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QLoggingCategory>
#include <QQmlApplicationEngine>
#include <QQuickWindow>
#include <QScreen>
#include <QSet>
#include <QSettings>
#include <QStandardPaths>
#include <QTimer>
#include <QtQml/qqmlextensionplugin.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <limits>
#include <unistd.h>

Q_IMPORT_QML_PLUGIN(Vireo_ShellPlugin)
Q_IMPORT_QML_PLUGIN(Vireo_Shell_ViewsPlugin)

namespace mediashell {

namespace {

    // Long enough for the first screens to settle; short against reading a menu.
    constexpr int kOpenVideoLibraryAfterMS = 2'000;

    // Inside `folder` (or the folder itself), both made canonical where they exist.
    bool isInside(const QString& path, const QString& folder)
    {
        const QString canonicalPath = QFileInfo(path).canonicalFilePath();
        const QString canonicalFolder = QFileInfo(folder).canonicalFilePath();
        if (canonicalPath.isEmpty() || canonicalFolder.isEmpty())
            return false;
        return canonicalPath == canonicalFolder
            || canonicalPath.startsWith(canonicalFolder + QLatin1Char('/'));
    }

} // namespace

Shell::Shell(const ShellOptions& options, QObject* parent)
    : QObject(parent)
    , m_options(options)
    , m_keys(KeyMap::load(options.keysFile, KeyMap::userFile()))
    , m_screensaver(std::make_unique<Screensaver>(
          Screensaver::idleMSFromSettings(QSettings(settingsFilePath(), QSettings::IniFormat))))
    , m_images(std::make_shared<ImageStore>())
{
}

Shell::~Shell()
{
    terminate();
}

QString Shell::settingsFilePath()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation)
        + QStringLiteral("/mediashell/mediashell.conf");
}

QStringList Shell::applianceFolders(const ShellOptions& options)
{
    QStringList folders;
    for (const QString& dir : options.applianceDirs)
        folders.append(QDir(dir).absolutePath());
    const QString programDir = QCoreApplication::applicationDirPath();
    if (isInside(programDir, QStringLiteral(MEDIASHELL_BUILD_DIR)))
        folders.append(QStringLiteral(MEDIASHELL_BUILD_APPLIANCE_DIR));
    folders.append(QDir::cleanPath(
        programDir + QLatin1Char('/') + QStringLiteral(MEDIASHELL_INSTALLED_APPLIANCE_DIR)));
    // The same folder twice loads its plugins once.
    QStringList unique;
    QSet<QString> seen;
    for (const QString& folder : folders) {
        const QString canonical = QFileInfo(folder).canonicalFilePath();
        const QString identity = canonical.isEmpty() ? QDir::cleanPath(folder) : canonical;
        if (!seen.contains(identity)) {
            seen.insert(identity);
            unique.append(folder);
        }
    }
    return unique;
}

bool Shell::installVideoPlayer()
{
    if (qEnvironmentVariable("MEDIASHELL_VIDEO") == u"simulated") {
        qCInfo(lcShell) << "MEDIASHELL_VIDEO=simulated: playing with the simulated player";
        shell::VideoPlayerFactory::setCreator(
            [] { return std::make_unique<PacedSimulatedPlayer>(); });
        return false;
    }
    // libmpv is not opened here but after the first frame (openVideoLibraryWhenIdle)
    // or by the first playback, whichever comes first: MpvLibrary says why. Whether it
    // starts is known only then; if not, the warning comes once and the simulated
    // player stands in.
    shell::VideoPlayerFactory::setCreator([]() -> std::unique_ptr<shell::VideoPlayer> {
        static bool mpvFailed = false;
        if (!mpvFailed) {
            auto player = std::make_unique<MpvVideoPlayer>();
            if (player->controller())
                return player;
            mpvFailed = true;
            qCWarning(lcShell) << "libmpv cannot be started here: playing with the "
                                  "simulated player (no picture, a clock only)";
        }
        return std::make_unique<PacedSimulatedPlayer>();
    });
    return true;
}

void Shell::openVideoLibraryWhenIdle()
{
    if (!m_window)
        return;
    connect(
        m_window, &QQuickWindow::frameSwapped, this,
        [] {
            QTimer::singleShot(kOpenVideoLibraryAfterMS, [] { MpvLibrary::openInBackground(); });
        },
        Qt::SingleShotConnection);
}

void Shell::loadAppliances()
{
    if (m_stack)
        return;
    std::vector<ShellMenu::Entry> entries;
    QSet<QString> keys;
    const QStringList folders = applianceFolders(m_options);
    for (const QString& folder : folders) {
        qCDebug(lcShell).noquote() << "Appliance folder" << folder;
        auto loader = std::make_unique<shell::ApplianceLoader>();
        loader->loadFolder(folder);
        for (const auto& failure : loader->failures()) {
            const QString path = QDir(folder).filePath(failure.fileName);
            qCWarning(lcShell).noquote()
                << "Skipping the appliance plugin" << path << "-" << failure.reason;
            m_failures.append(path + QStringLiteral(": ") + failure.reason);
        }
        for (const auto& entry : loader->appliances()) {
            if (keys.contains(entry.key)) {
                qCDebug(lcShell).noquote() << "Appliance" << entry.key << "in" << folder
                                           << "is already loaded; keeping the first";
                continue;
            }
            keys.insert(entry.key);
            entries.push_back({ entry.appliance.get(), entry.name, entry.sortOrder });
        }
        m_loaders.push_back(std::move(loader));
    }
    if (entries.empty())
        qCWarning(lcShell).noquote() << "No appliances in" << folders.join(QStringLiteral(", "));
    if (shell::Appliance* remote = startRemote()) // after the appliances
        entries.push_back({ remote, remote->moduleName(), std::numeric_limits<int>::max() });

    m_scene = std::make_unique<shell::Scene>();
    m_stack = std::make_unique<shell::ControllerStack>();
    shell::Sentinel::shared().setObjectForKey(m_stack.get(), shell::Sentinel::controllerStackKey());
    if (m_options.kiosk) {
        m_logind = std::make_unique<Logind>(QDBusConnection::systemBus());
        m_logind->ask();
    }
    const PowerMenu::Exits exits {
        [] { QCoreApplication::exit(0); },
        [this] {
            m_restartRequested = true;
            QCoreApplication::exit(0);
        },
    };
    auto menu = std::make_unique<ShellMenu>(*m_scene, std::move(entries),
        [this, exits] { return std::make_unique<PowerMenu>(*m_scene, m_logind.get(), exits); });
    m_menu = menu.get();
    m_stack->pushController(std::move(menu));

    m_view = std::make_unique<ShellView>(m_images);
    m_view->setScene(m_scene.get());
    m_view->setStack(m_stack.get());
    connect(m_screensaver.get(), &Screensaver::dimmedChanged, m_view->screensaver(),
        &ScreensaverView::setDimmed);
    connect(m_stack.get(), &shell::ControllerStack::changed, this, &Shell::followPlayback);
    if (m_remote)
        m_remote->follow(m_view.get());
    // A code to type on the phone must be seen: it wakes a dimmed screen.
    connect(m_view->pairing(), &PairingView::changed, this, [this] {
        if (!m_view->pairing()->code().isEmpty())
            m_screensaver->takeKey();
    });
}

shell::Appliance* Shell::startRemote()
{
    const std::optional<quint16> port
        = PhoneRemote::configuredPort(m_options.remotePort, settingsFilePath());
    if (!port)
        return nullptr;
    m_remote = std::make_unique<PhoneRemote>([this](shell::RemoteAction a) { performAction(a); });
    QString error;
    if (!m_remote->start(*port, &error)) {
        qCWarning(lcShell).noquote() << "No phone remote:" << error;
        m_remote.reset();
    }
    return m_remote ? m_remote->appliance() : nullptr;
}

bool Shell::showWindow(QString* error)
{
    loadAppliances();
    m_engine = std::make_unique<QQmlApplicationEngine>();
    // Qt 6.4 does not look there by itself.
    m_engine->addImportPath(QStringLiteral("qrc:/qt/qml"));
    m_engine->addImageProvider(ImageStore::providerId(), new ImageStoreProvider(m_images));
    m_engine->addImageProvider(ImageFileProvider::providerId(), new ImageFileProvider);
    m_engine->addImageProvider(ImageUrlProvider::providerId(), new ImageUrlProvider);
    m_engine->setInitialProperties(
        { { QStringLiteral("shell"), QVariant::fromValue<QObject*>(m_view.get()) } });
    m_engine->load(QUrl(QStringLiteral("qrc:/qt/qml/Vireo/Shell/Main.qml")));
    const QList<QObject*> roots = m_engine->rootObjects();
    m_window = roots.isEmpty() ? nullptr : qobject_cast<QQuickWindow*>(roots.first());
    if (!m_window) {
        if (error)
            *error = QStringLiteral("the shell's QML did not load");
        return false;
    }
    m_window->installEventFilter(this);
    m_window->setTitle(QStringLiteral("mediashell"));
    if (m_options.windowed) {
        m_window->resize(m_options.windowSize());
        m_window->show();
    } else {
        // The screen's size first: a living-room box may run no window manager to
        // honour the full-screen request.
        if (QScreen* screen = m_window->screen())
            m_window->setGeometry(screen->geometry());
        m_window->showFullScreen();
    }
    m_remotes = std::make_unique<RemoteInputs>(m_keys, settingsFilePath());
    connect(m_remotes.get(), &RemoteInputs::actionTriggered, this, &Shell::performAction);
    // Opening libcec and looking for adapters would compete with the first frame.
    connect(m_window, &QQuickWindow::frameSwapped, m_remotes.get(), &RemoteInputs::start,
        Qt::SingleShotConnection);
    return true;
}

void Shell::performAction(shell::RemoteAction action)
{
    if (!m_stack || m_terminated)
        return;
    if (m_screensaver->takeKey()) {
        qCDebug(lcShell).noquote()
            << "Action" << shell::remoteActionName(action) << "only wakes the screen";
        return;
    }
    qCDebug(lcShell).noquote() << "Action" << shell::remoteActionName(action);
    m_stack->handleAction(action);
    if (m_view)
        m_view->actionHandled(action);
}

QJsonObject Shell::describe() const
{
    QJsonObject object = m_stack ? m_stack->describeTop() : QJsonObject();
    if (m_view)
        object.insert(QStringLiteral("screensaver"), m_view->screensaver()->describe());
    if (m_remote)
        object.insert(QStringLiteral("remote"), m_remote->describe());
    return object;
}

void Shell::followPlayback()
{
    const auto* const player = m_stack
        ? qobject_cast<const shell::VideoPlayerController*>(m_stack->topController())
        : nullptr;
    const bool playing = player && player->state() == shell::VideoPlayerController::State::Playing;
    m_screensaver->setPlaying(playing);
    if (playing && !m_inhibitor)
        m_inhibitor = std::make_unique<ScreenSaverInhibitor>(QDBusConnection::sessionBus());
    if (m_inhibitor)
        m_inhibitor->setInhibited(playing);
}

bool Shell::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == m_window && event->type() == QEvent::KeyPress) {
        const auto* key = static_cast<QKeyEvent*>(event);
        // Every key wakes the screen, whether it acts or not.
        if (const auto action = m_keys.actionForEvent(*key))
            performAction(*action);
        else if (!m_terminated)
            m_screensaver->takeKey();
        if (m_keys.actionForKey(key->key()))
            return true;
        qCDebug(lcKeys) << "Key" << Qt::hex << key->key() << "is bound to nothing";
    }
    return QObject::eventFilter(watched, event);
}

void Shell::terminate()
{
    if (m_terminated)
        return;
    m_terminated = true;
    qCDebug(lcShell) << "Terminating";
    shell::NotificationCenter::defaultCenter().postNotification(
        shell::NotificationCenter::applicationWillTerminate());
    // No remote acts on what goes; the HDMI-CEC adapter is released.
    m_remotes.reset();
    // The window first: nothing draws a controller (or its player) that is going.
    if (m_window)
        m_window->removeEventFilter(this);
    m_engine.reset();
    if (m_view)
        m_view->setStack(nullptr);
    m_menu = nullptr;
    m_stack.reset();
    shell::Sentinel::shared().removeObjectForKey(shell::Sentinel::controllerStackKey());
    // The desktop may blank the screen again once the shell is gone.
    m_inhibitor.reset();
    m_view.reset();
    m_remote.reset();
    m_scene.reset();
    m_loaders.clear();
}

int runShell(int argc, char** argv, QString* restart)
{
    QStringList arguments;
    for (int i = 1; i < argc; ++i)
        arguments.append(QString::fromLocal8Bit(argv[i]));
    QString usageError;
    const std::optional<ShellOptions> parsed = ShellOptions::parse(arguments, &usageError);
    if (!parsed) {
        std::fputs(QStringLiteral("mediashell: %1\nTry 'mediashell --help'.\n")
                       .arg(usageError)
                       .toLocal8Bit()
                       .constData(),
            stderr);
        return 2;
    }
    if (parsed->help || parsed->version) {
        const QString text = parsed->help ? ShellOptions::usage() : ShellOptions::versionText();
        std::fputs(text.toLocal8Bit().constData(), stdout);
        return 0;
    }
    const ShellOptions& options = *parsed;

    QLoggingCategory::setFilterRules(options.verbose ? QStringLiteral("vireo.*.debug=true")
                                                     : QStringLiteral("vireo.*.debug=false"));
    if (!options.home.isEmpty())
        HomeFolder::set(options.home);
    // mpv renders through OpenGL; the window must be made for it.
    QQuickWindow::setGraphicsApi(QSGRendererInterface::OpenGL);

    QGuiApplication app(argc, argv);
    QGuiApplication::setApplicationName(QStringLiteral("mediashell"));
    QGuiApplication::setApplicationVersion(QStringLiteral(MEDIASHELL_VERSION));
    QGuiApplication::setApplicationDisplayName(QStringLiteral("mediashell"));
    const bool withMpv = Shell::installVideoPlayer();

    const auto writeError = [](const QString& message) {
        std::fputs(
            QStringLiteral("mediashell: %1\n").arg(message).toLocal8Bit().constData(), stderr);
        std::fflush(stderr);
    };

    Shell mediaShell(options);
    std::unique_ptr<ScriptRunner> runner;
    if (!options.script.isEmpty()) {
        ScriptRunner::Hooks hooks;
        hooks.perform
            = [&mediaShell](shell::RemoteAction action) { mediaShell.performAction(action); };
        hooks.describe = [&mediaShell] { return mediaShell.describe(); };
        hooks.writeLine = [](const QByteArray& line) {
            std::fwrite(line.constData(), 1, size_t(line.size()), stdout);
            std::fflush(stdout);
        };
        hooks.writeError = writeError;
        runner = std::make_unique<ScriptRunner>(
            options.script, options.dump, options.screenshotsDir, std::move(hooks));
        QString error;
        if (!runner->prepare(&error)) {
            writeError(error);
            return 2;
        }
    }

    QString error;
    if (!mediaShell.showWindow(&error)) {
        writeError(error);
        return 1;
    }
    if (withMpv)
        mediaShell.openVideoLibraryWhenIdle();
    if (!mediaShell.failures().isEmpty())
        qCDebug(lcShell) << mediaShell.failures().size() << "appliance plugin(s) did not load";

    UnixSignals signalWatcher;
    QObject::connect(&signalWatcher, &UnixSignals::received, &app, [](int number) {
        qCDebug(lcShell) << "Quitting on signal" << number;
        QCoreApplication::exit(0);
    });
    if (runner) {
        QObject::connect(runner.get(), &ScriptRunner::finished, &app,
            [](int status) { QCoreApplication::exit(status); });
        runner->start(mediaShell.window());
    }

    const int status = app.exec();
    mediaShell.terminate();
    runner.reset();
    if (restart && mediaShell.restartRequested())
        *restart = QCoreApplication::applicationFilePath();
    return status;
}

int restartShell(const QString& program, char** argv)
{
    // Dump lines and log lines still buffered would be lost with the process image.
    std::fflush(nullptr);
    ::execv(QFile::encodeName(program).constData(), argv);
    std::fprintf(stderr, "mediashell: cannot restart %s: %s\n",
        QFile::encodeName(program).constData(), std::strerror(errno));
    return 1;
}

} // namespace mediashell
