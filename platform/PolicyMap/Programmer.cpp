// SPDX-License-Identifier: Apache-2.0
#include "PolicyMap/Programmer.h"

#include "Kor/Assert.h"
#include "PolicyMap/PolicyMapAclHelper.h"
#include "PolicyMap/Trace.h"

#include <algorithm>

namespace PolicyMap {

void Programmer::start() {
  if (!std::exchange(started_, true)) {
    helper_.hwInit();
  }
}

void Programmer::request(User& user) {
  if (holder_ == &user || std::find(queue_.begin(), queue_.end(), &user) != queue_.end()) {
    return;
  }
  queue_.push_back(&user);
  grantNext();
}

void Programmer::release(User& user) {
  KOR_ASSERT(holder_ == &user);
  holder_ = nullptr;
  grantNext();
}

void Programmer::withdraw(User& user) {
  std::erase(queue_, &user);
  if (holder_ == &user) {
    outstanding_ = false;
    holder_ = nullptr;
    grantTimer_.schedule();
  }
}

void Programmer::grantNext() {
  // One loop serves the whole queue: a user that is done inside its turn does not nest the next
  // one's.
  if (granting_) {
    return;
  }
  // The last user may have been the last to hold the helper, which owns this.
  Kor::Ptr<PolicyMapAclHelper> const pinned = Kor::share(&helper_);
  granting_ = true;
  while (holder_ == nullptr && !queue_.empty()) {
    holder_ = queue_.front();
    queue_.pop_front();
    holder_->programmerGranted();
  }
  granting_ = false;
}

Programmer::User const* Programmer::creator(PolicyMapSmKey const& key,
                                            ClassMapMatchOption option) const {
  auto const found = created_.find({key, option});
  return found == created_.end() ? nullptr : found->second;
}

void Programmer::createdIs(PolicyMapSmKey const& key, ClassMapMatchOption option,
                           User const* creator) {
  created_.insert_or_assign({key, option}, creator);
}

void Programmer::createdDel(PolicyMapSmKey const& key, ClassMapMatchOption option) {
  created_.erase({key, option});
}

std::optional<Kor::String> Programmer::answered(Kor::String const& answer) {
  if (holder_ == nullptr) {
    return answer;  // given up inside the call: nobody waits for a result
  }
  if (!answer.empty()) {
    return answer;
  }
  if (early_) {
    return std::exchange(early_, std::nullopt);
  }
  if (helper_.asyncOperations()) {
    outstanding_ = true;
    return std::nullopt;
  }
  return answer;
}

void Programmer::resultIs(AsyncOperationResult const& result) {
  if (calling_) {
    if (!early_) {
      early_ = result.error();
      return;
    }
  } else if (outstanding_ && holder_ != nullptr) {
    outstanding_ = false;
    // A copy: what follows may overwrite the attribute that the text comes from.
    holder_->operationEnded(Kor::String(result.error()));
    return;
  }
  KOR_TRACE_LINE(traceHandle(), 1, "result nobody waits for: " << result);
}

}  // namespace PolicyMap
