// Editing a document by key path, as the command line does it. A key path names dictionary keys
// and array rows joined by dots ("filterDict.filterArray.0.filterFileNameOn"). A path whose first
// name is a key of the document root (sessionsArray, fileVersion, sessionIndex) starts at the
// document; any other path starts at a session. Only values that already exist can be set, and
// a value keeps the type its key has in a new document, read strictly from text.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "util/plist_value.h"

namespace marigold {

// True when `keyPath` starts at the document root rather than at a session.
bool IsDocumentKeyPath(std::string_view keyPath);

// The value at `keyPath` under `base`; nullptr with `error` saying which name does not exist.
const PlistValue* FindKeyPath(const PlistDict& base, std::string_view keyPath, std::string& error);

// `text` read as a value of `type`: integers and reals in full ("1x" is refused), booleans as
// true/false, yes/no or 1/0, dates as "2024-05-01T09:30:00Z" (UTC), data in Base64, strings as
// they are (valid UTF-8). Arrays and dictionaries cannot be read from text.
std::optional<PlistValue> ParseTypedValue(PlistValue::Type type, std::string_view text, std::string& error);

// How `doc get` prints a value: scalars as plain text in the forms ParseTypedValue reads (so a
// printed value can be set again), arrays and dictionaries as an XML property list.
std::string ValueText(const PlistValue& value);

// Sets the value at `keyPath` under `base` from `text`. `model` is a new document's counterpart
// of `base` (a new session, or a new document): rows of its lists stand for every row, and a
// key it lacks keeps the type the value has now. False with `error`, changing nothing, when the
// path does not exist, names a list or dictionary, or the text does not read as the type.
bool SetKeyPath(PlistDict& base, const PlistDict& model, std::string_view keyPath, std::string_view text,
                std::string& error);

// Splits "KEYPATH=VALUE" at its first "="; false with `error` when there is no key path.
bool SplitAssignment(std::string_view assignment, std::string_view& keyPath, std::string_view& text,
                     std::string& error);

// Applies "KEYPATH=VALUE" to `document`: a session path to the session at `sessionIndex`, a
// document path to the root. fileVersion is refused (every write stamps it).
bool ApplyAssignment(PlistDict& document, std::int64_t sessionIndex, std::string_view assignment, std::string& error);

// A rule a session must keep after an edit: nothing when it holds, else the reason it does not.
using SessionCheck = std::function<std::optional<std::string>(const PlistDict& session)>;

// The rules an edited document must keep, looked at where it differs from `before`: the selected
// index names a session or "All Sessions"; a changed session name passes the name check; every
// changed session passes `checks`. Nothing when all hold, else the first reason.
std::optional<std::string> CheckEditedDocument(const PlistDict& before, PlistDict& after,
                                               const std::vector<SessionCheck>& checks);

}  // namespace marigold
