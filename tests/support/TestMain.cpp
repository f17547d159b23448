#include <cstdio>
#include <cstdlib>
#include <gtest/gtest.h>
#include <string_view>
#include <unistd.h>

// The server ends its process with status 0 on fatal errors. In a test that must not count as
// success, except in the child processes of death tests, which expect it.

namespace {

pid_t testingProcess = 0;
bool testsHaveFinished = false;

void failOnEarlyExit() {
    if (getpid() == testingProcess && !testsHaveFinished) {
        fputs("the process ended in the middle of a test\n", stderr);
        _exit(1);
    }
}

} // namespace

int main(int argc, char** argv) {
    bool isDeathTestChild = false;
    for (int i = 1; i < argc; ++i) {
        if (std::string_view(argv[i]).starts_with("--gtest_internal_run_death_test"))
            isDeathTestChild = true;
    }
    testing::InitGoogleTest(&argc, argv);
    if (!isDeathTestChild) {
        testingProcess = getpid();
        atexit(failOnEarlyExit);
    }
    const int status = RUN_ALL_TESTS();
    testsHaveFinished = true;
    return status;
}
