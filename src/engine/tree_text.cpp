#include "engine/tree_text.h"

#include <cstdio>

#include "engine/copy_mode.h"

namespace marigold {
namespace {

// The length of the valid UTF-8 sequence starting at `at`, or 0 when it is not one.
std::size_t Utf8Length(std::string_view text, std::size_t at) {
  const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
  const unsigned char lead = byte(at);
  std::size_t length = 0;
  unsigned minimum = 0;
  unsigned code = 0;
  if (lead >= 0xC2 && lead <= 0xDF) {
    length = 2, minimum = 0x80, code = lead & 0x1F;
  } else if (lead >= 0xE0 && lead <= 0xEF) {
    length = 3, minimum = 0x800, code = lead & 0x0F;
  } else if (lead >= 0xF0 && lead <= 0xF4) {
    length = 4, minimum = 0x10000, code = lead & 0x07;
  } else {
    return 0;
  }
  if (at + length > text.size()) return 0;
  for (std::size_t i = 1; i < length; ++i) {
    if ((byte(at + i) & 0xC0) != 0x80) return 0;
    code = (code << 6) | (byte(at + i) & 0x3F);
  }
  if (code < minimum || code > 0x10FFFF || (code >= 0xD800 && code <= 0xDFFF)) return 0;
  return length;
}

void AppendHex(std::string& out, unsigned char byte) {
  char buffer[5];
  std::snprintf(buffer, sizeof buffer, "\\x%02X", byte);
  out.append(buffer);
}

void DescribeNode(const ScanNode& node, int depth, std::string& out) {
  out.append(static_cast<std::size_t>(depth) * 2, ' ');
  out.append(PrintableName(node.name));
  if (node.hasSubItems) out.push_back('/');
  if (!node.destName.empty()) out.append(" (B: ").append(PrintableName(node.destName)).push_back(')');
  out.append("  ").append(CopyModeWords(node.copyMode)).push_back('\n');
  for (const ScanNode& child : node.subItems) DescribeNode(child, depth + 1, out);
}

}  // namespace

std::string PrintableName(std::string_view name) {
  std::string out;
  out.reserve(name.size());
  for (std::size_t i = 0; i < name.size();) {
    const unsigned char c = static_cast<unsigned char>(name[i]);
    if (c == '\\') {
      out.append("\\\\");
    } else if (c == '\n') {
      out.append("\\n");
    } else if (c == '\r') {
      out.append("\\r");
    } else if (c == '\t') {
      out.append("\\t");
    } else if (c < 0x20 || c == 0x7F) {
      AppendHex(out, c);
    } else if (c < 0x80) {
      out.push_back(static_cast<char>(c));
    } else if (std::size_t length = Utf8Length(name, i); length > 0) {
      out.append(name.substr(i, length));
      i += length;
      continue;
    } else {
      AppendHex(out, c);
    }
    ++i;
  }
  return out;
}

std::string TaskTreeHeading(const TaskTree& tree) {
  return "Task " + std::to_string(tree.taskIndex + 1) + " of session " + std::to_string(tree.sessionIndex + 1) +
         ": \"" + PrintableName(tree.source) + "\" -> \"" + PrintableName(tree.dest) + "\"";
}

std::string DescribeTaskTree(const TaskTree& tree) {
  std::string out = TaskTreeHeading(tree) + "\n";
  for (const ScanNode& node : tree.root.subItems) DescribeNode(node, 1, out);
  return out;
}

}  // namespace marigold
