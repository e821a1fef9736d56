// SPDX-License-Identifier: Apache-2.0
#include "Kor/Trace.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <utility>
#include <vector>

namespace Kor {
namespace {

void writeToStderr(std::string_view source, int level, std::string_view text) {
  std::fprintf(stderr, "%.*s/%d: %.*s\n", static_cast<int>(source.size()), source.data(), level,
               static_cast<int>(text.size()), text.data());
}

bool isName(std::string_view text) {
  return text == "*" || (!text.empty() && std::all_of(text.begin(), text.end(), [](char c) {
           return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') ||
                  std::string_view("_:.-").find(c) != std::string_view::npos;
         }));
}

bool isLevel(std::string_view text) {
  return text.size() == 1 && text[0] >= '0' && text[0] <= '9';
}

// Uses no text forms of Kor: its static objects may not be initialised yet.
void refuse(std::string_view setting) {
  std::fputs("KOR_TRACE: expected NAME or NAME/LEVEL with a level from 0 to 9, found '", stderr);
  for (char const c : setting) {
    if (c >= ' ' && c <= '~') {
      std::fputc(c, stderr);
    } else {
      std::fprintf(stderr, "\\x%02x", static_cast<unsigned>(static_cast<unsigned char>(c)));
    }
  }
  std::fputs("'\n", stderr);
}

// The requested levels and the handles they apply to.
struct Registry {
  std::vector<std::pair<std::string, int>> levels;  // in the order given; later ones win
  std::vector<TraceHandle*> handles;
  TraceSink sink = writeToStderr;

  Registry() {
    char const* const wanted = std::getenv("KOR_TRACE");
    std::string_view rest = wanted == nullptr ? std::string_view() : std::string_view(wanted);
    while (!rest.empty()) {
      auto const comma = std::min(rest.find(','), rest.size());
      read(rest.substr(0, comma));
      rest.remove_prefix(std::min(comma + 1, rest.size()));
    }
  }
  // Reads "NAME/LEVEL". A name alone means every level; an empty setting is ignored. Anything else
  // is reported on stderr and ignored.
  void read(std::string_view setting) {
    auto const slash = setting.find('/');
    std::string_view const name = setting.substr(0, slash);
    std::string_view const level =
        slash == std::string_view::npos ? "9" : setting.substr(slash + 1);
    if (isName(name) && isLevel(level)) {
      levels.emplace_back(name, level[0] - '0');
    } else if (!setting.empty()) {
      refuse(setting);
    }
  }
  [[nodiscard]] int levelFor(std::string_view name) const {
    int level = 0;
    for (auto const& [source, wanted] : levels) {
      if (source == "*" || source == name) {
        level = wanted;
      }
    }
    return level;
  }
};

Registry& registry() {
  static Registry instance;
  return instance;
}

}  // namespace

TraceHandle::TraceHandle(std::string_view name) : name_(name), level_(registry().levelFor(name)) {
  registry().handles.push_back(this);
}

TraceHandle::~TraceHandle() {
  std::erase(registry().handles, this);
}

void TraceHandle::write(int level, std::string_view text) const {
  registry().sink(name_, level, text);
}

void traceLevelIs(std::string_view source, int level) {
  auto& levels = registry().levels;
  std::erase_if(levels, [&](auto const& setting) { return setting.first == source; });
  levels.emplace_back(source, level);
  for (TraceHandle* const handle : registry().handles) {
    handle->level_ = registry().levelFor(handle->name());
  }
}

std::vector<std::string_view> traceSources() {
  std::vector<std::string_view> names;
  for (TraceHandle const* const handle : registry().handles) {
    names.push_back(handle->name());
  }
  std::sort(names.begin(), names.end());
  names.erase(std::unique(names.begin(), names.end()), names.end());
  return names;
}

TraceSink traceSinkIs(TraceSink sink) {
  return std::exchange(registry().sink, sink ? std::move(sink) : TraceSink(writeToStderr));
}

}  // namespace Kor
