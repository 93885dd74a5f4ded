// Company files with changed, missing and misplaced bytes: each is refused in words and left as it is, or it opens, and
// then whatever is asked of it has an answer. The same files in every run.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iostream>
#include <iterator>
#include <random>
#include <set>
#include <string>

#include "refhost/books/audit.hpp"
#include "refhost/books/company_text.hpp"
#include "refhost/books/processor.hpp"
#include "refhost/books/request_guide.hpp"
#include "refhost/books/watched_vfs.hpp"
#include "refhost/books/xml_reader.hpp"
#include "tests/refhost/books/sample_books.hpp"
#include "tests/refhost/books/temporary_company.hpp"
#include "tests/support/source_file.hpp"

namespace paylodge::refhost {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

constexpr size_t kPageSize = 4096;
constexpr size_t kHeaderSize = 100;

[[nodiscard]] std::string ReadBytes(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

// The bytes of the sample company's file.
[[nodiscard]] const std::string& SampleFile() {
    static const std::string bytes = [] {
        const std::string path = TemporaryPath(".lhcompany");
        const std::string text = ReadBytes(test::SourceFile("examples/riverside.xml"));
        ImportText(*Company::Create(path, CompanyNameIn(text)), text);
        std::string file = ReadBytes(path);
        std::filesystem::remove(path);
        return file;
    }();
    return bytes;
}

// What befalls a file. The numbers that it draws are the same in every run.
class Accident {
  public:
    explicit Accident(unsigned seed) : random_(seed) {}

    // From 0 up to and without the limit.
    [[nodiscard]] size_t Number(size_t limit) { return random_() % limit; }
    [[nodiscard]] char Byte() { return static_cast<char>(Number(256)); }
    [[nodiscard]] size_t Page(const std::string& file) { return Number(file.size() / kPageSize) * kPageSize; }

    void ChangeBytes(std::string& file, size_t count, size_t first, size_t size) {
        for (size_t i = 0; i < count; ++i) {
            file[first + Number(size)] ^= static_cast<char>(1 + Number(255));
        }
    }

  private:
    std::mt19937 random_;
};

struct Damage {
    const char* name;
    int files;
    void (*apply)(std::string& file, Accident& accident);
};

void PrintTo(const Damage& damage, std::ostream* output) { *output << damage.name; }

// A byte of the fields at the beginning of a page, or of the places of its cells behind them.
void ChangePageHeader(std::string& file, Accident& accident) {
    constexpr size_t kFields = 24;
    const size_t page = accident.Page(file);
    accident.ChangeBytes(file, 1 + accident.Number(2), page == 0 ? kHeaderSize : page, kFields);
}

// A byte that is in use: most of the others are zero.
void ChangeUsedByte(std::string& file, Accident& accident) {
    size_t at = accident.Number(file.size());
    while (file[at] == '\0') {
        at = (at + 1) % file.size();
    }
    accident.ChangeBytes(file, 1, at, 1);
}

void SwapPages(std::string& file, Accident& accident) {
    const size_t one = accident.Page(file);
    const size_t other = accident.Page(file);
    const std::string kept = file.substr(one, kPageSize);
    file.replace(one, kPageSize, file, other, kPageSize);
    file.replace(other, kPageSize, kept);
}

void CopyPage(std::string& file, Accident& accident) {
    file.replace(accident.Page(file), kPageSize, std::string(file, accident.Page(file), kPageSize));
}

void FillRun(std::string& file, Accident& accident) {
    const size_t at = accident.Number(file.size());
    const size_t size = std::min(file.size() - at, 1 + accident.Number(kPageSize));
    const bool is_noise = accident.Number(2) == 0;
    std::generate_n(file.begin() + static_cast<std::ptrdiff_t>(at), size,
                    [&] { return is_noise ? accident.Byte() : '\0'; });
}

// A byte of what the tables are: their statements lie in the pages that hold one.
void ChangeTables(std::string& file, Accident& accident) {
    size_t page = accident.Page(file);
    while (std::string_view(file).substr(page, kPageSize).find("CREATE ") == std::string_view::npos) {
        page = (page + kPageSize) % file.size();
    }
    size_t at = page + accident.Number(kPageSize);
    while (file[at] == '\0') {
        at = page + accident.Number(kPageSize);
    }
    accident.ChangeBytes(file, 1, at, 1);
}

// The text and numbers that say what a company file is are left, so that the rest of the header is read at all.
void ChangeHeader(std::string& file, Accident& accident) {
    constexpr size_t kMagicSize = 16;
    const std::string kinds = file.substr(60, 12);
    accident.ChangeBytes(file, 1 + accident.Number(4), kMagicSize, kHeaderSize - kMagicSize);
    file.replace(60, kinds.size(), kinds);
}

void ReplaceHeader(std::string& file, Accident& accident) {
    std::generate_n(file.begin(), kHeaderSize, [&] { return accident.Byte(); });
}

constexpr std::array kDamages{
    Damage{"Emptied", 1, [](std::string& file, Accident&) { file.clear(); }},
    Damage{"CutAnywhere", 40, [](std::string& file, Accident& accident) { file.resize(accident.Number(file.size())); }},
    Damage{"CutBehindAPage", 30, [](std::string& file, Accident& accident) { file.resize(accident.Page(file)); }},
    Damage{"Lengthened", 3,
           [](std::string& file, Accident& accident) {
               file.append(1 + accident.Number(3 * kPageSize), accident.Byte());
           }},
    Damage{"HeaderReplaced", 10, ReplaceHeader},
    Damage{"HeaderChanged", 120, ChangeHeader},
    Damage{"FirstBytesChanged", 30,
           [](std::string& file, Accident& accident) { accident.ChangeBytes(file, 1, 0, kHeaderSize); }},
    Damage{"TablesChanged", 80, ChangeTables},
    Damage{"ByteChanged", 150, ChangeUsedByte},
    Damage{"BytesChanged", 60,
           [](std::string& file, Accident& accident) { accident.ChangeBytes(file, 64, 0, file.size()); }},
    Damage{"PageHeaderChanged", 120, ChangePageHeader},
    Damage{"RunFilled", 40, FillRun},
    Damage{"PagesSwapped", 40, SwapPages},
    Damage{"PageCopied", 40, CopyPage},
};

[[nodiscard]] std::string Describe(const Damage& damage, int number) {
    return std::string(damage.name) + ' ' + std::to_string(number);
}

class DamagedFile {
  public:
    // With a journal beside it unless that is empty.
    explicit DamagedFile(std::string bytes, std::string_view journal = {})
        : path_(TemporaryPath(".lhcompany")), bytes_(std::move(bytes)) {
        std::ofstream(path_, std::ios::binary) << bytes_;
        if (!journal.empty()) {
            std::ofstream(path_ + "-journal", std::ios::binary) << journal;
        }
    }
    ~DamagedFile() {
        std::filesystem::remove(path_);
        std::filesystem::remove(path_ + "-journal");
    }
    DamagedFile(const DamagedFile&) = delete;
    DamagedFile& operator=(const DamagedFile&) = delete;

    [[nodiscard]] const std::string& Path() const noexcept { return path_; }
    [[nodiscard]] bool IsUntouched() const {
        return ReadBytes(path_) == bytes_ && !std::filesystem::exists(path_ + "-journal") &&
               !std::filesystem::exists(path_ + "-wal");
    }

  private:
    std::string path_;
    std::string bytes_;
};

// Null for a file that is refused, which has to be in one line that names it.
[[nodiscard]] std::unique_ptr<Company> Opened(const DamagedFile& file) {
    static const std::set kRefusals{Problem::kDamaged, Problem::kForeign, Problem::kNewer};
    try {
        return Company::Open(file.Path());
    } catch (const HostError& error) {
        EXPECT_TRUE(kRefusals.contains(error.GetProblem())) << error.what();
        EXPECT_THAT(error.what(), HasSubstr('"' + file.Path() + "\" "));
        EXPECT_THAT(error.what(), Not(HasSubstr("\n")));
        return nullptr;
    }
}

// What the check says; a file that cannot be read to the end is a finding, too.
[[nodiscard]] std::vector<std::string> Findings(Company& company) {
    try {
        return Audit(company);
    } catch (const HostError& error) {
        EXPECT_EQ(error.GetProblem(), Problem::kDamaged) << error.what();
        return {error.what()};
    }
}

// Each request has a response, and the response document is one.
void ExpectAnswers(Company& company) {
    std::string requests;
    for (const RequestNotes& notes : Notes()) {
        requests += notes.example;
    }
    const std::string response = ResponseText(ProcessDocument(ReadXml(Envelope(requests)), company, kNow));
    try {
        EXPECT_EQ(ReadXml(response).root.children.at(0).children.size(), Notes().size()) << response;
    } catch (const RefusedRequest& refused) {
        ADD_FAILURE() << refused.GetStatus().message << "\n" << response;
    }
}

void ExpectText(Company& company) {
    try {
        EXPECT_FALSE(CompanyNameIn(ExportText(company)).empty());
    } catch (const HostError& error) {
        EXPECT_THAT(error.what(), HasSubstr("damaged"));
    }
}

class DamagedFiles : public ::testing::TestWithParam<Damage> {};

TEST_P(DamagedFiles, AreRefusedInWordsOrAnswer) {
    int opened = 0;
    int true_books = 0;
    for (int number = 0; number < GetParam().files; ++number) {
        SCOPED_TRACE(Describe(GetParam(), number));
        Accident accident(static_cast<unsigned>(number));
        std::string bytes = SampleFile();
        GetParam().apply(bytes, accident);
        const DamagedFile file(std::move(bytes));
        if (auto company = Opened(file)) {
            ++opened;
            true_books += Findings(*company).empty() ? 1 : 0;
            ExpectText(*company);
            company.reset();
            EXPECT_TRUE(file.IsUntouched()) << "written to by reading it";
            ExpectAnswers(*Opened(file));
        } else {
            EXPECT_TRUE(file.IsUntouched()) << "written to by an attempt to open it";
        }
    }
    std::cout << GetParam().files << " files: " << GetParam().files - opened << " refused, " << opened << " opened, "
              << true_books << " of these with true books\n";
}

// A file and its journal as a process leaves them that dies while it commits.
struct Halfway {
    std::string file;
    std::string journal;
};

[[nodiscard]] Halfway DiedInTheCommit() {
    const DamagedFile file(SampleFile());
    Halfway halfway;
    const auto company = Opened(file);
    WatchSteps([&](FileStep step) {
        if (step == FileStep::kCommit && halfway.journal.empty()) {
            halfway = {ReadBytes(file.Path()), ReadBytes(file.Path() + "-journal")};
        }
        return std::nullopt;
    });
    ExpectAnswers(*company);
    WatchSteps({});
    return halfway;
}

TEST(DamagedJournal, IsAppliedOrNotButNeverHarms) {
    const Halfway halfway = DiedInTheCommit();
    ASSERT_FALSE(halfway.journal.empty());
    ASSERT_NE(halfway.file, SampleFile());
    {
        const DamagedFile whole(halfway.file, halfway.journal);
        ASSERT_NE(Opened(whole), nullptr);
        EXPECT_EQ(ReadBytes(whole.Path()), SampleFile()) << "the change was not taken back";
    }
    constexpr int kFiles = 100;
    int opened = 0;
    for (int number = 0; number < kFiles; ++number) {
        SCOPED_TRACE(number);
        Accident accident(static_cast<unsigned>(number));
        std::string journal = halfway.journal;
        if (number % 2 == 0) {
            journal.resize(1 + accident.Number(journal.size()));
        } else {
            accident.ChangeBytes(journal, 1, 0, number % 4 == 1 ? kHeaderSize : journal.size());
        }
        const DamagedFile file(halfway.file, journal);
        if (const auto company = Opened(file)) {
            ++opened;
            static_cast<void>(Findings(*company));
            ExpectText(*company);
            ExpectAnswers(*company);
        }
    }
    std::cout << kFiles << " journals: " << kFiles - opened << " files refused, " << opened << " opened\n";
}

INSTANTIATE_TEST_SUITE_P(, DamagedFiles, ::testing::ValuesIn(kDamages),
                         [](const auto& test) { return std::string(test.param.name); });

}  // namespace
}  // namespace paylodge::refhost
