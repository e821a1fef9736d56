// SPDX-License-Identifier: Apache-2.0
#include "PolicyMap/PolicyMapSmCommonData.h"

#include "PolicyMap/PerOption.h"

#include <algorithm>

namespace PolicyMap {

PolicyMapSmCommonData::~PolicyMapSmCommonData() = default;

Kor::KorType const* PolicyMapSmCommonData::fwkType() const {
  return _fwkType();
}
Kor::KorType* PolicyMapSmCommonData::_fwkType() {
  static Kor::KorType type("PolicyMap::PolicyMapSmCommonData", PtrInterface::_fwkType());
  return &type;
}

std::vector<Vorel::IntfId> PolicyMapSmCommonData::intfs(ClassMapMatchOption option) const {
  std::vector<Vorel::IntfId> all;
  auto const collect = [&all](auto const& iterator) {
    for (auto const& entry : iterator) {
      all.push_back(entry.key());
    }
  };
  forOption(
      option, [&] { collect(intf4IteratorConst()); }, [&] { collect(intf6IteratorConst()); },
      [&] { collect(intfMacIteratorConst()); }, [&] { collect(intfMplsIteratorConst()); });
  return all;
}

std::vector<Vorel::IntfId> PolicyMapSmCommonData::sortedIntfs(ClassMapMatchOption option) const {
  std::vector<Vorel::IntfId> all = intfs(option);
  std::sort(all.begin(), all.end());
  return all;
}

bool PolicyMapSmCommonData::hasIntf(ClassMapMatchOption option, Vorel::IntfId intf) const {
  return forOption(
      option, [&] { return bool(korIntf4(intf)); }, [&] { return bool(korIntf6(intf)); },
      [&] { return bool(korIntfMac(intf)); }, [&] { return bool(korIntfMpls(intf)); });
}

void PolicyMapSmCommonData::intfAdd(ClassMapMatchOption option, Vorel::IntfId intf) {
  forOption(
      option, [&] { intf4Is(intf, true); }, [&] { intf6Is(intf, true); },
      [&] { intfMacIs(intf, true); }, [&] { intfMplsIs(intf, true); });
}

void PolicyMapSmCommonData::intfRemove(ClassMapMatchOption option, Vorel::IntfId intf) {
  forOption(
      option, [&] { intf4Del(intf); }, [&] { intf6Del(intf); }, [&] { intfMacDel(intf); },
      [&] { intfMplsDel(intf); });
}

void PolicyMapSmCommonData::intfRemoveAll(ClassMapMatchOption option) {
  for (Vorel::IntfId const intf : intfs(option)) {
    intfRemove(option, intf);
  }
}

}  // namespace PolicyMap
