#include "roundScheduler.h"

#include <algorithm>
#include <atomic>
#include <exception>
#include <mutex>
#include <thread>
#include <vector>

namespace flashbch {

void runRound(int threads, std::int64_t items, const std::function<void(int, std::int64_t)>& work) {
  std::atomic<std::int64_t> next{0};
  std::exception_ptr failure;
  std::mutex failureMutex;
  auto loop = [&](int worker) {
    try {
      for (std::int64_t item = next.fetch_add(1); item < items; item = next.fetch_add(1)) work(worker, item);
    } catch (...) {
      next.store(items);
      std::lock_guard<std::mutex> lock(failureMutex);
      if (!failure) failure = std::current_exception();
    }
  };
  const int count = static_cast<int>(std::max<std::int64_t>(1, std::min<std::int64_t>(threads, items)));
  std::vector<std::thread> helpers;
  for (int worker = 1; worker < count; ++worker) helpers.emplace_back(loop, worker);
  loop(0);
  for (auto& helper : helpers) helper.join();
  if (failure) std::rethrow_exception(failure);
}

}  // namespace flashbch
