// Loads the reference host's LHUtilities.dll and Kesto.dll before the tests begin, as the host's own process has them
// loaded. They stand beside the folder of the test programs.

#include <gtest/gtest.h>

#include <filesystem>

#include "com/module.hpp"
#include "com/owner.hpp"
#include "hostapi/libraries.hpp"

namespace paylodge::test {
namespace {

class HostLibraries : public testing::Environment {
  public:
    void SetUp() override {
        const auto folder = std::filesystem::path(Module::Path()).parent_path().parent_path() / L"refhost";
        utilities_.Reset(::LoadLibraryW((folder / kUtilityLibrary).c_str()));
        ASSERT_TRUE(utilities_) << folder;
        feature_flags_.Reset(::LoadLibraryW((folder / kFeatureFlagLibrary).c_str()));
        ASSERT_TRUE(feature_flags_) << folder;
    }
    void TearDown() override {
        utilities_.Reset();
        feature_flags_.Reset();
    }

  private:
    ModuleHandle utilities_;
    ModuleHandle feature_flags_;
};

[[maybe_unused]] testing::Environment* const g_host_libraries =
    testing::AddGlobalTestEnvironment(new HostLibraries);  // NOLINT(cert-err58-cpp): GoogleTest takes it over.

}  // namespace
}  // namespace paylodge::test
