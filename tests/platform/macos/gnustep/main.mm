// Runs the tests of the Objective-C++ sources with GNUstep, on an X display.

#import <AppKit/AppKit.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <csignal>
#include <string>

namespace {

// Ends the process if a test takes longer than a minute, since it then waits for an event that never comes. The last
// line of the output names the test, in the form that run_checks.py reads.
class TimeLimit : public testing::EmptyTestEventListener {
  private:
    void OnTestStart(const testing::TestInfo& test) override {
        message() = std::string("\n[  FAILED  ] ") + test.test_suite_name() + "." + test.name() + " did not end\n";
        std::signal(SIGALRM, isOver);
        ::alarm(60);
    }
    void OnTestEnd(const testing::TestInfo&) override { ::alarm(0); }
    static std::string& message() {
        static std::string text;
        return text;
    }
    static void isOver(int) {
        static_cast<void>(::write(STDERR_FILENO, message().data(), message().size()));
        ::_exit(1);
    }
};

}  // namespace

int main(int count, char** arguments) {
    // The pool is never emptied: the sources are written for ARC and compiled without it here, so nothing is retained.
    [[NSAutoreleasePool alloc] init];
    testing::InitGoogleTest(&count, arguments);
    testing::GTEST_FLAG(death_test_style) = "threadsafe";  // a copy of the process would share the X connection
    testing::UnitTest::GetInstance()->listeners().Append(new TimeLimit);  // owned by the list
    [NSApplication sharedApplication];
    return RUN_ALL_TESTS();
}
