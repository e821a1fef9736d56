// SPDX-License-Identifier: Apache-2.0
#include "Kor/Thread.h"

#include <thread>

namespace Kor {
namespace {

std::thread::id const owningThread = std::this_thread::get_id();

}  // namespace

bool onOwningThread() {
  // Not initialised yet: called from another library's static initialisers, on the loading thread.
  return owningThread == std::thread::id() || std::this_thread::get_id() == owningThread;
}

}  // namespace Kor
