#include "workbench/server/options.hpp"

#include <gtest/gtest.h>

#include <string>

namespace paylodge::workbench {
namespace {

// What is wrong with the command line; empty when nothing is.
[[nodiscard]] std::string MessageOf(const std::vector<std::string>& words) {
    const auto read = ReadOptions(words);
    const auto* const wrong = std::get_if<WrongOption>(&read);
    return wrong == nullptr ? std::string() : wrong->message;
}

TEST(Options, AreReadFromTheCommandLine) {
    const auto read =
        ReadOptions({"--page", "C:\\my page", "--port", "9000", "--company", "a.lhcompany", "--ends-with-input"});
    const auto& options = std::get<Options>(read);
    EXPECT_EQ("a.lhcompany", options.company);
    EXPECT_EQ(9000, options.port);
    EXPECT_EQ("C:\\my page", options.page);
    EXPECT_TRUE(options.ends_with_input);
    EXPECT_FALSE(options.wants_help);
}

TEST(Options, HaveUsualValues) {
    const auto options = std::get<Options>(ReadOptions({"--company", "a"}));
    EXPECT_EQ(8137, options.port);
    EXPECT_EQ("", options.page);
    EXPECT_FALSE(options.ends_with_input);
}

TEST(Options, SayWhatIsWrong) {
    EXPECT_EQ("there is no option '--prot'; --help lists them", MessageOf({"--prot", "1"}));
    EXPECT_EQ("there is no option 'a.lhcompany'; --help lists them", MessageOf({"a.lhcompany"}));
    EXPECT_EQ("--port needs a value; --help says which", MessageOf({"--company", "a", "--port"}));
    EXPECT_EQ("--page needs a value; --help says which", MessageOf({"--page", ""}));
    for (const char* const port : {"65536", "-1", "80x", "x", "1.5", " 1", "99999999999999999999"}) {
        EXPECT_EQ("--port takes a number from 0 to 65535, not '" + std::string(port) + "'",
                  MessageOf({"--company", "a", "--port", port}));
    }
    EXPECT_EQ("a company file is needed: --company FILE", MessageOf({}));
}

TEST(Options, AskForHelpWhateverElseStandsThere) {
    EXPECT_TRUE(std::get<Options>(ReadOptions({"--help"})).wants_help);
    EXPECT_TRUE(std::get<Options>(ReadOptions({"--port", "1", "--help", "--nonsense"})).wants_help);
}

}  // namespace
}  // namespace paylodge::workbench
