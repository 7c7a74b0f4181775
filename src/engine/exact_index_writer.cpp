#include "engine/exact_index_writer.h"

#include <utility>

#include "engine/exact_index_names.h"
#include "engine/exact_index_xml.h"
#include "util/quillon_additions.h"
#include "util/temporary_names.h"

namespace marigold {
namespace {

constexpr std::size_t kFlushAt = 1 << 20;
}  // namespace

IndexXmlWriter::~IndexXmlWriter() { Abandon(); }

bool IndexXmlWriter::Open(FileSystem& fs, const std::string& target, std::int64_t fileVersion) {
  Abandon();
  mDepth = 1;
  auto file = fs.StartFileWrite(target, std::nullopt);
  if (!file) return false;
  mFile = std::move(file).Value();
  mBuffer.reserve(kFlushAt + 4096);
  Append(kIndexXmlSignature);
  Append("\n\t<integer>" + std::to_string(fileVersion) + "</integer>\n");
  return mFile != nullptr;
}

// A failed write drops the file (its temporary goes with it); what follows is then ignored.
void IndexXmlWriter::Flush() {
  if (mFile && !mFile->Write(mBuffer)) mFile.reset();
  mBuffer.clear();
}

void IndexXmlWriter::Append(std::string_view text) {
  if (!mFile) return;
  mBuffer.append(text);
  if (mBuffer.size() >= kFlushAt) Flush();
}

void IndexXmlWriter::AppendQuoted(std::string_view text) {
  if (!mFile) return;
  std::size_t start = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    const char* entity = c == '&' ? "&amp;" : c == '<' ? "&lt;" : c == '>' ? "&gt;" : nullptr;
    if (entity == nullptr) continue;
    mBuffer.append(text.substr(start, i - start));
    mBuffer.append(entity);
    start = i + 1;
  }
  mBuffer.append(text.substr(start));
}

void IndexXmlWriter::Indent() {
  if (!mFile) return;
  mBuffer.append(static_cast<std::size_t>(mDepth), '\t');
}

void IndexXmlWriter::KeyString(std::string_view key, std::string_view text) {
  Indent();
  Append("<key>");
  AppendQuoted(key);
  Append("</key>\n");
  Indent();
  Append("<string>");
  AppendQuoted(text);
  Append("</string>\n");
}

void IndexXmlWriter::KeyPath(std::string_view key, std::string_view path) { KeyString(key, EscapeIndexPath(path)); }

void IndexXmlWriter::KeyDate(std::string_view key, PlistDate date) {
  const std::string text = IsoUtcDateText(date);
  Indent();
  Append("<key>");
  AppendQuoted(key);
  Append("</key>\n");
  Indent();
  Append("<date>");
  Append(text);
  Append("</date>\n");
}

void IndexXmlWriter::OpenDict(std::string_view key) {
  Indent();
  Append("<key>");
  AppendQuoted(key);
  Append("</key>\n");
  Indent();
  Append("<dict>\n");
  ++mDepth;
}

void IndexXmlWriter::OpenFolder(std::string_view name) {
  if (IsPlainIndexText(name)) {
    OpenDict(name);
  } else {
    OpenDict(EscapeIndexName(name));
  }
}

void IndexXmlWriter::CloseDict() {
  --mDepth;
  Indent();
  Append("</dict>\n");
}

void IndexXmlWriter::Leaf(std::string_view name) {
  Indent();
  Append("<key>");
  if (IsPlainIndexText(name)) {
    AppendQuoted(name);
  } else {
    AppendQuoted(EscapeIndexName(name));
  }
  Append("</key>\n");
  Indent();
  Append("<string></string>\n");
}

bool IndexXmlWriter::Commit() {
  Append("</dict>\n</plist>\n");
  Flush();
  if (!mFile) return false;
  const bool committed = mFile->Commit().Ok();
  mFile.reset();
  return committed;
}

void IndexXmlWriter::Abandon() {
  mFile.reset();
  mBuffer.clear();
}

}  // namespace marigold
