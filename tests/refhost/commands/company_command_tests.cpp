#include "refhost/commands/company_command.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>

#include "tests/refhost/books/temporary_company.hpp"

namespace paylodge::refhost {
namespace {

using ::testing::HasSubstr;
using ::testing::StartsWith;

struct Outcome {
    int status;
    std::string output;
    std::string errors;
};

[[nodiscard]] Outcome RunCommand(const std::vector<std::string>& arguments) {
    std::ostringstream output;
    std::ostringstream errors;
    const int status = RunCompanyCommand(arguments, output, errors);
    return {status, output.str(), errors.str()};
}

[[nodiscard]] std::string ReadFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

TEST(CompanyCommand, ImportsWhatItExportedAndExportsTheSameAgain) {
    const TemporaryCompany file;
    const std::string text = TemporaryPath(".xml");
    const std::string copy = TemporaryPath(".lhcompany");
    EXPECT_EQ(RunCommand({"export", file.Path(), text}).status, 0);
    const Outcome imported = RunCommand({"import", text, copy});
    EXPECT_EQ(imported.status, 0) << imported.errors;
    EXPECT_EQ(imported.output, copy + " holds the company Corner Shop now.\n");
    EXPECT_EQ(RunCommand({"export", copy}).output, ReadFile(text));
    EXPECT_EQ(RunCommand({"check", copy}).output, copy + ": the books are true.\n");
    std::filesystem::remove(text);
    std::filesystem::remove(copy);
}

TEST(CompanyCommand, ShowsAccountsAndCustomers) {
    const TemporaryCompany file;
    const Outcome shown = RunCommand({"show", file.Path()});
    EXPECT_EQ(shown.status, 0);
    EXPECT_THAT(shown.output, StartsWith("Corner Shop\n\nAccounts, each on its normal side\n"));
    EXPECT_THAT(shown.output, HasSubstr("  Capital                                               125.00\n"));
    EXPECT_THAT(shown.output, HasSubstr("\nCustomers\n  Smith"));
    EXPECT_THAT(shown.output, HasSubstr("3 of the list Invoices\n"));
}

TEST(CompanyCommand, KeepsTheColumnsApartForNamesOfEveryLength) {
    for (const size_t length : {1U, 39U, 40U, 41U, 90U}) {
        const TemporaryCompany file;
        const std::string name(length, 'n');
        {
            const auto company = file.Open();
            company->Data().Run("UPDATE accounts SET name = ?, full_name = ?, folded_name = ? WHERE number = 15", name,
                                name, name);
        }
        const std::string row =
            "  " + name + std::string(length < 40 ? 40 - length : 1, ' ') + std::string(14, ' ') + "125.00\n";
        EXPECT_THAT(RunCommand({"show", file.Path()}).output, HasSubstr(row)) << length;
    }
}

TEST(CompanyCommand, LeavesNothingBehindWhenATextCannotBeImported) {
    const std::string text = TemporaryPath(".xml");
    const std::string company = TemporaryPath(".lhcompany");
    std::ofstream(text)
        << "<CompanyFile format=\"2\" name=\"x\" nextNumber=\"1\"><Accounts><Account/></Accounts></CompanyFile>";
    const Outcome outcome = RunCommand({"import", text, company});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(outcome.errors, StartsWith("company: In Accounts stands Account with the ListID \"\""));
    EXPECT_FALSE(std::filesystem::exists(company));
    std::filesystem::remove(text);
}

TEST(CompanyCommand, NeverWritesATextOverACompanyFile) {
    const TemporaryCompany file;
    const TemporaryCompany other;
    for (const std::string& text : {file.Path(), other.Path()}) {
        const std::string before = ReadFile(text);
        const Outcome outcome = RunCommand({"export", file.Path(), text});
        EXPECT_EQ(outcome.status, 1);
        EXPECT_EQ(outcome.errors, "company: The file \"" + text +
                                      "\" is a company file or another database; name a file for the text.\n");
        EXPECT_TRUE(ReadFile(text) == before);
    }
}

TEST(CompanyCommand, ImportsWhereAnImportWasKilledBefore) {
    const TemporaryCompany file;
    const std::string text = TemporaryPath(".xml");
    const std::string copy = TemporaryPath(".lhcompany");
    ASSERT_EQ(RunCommand({"export", file.Path(), text}).status, 0);
    std::ofstream(copy + ".new") << "what the killed one has left";
    const Outcome imported = RunCommand({"import", text, copy});
    EXPECT_EQ(imported.status, 0) << imported.errors;
    EXPECT_FALSE(std::filesystem::exists(copy + ".new"));
    EXPECT_EQ(RunCommand({"check", copy}).status, 0);
    std::filesystem::remove(text);
    std::filesystem::remove(copy);
}

TEST(CompanyCommand, NeverOverwritesACompanyFile) {
    const TemporaryCompany file;
    const std::string text = TemporaryPath(".xml");
    ASSERT_EQ(RunCommand({"export", file.Path(), text}).status, 0);
    const Outcome outcome = RunCommand({"import", text, file.Path()});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(outcome.errors, HasSubstr("exists already"));
    EXPECT_EQ(RunCommand({"check", file.Path()}).status, 0);
    std::filesystem::remove(text);
}

TEST(CompanyCommand, NamesWhatIsWrongWithAFile) {
    EXPECT_EQ(RunCommand({"check", "nowhere.lhcompany"}).errors,
              "company: The company file \"nowhere.lhcompany\" does not exist.\n");
    EXPECT_EQ(RunCommand({"import", "nowhere.xml", "x.lhcompany"}).errors,
              "company: The file \"nowhere.xml\" does not exist or cannot be opened.\n");
    const TemporaryCompany file;
    const Outcome unwritable = RunCommand({"export", file.Path(), "no-such-folder/text.xml"});
    EXPECT_EQ(unwritable.status, 1);
    EXPECT_EQ(unwritable.errors, "company: The file \"no-such-folder/text.xml\" cannot be written.\n");
}

TEST(CompanyCommand, FindsBooksThatAreFalse) {
    const TemporaryCompany file;
    file.Open()->Data().Run("UPDATE accounts SET balance = 1 WHERE number = 3");
    const Outcome outcome = RunCommand({"check", file.Path()});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.output, "The account \"Old Bank\" has the balance 0.01 instead of 0.00.\n");
}

TEST(CompanyCommand, ExplainsItselfWhenTheWordsMakeNoSense) {
    for (const std::vector<std::string>& words :
         {std::vector<std::string>{}, {"open"}, {"import", "x"}, {"check"}, {"check", "a", "b"}}) {
        const Outcome outcome = RunCommand(words);
        EXPECT_EQ(outcome.status, 2);
        EXPECT_THAT(outcome.errors, StartsWith("Usage: ./dev company import TEXT FILE"));
    }
}

}  // namespace
}  // namespace paylodge::refhost
