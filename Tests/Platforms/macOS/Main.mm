// SPDX-License-Identifier: Apache-2.0
#import <Foundation/Foundation.h>
#include <gtest/gtest.h>

/// Autorelease pool for the tests' own objects.
int main(int count, char** arguments) {
    @autoreleasepool {
        testing::InitGoogleTest(&count, arguments);
        return RUN_ALL_TESTS();
    }
}
