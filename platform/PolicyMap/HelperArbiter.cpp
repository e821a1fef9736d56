// SPDX-License-Identifier: Apache-2.0
#include "PolicyMap/HelperArbiter.h"

#include "Kor/Assert.h"
#include "PolicyMap/Trace.h"

#include <algorithm>

namespace PolicyMap {

void HelperArbiter::initialize(std::function<void()> const& hwInit) {
  if (std::exchange(initialized_, true)) {
    return;
  }
  Result const result = call([&] {
    hwInit();
    return Kor::String();
  });
  if (!result.carriedOut) {
    KOR_TRACE_LINE(traceHandle(), 1, "hwInit: " << result.error);
  }
}

void HelperArbiter::request(Client& client) {
  if (holder_ == &client || std::find(queue_.begin(), queue_.end(), &client) != queue_.end()) {
    return;
  }
  queue_.push_back(&client);
  grantNext();
}

void HelperArbiter::release(Client& client) {
  KOR_ASSERT(holder_ == &client);
  holder_ = nullptr;
  grantNext();
}

void HelperArbiter::withdraw(Client& client) {
  std::erase(queue_, &client);
  std::erase(waiting_, &client);
  if (holder_ == &client) {
    pending_ = false;
    holder_ = nullptr;
    grantTimer_.schedule();
  }
}

void HelperArbiter::callsEnded() {
  // A client that is called may withdraw others, so no iterator is kept.
  while (!waiting_.empty()) {
    Client* const client = waiting_.front();
    waiting_.erase(waiting_.begin());
    client->callEnded();
  }
  if (!queue_.empty()) {
    grantTimer_.schedule();
  }
}

void HelperArbiter::grantNext() {
  // One loop serves the whole queue, so that a client that finishes during its grant does not nest
  // the grant of the next one.
  if (granting_ || calling()) {
    return;
  }
  // The last client may hold the last reference to the helper.
  Kor::Ptr<Kor::PtrInterface> const pinned = Kor::share(&helper_);
  granting_ = true;
  while (holder_ == nullptr && !queue_.empty()) {
    holder_ = queue_.front();
    queue_.pop_front();
    holder_->granted();
  }
  granting_ = false;
}

HelperArbiter::Client const* HelperArbiter::creator(PolicyMapSmKey const& key,
                                                    ClassMapMatchOption option) const {
  auto const found = created_.find({key, option});
  return found == created_.end() ? nullptr : found->second;
}

HelperArbiter::Presence HelperArbiter::presence(PolicyMapSmKey const& key,
                                                ClassMapMatchOption option,
                                                Client const& client) const {
  auto const found = created_.find({key, option});
  return {found != created_.end(), found != created_.end() && found->second == &client};
}

void HelperArbiter::createdIs(PolicyMapSmKey const& key, ClassMapMatchOption option,
                              Client const* creator) {
  created_.insert_or_assign({key, option}, creator);
}

void HelperArbiter::createdDel(PolicyMapSmKey const& key, ClassMapMatchOption option) {
  created_.erase({key, option});
}

void HelperArbiter::disown(PolicyMapSmKey const& key, Client const& client) {
  for (ClassMapMatchOption const option : allMatchOptions) {
    if (creator(key, option) == &client) {
      createdIs(key, option, nullptr);
    }
  }
}

void HelperArbiter::resultIs(AsyncOperationResult const& result) {
  if (expectingResult_) {
    if (!early_) {
      early_ = result.error();
      return;
    }
  } else if (pending_) {
    pending_ = false;
    // A copy: the client may overwrite the attribute that `result` refers to.
    holder_->resultArrived(Kor::String(result.error()));
    return;
  }
  KOR_TRACE_LINE(traceHandle(), 1, "result nobody waits for: " << result);
}

}  // namespace PolicyMap
