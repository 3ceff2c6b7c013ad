// The tests of links need Qt's event loop.
#include <QCoreApplication>

#include <gtest/gtest.h>

int main(int argumentCount, char **arguments)
{
    testing::InitGoogleTest(&argumentCount, arguments);
    const QCoreApplication application(argumentCount, arguments);
    return RUN_ALL_TESTS();
}
