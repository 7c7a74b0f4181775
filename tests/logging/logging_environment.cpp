// Every test of this program runs with a private home folder (its trash included), set before
// any library that caches it starts.
#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>

#include "support/temp_folder.h"

namespace marigold {
namespace {

class LoggingEnvironment : public ::testing::Environment {
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

const auto* const kEnvironment = ::testing::AddGlobalTestEnvironment(new LoggingEnvironment);

}  // namespace
}  // namespace marigold
