#include "util/plist_io.h"

#include <fcntl.h>
#include <plist/plist.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <vector>

#include "util/plist_guard.h"
#include "util/temporary_names.h"

namespace marigold {
namespace {

struct PlistFree {
  void operator()(plist_t node) const { plist_free(node); }
};
using PlistPtr = std::unique_ptr<void, PlistFree>;

bool Fail(std::string* error, std::string message) {
  if (error) *error = std::move(message);
  return false;
}

PlistValue FromNode(plist_t node) {
  switch (plist_get_node_type(node)) {
    case PLIST_BOOLEAN: {
      std::uint8_t v = 0;
      plist_get_bool_val(node, &v);
      return PlistValue(v != 0);
    }
    case PLIST_UINT:
    case PLIST_UID: {
      std::uint64_t v = 0;
      if (plist_get_node_type(node) == PLIST_UINT) plist_get_uint_val(node, &v);
      else plist_get_uid_val(node, &v);
      // The library keeps every integer unsigned; negative numbers come back in two's complement.
      return PlistValue(static_cast<std::int64_t>(v));
    }
    case PLIST_REAL: {
      double v = 0;
      plist_get_real_val(node, &v);
      return PlistValue(v);
    }
    case PLIST_STRING:
    case PLIST_KEY: {
      std::uint64_t length = 0;
      const char* text = plist_get_string_ptr(node, &length);
      return PlistValue(std::string(text ? text : "", text ? length : 0));
    }
    case PLIST_DATE: {
      std::int32_t sec = 0, usec = 0;
      plist_get_date_val(node, &sec, &usec);
      // The library saturates dates outside its 32-bit range to INT32_MIN on either side; such a
      // date cannot be trusted, so it is kept as the earliest date the library can represent.
      // It hands out the seconds truncated toward zero and the fraction without its sign, so a
      // date before 2001 subtracts it (less than a second before 2001, the sign is already lost).
      const double fraction = usec / 1e6;
      return PlistValue(PlistDate{sec < 0 ? sec - fraction : sec + fraction});
    }
    case PLIST_DATA: {
      std::uint64_t length = 0;
      const char* bytes = plist_get_data_ptr(node, &length);
      const auto* begin = reinterpret_cast<const std::uint8_t*>(bytes);
      return PlistValue(bytes ? PlistData(begin, begin + length) : PlistData());
    }
    case PLIST_ARRAY: {
      PlistArray array;
      std::uint32_t count = plist_array_get_size(node);
      array.reserve(count);
      for (std::uint32_t i = 0; i < count; ++i) array.push_back(FromNode(plist_array_get_item(node, i)));
      return PlistValue(std::move(array));
    }
    case PLIST_DICT: {
      PlistDict dict;
      plist_dict_iter it = nullptr;
      plist_dict_new_iter(node, &it);
      for (;;) {
        char* key = nullptr;
        plist_t value = nullptr;
        plist_dict_next_item(node, it, &key, &value);
        if (!value) {
          std::free(key);
          break;
        }
        dict.Set(key ? key : "", FromNode(value));
        std::free(key);
      }
      std::free(it);
      return PlistValue(std::move(dict));
    }
    case PLIST_NONE:
      break;
  }
  return PlistValue(std::string());
}

plist_t ToNode(const PlistValue& value) {
  switch (value.GetType()) {
    case PlistValue::Type::String: return plist_new_string(value.AsString()->c_str());
    case PlistValue::Type::Integer:
      return plist_new_uint(static_cast<std::uint64_t>(*value.AsInteger()));
    case PlistValue::Type::Real: return plist_new_real(*value.AsReal());
    case PlistValue::Type::Boolean: return plist_new_bool(*value.AsBoolean() ? 1 : 0);
    case PlistValue::Type::Date: {
      double seconds = value.AsDate()->seconds;
      if (!std::isfinite(seconds)) seconds = 0;
      seconds = std::clamp(seconds, static_cast<double>(INT32_MIN), static_cast<double>(INT32_MAX));
      double whole = std::floor(seconds);
      auto usec = static_cast<std::int32_t>(std::lround((seconds - whole) * 1e6));
      if (usec >= 1000000) usec = 999999;
      return plist_new_date(static_cast<std::int32_t>(whole), usec);
    }
    case PlistValue::Type::Data: {
      const PlistData& data = *value.AsData();
      return plist_new_data(reinterpret_cast<const char*>(data.data()), data.size());
    }
    case PlistValue::Type::Array: {
      plist_t array = plist_new_array();
      for (const PlistValue& item : *value.AsArray()) plist_array_append_item(array, ToNode(item));
      return array;
    }
    case PlistValue::Type::Dict: {
      plist_t dict = plist_new_dict();
      for (const auto& [key, item] : *value.AsDict()) plist_dict_set_item(dict, key.c_str(), ToNode(item));
      return dict;
    }
  }
  return plist_new_string("");
}

}  // namespace

std::optional<PlistValue> ParsePlist(std::string_view bytes, std::string* error,
                                     const PlistLimits& limits) {
  if (bytes.empty()) {
    Fail(error, "the file is empty");
    return std::nullopt;
  }
  if (bytes.size() > limits.maxBytes || bytes.size() > UINT32_MAX) {
    Fail(error, "the file is too large to be a property list");
    return std::nullopt;
  }
  const bool binary = bytes.substr(0, 6) == "bplist";
  const bool shapeOk = binary ? CheckBinaryPlistShape(bytes, limits.maxDepth, limits.maxNodes, error)
                              : CheckXmlPlistShape(bytes, limits.maxDepth, error);
  if (!shapeOk) return std::nullopt;
  plist_t raw = nullptr;
  plist_from_memory(bytes.data(), static_cast<std::uint32_t>(bytes.size()), &raw);
  PlistPtr root(raw);
  if (!root) {
    Fail(error, "it is not a property list");
    return std::nullopt;
  }
  return FromNode(root.get());
}

std::optional<std::string> ReadWholeFile(const std::string& path, std::size_t maxBytes) {
  int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd < 0) return std::nullopt;
  struct stat st {};
  if (::fstat(fd, &st) != 0 || !S_ISREG(st.st_mode) || static_cast<std::size_t>(st.st_size) > maxBytes) {
    ::close(fd);
    return std::nullopt;
  }
  std::string bytes;
  bytes.reserve(static_cast<std::size_t>(st.st_size));
  char buffer[65536];
  for (;;) {
    ssize_t n = ::read(fd, buffer, sizeof buffer);
    if (n < 0 && errno == EINTR) continue;
    if (n < 0) {
      ::close(fd);
      return std::nullopt;
    }
    if (n == 0) break;
    if (bytes.size() + static_cast<std::size_t>(n) > maxBytes) {
      ::close(fd);
      return std::nullopt;
    }
    bytes.append(buffer, static_cast<std::size_t>(n));
  }
  ::close(fd);
  return bytes;
}

