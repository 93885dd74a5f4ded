#include "refhost/objects/company_object.hpp"

#include "com/variant.hpp"
#include "refhost/control/call_record.hpp"
#include "refhost/objects/property_values.hpp"

namespace paylodge::refhost {
namespace {

using WeakCompany = std::weak_ptr<OpenCompany>;

// The company behind an object that was handed out. Throws CO_E_OBJNOTCONNECTED once it is closed.
[[nodiscard]] std::shared_ptr<OpenCompany> Connected(const WeakCompany& company) {
    auto connected = company.lock();
    if (!connected) {
        _com_issue_error(CO_E_OBJNOTCONNECTED);
    }
    return connected;
}

// A record with a content of its own: the company's as it was when the object was made or last locked, with what was
// changed since, which is the company's once it is saved. Changing it needs the lock, which is released at the end.
class CDataFileRecord : public IHostDataFileRecord {
  public:
    using Row = InterfaceRow<CDataFileRecord>;
    static constexpr std::array kInterfaces = {Row::Of<IUnknown, IHostDataFileRecord>()};

    CDataFileRecord(const std::shared_ptr<OpenCompany>& company, const RecordKey& key)
        : company_(company), key_(key), content_(company->Records().Content(key)) {}

    STDMETHODIMP Lock(VARIANT_BOOL* is_locked) override;
    STDMETHODIMP GetPropertyBag(IHostPropertyBag** bag) override;

    // kNotLocked when this object does not hold the lock.
    STDMETHODIMP PutDataVersion(LONG version) override;
    STDMETHODIMP Unlock() override;
    // An HRESULT with a description when the company file cannot be saved; it is as before then.
    STDMETHODIMP Save() override;
    STDMETHODIMP Delete() override;

    // Throws CO_E_OBJNOTCONNECTED when the company was closed.
    [[nodiscard]] const DataFileRecord& Content() const {
        static_cast<void>(Connected(company_));
        return content_;
    }
    // `change` gets the content. kNotLocked.
    [[nodiscard]] HRESULT ChangeContent(const auto& change) {
        if (!Connected(company_)->Records().IsLockedBy(key_, this)) {
            return kNotLocked;
        }
        change(content_);
        return S_OK;
    }

  protected:
    ~CDataFileRecord() {
        if (const auto company = company_.lock()) {
            company->Records().Unlock(key_, this);
        }
    }

  private:
    // `change` gets the table of records. kNotLocked.
    [[nodiscard]] HRESULT ChangeBooks(const auto& change);

    WeakCompany company_;
    RecordKey key_;
    DataFileRecord content_;
};

class CPropertyBag : public IHostPropertyBag {
  public:
    using Row = InterfaceRow<CPropertyBag>;
    static constexpr std::array kInterfaces = {Row::Of<IUnknown, IHostPropertyBag>()};

    explicit CPropertyBag(CDataFileRecord* record) noexcept : record_(record) {}

    // An empty value where the record has none of this name. E_INVALIDARG without a name.
    STDMETHODIMP Read(BSTR name, VARIANT* value) override;
    // An empty value takes the property away. DISP_E_BADVARTYPE for a kind that is not kept.
    STDMETHODIMP Write(BSTR name, VARIANT value) override;

  protected:
    ~CPropertyBag() = default;

  private:
    ComPtr<CDataFileRecord> record_;
};

class CDataFileRecords : public IHostDataFileRecords {
  public:
    using Row = InterfaceRow<CDataFileRecords>;
    static constexpr std::array kInterfaces = {Row::Of<IUnknown, IHostDataFileRecords>()};

    CDataFileRecords(WeakCompany company, std::string category)
        : company_(std::move(company)), category_(std::move(category)) {}

    // kNoSuchRecord
    STDMETHODIMP Item(LONG number, IHostDataFileRecord** record) override;
    STDMETHODIMP Exists(LONG number, VARIANT_BOOL* exists) override;
    // kRecordExists
    STDMETHODIMP Add(LONG number, IHostDataFileRecord** record) override;

  protected:
    ~CDataFileRecords() = default;

