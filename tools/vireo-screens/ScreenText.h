#pragma once

#include <QJsonObject>
#include <QString>

// The top screen as a few lines of plain text, from what its controller describes:
// what a scripted run prints so a person can follow the walk without a window.
class ScreenText {
public:
    ScreenText() = delete;

    // `screen` is ControllerStack::describeTop(); an empty object is an empty stack.
    static QString render(const QJsonObject& screen);

private:
    static QString renderRows(const QJsonObject& screen);
    static QString renderPreview(const QJsonObject& preview);
    static QString renderControls(const QJsonObject& screen);
    static QString renderPlayer(const QJsonObject& player);
    static QString clock(qint64 ms);
};
