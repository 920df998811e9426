// e2e --as-root|--as-user [ARGUMENT OF THE TEST LIBRARY...]: runs the tests of this room in a world of their own.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <exception>

#include "tests/e2e/World.h"

int main(int argc, char** argv) {
  if (e2e::InsideWorld()) {
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
  }
  const bool root = argc > 1 && std::strcmp(argv[1], "--as-root") == 0;
  if (!root && (argc < 2 || std::strcmp(argv[1], "--as-user") != 0)) {
    std::fputs("e2e_test: say --as-root or --as-user first\n", stderr);
    return 2;
  }
  try {
    return e2e::RunInWorld(root ? e2e::User::Root : e2e::User::Ordinary, argv);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "e2e_test: %s\n", error.what());
    return 1;
  }
}
