// Every test of this program runs with a private home folder, its trash included.
#include "support/private_home.h"

namespace marigold {
namespace {

const auto* const kEnvironment = ::testing::AddGlobalTestEnvironment(new PrivateHomeEnvironment);

}  // namespace
}  // namespace marigold
