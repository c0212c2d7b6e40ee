// The baseline of the shell's start-up and memory figures: the least a Qt Quick
// program does to show one text, started the way the shell is (OpenGL, a windowed
// 1280 x 720 window). Prints one line once its first frame is on the screen, then
// stays up until standard input ends or says "quit", so that its memory can be read.

#include <QGuiApplication>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QQuickWindow>
#include <QSocketNotifier>

#include <cstdio>
#include <memory>

#include <unistd.h>

namespace {

const QByteArray kScene = R"(
import QtQuick
import QtQuick.Window
Window { width: 1280; height: 720; color: "black"
    Text { anchors.centerIn: parent; text: "Vireo"; color: "white"; font.pixelSize: 48 }
}
)";

} // namespace

int main(int argc, char** argv)
{
    QQuickWindow::setGraphicsApi(QSGRendererInterface::OpenGL);
    QGuiApplication app(argc, argv);
    QQmlEngine engine;
    QQmlComponent component(&engine);
    component.setData(kScene, QUrl());
    const std::unique_ptr<QObject> root(component.create());
    auto* window = qobject_cast<QQuickWindow*>(root.get());
    if (!window) {
        std::fputs(qPrintable(component.errorString()), stderr);
        return 1;
    }
    // The first frame on the screen is the baseline's only step.
    QObject::connect(
        window, &QQuickWindow::frameSwapped, window,
        [] {
            std::fputs("{\"step\":0}\n", stdout);
            std::fflush(stdout);
        },
        Qt::SingleShotConnection);
    // Quits on "quit" or at the end of input; anything else is ignored.
    QSocketNotifier input(STDIN_FILENO, QSocketNotifier::Read);
    QObject::connect(&input, &QSocketNotifier::activated, &app, [&input] {
        char buffer[256];
        const ssize_t got = ::read(STDIN_FILENO, buffer, sizeof buffer);
        if (got <= 0 || QByteArray(buffer, int(got)).contains("quit")) {
            input.setEnabled(false);
            QCoreApplication::quit();
        }
    });
    window->show();
    return app.exec();
}
