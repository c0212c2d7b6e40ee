#include "ScriptRunner.h"

#include "FrameTracker.h"
#include "ShellLog.h"

#include <QDir>
#include <QFile>
#include <QImage>
#include <QJsonDocument>
#include <QQuickWindow>
#include <QSocketNotifier>
#include <QTimer>

#include <cerrno>
#include <unistd.h>

namespace mediashell {

ScriptRunner::ScriptRunner(
    const QString& script, bool dump, const QString& screenshotsDir, Hooks hooks, QObject* parent)
    : QObject(parent)
    , m_script(script)
    , m_dump(dump)
    , m_screenshotsDir(screenshotsDir)
    , m_hooks(std::move(hooks))
    , m_parser(!screenshotsDir.isEmpty())
{
}

ScriptRunner::~ScriptRunner() = default;

bool ScriptRunner::prepare(QString* error)
{
    const auto fail = [error](const QString& why) {
        if (error)
            *error = why;
        return false;
    };
    if (!m_screenshotsDir.isEmpty()) {
        m_screenshotsDir = QDir(m_screenshotsDir).absolutePath();
        if (!QDir().mkpath(m_screenshotsDir))
            return fail(
                QStringLiteral("cannot make the screenshot folder %1").arg(m_screenshotsDir));
    }
    if (m_script == u"-") {
        m_input = new QSocketNotifier(STDIN_FILENO, QSocketNotifier::Read, this);
        m_input->setEnabled(false);
        connect(m_input, &QSocketNotifier::activated, this, &ScriptRunner::readInput);
        return true;
    }
    QFile file(m_script);
    if (!file.open(QIODevice::ReadOnly))
        return fail(
            QStringLiteral("cannot read the script %1: %2").arg(m_script, file.errorString()));
    QList<ScriptStep> steps;
    QString why;
    if (!ScriptParser::parseAll(
            QString::fromUtf8(file.readAll()), !m_screenshotsDir.isEmpty(), &steps, &why))
        return fail(QStringLiteral("%1: %2").arg(m_script, why));
    for (const ScriptStep& step : steps)
        m_queue.append({ step, QString() });
    m_inputEnded = true;
    return true;
}

void ScriptRunner::start(QQuickWindow* window)
{
    m_window = window;
    m_frames = new FrameTracker(window, this);
    if (m_input)
        m_input->setEnabled(true);
    m_busy = true;
    m_frames->whenDrawn([this] {
        m_started = true;
        m_busy = false;
        dump(0);
        pump();
    });
}

void ScriptRunner::readInput()
{
    char buffer[4096];
    const ssize_t got = ::read(STDIN_FILENO, buffer, sizeof buffer);
    if (got < 0 && (errno == EINTR || errno == EAGAIN))
        return;
    if (got <= 0) {
        m_input->setEnabled(false);
        endOfInput();
        return;
    }
    m_partial.append(buffer, got);
    qsizetype newline;
    while ((newline = m_partial.indexOf('\n')) >= 0) {
        const QByteArray line = m_partial.left(newline);
        m_partial.remove(0, newline + 1);
        takeLine(QString::fromUtf8(line));
    }
    pump();
}

void ScriptRunner::takeLine(const QString& line)
{
    if (m_finished)
        return;
    const ScriptParser::Result result = m_parser.parseLine(line);
    switch (result.outcome) {
    case ScriptParser::Outcome::Skipped:
        break;
    case ScriptParser::Outcome::Step:
        m_queue.append({ result.step, QString() });
        break;
    case ScriptParser::Outcome::Error:
        m_queue.append({ ScriptStep(), result.error });
        // Nothing after a bad line runs.
        if (m_input)
            m_input->setEnabled(false);
        m_inputEnded = true;
        break;
    }
}

void ScriptRunner::endOfInput()
{
    if (!m_partial.isEmpty()) {
        const QByteArray last = m_partial;
        m_partial.clear();
        takeLine(QString::fromUtf8(last));
    }
    m_inputEnded = true;
    pump();
}

void ScriptRunner::pump()
{
    if (!m_started || m_busy || m_finished)
        return;
    if (m_queue.isEmpty()) {
        if (m_inputEnded)
            finish(0);
        return;
    }
    const Entry entry = m_queue.takeFirst();
    if (!entry.error.isEmpty()) {
        m_hooks.writeError(entry.error);
        finish(2);
        return;
    }
    m_busy = true;
    run(entry.step);
}

void ScriptRunner::run(const ScriptStep& step)
{
    qCDebug(lcScript).noquote() << "Step" << step.number << "(line" << step.line
                                << "):" << step.text;
    switch (step.kind) {
    case ScriptStep::Kind::Action:
        m_hooks.perform(step.action);
        afterStep(step);
        break;
    case ScriptStep::Kind::Wait:
        QTimer::singleShot(step.waitMS, this, [this, step] { afterStep(step); });
        break;
    case ScriptStep::Kind::Shot:
        QTimer::singleShot(kSettleMS, this,
            [this, step] { m_frames->whenDrawn([this, step] { takeShot(step); }); });
        break;
    case ScriptStep::Kind::Quit:
        finish(0);
        break;
    }
}

void ScriptRunner::afterStep(const ScriptStep& step)
{
    m_frames->whenDrawn([this, number = step.number] {
        dump(number);
        m_busy = false;
        // Not from inside the frame callback: the next step starts afresh.
        QMetaObject::invokeMethod(this, &ScriptRunner::pump, Qt::QueuedConnection);
    });
}

void ScriptRunner::takeShot(const ScriptStep& step)
{
    const QString path
        = m_screenshotsDir + QLatin1Char('/') + step.shotName + QStringLiteral(".png");
    QImage image = m_window ? m_window->grabWindow() : QImage();
    const QSize size = m_window ? m_window->size() : QSize();
    if (!image.isNull() && image.size() != size && size.isValid())
        image = image.scaled(size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    if (image.isNull() || !image.save(path, "PNG")) {
        m_hooks.writeError(QStringLiteral("script line %1: cannot write the screenshot %2")
                               .arg(step.line)
                               .arg(path));
        finish(1);
        return;
    }
    qCDebug(lcScript).noquote() << "Screenshot" << path;
    afterStep(step);
}

void ScriptRunner::dump(int stepNumber)
{
    if (!m_dump)
        return;
    QJsonObject line = m_hooks.describe();
    line.insert(QStringLiteral("step"), stepNumber);
    m_hooks.writeLine(QJsonDocument(line).toJson(QJsonDocument::Compact) + '\n');
}

void ScriptRunner::finish(int status)
{
    if (m_finished)
        return;
    m_finished = true;
    if (m_input)
        m_input->setEnabled(false);
    qCDebug(lcScript) << "Script done, status" << status;
    emit finished(status);
}

} // namespace mediashell
