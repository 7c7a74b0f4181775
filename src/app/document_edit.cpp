#include "app/document_edit.h"

#include <glib.h>

#include <charconv>
#include <cmath>
#include <ctime>
#include <memory>

#include "model/document_model.h"
#include "app/session_management.h"
#include "util/plist_io.h"
#include "util/quillon_additions.h"

namespace marigold {
namespace {


std::vector<std::string> SplitKeyPath(std::string_view keyPath) {
  std::vector<std::string> parts;
  std::size_t start = 0;
  while (true) {
    const std::size_t dot = keyPath.find('.', start);
    parts.emplace_back(keyPath.substr(start, dot == std::string_view::npos ? std::string_view::npos : dot - start));
    if (dot == std::string_view::npos) return parts;
    start = dot + 1;
  }
}

std::string Quoted(std::string_view text) { return "\"" + std::string(text) + "\""; }

std::string JoinedTo(const std::vector<std::string>& parts, std::size_t last) {
  std::string joined;
  for (std::size_t i = 0; i <= last; ++i) joined += (i ? "." : "") + parts[i];
  return joined;
}

// The row a name stands for in a list: plain decimal digits only, so "01", "+1" and "1x" name no row.
std::optional<std::size_t> RowNumber(const std::string& part) {
  if (part.empty() || (part.size() > 1 && part[0] == '0')) return std::nullopt;
  std::size_t row = 0;
  const auto [end, error] = std::from_chars(part.data(), part.data() + part.size(), row);
  if (error != std::errc() || end != part.data() + part.size()) return std::nullopt;
  return row;
}

// One step down from `container`; nullptr with `why` when `part` names nothing there. With
// `anyRow`, every row number of a non-empty list stands for its first row (a new document's lists
// hold identical rows).
template <typename Value>
Value* Child(Value& container, const std::string& parent, const std::string& part, bool anyRow, std::string& why) {
  if (auto* dict = container.AsDict()) {
    if (auto* found = dict->Find(part)) return found;
    why = Quoted(parent) + " has no key " + Quoted(part);
    return nullptr;
  }
  if (auto* array = container.AsArray()) {
    const std::optional<std::size_t> row = RowNumber(part);
    if (!row) {
      why = Quoted(parent) + " is a list: " + Quoted(part) + " is not a row number";
    } else if (anyRow && !array->empty()) {
      return &array->front();
    } else if (*row < array->size()) {
      return &(*array)[*row];
    } else {
      why = Quoted(parent) + " has " + std::to_string(array->size()) + " rows" +
            (array->empty() ? "" : " (0 to " + std::to_string(array->size() - 1) + ")");
    }
    return nullptr;
  }
  const std::string_view type = TypeName(container.GetType());
  why = Quoted(parent) + (type.front() == 'i' ? " is an " : " is a ") + std::string(type) + ", it holds no " +
        Quoted(part);
  return nullptr;
}

template <typename Dict>
auto Walk(Dict& base, std::string_view keyPath, bool anyRow, std::string& error) -> decltype(base.Find("")) {
  const std::vector<std::string> parts = SplitKeyPath(keyPath);
  for (std::size_t i = 0; i < parts.size(); ++i) {
    if (parts[i].empty()) {
      error = Quoted(keyPath) + " is not a key path: names are joined by single dots";
      return nullptr;
    }
  }
  std::string why;
  auto* current = base.Find(parts[0]);
  if (current == nullptr) why = "there is no key " + Quoted(parts[0]);
  for (std::size_t i = 1; current != nullptr && i < parts.size(); ++i) {
    current = Child(*current, parts[i - 1], parts[i], anyRow, why);
    if (current == nullptr) why = Quoted(JoinedTo(parts, i)) + " does not exist: " + why;
  }
  if (current == nullptr) error = why;
  return current;
}

std::optional<PlistValue> ParseNumber(PlistValue::Type type, std::string_view text) {
  const char* end = text.data() + text.size();
  if (type == PlistValue::Type::Integer) {
    std::int64_t number = 0;
    const auto [at, error] = std::from_chars(text.data(), end, number);
    if (error == std::errc() && at == end && !text.empty()) return PlistValue(number);
    return std::nullopt;
  }
  double number = 0;
  const auto [at, error] = std::from_chars(text.data(), end, number);
  if (error == std::errc() && at == end && !text.empty() && std::isfinite(number)) return PlistValue(number);
  return std::nullopt;
}

std::optional<PlistValue> ParseDate(std::string_view text) {
  if (auto date = ParseIsoUtcDate(text)) return PlistValue(*date);
  return std::nullopt;
}

std::optional<PlistValue> ParseData(std::string_view text) {
  // GLib's decoder skips characters it does not know; a strict reader checks the alphabet first.
  if (text.size() % 4 != 0) return std::nullopt;
  const std::size_t padding = text.ends_with("==") ? 2 : text.ends_with("=") ? 1 : 0;
  for (std::size_t i = 0; i < text.size() - padding; ++i) {
    const char c = text[i];
    if (!g_ascii_isalnum(c) && c != '+' && c != '/') return std::nullopt;
  }
  if (text.empty()) return PlistValue(PlistData());
  gsize length = 0;
  std::unique_ptr<guchar, decltype(&g_free)> bytes(g_base64_decode(std::string(text).c_str(), &length), &g_free);
  return PlistValue(PlistData(bytes.get(), bytes.get() + length));
}

std::string TypeWanted(PlistValue::Type type) {
  switch (type) {
    case PlistValue::Type::Integer: return "an integer";
    case PlistValue::Type::Real: return "a number";
    case PlistValue::Type::Boolean: return "true or false";
    case PlistValue::Type::Date: return "a date written as 2024-05-01T09:30:00Z (UTC)";
    case PlistValue::Type::Data: return "Base64 data";
    case PlistValue::Type::String: return "UTF-8 text";
    case PlistValue::Type::Array:
    case PlistValue::Type::Dict: break;
  }
  return "a " + std::string(TypeName(type));
}

}  // namespace

bool IsDocumentKeyPath(std::string_view keyPath) {
  static const PlistDict kRoot = NewTemplate();
  return kRoot.Contains(keyPath.substr(0, keyPath.find('.')));
}

const PlistValue* FindKeyPath(const PlistDict& base, std::string_view keyPath, std::string& error) {
  return Walk(base, keyPath, false, error);
}

std::optional<PlistValue> ParseTypedValue(PlistValue::Type type, std::string_view text, std::string& error) {
  std::optional<PlistValue> value;
  switch (type) {
    case PlistValue::Type::Integer:
    case PlistValue::Type::Real: value = ParseNumber(type, text); break;
    case PlistValue::Type::Boolean:
      if (text == "true" || text == "yes" || text == "1") value = PlistValue(true);
      if (text == "false" || text == "no" || text == "0") value = PlistValue(false);
      break;
    case PlistValue::Type::Date: value = ParseDate(text); break;
    case PlistValue::Type::Data: value = ParseData(text); break;
    case PlistValue::Type::String:
      if (g_utf8_validate(text.data(), static_cast<gssize>(text.size()), nullptr)) value = PlistValue(text);
      break;
    case PlistValue::Type::Array:
    case PlistValue::Type::Dict:
      error = "it is " + std::string(type == PlistValue::Type::Array ? "a list" : "a dictionary") +
              ": set its values one by one";
      return std::nullopt;
  }
  if (!value) error = "it takes " + TypeWanted(type) + ", not " + Quoted(text);
  return value;
}

std::string ValueText(const PlistValue& value) {
  switch (value.GetType()) {
    case PlistValue::Type::String: return *value.AsString();
    case PlistValue::Type::Integer: return std::to_string(*value.AsInteger());
    case PlistValue::Type::Real: {
      char text[64];
      const auto [end, error] = std::to_chars(text, text + sizeof text, *value.AsReal());
      return error == std::errc() ? std::string(text, end) : std::string();
    }
    case PlistValue::Type::Boolean: return *value.AsBoolean() ? "true" : "false";
    case PlistValue::Type::Date: return IsoUtcDateText(*value.AsDate());
    case PlistValue::Type::Data: {
      const PlistData& data = *value.AsData();
      std::unique_ptr<gchar, decltype(&g_free)> text(g_base64_encode(data.data(), data.size()), &g_free);
      return text.get();
    }
    case PlistValue::Type::Array:
    case PlistValue::Type::Dict: return ToXmlPlist(value);
  }
  return "";
}

bool SetKeyPath(PlistDict& base, const PlistDict& model, std::string_view keyPath, std::string_view text,
                std::string& error) {
  PlistValue* target = Walk(base, keyPath, false, error);
  if (target == nullptr) return false;
  std::string ignored;
  const PlistValue* typed = Walk(model, keyPath, true, ignored);
  const PlistValue::Type type = typed ? typed->GetType() : target->GetType();
  std::optional<PlistValue> value = ParseTypedValue(type, text, error);
  if (!value) {
    error = Quoted(keyPath) + ": " + error;
    return false;
  }
  *target = std::move(*value);
  return true;
}

bool SplitAssignment(std::string_view assignment, std::string_view& keyPath, std::string_view& text,
                     std::string& error) {
  const std::size_t equals = assignment.find('=');
  if (equals == std::string_view::npos || equals == 0) {
    error = "an assignment is KEYPATH=VALUE, not " + Quoted(assignment);
    return false;
  }
  keyPath = assignment.substr(0, equals);
  text = assignment.substr(equals + 1);
  return true;
}

bool ApplyAssignment(PlistDict& document, std::int64_t sessionIndex, std::string_view assignment, std::string& error) {
  std::string_view keyPath;
  std::string_view text;
  if (!SplitAssignment(assignment, keyPath, text, error)) return false;
  if (IsDocumentKeyPath(keyPath)) {
    if (keyPath == "fileVersion") {
      error = "\"fileVersion\" cannot be set: every write stamps the current version";
      return false;
    }
    static const PlistDict kNewDocument = NewTemplate();
    return SetKeyPath(document, kNewDocument, keyPath, text, error);
  }
  PlistDict* session = GetSessionDict(document, sessionIndex);
  if (session == nullptr) {
    error = "there is no session to set " + Quoted(keyPath) + " in";
    return false;
  }
  static const PlistDict kNewSession = DefaultSessionDict(1, "");
  return SetKeyPath(*session, kNewSession, keyPath, text, error);
}

std::optional<std::string> CheckEditedDocument(const PlistDict& before, PlistDict& after,
                                               const std::vector<SessionCheck>& checks) {
  const std::int64_t count = SessionCount(after);
  const std::int64_t index = after.GetInt("sessionIndex");
  if (index != before.GetInt("sessionIndex") && !IsAllSessions(after, index) && (index < 0 || index >= count)) {
    return "sessionIndex " + std::to_string(index) + " names no session: the document has " + std::to_string(count) +
           " (0 to " + std::to_string(count - 1) + ", or " + std::to_string(count + 1) + " for all of them)";
  }
  const PlistArray* old = before.GetArray("sessionsArray");
  const PlistArray* now = after.GetArray("sessionsArray");
  if (old == nullptr || now == nullptr || old->size() != now->size()) return "the list of sessions cannot be edited here";
  for (std::int64_t i = 0; i < count; ++i) {
    const auto at = static_cast<std::size_t>(i);
    if ((*old)[at] == (*now)[at]) continue;
    const std::string oldName = SessionNameOf((*old)[at]);
    const std::string newName = SessionNameOf((*now)[at]);
    if (newName != oldName) {
      std::vector<std::string> titles = SessionMenuTitles(after);
      titles[at] = oldName;
      const NameCheck check = CheckSessionName(titles, count, newName, i);
      if (check.verdict == NameVerdict::Refuse) return Quoted(newName) + ": " + check.message;
    }
    const PlistDict* session = (*now)[at].AsDict();
    if (session == nullptr) continue;
    for (const SessionCheck& check : checks) {
      if (std::optional<std::string> problem = check(*session)) return Quoted(oldName) + ": " + *problem;
    }
  }
  return std::nullopt;
}

}  // namespace marigold
