// When the page last downloaded the transactions of a merchant account.

#include "operations/paylodge.hpp"

namespace paylodge {

STDMETHODIMP CPaylodge::GetLastTxnDownloadTime(BSTR /*merchantAccountNumber*/, BSTR* /*pLastTxnDownloadTime*/) {
    return IsSiteAllowed() ? E_NOTIMPL : S_OK;
}

STDMETHODIMP CPaylodge::SetLastTxnDownloadTime(BSTR /*merchantAccountNumber*/, BSTR /*lastTxnDownloadTime*/) {
    return IsSiteAllowed() ? E_NOTIMPL : S_OK;
}

}  // namespace paylodge
