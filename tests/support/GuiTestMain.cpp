#include <gtest/gtest.h>

#include <QGuiApplication>

// The offscreen platform needs no display; fonts, images and timers work as in the
// shell.
int main(int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