  private:
    WeakCompany company_;
    std::string category_;
};

HRESULT CDataFileRecord::PutDataVersion(LONG version) {
    const auto put = [&] {
        return ChangeContent([version](DataFileRecord& content) { content.data_version = version; });
    };
    return Serve(kPutVersionCall, put, version);
}

HRESULT CDataFileRecord::Lock(VARIANT_BOOL* is_locked) {
    return ServeResult(kLockCall, is_locked, [&] {
        DataFileRecordTable& records = Connected(company_)->Records();
        const bool was_locked = records.IsLockedBy(key_, this);
        if (!records.Lock(key_, this)) {
            return S_OK;
        }
        if (!was_locked) {
            content_ = records.Content(key_);
        }
        *is_locked = VARIANT_TRUE;
        return S_OK;
    });
}

HRESULT CDataFileRecord::Unlock() {
    return Serve(kUnlockCall, [&] { return Connected(company_)->Records().Unlock(key_, this) ? S_OK : kNotLocked; });
}

HRESULT CDataFileRecord::Save() {
    return Serve(kSaveCall,
                 [&] { return ChangeBooks([this](DataFileRecordTable& records) { records.Save(key_, content_); }); });
}

HRESULT CDataFileRecord::Delete() {
    return Serve(kDeleteCall,
                 [&] { return ChangeBooks([this](DataFileRecordTable& records) { records.Delete(key_); }); });
}

HRESULT CDataFileRecord::GetPropertyBag(IHostPropertyBag** bag) {
    return ServeResult(kGetBagCall, bag, [&] { return Return<CPropertyBag>(bag, this); });
}

HRESULT CDataFileRecord::ChangeBooks(const auto& change) {
    const auto company = Connected(company_);
    if (!company->Records().IsLockedBy(key_, this)) {
        return kNotLocked;
    }
    change(company->Records());
    return S_OK;
}

HRESULT CPropertyBag::Read(BSTR name, VARIANT* value) {
    const auto read = [&]() -> HRESULT {
        if (View(name).empty()) {
            return E_INVALIDARG;
        }
        const auto text = record_->Content().Find(EscapedText(View(name)));
        return text ? ValueFromText(*text, value) : S_OK;
    };
    return ServeResult(kReadCall, value, read, name);
}

HRESULT CPropertyBag::Write(BSTR name, VARIANT value) {
    const auto write = [&]() -> HRESULT {
        if (View(name).empty()) {
            return E_INVALIDARG;
        }
        const auto text = TextFromValue(value);
        if (!text && V_VT(&value) != VT_EMPTY) {
            return DISP_E_BADVARTYPE;
        }
        return record_->ChangeContent([&](DataFileRecord& content) { content.Set(EscapedText(View(name)), text); });
    };
    return Serve(kWriteCall, write, name, value);
}

HRESULT CDataFileRecords::Item(LONG number, IHostDataFileRecord** record) {
    const auto get = [&] {
        const auto company = Connected(company_);
        const RecordKey key{category_, number};
        return company->Records().Exists(key) ? Return<CDataFileRecord>(record, company, key) : kNoSuchRecord;
    };
    return ServeResult(kItemCall, record, get, number);
}

HRESULT CDataFileRecords::Exists(LONG number, VARIANT_BOOL* exists) {
    const auto look = [&] {
        *exists = Connected(company_)->Records().Exists({category_, number}) ? VARIANT_TRUE : VARIANT_FALSE;
        return S_OK;
    };
    return ServeResult(kExistsCall, exists, look, number);
}

HRESULT CDataFileRecords::Add(LONG number, IHostDataFileRecord** record) {
    const auto add = [&]() -> HRESULT {
        const auto company = Connected(company_);
        const RecordKey key{category_, number};
        if (company->Records().Exists(key)) {
            return kRecordExists;
        }
        const HRESULT result = Return<CDataFileRecord>(record, company, key);
        if (SUCCEEDED(result)) {
            company->Records().Add(key);
        }
        return result;
    };
    return ServeResult(kAddCall, record, add, number);
}

}  // namespace

HRESULT CCompany::GetDataFileRecords(BSTR category, IHostDataFileRecords** records) {
    const auto get = [&]() -> HRESULT {
        static_cast<void>(Connected(company_));
        return View(category).empty() ? E_INVALIDARG
                                      : Return<CDataFileRecords>(records, company_, EscapedText(View(category)));
    };
    return ServeResult(kGetRecordsCall, records, get, category);
}

}  // namespace paylodge::refhost
