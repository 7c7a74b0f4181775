// The property-list data model that documents, preferences, indexes and timer entries share.
// Values are plain C++ values: copying one is a deep copy, and == compares whole trees.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace marigold {

class PlistValue;

// A point in time as property lists keep it: seconds since 2001-01-01 00:00:00 UTC.
struct PlistDate {
  double seconds = 0;
  bool operator==(const PlistDate&) const = default;
};

using PlistData = std::vector<std::uint8_t>;
using PlistArray = std::vector<PlistValue>;

// A dictionary that keeps its keys in insertion order, so that a file written twice is the same
// bytes and keys stay where the user's older version put them.
class PlistDict {
 public:
  using Item = std::pair<std::string, PlistValue>;

  PlistDict() = default;
  PlistDict(std::initializer_list<Item> items);

  using const_iterator = std::vector<Item>::const_iterator;
  using iterator = std::vector<Item>::iterator;

  // Defined below PlistValue: clang instantiates the vector's constexpr members at once, and
  // PlistValue must be complete by then.
  std::size_t size() const;
  bool empty() const;
  const_iterator begin() const;
  const_iterator end() const;
  iterator begin();
  iterator end();

  bool Contains(std::string_view key) const { return Find(key) != nullptr; }
  const PlistValue* Find(std::string_view key) const;
  PlistValue* Find(std::string_view key);
  // Overwrites in place when the key exists (keeping its position), else appends.
  void Set(std::string_view key, PlistValue value);
  // Removes the key; does nothing when it is absent. Returns whether it was present.
  bool Remove(std::string_view key);
  std::vector<std::string> Keys() const;

  // Typed reads that treat a missing key or another type as the default, as readers of
  // documents and preferences do ("a missing number is 0").
  std::int64_t GetInt(std::string_view key, std::int64_t fallback = 0) const;
  std::string GetString(std::string_view key, std::string_view fallback = "") const;
  // True only when the key holds the integer 1 (flags are true only when they equal 1).
  bool IsFlagOn(std::string_view key) const { return GetInt(key) == 1; }
  const PlistDict* GetDict(std::string_view key) const;
  PlistDict* GetDict(std::string_view key);
  const PlistArray* GetArray(std::string_view key) const;
  PlistArray* GetArray(std::string_view key);
  const PlistData* GetData(std::string_view key) const;
  std::optional<PlistDate> GetDate(std::string_view key) const;

  // Equal keys with equal values, whatever their order.
  bool operator==(const PlistDict& other) const;

 private:
  std::vector<Item> mItems;
};

class PlistValue {
 public:
  enum class Type { String, Integer, Real, Boolean, Date, Data, Array, Dict };

  PlistValue() : mValue(std::string()) {}
  PlistValue(std::string v) : mValue(std::move(v)) {}
  PlistValue(std::string_view v) : mValue(std::string(v)) {}
  PlistValue(const char* v) : mValue(std::string(v)) {}
  PlistValue(std::int64_t v) : mValue(v) {}
  PlistValue(int v) : mValue(static_cast<std::int64_t>(v)) {}
  PlistValue(long long v) : mValue(static_cast<std::int64_t>(v)) {}
  PlistValue(double v) : mValue(v) {}
  PlistValue(bool v) : mValue(v) {}
  PlistValue(PlistDate v) : mValue(v) {}
  PlistValue(PlistData v) : mValue(std::move(v)) {}
  PlistValue(PlistArray v) : mValue(std::move(v)) {}
  PlistValue(PlistDict v) : mValue(std::move(v)) {}

  Type GetType() const { return static_cast<Type>(mValue.index()); }
  bool IsString() const { return GetType() == Type::String; }
  bool IsInteger() const { return GetType() == Type::Integer; }
  bool IsReal() const { return GetType() == Type::Real; }
  bool IsBoolean() const { return GetType() == Type::Boolean; }
  bool IsDate() const { return GetType() == Type::Date; }
  bool IsData() const { return GetType() == Type::Data; }
  bool IsArray() const { return GetType() == Type::Array; }
  bool IsDict() const { return GetType() == Type::Dict; }

  // Typed access; nullptr when the value has another type.
  const std::string* AsString() const { return std::get_if<std::string>(&mValue); }
  const std::int64_t* AsInteger() const { return std::get_if<std::int64_t>(&mValue); }
  const double* AsReal() const { return std::get_if<double>(&mValue); }
  const bool* AsBoolean() const { return std::get_if<bool>(&mValue); }
  const PlistDate* AsDate() const { return std::get_if<PlistDate>(&mValue); }
  const PlistData* AsData() const { return std::get_if<PlistData>(&mValue); }
  const PlistArray* AsArray() const { return std::get_if<PlistArray>(&mValue); }
  PlistArray* AsArray() { return std::get_if<PlistArray>(&mValue); }
  const PlistDict* AsDict() const { return std::get_if<PlistDict>(&mValue); }
  PlistDict* AsDict() { return std::get_if<PlistDict>(&mValue); }

  // The value as a number the way readers of flags and counters want it: integers as they
  // are, booleans as 0/1, reals truncated; anything else gives the fallback.
  std::int64_t NumberOr(std::int64_t fallback) const;

  bool operator==(const PlistValue& other) const { return mValue == other.mValue; }

 private:
  std::variant<std::string, std::int64_t, double, bool, PlistDate, PlistData, PlistArray, PlistDict>
      mValue;
};

inline std::size_t PlistDict::size() const { return mItems.size(); }
inline bool PlistDict::empty() const { return mItems.empty(); }
inline PlistDict::const_iterator PlistDict::begin() const { return mItems.begin(); }
inline PlistDict::const_iterator PlistDict::end() const { return mItems.end(); }
inline PlistDict::iterator PlistDict::begin() { return mItems.begin(); }
inline PlistDict::iterator PlistDict::end() { return mItems.end(); }

// A readable name of a value's type, for messages ("integer", "dictionary", ...).
std::string_view TypeName(PlistValue::Type type);

}  // namespace marigold
