// Runs the cases on a Windows.

#include <cstdio>

#include "../Conformance.h"

int main(int argc, char** argv) {
    std::puts("started");
    std::fflush(stdout);
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
