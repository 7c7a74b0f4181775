#include "cli/terminal_prompts.h"

#include <unistd.h>

#include <cstdlib>

#include "app/startup.h"

namespace marigold {

TerminalPrompts::TerminalPrompts(bool interactive, std::FILE* in, std::FILE* out)
    : mInteractive(interactive), mIn(in), mOut(out) {}

bool IsInteractiveTerminal() { return ::isatty(STDIN_FILENO) == 1 && ::isatty(STDERR_FILENO) == 1; }

std::optional<std::string> TerminalPrompts::ReadLine() {
  std::fflush(mOut);
  std::string line;
  for (int c = std::fgetc(mIn); c != EOF; c = std::fgetc(mIn)) {
    if (c == '\n') return line;
    line.push_back(static_cast<char>(c));
  }
  if (line.empty()) return std::nullopt;
  return line;
}

int TerminalPrompts::Alert(const AlertRequest& request) {
  ++mAlertCount;
  std::string text = request.title.empty() ? request.text : request.title + " " + request.text;
  std::fprintf(mOut, "%s\n", TerminalText(text).c_str());
  if (!request.informative.empty()) std::fprintf(mOut, "%s\n", TerminalText(request.informative).c_str());
  if (!mInteractive || request.buttons.size() < 2) return 0;
  for (;;) {
    for (std::size_t i = 0; i < request.buttons.size(); ++i)
      std::fprintf(mOut, "  %zu) %s%s\n", i + 1, request.buttons[i].c_str(), i == 0 ? " (default)" : "");
    std::fprintf(mOut, "> ");
    std::fflush(mOut);
    auto line = ReadLine();
    if (!line || line->empty()) return 0;
    char* end = nullptr;
    long choice = std::strtol(line->c_str(), &end, 10);
    if (end && *end == '\0' && choice >= 1 && static_cast<std::size_t>(choice) <= request.buttons.size())
      return static_cast<int>(choice - 1);
  }
}

std::optional<std::string> TerminalPrompts::SavePanel(const std::string& suggestedName,
                                                      const std::string& extension) {
  if (!mInteractive) return std::nullopt;
  std::fprintf(mOut, "Save as (.%s) [%s], empty to cancel: ", extension.c_str(), suggestedName.c_str());
  std::fflush(mOut);
  auto line = ReadLine();
  if (!line || line->empty()) return std::nullopt;
  return line;
}

std::optional<std::string> TerminalPrompts::OpenPanel(const std::string& extension) {
  if (!mInteractive) return std::nullopt;
  std::fprintf(mOut, "Open (.%s), empty to cancel: ", extension.c_str());
  std::fflush(mOut);
  auto line = ReadLine();
  if (!line || line->empty()) return std::nullopt;
  return line;
}

}  // namespace marigold
