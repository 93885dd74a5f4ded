#include "tests/support/fake_storage_host.hpp"

#include <gtest/gtest.h>

#include "com/ansi_text.hpp"
#include "com/object_root.hpp"
#include "tests/support/hresult.hpp"

namespace paylodge::test {
namespace {

[[nodiscard]] std::string Show(BSTR text) { return text == nullptr ? "null" : "\"" + AnsiFromBstr(text) + "\""; }

[[nodiscard]] std::string Show(const VARIANT& value) {
    return V_VT(&value) == VT_BSTR ? Show(V_BSTR(&value)) : "type " + std::to_string(V_VT(&value));
}

// Variants are copied by functions that ask for a source that may change.
void CopyVariant(VARIANT* to, VARIANT from) { EXPECT_HRESULT(S_OK, ::VariantCopy(to, &from)); }

// An object of the host that is called through its slots only.
template <class Interface>
class Part : public Interface {
  public:
    using Row = InterfaceRow<Part>;
    [[maybe_unused]] static constexpr std::array kInterfaces = {Row::template Of<IUnknown, Interface>()};

    explicit Part(FakeStorageHost& host) : host_(host) { ++host_.live_objects; }

  protected:
    ~Part() { --host_.live_objects; }

    FakeStorageHost& host_;
};

// Records a call that hands out an object, and makes that object unless the call fails or returns null.
template <class Class, class Interface, class... Arguments>
HRESULT HandOut(FakeStorageHost& host, const char* method, const std::string& shown, Interface** object,
                const Arguments&... arguments) {
    const HRESULT result = host.Record(method, shown);
    if (SUCCEEDED(result)) {
        *object = host.null_results.contains(method) ? nullptr : ComObject<Class>::Create(host, arguments...).Detach();
    }
    return result;
}

// A record's place in the company file.
struct Place {
    std::wstring category;
    LONG number = 0;

    [[nodiscard]] std::map<LONG, StoredRecord>& Records(FakeStorageHost& host) const {
        return host.categories[category];
    }
    [[nodiscard]] StoredRecord& Find(FakeStorageHost& host) const { return Records(host)[number]; }
};

class PropertyBag : public Part<IHostPropertyBag> {
  public:
    PropertyBag(FakeStorageHost& host, Place place) : Part(host), place_(std::move(place)) {}

    STDMETHODIMP Read(BSTR name, VARIANT* value) override {
        const HRESULT result = host_.Record("Read", Show(name));
        const auto& properties = place_.Find(host_).properties;
        const auto property = properties.find(std::wstring(View(name)));
        if (SUCCEEDED(result) && property != properties.end()) {
            CopyVariant(value, property->second.Get());
        }
        return result;
    }
    STDMETHODIMP Write(BSTR name, VARIANT value) override {
        const HRESULT result = host_.Record("Write", Show(name) + ", " + Show(value));
        if (SUCCEEDED(result)) {
            place_.Find(host_).Put(std::wstring(View(name)), value);
        }
        return result;
    }

  protected:
    ~PropertyBag() = default;

  private:
    Place place_;
};

class Record : public Part<IHostDataFileRecord> {
  public:
    Record(FakeStorageHost& host, Place place) : Part(host), place_(std::move(place)) {}

