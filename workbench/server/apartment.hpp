// The one thread on which every COM object of the program lives, with its message loop.
#pragma once

#include <windows.h>

#include <chrono>
#include <deque>
#include <functional>
#include <mutex>

#include "com/owner.hpp"

namespace paylodge::workbench {

// Made on the thread that is to be the apartment, which stays one until this goes.
class Apartment {
  public:
    using Task = std::function<void()>;

    // Throws COM errors.
    Apartment();
    ~Apartment();
    Apartment(const Apartment&) = delete;
    Apartment& operator=(const Apartment&) = delete;

    // On any thread. Tasks run in the order in which they were posted.
    void Post(Task task);
    // On any thread: Run returns after the task that is running.
    void Quit() noexcept;

    // Runs tasks and dispatches messages until Quit; `on_idle` is called about once in `period`.
    void Run(std::chrono::milliseconds period, const Task& on_idle);

  private:
    void RunTasks();

    std::mutex mutex_;
    std::deque<Task> tasks_;
    bool is_quitting_ = false;
    Handle wake_;
};

}  // namespace paylodge::workbench
