#import <Foundation/Foundation.h>
#include <gtest/gtest.h>

/// With a pool for what the tests themselves leave; the application's own code has pools of its
/// own.
int main(int count, char** arguments) {
    @autoreleasepool {
        testing::InitGoogleTest(&count, arguments);
        return RUN_ALL_TESTS();
    }
}
