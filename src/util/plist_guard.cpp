#include "util/plist_guard.h"

#include <algorithm>
#include <cstdint>
#include <vector>

namespace marigold {
namespace {

bool Fail(std::string* error, std::string message) {
  if (error) *error = std::move(message);
  return false;
}

bool StartsWithAt(std::string_view text, std::size_t pos, std::string_view prefix) {
  return text.compare(pos, prefix.size(), prefix) == 0;
}

// Position just past `terminator` at or after `from`, or npos.
std::size_t SkipPast(std::string_view text, std::size_t from, std::string_view terminator) {
  std::size_t at = text.find(terminator, from);
  return at == std::string_view::npos ? at : at + terminator.size();
}

bool IsNestingTag(std::string_view text, std::size_t nameStart) {
  for (std::string_view name : {std::string_view("dict"), std::string_view("array")}) {
    if (!StartsWithAt(text, nameStart, name)) continue;
    std::size_t after = nameStart + name.size();
    if (after >= text.size()) return false;
    char c = text[after];
    return c == '>' || c == '/' || c == ' ' || c == '\t' || c == '\r' || c == '\n';
  }
  return false;
}

std::uint64_t ReadBigEndian(std::string_view bytes, std::size_t at, std::size_t width) {
  std::uint64_t value = 0;
  for (std::size_t i = 0; i < width; ++i) value = (value << 8) | static_cast<std::uint8_t>(bytes[at + i]);
  return value;
}

}  // namespace

bool CheckXmlPlistShape(std::string_view text, int maxDepth, std::string* error) {
  int depth = 0;
  std::size_t pos = 0;
  while ((pos = text.find('<', pos)) != std::string_view::npos) {
    if (StartsWithAt(text, pos, "<!--")) {
      pos = SkipPast(text, pos + 4, "-->");
    } else if (StartsWithAt(text, pos, "<![CDATA[")) {
      pos = SkipPast(text, pos + 9, "]]>");
    } else if (StartsWithAt(text, pos, "<?")) {
      pos = SkipPast(text, pos + 2, "?>");
    } else if (StartsWithAt(text, pos, "<!")) {
      pos = SkipPast(text, pos + 2, ">");
    } else if (StartsWithAt(text, pos, "</")) {
      if (IsNestingTag(text, pos + 2) && depth > 0) --depth;
      pos += 2;
    } else {
      bool nesting = IsNestingTag(text, pos + 1);
      std::size_t close = text.find('>', pos);
      if (close == std::string_view::npos) break;
      if (nesting && text[close - 1] != '/' && ++depth > maxDepth) {
        return Fail(error, "the property list is nested more than " + std::to_string(maxDepth) +
                               " levels deep");
      }
      pos = close + 1;
    }
    if (pos == std::string_view::npos) break;
  }
  return true;
}

bool CheckBinaryPlistShape(std::string_view bytes, int maxDepth, std::size_t maxNodes,
                           std::string* error) {
  constexpr std::size_t kHeader = 8, kTrailer = 32;
  if (bytes.size() < kHeader + kTrailer) return Fail(error, "the binary property list is truncated");
  const std::size_t trailer = bytes.size() - kTrailer;
  const std::size_t offsetSize = static_cast<std::uint8_t>(bytes[trailer + 6]);
  const std::size_t refSize = static_cast<std::uint8_t>(bytes[trailer + 7]);
  const std::uint64_t objectCount = ReadBigEndian(bytes, trailer + 8, 8);
  const std::uint64_t topObject = ReadBigEndian(bytes, trailer + 16, 8);
  const std::uint64_t tableOffset = ReadBigEndian(bytes, trailer + 24, 8);
  if (offsetSize < 1 || offsetSize > 8 || refSize < 1 || refSize > 8 || objectCount == 0 ||
      topObject >= objectCount || tableOffset < kHeader || tableOffset >= trailer ||
      objectCount > (trailer - tableOffset) / offsetSize) {
    return Fail(error, "the binary property list has a damaged trailer");
  }

  auto objectOffset = [&](std::uint64_t index) {
    return ReadBigEndian(bytes, static_cast<std::size_t>(tableOffset + index * offsetSize), offsetSize);
  };
  // The object's marker and element count (the count may follow in an integer object); `at` is
  // left on the first byte after them. False when the object lies outside the object area.
  auto header = [&](std::uint64_t index, std::uint8_t& marker, std::uint64_t& count, std::uint64_t& at) {
    at = objectOffset(index);
    if (at < kHeader || at >= tableOffset) return false;
    marker = static_cast<std::uint8_t>(bytes[at]);
    count = marker & 0x0F;
    ++at;
    const std::uint8_t kind = marker >> 4;
    if (count != 0x0F || kind < 0x4 || kind == 0x8) return true;
    if (at >= tableOffset) return false;
    std::uint8_t intMarker = static_cast<std::uint8_t>(bytes[at]);
    std::size_t width = std::size_t{1} << (intMarker & 0x0F);
    if ((intMarker >> 4) != 0x1 || width > 8 || at + 1 + width > tableOffset) return false;
    count = ReadBigEndian(bytes, static_cast<std::size_t>(at + 1), width);
    at += 1 + width;
    return true;
  };
  // A dictionary key must be a string without NUL characters: the parser aborts on such keys.
  auto isPlainKey = [&](std::uint64_t index) {
    std::uint8_t marker = 0;
    std::uint64_t count = 0, at = 0;
    if (!header(index, marker, count, at)) return false;
    const std::uint64_t unit = (marker >> 4) == 0x5 ? 1 : (marker >> 4) == 0x6 ? 2 : 0;
    if (unit == 0 || count > (tableOffset - at) / unit) return false;
    for (std::uint64_t i = 0; i < count; ++i) {
      const std::size_t pos = static_cast<std::size_t>(at + i * unit);
      if (bytes[pos] == '\0' && (unit == 1 || bytes[pos + 1] == '\0')) return false;
    }
    return true;
  };
  // The references an array, set or dictionary holds; false when the object is damaged.
  auto children = [&](std::uint64_t index, std::vector<std::uint64_t>& refs) {
    refs.clear();
    std::uint8_t marker = 0;
    std::uint64_t count = 0, at = 0;
    if (!header(index, marker, count, at)) return false;
    std::uint8_t kind = marker >> 4;
    if (kind != 0xA && kind != 0xC && kind != 0xD) return true;
    std::uint64_t refCount = kind == 0xD ? count * 2 : count;
    if (count > tableOffset || refCount > (tableOffset - at) / refSize) return false;
    refs.reserve(static_cast<std::size_t>(refCount));
    for (std::uint64_t i = 0; i < refCount; ++i) {
      std::uint64_t ref = ReadBigEndian(bytes, static_cast<std::size_t>(at + i * refSize), refSize);
      if (ref >= objectCount) return false;
      if (kind == 0xD && i < count && !isPlainKey(ref)) return false;
      refs.push_back(ref);
    }
    return true;
  };

  // Iterative depth-first walk; each object is expanded once, and its depth and expanded size
  // are remembered so shared objects cost nothing the second time.
  enum : std::uint8_t { kUnseen, kOpen, kDone };
  std::vector<std::uint8_t> state(static_cast<std::size_t>(objectCount), kUnseen);
  std::vector<int> height(static_cast<std::size_t>(objectCount), 0);
  std::vector<std::size_t> expanded(static_cast<std::size_t>(objectCount), 0);
  struct Frame { std::uint64_t object; std::vector<std::uint64_t> refs; std::size_t next; };
  std::vector<Frame> stack;
  std::vector<std::uint64_t> refs;
  if (!children(topObject, refs)) return Fail(error, "the binary property list has a damaged object");
  stack.push_back({topObject, refs, 0});
  state[topObject] = kOpen;
  while (!stack.empty()) {
    Frame& frame = stack.back();
    if (frame.next < frame.refs.size()) {
      std::uint64_t child = frame.refs[frame.next++];
      if (state[child] == kOpen) return Fail(error, "the binary property list refers to itself");
      if (state[child] == kDone) continue;
      if (static_cast<int>(stack.size()) >= maxDepth) {
        return Fail(error, "the property list is nested more than " + std::to_string(maxDepth) +
                               " levels deep");
      }
      if (!children(child, refs)) return Fail(error, "the binary property list has a damaged object");
      state[child] = kOpen;
      stack.push_back({child, refs, 0});
      continue;
    }
    int h = 1;
    std::size_t size = 1;
    for (std::uint64_t child : frame.refs) {
      h = std::max(h, height[child] + 1);
      size += expanded[child];
      if (size > maxNodes) return Fail(error, "the property list holds too many values");
    }
    height[frame.object] = h;
    expanded[frame.object] = size;
    state[frame.object] = kDone;
    stack.pop_back();
  }
  if (height[topObject] > maxDepth) {
    return Fail(error, "the property list is nested more than " + std::to_string(maxDepth) +
                           " levels deep");
  }
  return true;
}

}  // namespace marigold
