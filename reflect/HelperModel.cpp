// SPDX-License-Identifier: Apache-2.0
#include "helper/AclHelper.h"
#include "reflect/Models.h"

namespace PolicyMapTest {
namespace {

using T = AclHelper;
using M = Kor::Model<T>;

constexpr std::array attrs{
    M::function<&T::hwInit>("hwInit"),
    M::function<&T::createPolicy>("createPolicy", "policyData", "matchOption"),
    M::function<&T::recreatePolicy>("recreatePolicy", "policyData", "matchOption"),
    M::function<&T::deletePolicy>("deletePolicy", "policyData", "matchOption"),
    M::function<&T::commitPolicy>("commitPolicy", "policyData", "matchOption"),
    M::function<&T::addIntfToPolicy>("addIntfToPolicy", "policyData", "intf", "matchOption"),
    M::function<&T::removeIntfFromPolicy>("removeIntfFromPolicy", "policyData", "intf",
                                          "matchOption"),
    M::function<&T::addRule>("addRule", "key", "subRule", "policyCommonData", "classCommonData"),
    M::function<&T::beginUpdateActions>("beginUpdateActions", "policyCommonData",
                                        "classCommonData"),
    M::function<&T::updateAction>("updateAction", "key", "subRuleData", "policyCommonData",
                                  "classCommonData"),
    M::function<&T::endUpdateActions>("endUpdateActions", "policyCommonData", "classCommonData"),
    M::function<&T::getCountForRule>("getCountForRule", "key", "policyCommonData",
                                     "classCommonData"),
    M::function<&T::scheduleAsyncResult>("scheduleAsyncResult", "error"),
    M::data<&T::asyncTrigger, &T::asyncTriggerIs>("asyncTrigger"),
    M::function<&T::handleAsyncTrigger>("handleAsyncTrigger"),
    M::data<&T::asyncError, &T::asyncErrorIs>("asyncError"),
    M::data<&T::pseudoAsync, &T::pseudoAsyncIs>("pseudoAsync"),
    M::owned<T::TestDataAttribute>("testData").with(Kor::Flags::settableOwned),
    M::data<&T::createError, &T::createErrorIs>("createError"),
    M::data<&T::deleteError, &T::deleteErrorIs>("deleteError"),
    M::data<&T::commitError, &T::commitErrorIs>("commitError"),
    M::data<&T::addIntfError, &T::addIntfErrorIs>("addIntfError"),
    M::data<&T::removeIntfError, &T::removeIntfErrorIs>("removeIntfError"),
    M::data<&T::addRuleError, &T::addRuleErrorIs>("addRuleError"),
    M::data<&T::updateActionError, &T::updateActionErrorIs>("updateActionError"),
    M::data<&T::rangeCheckerError, &T::rangeCheckerErrorIs>("rangeCheckerError"),
};

}  // namespace

constexpr Kor::TypeModel aclHelperModel = M::object(
    attrs, M::constructor<&aclHelperFactory>("updateActionSupported", "expandPortChannels"));

}  // namespace PolicyMapTest
