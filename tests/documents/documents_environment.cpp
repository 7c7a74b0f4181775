// Every test of this program runs with a known time zone and locale and a private home folder,
// set before any test (and any library that caches them) starts.
#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>

#include "support/temp_folder.h"

namespace marigold {
namespace {

class DocumentsEnvironment : public ::testing::Environment {
 public:
  void SetUp() override {
    mHome = std::make_unique<TempFolder>();
    ::setenv("HOME", mHome->Path().c_str(), 1);
    ::setenv("XDG_CONFIG_HOME", mHome->Join(".config").c_str(), 1);
    ::setenv("XDG_DATA_HOME", mHome->Join(".local/share").c_str(), 1);
    ::setenv("TZ", "Europe/Rome", 1);
    ::setenv("LC_ALL", "C.UTF-8", 1);
    ::tzset();
  }
  void TearDown() override { mHome.reset(); }

 private:
  std::unique_ptr<TempFolder> mHome;
};

const auto* const kEnvironment = ::testing::AddGlobalTestEnvironment(new DocumentsEnvironment);

}  // namespace
}  // namespace marigold
