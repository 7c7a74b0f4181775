// A private home folder for a whole test program: HOME and the XDG folders point into a temporary
// folder before any test runs, because GIO (the trash) and the library read them once per process.
#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>

#include "support/temp_folder.h"

namespace marigold {

class PrivateHomeEnvironment : public ::testing::Environment {
 public:
  void SetUp() override {
    mHome = std::make_unique<TempFolder>();
    ::setenv("HOME", mHome->Path().c_str(), 1);
    ::setenv("XDG_CONFIG_HOME", mHome->Join(".config").c_str(), 1);
    ::setenv("XDG_DATA_HOME", mHome->Join(".local/share").c_str(), 1);
  }
  void TearDown() override { mHome.reset(); }

 private:
  std::unique_ptr<TempFolder> mHome;
};

}  // namespace marigold
