// A company file of a test, removed at the end.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "refhost/books/company.hpp"

namespace paylodge::refhost {

class TemporaryCompany {
  public:
    // With the records of SampleBooks.
    TemporaryCompany();
    ~TemporaryCompany();
    TemporaryCompany(const TemporaryCompany&) = delete;
    TemporaryCompany& operator=(const TemporaryCompany&) = delete;

    [[nodiscard]] const std::string& Path() const noexcept { return path_; }
    [[nodiscard]] std::unique_ptr<Company> Open() const { return Company::Open(path_); }
    [[nodiscard]] std::string Bytes() const;
    void Write(std::string_view bytes) const;
    void MakeReadOnly() const;

  private:
    std::string path_;
};

// A name in the folder for temporary files that no other test has.
[[nodiscard]] std::string TemporaryPath(std::string_view ending);

}  // namespace paylodge::refhost
