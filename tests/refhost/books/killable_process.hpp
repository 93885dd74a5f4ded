// Another program of the tests, killed where its owner goes.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace paylodge::refhost {

class KillableProcess {
  public:
    // Starts the program of this name that lies beside the running one. The test fails when that does not work.
    KillableProcess(std::string_view name, const std::vector<std::string>& arguments);
    ~KillableProcess();
    KillableProcess(const KillableProcess&) = delete;
    KillableProcess& operator=(const KillableProcess&) = delete;

  private:
    // What the system knows it by.
    std::intptr_t handle_ = 0;
};

}  // namespace paylodge::refhost
