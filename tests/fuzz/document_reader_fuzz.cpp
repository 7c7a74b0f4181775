// Feeds arbitrary bytes to the document reader: parsing (XML or binary), the checks on the root,
// the upgrade from every older version, and the XML that saving would write. Any crash, leak or
// undefined behaviour here is a damaged document that could take the program down.
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "app/app_prompts.h"
#include "app/document_store.h"
#include "util/plist_io.h"

namespace {

class SilentPrompts : public marigold::AppPrompts {
 public:
  int Alert(const marigold::AlertRequest&) override { return 0; }
  std::optional<std::string> SavePanel(const std::string&, const std::string&) override { return std::nullopt; }
  std::optional<std::string> OpenPanel(const std::string&) override { return std::nullopt; }
};

// One scratch file per process, rewritten in place for every input (no fsync: speed matters more
// than durability here); the store reads documents by path.
struct Scratch {
  std::string path;
  int fd = -1;
};

const Scratch& ScratchFile() {
  static const Scratch scratch = [] {
    Scratch made{"/tmp/marigold-fuzz-XXXXXX"};
    made.fd = ::mkstemp(made.path.data());
    if (made.fd < 0) std::abort();
    std::atexit([] { ::unlink(ScratchFile().path.c_str()); });
    return made;
  }();
  return scratch;
}

bool WriteScratch(std::string_view bytes) {
  const Scratch& scratch = ScratchFile();
  if (::ftruncate(scratch.fd, 0) != 0) return false;
  std::size_t done = 0;
  while (done < bytes.size()) {
    ssize_t n = ::pwrite(scratch.fd, bytes.data() + done, bytes.size() - done, static_cast<off_t>(done));
    if (n <= 0) return false;
    done += static_cast<std::size_t>(n);
  }
  return true;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::string_view bytes(reinterpret_cast<const char*>(data), size);
  if (auto value = marigold::ParsePlist(bytes)) (void)marigold::ToXmlPlist(*value);

  if (!WriteScratch(bytes)) return 0;
  SilentPrompts prompts;
  marigold::DocumentStore store("/nonexistent/template.plist", prompts);
  if (store.ReadDocumentFile(ScratchFile().path)) {
    std::string xml = marigold::ToXmlPlist(marigold::PlistValue(store.mainDict()));
    // What saving writes must read back.
    if (!marigold::ParsePlist(xml)) std::abort();
  }
  return 0;
}
