// SPDX-License-Identifier: Apache-2.0
#pragma once

// Tracing: lines with a source name and a level from 0 (errors) to 9 (everything).
//
// A handle is on up to its level; level 0 is always on. The environment variable KOR_TRACE sets
// levels by source name: KOR_TRACE=PolicyMapTestSm/8,PolicyMap/1. `*` means every source, and a
// name without a level means level 9. An invalid setting is reported on stderr and ignored.
// traceLevelIs() sets a level from code. A line is formatted only if its level is on; otherwise it
// costs one load and one branch.

#include "Kor/Export.h"

#include <functional>
#include <locale>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

namespace Kor {

// Receives complete lines, without line end.
using TraceSink = std::function<void(std::string_view source, int level, std::string_view text)>;

// One source of trace lines; usually a static object of a source file or library.
class KOR_API TraceHandle {
 public:
  // `name` is a literal.
  explicit TraceHandle(std::string_view name);
  TraceHandle(TraceHandle const&) = delete;
  TraceHandle& operator=(TraceHandle const&) = delete;
  ~TraceHandle();

  [[nodiscard]] std::string_view name() const { return name_; }
  [[nodiscard]] int level() const { return level_; }
  [[nodiscard]] bool on(int level) const { return level <= level_; }
  void write(int level, std::string_view text) const;

 private:
  friend KOR_API void traceLevelIs(std::string_view source, int level);

  std::string_view name_;
  int level_ = 0;
};

// Sets the level of all handles of that name, including those created later. "*" means all handles.
KOR_API void traceLevelIs(std::string_view source, int level);
// The names of all handles that exist, ascending, unique. The libraries create theirs when they are
// loaded.
[[nodiscard]] KOR_API std::vector<std::string_view> traceSources();
// Installs a sink and returns the previous one. An empty sink restores the print to stderr.
KOR_API TraceSink traceSinkIs(TraceSink sink);

}  // namespace Kor

// Writes one line: KOR_TRACE_LINE(handle, 8, "key=" << key << ", count=" << n).
#define KOR_TRACE_LINE(handle, level, streamed)                                         \
  do {                                                                                  \
    if ((handle).on(level)) [[unlikely]] {                                              \
      std::ostringstream korTraceText;                                                  \
      korTraceText.imbue(std::locale::classic());                                       \
      korTraceText << streamed; /* NOLINT(bugprone-macro-parentheses): a chain of << */ \
      (handle).write(level, korTraceText.view());                                       \
    }                                                                                   \
  } while (false)
