#include "main/inputfilter.h"

#include <QApplication>
#include <QWidget>

#include <gtest/gtest.h>

namespace quorvel::test {
namespace {

TEST(InputFilter, EveryWindowAskedToCloseInMidTransactionClosesAfterIt)
{
    link::Gate gate;
    InputFilter filter(gate);
    qApp->installEventFilter(&filter);
    QWidget first;
    QWidget second;
    for (int round = 1; round <= 2; ++round) {
        first.show();
        second.show();
        gate.run([&] {
            first.close();
            first.close();
            second.close();
            EXPECT_TRUE(first.isVisible());
            EXPECT_TRUE(second.isVisible());
        });
        EXPECT_FALSE(first.isVisible());
        EXPECT_FALSE(second.isVisible());
    }
}

} // namespace
} // namespace quorvel::test
