// Access to the documents that tests/fixtures/documents/make_fixtures.py writes.
#pragma once

#include <string>

#include "util/plist_io.h"
#include "util/plist_value.h"
#include "build_paths.h"

namespace marigold {

// Full path of a fixture document, e.g. FixtureDocument("v300", "xml").
inline std::string FixtureDocument(const std::string& version, const std::string& format) {
  return std::string(MARIGOLD_FIXTURES) + "/documents/" + version + "-" + format + ".mgy";
}

// The fixture exactly as stored, without any upgrade.
inline PlistDict RawFixture(const std::string& version, const std::string& format) {
  return ReadPlistDictFile(FixtureDocument(version, format)).value_or(PlistDict{});
}

}  // namespace marigold
