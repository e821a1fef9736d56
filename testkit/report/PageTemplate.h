// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string_view>

namespace PolicyMapTestKit {

// The page of a report without its data: testkit/report/page.html, which is built in.
std::string_view pageTemplate();

}  // namespace PolicyMapTestKit
