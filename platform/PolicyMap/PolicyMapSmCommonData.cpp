// SPDX-License-Identifier: Apache-2.0
#include "PolicyMap/PolicyMapSmCommonData.h"

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
  switch (option) {
  case ClassMapMatchOption::ipv4: collect(intf4IteratorConst()); break;
  case ClassMapMatchOption::ipv6: collect(intf6IteratorConst()); break;
  case ClassMapMatchOption::mac: collect(intfMacIteratorConst()); break;
  default: collect(intfMplsIteratorConst()); break;
  }
  return all;
}

bool PolicyMapSmCommonData::hasIntf(ClassMapMatchOption option, Vorel::IntfId intf) const {
  switch (option) {
  case ClassMapMatchOption::ipv4: return bool(korIntf4(intf));
  case ClassMapMatchOption::ipv6: return bool(korIntf6(intf));
  case ClassMapMatchOption::mac: return bool(korIntfMac(intf));
  default: return bool(korIntfMpls(intf));
  }
}

void PolicyMapSmCommonData::intfAdd(ClassMapMatchOption option, Vorel::IntfId intf) {
  switch (option) {
  case ClassMapMatchOption::ipv4: intf4Is(intf, true); break;
  case ClassMapMatchOption::ipv6: intf6Is(intf, true); break;
  case ClassMapMatchOption::mac: intfMacIs(intf, true); break;
  default: intfMplsIs(intf, true); break;
  }
}

void PolicyMapSmCommonData::intfRemove(ClassMapMatchOption option, Vorel::IntfId intf) {
  switch (option) {
  case ClassMapMatchOption::ipv4: intf4Del(intf); break;
  case ClassMapMatchOption::ipv6: intf6Del(intf); break;
  case ClassMapMatchOption::mac: intfMacDel(intf); break;
  default: intfMplsDel(intf); break;
  }
}

void PolicyMapSmCommonData::intfRemoveAll(ClassMapMatchOption option) {
  for (Vorel::IntfId const intf : intfs(option)) {
    intfRemove(option, intf);
  }
}

}  // namespace PolicyMap
