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
    , m_parser(screenshotsDir.isEmpty() ? QStringLiteral("needs --screenshots DIR") : QString())
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
    QStringList lines = QString::fromUtf8(file.readAll()).split(u'\n');
    // A final newline ends the last line; it starts no empty one.
    if (!lines.isEmpty() && lines.last().isEmpty())
        lines.removeLast();
    for (const QString& line : lines) {
        QString why;
        if (const std::optional<shell::ScriptStep> step = readLine(line, &why))
            m_queue.append(*step);
        else if (!why.isEmpty())
            return fail(QStringLiteral("%1: %2").arg(m_script, why));
    }
    m_inputEnded = true;
    return true;
}

std::optional<shell::ScriptStep> ScriptRunner::readLine(const QString& line, QString* error)
{
    QString why;
    std::optional<shell::ScriptStep> step = m_parser.parseLine(line, &why);
    if (!why.isEmpty() && error)
        *error = QStringLiteral("script line %1: %2").arg(m_parser.linesRead()).arg(why);
    return step;
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
    if (m_finished || !m_badLine.isEmpty())
        return;
    if (const std::optional<shell::ScriptStep> step = readLine(line, &m_badLine)) {
        m_queue.append(*step);
    } else if (!m_badLine.isEmpty()) {
        // Nothing after a bad line runs.
        if (m_input)
            m_input->setEnabled(false);
        m_inputEnded = true;
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
        if (!m_badLine.isEmpty()) {
            m_hooks.writeError(m_badLine);
            finish(2);
        } else if (m_inputEnded) {
            finish(0);
        }
        return;
    }
    m_busy = true;
    run(m_queue.takeFirst());
}

void ScriptRunner::run(const shell::ScriptStep& step)
{
    qCDebug(lcScript).noquote() << "Step" << step.number << "(line" << step.line
                                << "):" << step.text;
    switch (step.kind) {
    case shell::ScriptStep::Kind::Action:
        m_hooks.perform(step.action);
        afterStep(step);
        break;
    case shell::ScriptStep::Kind::Wait:
        QTimer::singleShot(step.waitMS, this, [this, step] { afterStep(step); });
        break;
    case shell::ScriptStep::Kind::Shot:
        QTimer::singleShot(kSettleMS, this,
            [this, step] { m_frames->whenDrawn([this, step] { takeShot(step); }); });
        break;
    case shell::ScriptStep::Kind::Quit:
        finish(0);
        break;
    }
}

void ScriptRunner::afterStep(const shell::ScriptStep& step)
{
    m_frames->whenDrawn([this, number = step.number] {
        dump(number);
        m_busy = false;
        // Not from inside the frame callback: the next step starts afresh.
        QMetaObject::invokeMethod(this, &ScriptRunner::pump, Qt::QueuedConnection);
    });
}

void ScriptRunner::takeShot(const shell::ScriptStep& step)
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
