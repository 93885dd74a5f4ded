#include "refhost/commands/company_command.hpp"

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>
#include <iomanip>
#include <iterator>
#include <optional>
#include <string_view>
#include <system_error>

#include "refhost/books/audit.hpp"
#include "refhost/books/company.hpp"
#include "refhost/books/company_text.hpp"
#include "refhost/books/names.hpp"
#include "refhost/books/problems.hpp"
#include "refhost/books/values.hpp"

namespace paylodge::refhost {
namespace {

constexpr std::string_view kUsage =
    "Usage: ./dev company import TEXT FILE    makes the company file FILE from the company's text\n"
    "       ./dev company export FILE [TEXT]  writes the company's text to TEXT, or prints it\n"
    "       ./dev company check FILE          says whether the books are true: exit status 1 when they are not\n"
    "       ./dev company show FILE           prints the accounts with their balances, and what customers owe\n";

using Words = std::vector<std::string>;

[[nodiscard]] std::filesystem::path SystemPath(const std::string& path) {
    return {std::u8string(path.begin(), path.end())};
}

[[nodiscard]] std::string ReadText(const std::string& path) {
    std::ifstream file(SystemPath(path), std::ios::binary);
    if (!file) {
        throw HostError(Problem::kMissing, "The file \"" + path + "\" does not exist or cannot be opened.");
    }
    return {std::istreambuf_iterator<char>(file), {}};
}

// What a file is called until it is whole.
[[nodiscard]] std::string UnfinishedPath(const std::string& path) { return path + ".new"; }

// Whether there is a database, a company file or not, that a text would take the place of.
[[nodiscard]] bool IsDatabase(const std::string& path) {
    constexpr std::string_view kMagic = "SQLite format 3";
    std::array<char, kMagic.size()> start{};
    std::ifstream file(SystemPath(path), std::ios::binary);
    return file.read(start.data(), start.size()) && std::string_view(start.data(), start.size()) == kMagic;
}

// The file is there as a whole or as before.
void WriteText(const std::string& path, const std::string& text) {
    if (IsDatabase(path)) {
        throw HostError(Problem::kCannotWrite,
                        "The file \"" + path + "\" is a company file or another database; name a file for the text.");
    }
    const std::filesystem::path new_path = SystemPath(UnfinishedPath(path));
    std::ofstream file(new_path, std::ios::binary);
    file << text;
    file.close();
    std::error_code error;
    if (file) {
        std::filesystem::rename(new_path, SystemPath(path), error);
    }
    if (!file || error) {
        std::error_code ignored;
        std::filesystem::remove(new_path, ignored);
        throw HostError(Problem::kCannotWrite, "The file \"" + path + "\" cannot be written.");
    }
}

void CheckIsNew(const std::string& path) {
    std::error_code error;
    if (std::filesystem::exists(std::filesystem::symlink_status(SystemPath(path), error))) {
        throw HostError(Problem::kCannotWrite, "The company file \"" + path + "\" exists already.");
    }
}

// The company file is there as a whole or not at all, even if the process is killed.
int Import(const Words& words, std::ostream& output) {
    const std::string text = ReadText(words[0]);
    const std::string& path = words[1];
    const std::string name = CompanyNameIn(text);
    CheckIsNew(path);
    // What an import that was killed has left.
    std::error_code error;
    const std::filesystem::path unfinished = SystemPath(UnfinishedPath(path));
    std::filesystem::remove(unfinished, error);
    auto company = Company::Create(UnfinishedPath(path), name);
    try {
        ImportText(*company, text);
        company.reset();
        std::filesystem::rename(unfinished, SystemPath(path));
    } catch (...) {
        company.reset();
        std::filesystem::remove(unfinished, error);
        throw;
    }
    output << path << " holds the company " << name << " now.\n";
    return 0;
}

int Export(const Words& words, std::ostream& output) {
    const std::string text = ExportText(*Company::Open(words[0]));
    if (words.size() == 1) {
        output << text;
    } else {
        WriteText(words[1], text);
    }
    return 0;
}

int Check(const Words& words, std::ostream& output) {
    const std::vector<std::string> findings = Audit(*Company::Open(words[0]));
    for (const std::string& finding : findings) {
        output << finding << '\n';
    }
    if (findings.empty()) {
        output << words[0] << ": the books are true.\n";
    }
    return findings.empty() ? 0 : 1;
}

// A name and an amount, in two columns.
void PrintRow(std::ostream& output, const std::string& name, const std::string& amount) {
    constexpr size_t kNameWidth = 40;
    constexpr int kAmountWidth = 20;
    const size_t width = CountCharacters(name);
    output << "  " << name << std::string(width < kNameWidth ? kNameWidth - width : 1, ' ') << std::setw(kAmountWidth)
           << amount << '\n';
}

void PrintBalances(std::ostream& output, const std::vector<Element>& records) {
    for (const Element& record : records) {
        if (const std::string_view balance = ChildText(record, "Balance"); !balance.empty() && balance != "0.00") {
            PrintRow(output, std::string(ChildText(record, "FullName")), std::string(balance));
        }
    }
}

int Show(const Words& words, std::ostream& output) {
    const auto company = Company::Open(words[0]);
    output << company->Name() << "\n\nAccounts, each on its normal side\n";
    PrintBalances(output, company->Records(kAccounts));
    output << "\nCustomers\n";
    PrintBalances(output, company->Records(kCustomers));
    output << "\nRecorded\n";
    for (const ListKind* const kind : AllKinds()) {
        output << "  " << company->Records(*kind).size() << " of the list " << kind->section << '\n';
    }
    return 0;
}

struct Action {
    std::string_view name;
    size_t fewest;
    size_t most;
    int (*run)(const Words& words, std::ostream& output);
};
constexpr std::array kActions{Action{"import", 2, 2, Import}, Action{"export", 1, 2, Export},
                              Action{"check", 1, 1, Check}, Action{"show", 1, 1, Show}};

}  // namespace

int RunCompanyCommand(const std::vector<std::string>& arguments, std::ostream& output, std::ostream& errors) {
    const auto action = arguments.empty() ? kActions.end() : std::ranges::find(kActions, arguments[0], &Action::name);
    if (action == kActions.end() || arguments.size() - 1 < action->fewest || arguments.size() - 1 > action->most) {
        errors << kUsage;
        return 2;
    }
    try {
        return action->run(Words(arguments.begin() + 1, arguments.end()), output);
    } catch (const std::exception& error) {
        errors << "company: " << error.what() << '\n';
        return 1;
    }
}

}  // namespace paylodge::refhost
