// The page in Node.

#include <unistd.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>

#include "tests/unit/bridge/script_page.hpp"

namespace paylodge::test {
namespace {

// Reads the page and the script from files, and writes what arrived. Each script has a global object of its own.
constexpr const char* kRunner = R"js(
const fs = require("fs"), vm = require("vm");
const page = vm.createContext({});
vm.runInContext(fs.readFileSync(process.argv[2], "latin1"), page);
try {
    vm.runInContext(fs.readFileSync(process.argv[3], "latin1"), page);
    process.stdout.write(Buffer.from(page.arrived, "latin1"));
} catch (error) {
    process.stdout.write("(error)");
}
)js";

// A folder of this run's own.
class Folder {
  public:
    Folder() {
        std::string pattern = (std::filesystem::temp_directory_path() / "script-page-XXXXXX").string();
        path_ = ::mkdtemp(pattern.data()) == nullptr ? std::string() : pattern;
    }
    ~Folder() {
        if (!path_.empty()) {
            std::filesystem::remove_all(path_);
        }
    }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;

    [[nodiscard]] std::string Write(const char* name, std::string_view text) const {
        std::string file = path_ + "/" + name;
        std::ofstream(file, std::ios::binary) << text;
        return file;
    }

  private:
    std::string path_;
};

[[nodiscard]] std::string OutputOf(const std::string& command) {
    struct Close {
        void operator()(std::FILE* pipe) const noexcept { ::pclose(pipe); }
    };
    const std::unique_ptr<std::FILE, Close> pipe(
        ::popen(command.c_str(), "r"));  // NOLINT(cert-env33-c): the command is made of fixed words and own paths
    std::string output;
    std::array<char, 4096> buffer;
    while (pipe) {
        const size_t size = std::fread(buffer.data(), 1, buffer.size(), pipe.get());
        if (size == 0) {
            break;
        }
        output.append(buffer.data(), size);
    }
    return output;
}

}  // namespace

std::optional<std::string> WhyNoScriptEngine() {
    return OutputOf("node --version 2>&1").starts_with('v')
               ? std::nullopt
               : std::optional<std::string>("node is missing: the package nodejs brings it");
}

std::string RunInPage(std::string_view script) {
    const Folder folder;
    return OutputOf("node " + folder.Write("run.js", kRunner) + " " + folder.Write("page.js", kPageScript) + " " +
                    folder.Write("script.js", script));
}

std::string RawLineEnd(const std::string&) { return kScriptError; }

}  // namespace paylodge::test
