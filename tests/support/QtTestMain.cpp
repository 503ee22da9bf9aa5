// Test main for widget tests: one QApplication for the whole run. Linked
// before gtest_main, so this main() is the one that counts.
#include <QApplication>
#include <QDir>
#include <gtest/gtest.h>

int main(int argc, char** argv)
{
    // Headless unless told otherwise, also when ctest lists the tests.
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    // Relative paths are the repository's, as in the examples script.
    QDir::setCurrent(HX_SOURCE_DIR);
    QApplication app(argc, argv);
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
