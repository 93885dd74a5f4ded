// refhost.dll as a caller outside meets it: loaded from its file, its objects made through its class objects.
#pragma once

#include <gtest/gtest.h>
#include <windows.h>

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "com/bstr.hpp"
#include "com/com_ptr.hpp"
#include "com/owner.hpp"
#include "hostapi/request_processor.hpp"
#include "refhost.h"
#include "refhost/books/company.hpp"

namespace paylodge::refhost {

// Path of a file in the folder that is named relatively to the folder of this program.
[[nodiscard]] std::wstring PathBesideProgram(std::wstring_view relative);

// A fresh copy of the sample company file in the folder for temporary files, removed at the end.
class TemporaryCompanyFile {
  public:
    TemporaryCompanyFile();
    ~TemporaryCompanyFile();
    TemporaryCompanyFile(const TemporaryCompanyFile&) = delete;
    TemporaryCompanyFile& operator=(const TemporaryCompanyFile&) = delete;

    [[nodiscard]] const std::wstring& Path() const noexcept { return path_; }
    [[nodiscard]] std::string Bytes() const;
    // To be used while no host has the file open.
    [[nodiscard]] std::unique_ptr<Company> Open() const;
    void Write(std::string_view bytes) const;

  private:
    void Remove() const;

    std::wstring path_;
};

class HostServer {
  public:
    // Loads the module. The test fails when that does not work.
    HostServer();

    // A new object of a class of the module; null when it cannot be had.
    template <class Interface>
    [[nodiscard]] ComPtr<Interface> Create(REFCLSID class_id) const {
        ComPtr<IClassFactory> factory;
        ComPtr<Interface> object;
        if (SUCCEEDED(GetClassObject(class_id, factory))) {
            static_cast<void>(factory->CreateInstance(nullptr, __uuidof(Interface), object.ReceiveVoid()));
        }
        return object;
    }
    [[nodiscard]] HRESULT GetClassObject(REFCLSID class_id, ComPtr<IClassFactory>& factory) const;
    [[nodiscard]] HRESULT CanUnloadNow() const;

  private:
    template <class Function>
    [[nodiscard]] Function* Find(const char* name) const;

    ModuleHandle module_;
};

// The text in UTF-8.
[[nodiscard]] std::string Text(const OwnedBstr& text);

// Tests of the module with the sample company file open; they leave the host as they found it.
class HostTest : public ::testing::Test {
  protected:
    void SetUp() override;
    void TearDown() override;

    // What the host's objects were asked so far.
    [[nodiscard]] std::vector<std::string> Calls() const;
    // What the last error says of itself.
    [[nodiscard]] static std::string LastDescription();

    HostServer host_;
    TemporaryCompanyFile sample_;
    ComPtr<IReferenceHost> control_;
};

}  // namespace paylodge::refhost
