#include "host/model/PfHostClasses.h"

#include <QApplication>

#include <gtest/gtest.h>

// For tests that show widgets: they need a QApplication (and a display,
// which ./kvx test provides through Xvfb when there is none).
int main(int argc, char** argv)
{
    QApplication application(argc, argv);
    PfHostRegisterClasses();
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
