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

// What is known about levels, and who must be told.
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
  // "NAME/LEVEL"; a name alone means every level.
  void read(std::string_view setting) {
    auto const slash = setting.rfind('/');
    bool const hasLevel = slash != std::string_view::npos && slash + 2 == setting.size() &&
                          setting[slash + 1] >= '0' && setting[slash + 1] <= '9';
    if (hasLevel) {
      levels.emplace_back(setting.substr(0, slash), setting[slash + 1] - '0');
    } else {
      levels.emplace_back(setting, 9);
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

TraceSink traceSinkIs(TraceSink sink) {
  return std::exchange(registry().sink, sink ? std::move(sink) : TraceSink(writeToStderr));
}

}  // namespace Kor
