#include "refhost/books/watched_vfs.hpp"

#include <sqlite3.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <new>
#include <utility>

namespace paylodge::refhost {
namespace {

constexpr const char* kName = "watched";
// HRESULT_FROM_WIN32(ERROR_DISK_FULL)
constexpr std::uint32_t kDiskFullResult = 0x80070070U;

// What SQLite is told when a step fails.
struct StepKind {
    FileStep step;
    std::string_view name;
    int failure;
};
constexpr std::array kSteps{
    StepKind{FileStep::kOpen, "CompanyFile.Open", SQLITE_CANTOPEN},
    StepKind{FileStep::kWrite, "CompanyFile.Write", SQLITE_IOERR_WRITE},
    StepKind{FileStep::kSync, "CompanyFile.Sync", SQLITE_IOERR_FSYNC},
    StepKind{FileStep::kCommit, "CompanyFile.Commit", SQLITE_IOERR_TRUNCATE},
};

[[nodiscard]] const StepKind& KindOf(FileStep step) noexcept {
    return *std::ranges::find(kSteps, step, &StepKind::step);
}

StepWatch g_watch;
std::optional<PlannedFailure> g_failure;

// SQLITE_OK, or what the step has to fail with.
[[nodiscard]] int Announce(FileStep step) {
    const std::optional<std::int32_t> planned = g_watch ? g_watch(step) : std::nullopt;
    if (!planned) {
        return SQLITE_OK;
    }
    g_failure = PlannedFailure{step, *planned};
    return static_cast<std::uint32_t>(*planned) == kDiskFullResult ? SQLITE_FULL : KindOf(step).failure;
}

// A file of the system's own access, which lies behind this structure in the memory that SQLite has made for both.
struct WatchedFile : sqlite3_file {
    bool is_journal;
};
constexpr size_t kRealOffset =
    (sizeof(WatchedFile) + alignof(std::max_align_t) - 1) / alignof(std::max_align_t) * alignof(std::max_align_t);

[[nodiscard]] sqlite3_file* Real(sqlite3_file* file) noexcept {
    return reinterpret_cast<sqlite3_file*>(reinterpret_cast<char*>(file) + kRealOffset);
}

// Hands a call over to the same method of the real file.
template <auto method, class... Arguments>
int Forward(sqlite3_file* file, Arguments... arguments) {
    sqlite3_file* const real = Real(file);
    return (real->pMethods->*method)(real, arguments...);
}

int Write(sqlite3_file* file, const void* bytes, int count, sqlite3_int64 offset) {
    const int failure = Announce(FileStep::kWrite);
    return failure == SQLITE_OK ? Forward<&sqlite3_io_methods::xWrite>(file, bytes, count, offset) : failure;
}

int Sync(sqlite3_file* file, int flags) {
    const int failure = Announce(FileStep::kSync);
    return failure == SQLITE_OK ? Forward<&sqlite3_io_methods::xSync>(file, flags) : failure;
}

// A change is committed when its journal is cut off.
int Truncate(sqlite3_file* file, sqlite3_int64 size) {
    const bool is_commit = static_cast<WatchedFile*>(file)->is_journal && size == 0;
    const int failure = is_commit ? Announce(FileStep::kCommit) : SQLITE_OK;
    return failure == SQLITE_OK ? Forward<&sqlite3_io_methods::xTruncate>(file, size) : failure;
}

// The first version of the methods: neither shared memory nor mapped files, which company files do without.
constexpr sqlite3_io_methods kMethods{
    .iVersion = 1,
    .xClose = Forward<&sqlite3_io_methods::xClose>,
    .xRead = Forward<&sqlite3_io_methods::xRead, void*, int, sqlite3_int64>,
    .xWrite = Write,
    .xTruncate = Truncate,
    .xSync = Sync,
    .xFileSize = Forward<&sqlite3_io_methods::xFileSize, sqlite3_int64*>,
    .xLock = Forward<&sqlite3_io_methods::xLock, int>,
    .xUnlock = Forward<&sqlite3_io_methods::xUnlock, int>,
    .xCheckReservedLock = Forward<&sqlite3_io_methods::xCheckReservedLock, int*>,
    .xFileControl = Forward<&sqlite3_io_methods::xFileControl, int, void*>,
    .xSectorSize = Forward<&sqlite3_io_methods::xSectorSize>,
    .xDeviceCharacteristics = Forward<&sqlite3_io_methods::xDeviceCharacteristics>,
    .xShmMap = nullptr,
    .xShmLock = nullptr,
    .xShmBarrier = nullptr,
    .xShmUnmap = nullptr,
    .xFetch = nullptr,
    .xUnfetch = nullptr,
};

[[nodiscard]] sqlite3_vfs* System() noexcept { return ::sqlite3_vfs_find(nullptr); }

int Open(sqlite3_vfs*, sqlite3_filename name, sqlite3_file* file, int flags, int* out_flags) {
    file->pMethods = nullptr;
    if (const int failure = Announce(FileStep::kOpen); failure != SQLITE_OK) {
        return failure;
    }
    const int result = System()->xOpen(System(), name, Real(file), flags, out_flags);
    if (Real(file)->pMethods != nullptr) {
        static_cast<WatchedFile*>(file)->is_journal = (flags & SQLITE_OPEN_MAIN_JOURNAL) != 0;
        file->pMethods = &kMethods;
    }
    return result;
}

// The system's own access with another way to open files; never released, as SQLite keeps a pointer to it.
[[nodiscard]] sqlite3_vfs MakeVfs() {
    sqlite3_vfs vfs = *System();
    vfs.zName = kName;
    vfs.pNext = nullptr;
    vfs.szOsFile += static_cast<int>(kRealOffset);
    vfs.xOpen = Open;
    return vfs;
}

}  // namespace

const char* WatchedVfs() {
    static const bool is_registered = [] {
        ::sqlite3_initialize();
        static sqlite3_vfs vfs = MakeVfs();
        return ::sqlite3_vfs_register(&vfs, 0) == SQLITE_OK;
    }();
    return is_registered ? kName : nullptr;
}

void WatchSteps(StepWatch watch) {
    g_watch = std::move(watch);
    g_failure.reset();
}

std::optional<PlannedFailure> TakePlannedFailure() noexcept { return std::exchange(g_failure, std::nullopt); }

std::string_view NameOf(FileStep step) noexcept { return KindOf(step).name; }

std::optional<FileStep> FileStepOf(std::string_view name) noexcept {
    const auto found = std::ranges::find(kSteps, name, &StepKind::name);
    return found == kSteps.end() ? std::nullopt : std::optional(found->step);
}

}  // namespace paylodge::refhost