    STDMETHODIMP PutDataVersion(LONG version) override {
        const HRESULT result = host_.Record("PutDataVersion", std::to_string(version));
        if (SUCCEEDED(result)) {
            place_.Find(host_).version = version;
        }
        return result;
    }
    STDMETHODIMP Lock(VARIANT_BOOL* is_locked) override {
        const HRESULT result = host_.Record("Lock");
        if (FAILED(result)) {
            return result;
        }
        LockAnswer answer{.result = result};
        if (!host_.lock_answers.empty()) {
            answer = host_.lock_answers.front();
            host_.lock_answers.pop_front();
        }
        if (SUCCEEDED(answer.result)) {
            *is_locked = answer.is_acquired ? host_.yes : VARIANT_FALSE;
            host_.held_locks += answer.is_acquired ? 1 : 0;
        }
        return answer.result;
    }
    // However often the lock was acquired, one release frees it.
    STDMETHODIMP Unlock() override {
        host_.held_locks = 0;
        return host_.Record("Unlock");
    }
    STDMETHODIMP Save() override {
        const HRESULT result = host_.Record("Save");
        if (SUCCEEDED(result)) {
            ++place_.Find(host_).saves;
        }
        return result;
    }
    STDMETHODIMP Delete() override {
        const HRESULT result = host_.Record("Delete");
        if (SUCCEEDED(result)) {
            place_.Records(host_).erase(place_.number);
        }
        return result;
    }
    STDMETHODIMP GetPropertyBag(IHostPropertyBag** bag) override {
        return HandOut<PropertyBag>(host_, "GetPropertyBag", "", bag, place_);
    }

  protected:
    ~Record() = default;

  private:
    Place place_;
};

class Records : public Part<IHostDataFileRecords> {
  public:
    Records(FakeStorageHost& host, std::wstring category) : Part(host), category_(std::move(category)) {}

    STDMETHODIMP Item(LONG number, IHostDataFileRecord** record) override {
        return HandOut<test::Record>(host_, "Item", std::to_string(number), record, Place{category_, number});
    }
    STDMETHODIMP Exists(LONG number, VARIANT_BOOL* exists) override {
        const HRESULT result = host_.Record("Exists", std::to_string(number));
        if (SUCCEEDED(result)) {
            *exists = host_.categories[category_].contains(number) ? host_.yes : VARIANT_FALSE;
        }
        return result;
    }
    STDMETHODIMP Add(LONG number, IHostDataFileRecord** record) override {
        const Place place{category_, number};
        const HRESULT result = HandOut<test::Record>(host_, "Add", std::to_string(number), record, place);
        if (SUCCEEDED(result)) {
            place.Records(host_).try_emplace(number);
        }
        return result;
    }

  protected:
    ~Records() = default;

  private:
    std::wstring category_;
};

class Company : public Part<IHostCompany> {
  public:
    using Part::Part;

    STDMETHODIMP GetDataFileRecords(BSTR category, IHostDataFileRecords** records) override {
        return HandOut<Records>(host_, "GetDataFileRecords", Show(category), records, std::wstring(View(category)));
    }

  protected:
    ~Company() = default;
};

class Goodies : public Part<IHostAddInGoodies> {
  public:
    using Part::Part;

    STDMETHODIMP AttachToCurrentCompany(IHostCompany** company) override {
        return HandOut<Company>(host_, "AttachToCurrentCompany", "", company);
    }

  protected:
    ~Goodies() = default;
};

// Lives as long as the fake, whatever references are left on it; it only counts them.
class Application final : public IHostApplication, public IHostFolders {
  public:
    explicit Application(FakeStorageHost& host) : host_(host) {}

    [[nodiscard]] IUnknown* Identity() noexcept { return static_cast<IHostApplication*>(this); }

    STDMETHODIMP QueryInterface(REFIID id, void** object) override {
        *object = nullptr;
        if (IsEqualIID(id, __uuidof(IHostApplication))) {
            return Answer("IHostApplication", static_cast<IHostApplication*>(this), object);
        }
        if (IsEqualIID(id, __uuidof(IHostFolders))) {
            return Answer("IHostFolders", static_cast<IHostFolders*>(this), object);
        }
        return E_NOINTERFACE;
    }
    STDMETHODIMP_(ULONG) AddRef() override { return static_cast<ULONG>(++host_.live_objects); }
    STDMETHODIMP_(ULONG) Release() override { return static_cast<ULONG>(--host_.live_objects); }

    STDMETHODIMP GetAddInGoodies(IHostAddInGoodies** goodies) override {
        return HandOut<Goodies>(host_, "GetAddInGoodies", "", goodies);
    }
    STDMETHODIMP GetFolder(LONG kind, BSTR* path) override {
        const HRESULT result = host_.Record("GetFolder", std::to_string(kind));
        if (SUCCEEDED(result)) {
            *path = host_.null_results.contains("GetFolder") ? nullptr : MakeBstr(host_.folder).Detach();
        }
        return result;
    }

