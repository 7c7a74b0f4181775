#include "platform/whole_file.h"

#include <utility>

namespace marigold {

FileBytes& FileBytes::operator=(FileBytes&& other) noexcept {
  if (this == &other) return *this;
  if (mRelease) mRelease();
  mOwned = std::move(other.mOwned);
  mData = std::exchange(other.mData, nullptr);
  mSize = std::exchange(other.mSize, 0);
  mRelease = std::exchange(other.mRelease, nullptr);
  return *this;
}

FileBytes::~FileBytes() {
  if (mRelease) mRelease();
}

}  // namespace marigold
