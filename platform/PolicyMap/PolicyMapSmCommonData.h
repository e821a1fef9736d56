// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Kor/Collection.h"
#include "PolicyMap/ClassMapMatchOption.h"
#include "PolicyMap/PolicyMapSmKey.h"
#include "PolicyMapExport.h"
#include "Vorel/IntfId.h"

#include <vector>

namespace PolicyMap {

// The data of one policy that the helper receives: its key and, per option, the interfaces to which
// it is already applied in the hardware. In the four interface collections only membership matters;
// the values have no meaning.
class POLICYMAP_API PolicyMapSmCommonData : public Kor::PtrInterface {
 public:
  using Ptr = Kor::Ptr<PolicyMapSmCommonData>;
  using PtrConst = Kor::Ptr<PolicyMapSmCommonData const>;

  explicit PolicyMapSmCommonData(PolicyMapSmKey policyKey) : policyKey_(std::move(policyKey)) {}
  ~PolicyMapSmCommonData() override;

  [[nodiscard]] Kor::KorType const* fwkType() const override;
  [[nodiscard]] static Kor::KorType* _fwkType();

  [[nodiscard]] PolicyMapSmKey const& policyKey() const { return policyKey_; }

  KOR_VALUE_COLLECTION(PolicyMapSmCommonData, intf4, Intf4, Vorel::IntfId, bool)
  KOR_VALUE_COLLECTION(PolicyMapSmCommonData, intf6, Intf6, Vorel::IntfId, bool)
  KOR_VALUE_COLLECTION(PolicyMapSmCommonData, intfMac, IntfMac, Vorel::IntfId, bool)
  KOR_VALUE_COLLECTION(PolicyMapSmCommonData, intfMpls, IntfMpls, Vorel::IntfId, bool)

  // The interfaces of an option, in the order of its collection. Options other than ipv4, ipv6 and
  // mac use the one of mpls.
  [[nodiscard]] std::vector<Vorel::IntfId> intfs(ClassMapMatchOption option) const;
  // The same, ascending.
  [[nodiscard]] std::vector<Vorel::IntfId> sortedIntfs(ClassMapMatchOption option) const;
  [[nodiscard]] bool hasIntf(ClassMapMatchOption option, Vorel::IntfId intf) const;
  void intfAdd(ClassMapMatchOption option, Vorel::IntfId intf);
  void intfRemove(ClassMapMatchOption option, Vorel::IntfId intf);
  void intfRemoveAll(ClassMapMatchOption option);

 private:
  PolicyMapSmKey policyKey_;
};

}  // namespace PolicyMap
