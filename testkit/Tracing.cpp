// SPDX-License-Identifier: Apache-2.0
#include "testkit/Tracing.h"

#include "testkit/Record.h"

#include <Kor/Exception.h>
#include <Kor/Trace.h>

#include <algorithm>
#include <string>
#include <vector>

namespace PolicyMapTestKit {

void traceIs(std::string_view setting) {
  auto const slash = setting.rfind('/');
  std::string_view const source = slash == std::string_view::npos ? "*" : setting.substr(0, slash);
  std::string_view const level =
      slash == std::string_view::npos ? setting : setting.substr(slash + 1);
  if (level.size() != 1 || level[0] < '0' || level[0] > '9') {
    throw Kor::RangeException(
        "trace: expected SOURCE/LEVEL or LEVEL with a level from 0 to 9, not '" +
        std::string(setting) + "'");
  }
  std::vector<std::string_view> const sources = Kor::traceSources();
  if (source != "*" && std::find(sources.begin(), sources.end(), source) == sources.end()) {
    throw LookupError("trace source", source, {sources.begin(), sources.end()});
  }
  Kor::traceLevelIs(source, level[0] - '0');
}

}  // namespace PolicyMapTestKit
