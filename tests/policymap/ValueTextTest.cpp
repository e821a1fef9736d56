// SPDX-License-Identifier: Apache-2.0
#include "policymap/ValueChecks.h"

#include <Acl/NumberMatch.h>
#include <PolicyMap/AsyncOperationResult.h>
#include <PolicyMap/PolicyMapSmKey.h>
#include <PolicyMap/ValueText.h>

#include <gtest/gtest.h>

namespace policymap {
namespace {

using PolicyMap::AsyncOperationResult;
using PolicyMap::PolicyMapSmKey;

TEST(ValueText, IsFoundForEveryValueWithFields) {
  expectFoundText(PolicyMapSmKey("pm", "input"),
                  "Value('PolicyMap::PolicyMapSmKey', ** {'first': 'pm', 'second': 'input'})");
  expectFoundText(AsyncOperationResult("full", 1),
                  "Value('PolicyMap::AsyncOperationResult', ** {'error': 'full', 'time': 1.0})");
  expectFoundText(Acl::PortMatch(), Kor::valueToStrep(Acl::PortMatch()).stdString());
}

}  // namespace
}  // namespace policymap
