#include "engine/exact_index_writer.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <ctime>
#include <vector>

#include "engine/exact_index_names.h"
#include "engine/exact_index_xml.h"
#include "util/quillon_additions.h"
#include "util/temporary_names.h"

namespace marigold {
namespace {

constexpr std::size_t kFlushAt = 1 << 20;
}  // namespace

IndexXmlWriter::~IndexXmlWriter() { Abandon(); }

void IndexXmlWriter::Fail() {
  if (!mFailed) mErrno = errno;
  mFailed = true;
  mBuffer.clear();
}

bool IndexXmlWriter::Open(const std::string& target, std::int64_t fileVersion) {
  Abandon();
  mTarget = target;
  mFailed = false;
  mErrno = 0;
  mDepth = 1;
  const std::size_t slash = target.rfind('/');
  const std::string folder = slash == std::string::npos ? std::string() : target.substr(0, slash + 1);
  for (int attempt = 0; attempt < 100 && mFd < 0; ++attempt) {
    mTemporary = folder + MakeTemporaryName();
    mFd = ::open(mTemporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
    if (mFd < 0 && errno != EEXIST) break;
  }
  if (mFd < 0) {
    mTemporary.clear();
    Fail();
    return false;
  }
  mode_t mask = ::umask(0);
  ::umask(mask);
  if (::fchmod(mFd, 0666 & ~mask) != 0) Fail();
  mBuffer.reserve(kFlushAt + 4096);
  Append(kIndexXmlSignature);
  Append("\n\t<integer>" + std::to_string(fileVersion) + "</integer>\n");
  return !mFailed;
}

void IndexXmlWriter::Flush() {
  std::size_t written = 0;
  while (!mFailed && written < mBuffer.size()) {
    const ssize_t n = ::write(mFd, mBuffer.data() + written, mBuffer.size() - written);
    if (n < 0 && errno == EINTR) continue;
    if (n < 0) {
      Fail();
      return;
    }
    written += static_cast<std::size_t>(n);
  }
  mBuffer.clear();
}

void IndexXmlWriter::Append(std::string_view text) {
  if (mFailed || mFd < 0) return;
  mBuffer.append(text);
  if (mBuffer.size() >= kFlushAt) Flush();
}

void IndexXmlWriter::AppendQuoted(std::string_view text) {
  if (mFailed || mFd < 0) return;
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
  if (mFailed || mFd < 0) return;
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
  if (mFd < 0) return false;
  Append("</dict>\n</plist>\n");
  Flush();
  if (!mFailed && ::fsync(mFd) != 0) Fail();
  if (::close(mFd) != 0 && !mFailed) Fail();
  mFd = -1;
  if (!mFailed && ::rename(mTemporary.c_str(), mTarget.c_str()) != 0) Fail();
  if (mFailed) {
    ::unlink(mTemporary.c_str());
    mTemporary.clear();
    return false;
  }
  mTemporary.clear();
  const std::size_t slash = mTarget.rfind('/');
  const std::string folder = slash == std::string::npos ? "." : (slash == 0 ? "/" : mTarget.substr(0, slash));
  const int dirFd = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (dirFd >= 0) {
    ::fsync(dirFd);
    ::close(dirFd);
  }
  return true;
}

void IndexXmlWriter::Abandon() {
  if (mFd >= 0) {
    ::close(mFd);
    mFd = -1;
  }
  if (!mTemporary.empty()) {
    ::unlink(mTemporary.c_str());
    mTemporary.clear();
  }
  mBuffer.clear();
}

}  // namespace marigold
