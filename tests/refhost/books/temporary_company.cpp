#include "tests/refhost/books/temporary_company.hpp"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <system_error>

#include "refhost/books/company_text.hpp"
#include "tests/refhost/books/sample_books.hpp"

namespace paylodge::refhost {

TemporaryCompany::TemporaryCompany() : path_(TemporaryPath(".lhcompany")) {
    const auto company = Company::Create(path_, "Corner Shop");
    ImportText(*company, ExportText(*SampleBooks()));
}

TemporaryCompany::~TemporaryCompany() {
    std::error_code ignored;
    std::filesystem::permissions(path_, std::filesystem::perms::owner_all, ignored);
    std::filesystem::remove(path_, ignored);
    std::filesystem::remove(path_ + "-journal", ignored);
}

std::string TemporaryCompany::Bytes() const {
    std::ifstream file(path_, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

void TemporaryCompany::Write(std::string_view bytes) const { std::ofstream(path_, std::ios::binary) << bytes; }

void TemporaryCompany::MakeReadOnly() const { std::filesystem::permissions(path_, std::filesystem::perms::owner_read); }

std::string TemporaryPath(std::string_view ending) {
    static std::random_device random;
    return (std::filesystem::temp_directory_path() / ("books-" + std::to_string(random()))).string() +
           std::string(ending);
}

}  // namespace paylodge::refhost
