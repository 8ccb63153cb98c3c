#include <QApplication>
#include <clocale>
#include <gtest/gtest.h>

int main(int argc, char **argv)
{
    // Widgets render offscreen unless a display is asked for, so tests run anywhere.
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    std::setlocale(LC_ALL, "C");
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
