#include "tests/support/temporaryhome.h"

#include <QCoreApplication>
#include <gtest/gtest.h>

int main(int argc, char** argv)
{
    testing::InitGoogleTest(&argc, argv);
    // Outlives everything static that the tests make, such as the configuration, which writes at exit.
    static const TemporaryHome home;
    const QCoreApplication application(argc, argv);
    return RUN_ALL_TESTS();
}
