// Runs the tests of the Objective-C++ sources with GNUstep, on an X display.

#import <AppKit/AppKit.h>
#include <gtest/gtest.h>

int main(int count, char** arguments) {
    // The pool is never emptied: the sources are written for ARC and compiled without it here, so nothing is retained.
    [[NSAutoreleasePool alloc] init];
    testing::InitGoogleTest(&count, arguments);
    testing::GTEST_FLAG(death_test_style) = "threadsafe";  // a copy of the process would share the X connection
    [NSApplication sharedApplication];
    return RUN_ALL_TESTS();
}
