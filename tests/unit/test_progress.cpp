// SPDX-License-Identifier: MIT
// The sweep's progress line and its estimate of the time left.
#include <gtest/gtest.h>

#include "tune/sweep/progress.h"

TEST(Progress, EstimateAtThePaceSoFar) {
    EXPECT_EQ(progress_text("p", "point", 1, 9, 5), "p (point 1 of 9), 0:05 elapsed") << "nothing done yet";
    EXPECT_EQ(progress_text("p", "point", 3, 9, 20), "p (point 3 of 9), 0:20 elapsed, about 1:10 left") << "2 done";
    EXPECT_EQ(progress_text("p", "value", 2, 2, 3700), "p (value 2 of 2), 1:01:40 elapsed, about 1:01:40 left")
        << "hours";
}
