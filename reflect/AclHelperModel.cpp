// SPDX-License-Identifier: Apache-2.0
#include "helper/AclHelper.h"
#include "reflect/Models.h"

#include <PolicyMap/HelperOperationModels.h>

namespace PolicyMapTest {
namespace {

using T = AclHelper;
using M = Kor::Model<T>;

constexpr std::array ownAttrs{
    M::function<&T::scheduleAsyncResult>("scheduleAsyncResult", "error"),
    M::data<&T::asyncTrigger, &T::asyncTriggerIs>("asyncTrigger"),
    M::function<&T::handleAsyncTrigger>("handleAsyncTrigger"),
    M::data<&T::asyncError, &T::asyncErrorIs>("asyncError"),
    M::data<&T::pseudoAsync, &T::pseudoAsyncIs>("pseudoAsync"),
    M::owned<T::TestDataAttribute>("testData").with(Kor::Flags::settableOwned),
#define POLICYMAPTEST_ROW(name, Name) M::data<&T::name, &T::name##Is>(#name),
    POLICYMAPTEST_HELPER_ERRORS(POLICYMAPTEST_ROW)
#undef POLICYMAPTEST_ROW
};
constexpr auto attrs = Kor::joined(PolicyMap::helperOperationAttrs<T>, ownAttrs);

}  // namespace

constexpr Kor::TypeModel aclHelperModel = M::object(
    attrs, M::constructor<&aclHelperFactory>("updateActionSupported", "expandPortChannels"));

}  // namespace PolicyMapTest
