#include "platform/item_names.h"

#include <unicode/uchar.h>
#include <unicode/utf8.h>

#include <algorithm>

namespace marigold {

namespace {

// Folded code points; a byte outside valid UTF-8 becomes a value above every code point.
class FoldedReader {
 public:
  explicit FoldedReader(std::string_view text) : mText(text) {}
  bool AtEnd() const { return mPos >= mText.size(); }
  UChar32 Next() {
    auto first = static_cast<unsigned char>(mText[mPos]);
    UChar32 c;
    int32_t pos = static_cast<int32_t>(mPos);
    U8_NEXT(reinterpret_cast<const uint8_t*>(mText.data()), pos, static_cast<int32_t>(mText.size()), c);
    if (c < 0) {
      mPos += 1;  // one byte at a time, so every invalid byte counts
      return 0x110000 + first;
    }
    mPos = static_cast<std::size_t>(pos);
    return u_foldCase(c, U_FOLD_CASE_DEFAULT);
  }

 private:
  std::string_view mText;
  std::size_t mPos = 0;
};

int CompareFolded(std::string_view a, std::string_view b) {
  FoldedReader ra(a), rb(b);
  while (!ra.AtEnd() && !rb.AtEnd()) {
    UChar32 ca = ra.Next(), cb = rb.Next();
    if (ca != cb) return ca < cb ? -1 : 1;
  }
  if (!ra.AtEnd()) return 1;
  if (!rb.AtEnd()) return -1;
  return 0;
}

}  // namespace

int CompareItemNames(std::string_view a, std::string_view b) {
  int folded = CompareFolded(a, b);
  if (folded != 0) return folded;
  int bytes = a.compare(b);
  return bytes < 0 ? -1 : (bytes > 0 ? 1 : 0);
}

bool ItemNamesMatchIgnoringCase(std::string_view a, std::string_view b) {
  return CompareFolded(a, b) == 0;
}

void SortItemNames(std::vector<std::string>& names) {
  std::sort(names.begin(), names.end(),
            [](const std::string& x, const std::string& y) { return CompareItemNames(x, y) < 0; });
}

}  // namespace marigold