std::optional<PlistDict> ReadPlistDictFile(const std::string& path, std::string* error,
                                           const PlistLimits& limits) {
  struct stat st {};
  if (::stat(path.c_str(), &st) != 0) {
    Fail(error, std::strerror(errno));
    return std::nullopt;
  }
  if (!S_ISREG(st.st_mode)) {
    Fail(error, S_ISDIR(st.st_mode) ? "it is a folder" : "it is not a file");
    return std::nullopt;
  }
  if (static_cast<std::size_t>(st.st_size) > limits.maxBytes) {
    Fail(error, "it is too large to be a property list");
    return std::nullopt;
  }
  std::optional<std::string> bytes = ReadWholeFile(path, limits.maxBytes);
  if (!bytes) {
    Fail(error, std::strerror(errno));
    return std::nullopt;
  }
  return ParsePlistDict(*bytes, error, limits);
}

std::optional<PlistDict> ParsePlistDict(std::string_view bytes, std::string* error, const PlistLimits& limits) {
  std::optional<PlistValue> value = ParsePlist(bytes, error, limits);
  if (!value) return std::nullopt;
  if (!value->IsDict()) {
    Fail(error, "it does not hold a dictionary");
    return std::nullopt;
  }
  return std::move(*value->AsDict());
}

std::string ToXmlPlist(const PlistValue& value) {
  PlistPtr node(ToNode(value));
  char* xml = nullptr;
  std::uint32_t length = 0;
  plist_to_xml(node.get(), &xml, &length);
  std::string text(xml ? xml : "", xml ? length : 0);
  plist_to_xml_free(xml);
  return text;
}

}  // namespace marigold
