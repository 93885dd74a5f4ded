// When the page last downloaded the transactions of a merchant account, kept in a record of the company file for each
// account. The time is the page's own text and never read here.

#include "com/variant.hpp"
#include "operations/paylodge.hpp"
#include "storage/data_file_storage.hpp"

namespace paylodge {
namespace {

constexpr const char* kMerchantAccountNumber = "MerchantAccountNumber";
constexpr const char* kLastDownloadTime = "LastPLDownloadTime";

[[nodiscard]] std::string CategoryName() { return std::string("Vexlor:MAS") + ":" + "PaylodgeKey"; }

// A value of any type as a string. Throws the HRESULT of a conversion that fails.
[[nodiscard]] OwnedBstr TextOf(const OwnedVariant& value) {
    if (value.Type() == VT_BSTR) {
        return CopyBstr(value.Bstr());
    }
    VARIANT source = value.Get();
    OwnedVariant text;
    if (const HRESULT result = ::VariantChangeType(text.Receive(), &source, 0, VT_BSTR); FAILED(result)) {
        _com_issue_error(result);
    }
    return CopyBstr(text.Bstr());
}

// Selects the record of the account. S_OK with the storage selected on it, E_FAIL when no record is the account's.
// *record_count: how many records from number 1 on hold an account, this one included.
[[nodiscard]] HRESULT FindMerchantAccountRecord(CDataFileStorage& storage, BSTR merchant_account_number,
                                                LONG* record_count) {
    const std::string category = CategoryName();
    *record_count = 0;
    for (LONG number = 1; storage.SelectDFR(category, number) == CDataFileStorage::kSuccess; ++number) {
        OwnedVariant value;
        if (storage.ReadProperty(kMerchantAccountNumber, value.Receive()) != CDataFileStorage::kSuccess ||
            value.Type() == VT_EMPTY) {
            break;
        }
        ++*record_count;
        if (View(TextOf(value)) == View(merchant_account_number)) {
            return S_OK;
        }
    }
    return E_FAIL;
}

[[nodiscard]] HRESULT Write(CDataFileStorage& storage, const char* property_name, BSTR text) {
    // The host gets a string even for null.
    const OwnedVariant value(text == nullptr ? MakeBstr({}) : CopyBstr(text));
    return storage.WriteProperty(property_name, value.Get()) == CDataFileStorage::kSuccess ? S_OK : E_FAIL;
}

// A record of its own for an account that has none. When the time cannot be written, the account stays without one.
[[nodiscard]] HRESULT AddMerchantAccountRecord(CDataFileStorage& storage, LONG number, BSTR merchant_account_number,
                                               BSTR time) {
    if (storage.SelectDFR(CategoryName(), number) != CDataFileStorage::kSuccess) {
        return E_FAIL;
    }
    const HRESULT result = Write(storage, kMerchantAccountNumber, merchant_account_number);
    return FAILED(result) ? result : Write(storage, kLastDownloadTime, time);
}

}  // namespace

// The stored time, or "0" when there is none or it cannot be read; the log says why.
STDMETHODIMP CPaylodge::GetLastTxnDownloadTime(BSTR merchantAccountNumber, BSTR* pLastTxnDownloadTime) {
    if (!IsSiteAllowed()) {
        return S_OK;
    }
    if (pLastTxnDownloadTime == nullptr) {
        return E_POINTER;
    }
    *pLastTxnDownloadTime = nullptr;
    CDataFileStorage storage;
    LONG record_count = 0;
    OwnedVariant time;
    const bool is_stored = SUCCEEDED(FindMerchantAccountRecord(storage, merchantAccountNumber, &record_count)) &&
                           storage.ReadProperty(kLastDownloadTime, time.Receive()) == CDataFileStorage::kSuccess;
    *pLastTxnDownloadTime = BstrFromAnsi(is_stored ? AnsiFromBstr(TextOf(time).Get()) : "0").Detach();
    return S_OK;
}

// E_FAIL when the record could not be selected or written; the log says why.
STDMETHODIMP CPaylodge::SetLastTxnDownloadTime(BSTR merchantAccountNumber, BSTR lastTxnDownloadTime) {
    CDataFileStorage storage;
    if (!IsSiteAllowed()) {
        return S_OK;
    }
    LONG record_count = 0;
    if (SUCCEEDED(FindMerchantAccountRecord(storage, merchantAccountNumber, &record_count))) {
        return Write(storage, kLastDownloadTime, lastTxnDownloadTime);
    }
    return AddMerchantAccountRecord(storage, record_count + 1, merchantAccountNumber, lastTxnDownloadTime);
}

}  // namespace paylodge
