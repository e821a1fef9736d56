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
    M::template function<&T::hwInit>("hwInit").says(
        "prepares the hardware; called once, before any other operation"),
    M::template function<&T::createPolicy>("createPolicy", "policyData", "matchOption")
        .says("creates an empty policy on its interfaces; returns a text if it fails"),
    M::template function<&T::recreatePolicy>("recreatePolicy", "policyData", "matchOption")
        .says("removes all rules of a created policy in one step; returns a text if it fails"),
    M::template function<&T::deletePolicy>("deletePolicy", "policyData", "matchOption")
        .says("deletes the policy with its rules and interfaces; returns a text if it fails"),
    M::template function<&T::commitPolicy>("commitPolicy", "policyData", "matchOption")
        .says("ends the changes to a policy; returns a text if it fails"),
    M::template function<&T::addIntfToPolicy>("addIntfToPolicy", "policyData", "intf",
                                              "matchOption")
        .says("applies the policy to an interface; returns a text if it fails"),
    M::template function<&T::removeIntfFromPolicy>("removeIntfFromPolicy", "policyData", "intf",
                                                   "matchOption")
        .says("stops applying the policy to an interface; returns a text if it fails"),
    M::template function<&T::addRule>("addRule", "key", "subRule", "policyCommonData",
                                      "classCommonData")
        .says("adds one hardware entry of a rule; returns a text if it fails"),
    M::template function<&T::beginUpdateActions>("beginUpdateActions", "policyCommonData",
                                                 "classCommonData")
        .says("starts an update of a class's actions in place; returns a text if it fails"),
    M::template function<&T::updateAction>("updateAction", "key", "subRuleData", "policyCommonData",
                                           "classCommonData")
        .says("updates the actions of one hardware entry; returns a text if it fails"),
    M::template function<&T::endUpdateActions>("endUpdateActions", "policyCommonData",
                                               "classCommonData")
        .says("ends an update of actions, also a failed one; returns a text if it fails"),
    M::template function<&T::getCountForRule>("getCountForRule", "key", "policyCommonData",
                                              "classCommonData")
        .says("packets that the rule has matched so far"),
};

}  // namespace PolicyMap
