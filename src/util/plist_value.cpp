#include "util/plist_value.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace marigold {

PlistDict::PlistDict(std::initializer_list<Item> items) {
  for (const auto& item : items) Set(item.first, item.second);
}

const PlistValue* PlistDict::Find(std::string_view key) const {
  for (const auto& item : mItems) {
    if (item.first == key) return &item.second;
  }
  return nullptr;
}

PlistValue* PlistDict::Find(std::string_view key) {
  for (auto& item : mItems) {
    if (item.first == key) return &item.second;
  }
  return nullptr;
}

void PlistDict::Set(std::string_view key, PlistValue value) {
  if (PlistValue* existing = Find(key)) {
    *existing = std::move(value);
    return;
  }
  mItems.emplace_back(std::string(key), std::move(value));
}

bool PlistDict::Remove(std::string_view key) {
  auto it = std::find_if(mItems.begin(), mItems.end(),
                         [&](const Item& item) { return item.first == key; });
  if (it == mItems.end()) return false;
  mItems.erase(it);
  return true;
}

std::vector<std::string> PlistDict::Keys() const {
  std::vector<std::string> keys;
  keys.reserve(mItems.size());
  for (const auto& item : mItems) keys.push_back(item.first);
  return keys;
}

std::int64_t PlistDict::GetInt(std::string_view key, std::int64_t fallback) const {
  const PlistValue* value = Find(key);
  return value ? value->NumberOr(fallback) : fallback;
}

std::string PlistDict::GetString(std::string_view key, std::string_view fallback) const {
  const PlistValue* value = Find(key);
  if (value && value->IsString()) return *value->AsString();
  return std::string(fallback);
}

const PlistDict* PlistDict::GetDict(std::string_view key) const {
  const PlistValue* value = Find(key);
  return value ? value->AsDict() : nullptr;
}

PlistDict* PlistDict::GetDict(std::string_view key) {
  PlistValue* value = Find(key);
  return value ? value->AsDict() : nullptr;
}

const PlistArray* PlistDict::GetArray(std::string_view key) const {
  const PlistValue* value = Find(key);
  return value ? value->AsArray() : nullptr;
}

PlistArray* PlistDict::GetArray(std::string_view key) {
  PlistValue* value = Find(key);
  return value ? value->AsArray() : nullptr;
}

const PlistData* PlistDict::GetData(std::string_view key) const {
  const PlistValue* value = Find(key);
  return value ? value->AsData() : nullptr;
}

std::optional<PlistDate> PlistDict::GetDate(std::string_view key) const {
  const PlistValue* value = Find(key);
  if (value && value->IsDate()) return *value->AsDate();
  return std::nullopt;
}

bool PlistDict::operator==(const PlistDict& other) const {
  // A dictionary is its keys and values: files written by other tools (keys sorted, say) compare
  // equal to ours. Keys are unique, so equal sizes and every key found equal make equal dicts.
  if (mItems.size() != other.mItems.size()) return false;
  for (std::size_t i = 0; i < mItems.size(); ++i) {
    const Item& item = mItems[i];
    const PlistValue* theirs = other.mItems[i].first == item.first ? &other.mItems[i].second : other.Find(item.first);
    if (theirs == nullptr || !(*theirs == item.second)) return false;
  }
  return true;
}

std::int64_t PlistValue::NumberOr(std::int64_t fallback) const {
  if (const auto* i = AsInteger()) return *i;
  if (const auto* b = AsBoolean()) return *b ? 1 : 0;
  if (const auto* r = AsReal()) {
    // Out-of-range or NaN reals in a damaged file must not be undefined behaviour.
    if (!std::isfinite(*r)) return fallback;
    if (*r >= 9.2e18 || *r <= -9.2e18) return fallback;
    return static_cast<std::int64_t>(*r);
  }
  return fallback;
}

std::string_view TypeName(PlistValue::Type type) {
  switch (type) {
    case PlistValue::Type::String: return "string";
    case PlistValue::Type::Integer: return "integer";
    case PlistValue::Type::Real: return "real";
    case PlistValue::Type::Boolean: return "boolean";
    case PlistValue::Type::Date: return "date";
    case PlistValue::Type::Data: return "data";
    case PlistValue::Type::Array: return "array";
    case PlistValue::Type::Dict: return "dictionary";
  }
  return "value";
}

}  // namespace marigold
