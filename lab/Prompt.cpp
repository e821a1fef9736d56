// SPDX-License-Identifier: Apache-2.0
#include "lab/Prompt.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <histedit.h>
#include <system_error>

namespace lab {

namespace {

constexpr int remembered = 1000;

// The common prefix of all names.
std::string commonBeginning(std::vector<std::string> const& names) {
  std::string common = names.front();
  for (std::string const& name : names) {
    auto const [end, other] = std::mismatch(common.begin(), common.end(), name.begin(), name.end());
    common.erase(end, common.end());
  }
  return common;
}

std::size_t begunLength(std::string_view line) {
  auto const isPart = [](char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' ||
           c == ':';
  };
  std::size_t length = 0;
  while (length < line.size() && isPart(line[line.size() - 1 - length])) {
    ++length;
  }
  return length;
}

}  // namespace

struct Prompt::Editor {
  std::string prompt;
  Completions completions;
  EditLine* editLine = nullptr;
  History* history = nullptr;

  static Editor& of(EditLine* line) {
    void* data = nullptr;
    el_get(line, EL_CLIENTDATA, &data);
    return *static_cast<Editor*>(data);
  }
  static char* promptOf(EditLine* line) { return of(line).prompt.data(); }

  static unsigned char complete(EditLine* line, int /*key*/) {
    LineInfo const* const info = el_line(line);
    std::string_view const before(info->buffer,
                                  static_cast<std::size_t>(info->cursor - info->buffer));
    std::vector<std::string> const found = of(line).completions(before);
    if (found.empty()) {
      return CC_REFRESH_BEEP;
    }
    std::string const common = commonBeginning(found);
    std::size_t const begun = begunLength(before);
    if (common.size() > begun) {
      el_insertstr(line, common.substr(begun).c_str());
      return CC_REFRESH;
    }
    if (found.size() == 1) {
      return CC_NORM;
    }
    std::fputc('\n', stdout);
    for (std::string const& name : found) {
      std::fprintf(stdout, "%s\n", name.c_str());
    }
    return CC_REDISPLAY;
  }

  static unsigned char dropLine(EditLine* line, int /*key*/) {
    std::fputs("^C\n", stdout);
    std::fflush(stdout);
    LineInfo const* const info = el_line(line);
    auto const length = static_cast<int>(info->lastchar - info->buffer);
    el_cursor(line, static_cast<int>(info->lastchar - info->cursor));
    el_deletestr(line, length);
    return CC_REDISPLAY;
  }
};

Prompt::Prompt(std::string prompt, Completions completions) : editor_(std::make_unique<Editor>()) {
  editor_->prompt = std::move(prompt);
  editor_->completions = std::move(completions);
  editor_->editLine = el_init("policymap-lab", stdin, stdout, stderr);
  editor_->history = history_init();
  HistEvent event;
  history(editor_->history, &event, H_SETSIZE, remembered);
  history(editor_->history, &event, H_SETUNIQUE, 1);
  EditLine* const line = editor_->editLine;
  el_set(line, EL_CLIENTDATA, editor_.get());
  el_set(line, EL_PROMPT, &Editor::promptOf);
  el_set(line, EL_EDITOR, "emacs");
  el_set(line, EL_SIGNAL, 1);
  el_set(line, EL_HIST, &history, editor_->history);
  el_set(line, EL_ADDFN, "complete", "Complete a name", &Editor::complete);
  el_set(line, EL_BIND, "^I", "complete", nullptr);
  // While a line is edited, Ctrl-C is a key and not a signal. "intr=" is not enough: the editor
  // takes that character from the terminal again.
  el_set(line, EL_SETTY, "-d", "-isig", nullptr);
  el_set(line, EL_ADDFN, "drop-line", "Drop the line", &Editor::dropLine);
  el_set(line, EL_BIND, "^C", "drop-line", nullptr);
}

Prompt::~Prompt() {
  history_end(editor_->history);
  el_end(editor_->editLine);
}

std::optional<std::string> Prompt::next() {
  int length = 0;
  char const* const read = el_gets(editor_->editLine, &length);
  if (read == nullptr || length <= 0) {
    return std::nullopt;
  }
  std::string line(read, static_cast<std::size_t>(length));
  while (!line.empty() && (line.back() == '\n' || line.back() == '\r')) {
    line.pop_back();
  }
  if (!line.empty()) {
    HistEvent event;
    history(editor_->history, &event, H_ENTER, line.c_str());
  }
  return line;
}

void Prompt::loadHistory(std::string const& file) {
  HistEvent event;
  history(editor_->history, &event, H_LOAD, file.c_str());
}

bool Prompt::saveHistory(std::string const& file) const {
  std::filesystem::path const folder = std::filesystem::path(file).parent_path();
  std::error_code failed;
  if (!folder.empty()) {
    std::filesystem::create_directories(folder, failed);
  }
  HistEvent event;
  return history(editor_->history, &event, H_SAVE, file.c_str()) != -1;
}

std::string historyFile(Environment const& environment) {
  if (char const* const file = environment("POLICYMAP_LAB_HISTORY")) {
    return file;
  }
  char const* const state = environment("XDG_STATE_HOME");
  if (state != nullptr && *state == '/') {  // relative paths are to be ignored
    return std::string(state) + "/policymap-lab/history";
  }
  char const* const home = environment("HOME");
  return home == nullptr || *home == '\0'
             ? std::string()
             : std::string(home) + "/.local/state/policymap-lab/history";
}

}  // namespace lab
