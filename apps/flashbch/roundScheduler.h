// Parallel rounds: the items of one round are shared out among worker
// threads, which claim them from a counter; the call returns when every
// item is done. Each item writes only its own result, and the caller sums
// the results after the round, so what a round computes does not depend on
// the number of threads or on which thread took which item. Stop rules are
// applied by the caller between rounds, to whole rounds.
#pragma once

#include <cstdint>
#include <functional>

namespace flashbch {

// Runs work(worker, item) for item = 0 .. items-1 on min(threads, items)
// threads, worker being the thread's index 0 .. threads-1 (the calling
// thread is worker 0). An exception thrown by work is rethrown here once
// every thread has stopped.
void runRound(int threads, std::int64_t items, const std::function<void(int worker, std::int64_t item)>& work);

}  // namespace flashbch
