// A second thread for loops that split one computation in two halves. It waits for a task,
// runs it, and waits again; after a task it spins for a short while before it sleeps, so
// that the next of a run of short tasks (the sweeps of one solve) starts at once.
#pragma once

#include <atomic>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>

class Trl_WorkerThread {
 public:
  // The one worker of the process, started on first use.
  static Trl_WorkerThread& shared();
  Trl_WorkerThread(const Trl_WorkerThread&) = delete;
  Trl_WorkerThread& operator=(const Trl_WorkerThread&) = delete;

  // Starts task on the worker and returns true, unless the worker belongs to another
  // caller between its start and wait (then nothing starts and the caller runs alone).
  bool start(std::function<void()> task);
  // Returns when the started task has returned.
  void wait();

 private:
  Trl_WorkerThread();
  void loop();

  std::mutex owner;  // held from start to wait
  std::mutex sleeping;
  std::condition_variable wake;
  std::function<void()> task;
  std::atomic<unsigned> posted{0};
  std::atomic<unsigned> done{0};
  const int process;  // the process that started the worker
  std::thread thread;
};
