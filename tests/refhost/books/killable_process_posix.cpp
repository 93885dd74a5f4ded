#include <gtest/gtest.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>

#include "tests/refhost/books/killable_process.hpp"

namespace paylodge::refhost {

KillableProcess::KillableProcess(std::string_view name, const std::vector<std::string>& arguments) {
    std::string path = (std::filesystem::read_symlink("/proc/self/exe").parent_path() / name).string();
    std::vector<std::string> words = arguments;
    std::vector<char*> pointers{path.data()};
    for (std::string& word : words) {
        pointers.push_back(word.data());
    }
    pointers.push_back(nullptr);
    pid_t process = 0;
    EXPECT_EQ(::posix_spawn(&process, path.c_str(), nullptr, nullptr, pointers.data(), environ), 0) << path;
    handle_ = process;
}

KillableProcess::~KillableProcess() {
    int status = 0;
    ::kill(static_cast<pid_t>(handle_), SIGKILL);
    EXPECT_EQ(::waitpid(static_cast<pid_t>(handle_), &status, 0), handle_);
    EXPECT_TRUE(WIFSIGNALED(status)) << "it ended by itself";
}

}  // namespace paylodge::refhost
