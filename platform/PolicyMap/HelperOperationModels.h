// SPDX-License-Identifier: Apache-2.0
#pragma once

// The rows for the operations of a helper in slot order. The tables of PolicyMapAclHelper and of
// the classes that override all operations share this list.

#include "Kor/Model.h"
#include "PolicyMap/PolicyMapAclHelper.h"

#include <array>

namespace PolicyMap {

template <class T, class M = Kor::Model<T>>
constexpr std::array helperOperationAttrs{
    M::template function<&T::hwInit>("hwInit"),
    M::template function<&T::createPolicy>("createPolicy", "policyData", "matchOption"),
    M::template function<&T::recreatePolicy>("recreatePolicy", "policyData", "matchOption"),
    M::template function<&T::deletePolicy>("deletePolicy", "policyData", "matchOption"),
    M::template function<&T::commitPolicy>("commitPolicy", "policyData", "matchOption"),
    M::template function<&T::addIntfToPolicy>("addIntfToPolicy", "policyData", "intf",
                                              "matchOption"),
    M::template function<&T::removeIntfFromPolicy>("removeIntfFromPolicy", "policyData", "intf",
                                                   "matchOption"),
    M::template function<&T::addRule>("addRule", "key", "subRule", "policyCommonData",
                                      "classCommonData"),
    M::template function<&T::beginUpdateActions>("beginUpdateActions", "policyCommonData",
                                                 "classCommonData"),
    M::template function<&T::updateAction>("updateAction", "key", "subRuleData", "policyCommonData",
                                           "classCommonData"),
    M::template function<&T::endUpdateActions>("endUpdateActions", "policyCommonData",
                                               "classCommonData"),
    M::template function<&T::getCountForRule>("getCountForRule", "key", "policyCommonData",
                                              "classCommonData"),
};

}  // namespace PolicyMap
