// SPDX-License-Identifier: Apache-2.0
#include "helper/AclHelper.h"
#include "reflect/Models.h"

#include <PolicyMap/HelperOperationModels.h>

#include <array>

namespace PolicyMapTest {
namespace {

using T = AclHelper;
using M = Kor::Model<T>;

constexpr std::array ownAttrs{
    M::function<&T::scheduleAsyncResult>("scheduleAsyncResult", "error")
        .says("sets the pending result; with pseudoAsync also delivers it"),
    M::data<&T::asyncTrigger, &T::asyncTriggerIs>("asyncTrigger")
        .says("a change delivers the pending result"),
    M::function<&T::handleAsyncTrigger>("handleAsyncTrigger")
        .says("delivers asyncError with the current time, and keeps it pending"),
    M::data<&T::asyncError, &T::asyncErrorIs>("asyncError")
        .says("pending result of an asynchronous operation; empty: success"),
    M::data<&T::pseudoAsync, &T::pseudoAsyncIs>("pseudoAsync")
        .says("asynchronous results are delivered inside the operation; default False"),
    M::owned<T::TestDataAttribute>("testData")
        .with(Kor::Flags::settableOwned)
        .says("records by policy and option"),
#define POLICYMAPTEST_ROW(name, Name, prose) M::data<&T::name, &T::name##Is>(#name).says(prose),
    POLICYMAPTEST_HELPER_ERRORS(POLICYMAPTEST_ROW)
#undef POLICYMAPTEST_ROW
};
constexpr auto attrs = Kor::joined(PolicyMap::helperOperationAttrs<T>, ownAttrs);

}  // namespace

constexpr Kor::TypeModel aclHelperModel = M::object(
    attrs, M::constructor<&aclHelperFactory>("updateActionSupported", "expandPortChannels"));

}  // namespace PolicyMapTest
