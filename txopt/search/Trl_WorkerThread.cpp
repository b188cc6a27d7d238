#include "search/Trl_WorkerThread.h"

#include <unistd.h>

#include <chrono>

namespace {

// How long the worker keeps looking for a next task before it sleeps, and how often a
// waiting thread looks at the clock.
const auto spin_time = std::chrono::microseconds(200);
const int spins_between_clock_reads = 256;

inline void spin_pause() {
#if defined(__x86_64__) || defined(__i386__)
  __builtin_ia32_pause();
#endif
}

// Spins until ready() holds, yielding the processor once `spin_time` has passed.
template <typename Ready>
void spin_until(Ready ready) {
  auto until = std::chrono::steady_clock::now() + spin_time;
  bool yielding = false;
  for (int spins = 0; !ready(); ++spins) {
    if (yielding) {
      std::this_thread::yield();
    } else {
      spin_pause();
      if (spins % spins_between_clock_reads == 0) yielding = std::chrono::steady_clock::now() > until;
    }
  }
}

}  // namespace

// Made once and never destroyed: at exit the worker sleeps, and a child made by fork(),
// which may exit through the error handler, must not wait for a thread it does not have.
Trl_WorkerThread& Trl_WorkerThread::shared() {
  static Trl_WorkerThread* worker = new Trl_WorkerThread;
  return *worker;
}

Trl_WorkerThread::Trl_WorkerThread() : process(getpid()), thread([this] { loop(); }) {}

bool Trl_WorkerThread::start(std::function<void()> work) {
  // A child made by fork() has no worker: only the thread that forked goes on in it.
  if (getpid() != process || !owner.try_lock()) return false;
  task = std::move(work);
  {
    std::lock_guard<std::mutex> lock(sleeping);
    posted.fetch_add(1, std::memory_order_release);
  }
  wake.notify_one();
  return true;
}

void Trl_WorkerThread::wait() {
  const unsigned mine = posted.load(std::memory_order_relaxed);
  spin_until([&] { return done.load(std::memory_order_acquire) == mine; });
  task = nullptr;
  owner.unlock();
}

void Trl_WorkerThread::loop() {
  unsigned seen = 0;
  for (;;) {
    const auto until = std::chrono::steady_clock::now() + spin_time;
    for (int spins = 0; posted.load(std::memory_order_acquire) == seen; ++spins) {
      spin_pause();
      if (spins % spins_between_clock_reads == 0 && std::chrono::steady_clock::now() > until) {
        std::unique_lock<std::mutex> lock(sleeping);
        wake.wait(lock, [&] { return posted.load(std::memory_order_acquire) != seen; });
      }
    }
    seen = posted.load(std::memory_order_acquire);
    task();
    done.store(seen, std::memory_order_release);
  }
}
