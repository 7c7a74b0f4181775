// Every test of this program runs with a known time zone and locale and a private home folder,
// set before any test (and any library that caches them) starts.
#include <cstdlib>
#include <ctime>

#include "support/private_home.h"

namespace marigold {
namespace {

class DocumentsEnvironment : public PrivateHomeEnvironment {
 public:
  void SetUp() override {
    PrivateHomeEnvironment::SetUp();
    ::setenv("TZ", "Europe/Rome", 1);
    ::setenv("LC_ALL", "C.UTF-8", 1);
    ::tzset();
  }
};

const auto* const kEnvironment = ::testing::AddGlobalTestEnvironment(new DocumentsEnvironment);

}  // namespace
}  // namespace marigold
