// SPDX-License-Identifier: Apache-2.0
#pragma once

// Tracing: lines with a source name and a level, 0 (errors) to 9 (everything).
//
// A handle is on up to its level; level 0 is always on. KOR_TRACE=PolicyMapTestSm/8,PolicyMap/1 in
// the environment sets levels by source name, `*` means every source, and a name without a level
// means level 9; what is neither is told on stderr and has no effect. traceLevelIs() does the same
// by call. A line is formatted only when its level is on: a line that is off costs one load and a
// branch.

#include "Kor/Export.h"

#include <functional>
#include <locale>
#include <sstream>
#include <string>
#include <string_view>

namespace Kor {

// Receives the finished lines, without line end.
using TraceSink = std::function<void(std::string_view source, int level, std::string_view text)>;

// One source of trace lines; usually a static object of the source file or library.
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

// Switches the handles of that name on up to `level`, those made later too; "*" means all.
KOR_API void traceLevelIs(std::string_view source, int level);
// Installs a sink and answers the one before it; an empty sink restores the print to stderr.
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