  private:
    HRESULT Answer(const char* interface_name, void* interface_pointer, void** object) {
        const HRESULT result = host_.Record("QueryInterface", interface_name);
        if (SUCCEEDED(result)) {
            *object = interface_pointer;
            AddRef();
        }
        return result;
    }

    FakeStorageHost& host_;
};

class Locator : public Part<IHostApplicationLocator> {
  public:
    using Row = InterfaceRow<Locator>;
    static constexpr std::array kInterfaces = {Row::Of<IHostApplicationLocator>()};

    Locator(FakeStorageHost& host, Application& application) : Part(host), application_(application) {}

    STDMETHODIMP GetRunningApplication(IUnknown** application) override {
        const HRESULT result = host_.Record("GetRunningApplication");
        if (SUCCEEDED(result)) {
            *application = host_.null_results.contains("GetRunningApplication")
                               ? nullptr
                               : ComPtr<IUnknown>(application_.Identity()).Detach();
        }
        return result;
    }

  protected:
    ~Locator() = default;

  private:
    Application& application_;
};

class LocatorClassObject : public IClassFactory {
  public:
    using Row = InterfaceRow<LocatorClassObject>;
    static constexpr std::array kInterfaces = {Row::Of<IClassFactory>()};

    LocatorClassObject(FakeStorageHost& host, Application& application) : host_(host), application_(application) {}

    STDMETHODIMP CreateInstance(IUnknown* outer, REFIID id, void** object) override {
        EXPECT_EQ(nullptr, outer);
        const HRESULT result = host_.Record("CreateInstance");
        return FAILED(result) ? result : ComObject<Locator>::Create(host_, application_)->QueryInterface(id, object);
    }
    STDMETHODIMP LockServer(BOOL) override { return S_OK; }

  protected:
    ~LocatorClassObject() = default;

  private:
    FakeStorageHost& host_;
    Application& application_;
};

}  // namespace

void StoredRecord::Put(const std::wstring& property, const VARIANT& value) {
    properties.erase(property);
    CopyVariant(properties[property].Receive(), value);
}

void StoredRecord::Put(const std::wstring& property, std::wstring_view text) {
    Put(property, OwnedVariant(MakeBstr(text)).Get());
}

std::wstring StoredRecord::Text(const std::wstring& property) const {
    const auto found = properties.find(property);
    return found == properties.end() || found->second.Type() != VT_BSTR ? L"(none)"
                                                                        : std::wstring(View(found->second.Bstr()));
}

struct FakeStorageHost::Parts {
    explicit Parts(FakeStorageHost& fake) : application(fake) {}
    Application application;
};

FakeStorageHost::FakeStorageHost() : parts_(std::make_unique<Parts>(*this)) {
    class_object_ =
        ComPtr<IClassFactory>::Attach(ComObject<LocatorClassObject>::Create(*this, parts_->application).Detach());
    EXPECT_HRESULT(S_OK, ::CoRegisterClassObject(kHostApplicationLocatorClass, class_object_.Get(),
                                                 CLSCTX_INPROC_SERVER, REGCLS_MULTIPLEUSE, &registration_));
}

FakeStorageHost::~FakeStorageHost() {
    EXPECT_HRESULT(S_OK, ::CoRevokeClassObject(registration_));
    EXPECT_EQ(0, live_objects);
}

HRESULT FakeStorageHost::Record(const std::string& method, const std::string& arguments) {
    calls.push_back(method + "(" + arguments + ")");
    if (const auto reaction = on_call.find(method); reaction != on_call.end()) {
        reaction->second();
    }
    if (calls.size() == failing_call) {
        if (on_failing_call) {
            on_failing_call();
        }
        return failing_code;
    }
    for (const std::string& key : {calls.back(), method}) {
        if (const auto code = codes.find(key); code != codes.end()) {
            return code->second;
        }
    }
    return S_OK;
}

}  // namespace paylodge::test
